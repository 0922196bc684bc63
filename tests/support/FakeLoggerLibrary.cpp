#include "support/FakeLoggerLibrary.h"

#include <Poco/Channel.h>
#include <Poco/Message.h>
#include <gtest/gtest.h>

#include "support/AllocationFaults.h"
#include "support/LogLineTable.h"

namespace zvtest {

namespace {

class CapturingChannel : public Poco::Channel {
public:
    void log(const Poco::Message& message) override
    {
        const PausedAllocationFaults pause;
        const LogLine line = parse_log_line(message.getSource(), static_cast<Priority>(message.getPriority()),
                                            message.getText());
        FakeLoggerLibrary::instance().capture(line);
    }
};

class CapturedLogger : public ZVPocoLogger {
public:
    CapturedLogger(const std::string& name, Poco::Channel* channel)
        : ZVPocoLogger(name, channel, static_cast<int>(Priority::trace))
    {
    }

protected:
    ~CapturedLogger() override = default;
};

std::optional<std::string> text_or_nothing(const char* text)
{
    return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

} // namespace

FakeLoggerLibrary::FakeLoggerLibrary() : m_channel(new CapturingChannel) {}

FakeLoggerLibrary& FakeLoggerLibrary::instance()
{
    static FakeLoggerLibrary* const fake = new FakeLoggerLibrary; // never destroyed: used while statics die
    return *fake;
}

std::vector<InitLoggerCall> FakeLoggerLibrary::init_calls() const
{
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_init_calls;
}

void FakeLoggerLibrary::refuse_loggers(bool refuse)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_refuse = refuse;
}

ZVPocoLogger* FakeLoggerLibrary::logger(const std::string& name)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    return find_or_make(name);
}

ZVPocoLogger* FakeLoggerLibrary::find_or_make(const std::string& name)
{
    ZVPocoLogger*& logger = m_loggers[name];
    if (logger == nullptr)
        logger = new CapturedLogger(name, m_channel);
    return logger;
}

void FakeLoggerLibrary::set_level(Priority priority)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    for (const auto& entry : m_loggers)
        entry.second->setLevel(static_cast<int>(priority));
}

void FakeLoggerLibrary::set_level(const std::string& name, Priority priority)
{
    logger(name)->setLevel(static_cast<int>(priority));
}

void FakeLoggerLibrary::set_channel(const std::string& name, bool present)
{
    logger(name)->setChannel(present ? m_channel : Poco::Channel::Ptr());
}

std::vector<LogLine> FakeLoggerLibrary::lines() const
{
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_lines;
}

void FakeLoggerLibrary::clear_lines()
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_lines.clear();
}

void FakeLoggerLibrary::keep_lines(bool keep)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_keep = keep;
}

size_t FakeLoggerLibrary::elapsed_calls() const
{
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_elapsed_calls;
}

void FakeLoggerLibrary::answer_elapsed(int64_t microseconds)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_elapsed = microseconds;
}

void FakeLoggerLibrary::reset()
{
    const std::lock_guard<std::mutex> guard(m_lock);
    for (const auto& entry : m_loggers) {
        entry.second->setLevel(static_cast<int>(Priority::trace));
        entry.second->setChannel(m_channel);
    }
    m_refuse = false;
    m_lines.clear();
    m_keep = true;
    m_elapsed_calls = 0;
    m_elapsed = 12;
}

ZVPocoLogger* FakeLoggerLibrary::init_logger(const InitLoggerCall& call)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_init_calls.push_back(call);
    return m_refuse || !call.name ? nullptr : find_or_make(*call.name);
}

int64_t FakeLoggerLibrary::elapsed()
{
    const std::lock_guard<std::mutex> guard(m_lock);
    ++m_elapsed_calls;
    return m_elapsed;
}

void FakeLoggerLibrary::capture(const LogLine& line)
{
    LogLineTable& table = LogLineTable::instance();
    const std::string objection = table.objection_to(line);
    if (!objection.empty())
        ADD_FAILURE() << "the line " << line << "\n" << objection;
    table.note(line);
    const std::lock_guard<std::mutex> guard(m_lock);
    if (m_keep)
        m_lines.push_back(line);
}

} // namespace zvtest

ZVPocoLogger::ZVPocoLogger(const std::string& name, Poco::Channel* channel, int level)
    : Poco::Logger(name, Poco::Channel::Ptr(channel, true), level) // shared with its other owners
{
}

ZVPocoLogger::~ZVPocoLogger() = default;

ZVPocoLogger* InitLogger(const char* text, const char* name, uint32_t priority)
{
    const zvtest::PausedAllocationFaults pause;
    return zvtest::FakeLoggerLibrary::instance().init_logger(
        {zvtest::text_or_nothing(text), zvtest::text_or_nothing(name), priority});
}

int64_t ZVTimeElapsedUs(const std::chrono::steady_clock::time_point&)
{
    return zvtest::FakeLoggerLibrary::instance().elapsed();
}
