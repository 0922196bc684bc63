#include <cstdint>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <Poco/Message.h>
#include <Poco/Runnable.h>
#include <Poco/Thread.h>
#include <gtest/gtest.h>

#include "log/Log.h"
#include "platform/process.h"
#include "support/FailingAllocations.h"
#include "support/FakeLoggerLibrary.h"
#include "support/log_expectations.h"

using zvgentl::At;
using zvtest::FakeLoggerLibrary;
using zvtest::LogLine;

namespace {

// Without the attribute that checks formats, so that a format can be missing.
void (*const write_line)(ZVPocoLogger*, zvgentl::Priority, const char*, At, const char*,
                         ...) noexcept = zvgentl::write_line;
void (*const write_bare_line)(ZVPocoLogger*, zvgentl::Priority, const char*, const char*,
                              ...) noexcept = zvgentl::write_bare_line;

struct Entry {
    void (*log)(ZVPocoLogger*); // writes "7"
    zvtest::Priority priority;
};

const Entry entries[] = {
    {[](ZVPocoLogger* logger) { zvgentl::log_fatal(logger, "f", At{1}, "%d", 7); }, zvtest::Priority::fatal},
    {[](ZVPocoLogger* logger) { zvgentl::log_error(logger, "f", At{1}, "%d", 7); }, zvtest::Priority::error},
    {[](ZVPocoLogger* logger) { zvgentl::log_warning(logger, "f", At{1}, "%d", 7); },
     zvtest::Priority::warning},
    {[](ZVPocoLogger* logger) { zvgentl::log_information(logger, "f", At{1}, "%d", 7); },
     zvtest::Priority::information},
    {[](ZVPocoLogger* logger) { zvgentl::log_debug(logger, "f", At{1}, "%d", 7); }, zvtest::Priority::debug},
    {[](ZVPocoLogger* logger) { zvgentl::log_trace(logger, "f", At{1}, "%d", 7); }, zvtest::Priority::trace},
};

class Log : public testing::Test {
protected:
    FakeLoggerLibrary& library{FakeLoggerLibrary::instance()};
    ZVPocoLogger* logger{library.logger("LogTest.cpp")};

    void SetUp() override { library.reset(); }
    void TearDown() override { library.reset(); }

    LogLine only_line()
    {
        const std::vector<LogLine> lines = library.lines();
        EXPECT_EQ(1U, lines.size());
        return lines.empty() ? LogLine() : lines.front();
    }
};

class ThrowingChannel : public Poco::Channel {
public:
    void log(const Poco::Message&) override { throw std::runtime_error("the disk is full"); }
};

/// Keeps the last message as it was.
class KeepingChannel : public Poco::Channel {
public:
    void log(const Poco::Message& message) override { last = message; }
    Poco::Message last;
};

/// Writes a line of its own for each one.
class TalkingChannel : public Poco::Channel {
public:
    explicit TalkingChannel(ZVPocoLogger* other) : m_other(other) {}
    void log(const Poco::Message& message) override
    {
        zvgentl::log_error(m_other, "f", At{2}, "inner");
        texts.push_back(message.getText().substr(message.getText().find(']')));
    }
    std::vector<std::string> texts;

private:
    ZVPocoLogger* m_other;
};

/// Restores the captured channel, so that the loggers of other tests stay as they are.
class ChannelOf {
public:
    ChannelOf(ZVPocoLogger* logger, const Poco::AutoPtr<Poco::Channel>& channel)
        : m_logger(logger), m_old(logger->getChannel())
    {
        logger->setChannel(channel);
    }
    ~ChannelOf() { m_logger->setChannel(m_old); }
    ChannelOf(const ChannelOf&) = delete;
    ChannelOf& operator=(const ChannelOf&) = delete;

private:
    ZVPocoLogger* m_logger;
    Poco::Channel::Ptr m_old;
};

class Lines : public Poco::Runnable {
public:
    explicit Lines(ZVPocoLogger* logger) : m_logger(logger) {}
    void run() override
    {
        zvgentl::log_error(m_logger, "f", At{1}, "first");
        Poco::Thread::current()->setName("another");
        zvgentl::log_error(m_logger, "f", At{1}, "second");
    }

private:
    ZVPocoLogger* m_logger;
};

} // namespace

TEST_F(Log, WritesALineOfThreadLoggerFunctionNumberAndMessage)
{
    zvgentl::log_information(logger, "GCInitLib", At{589}, "Enter %s %d", "it", 5);
    char expected[100];
    std::snprintf(expected, sizeof expected, "thr%08X:LogTest::{GCInitLib}[589]: Enter it 5",
                  platform::thread_id());
    EXPECT_EQ(expected, only_line().text);
}

TEST_F(Log, GivesEachEntryPointItsPriority)
{
    for (const Entry& entry : entries) {
        library.clear_lines();
        entry.log(logger);
        EXPECT_EQ(entry.priority, only_line().priority);
        EXPECT_EQ("7", only_line().message);
    }
}

TEST_F(Log, WritesUpToTheLevelOfTheLogger)
{
    for (const Entry& level : entries) {
        library.set_level("LogTest.cpp", level.priority);
        for (const Entry& entry : entries) {
            library.clear_lines();
            entry.log(logger);
            EXPECT_EQ(entry.priority <= level.priority ? 1U : 0U, library.lines().size());
        }
    }
}

TEST_F(Log, DoesNotFormatADisabledLine)
{
    library.set_level("LogTest.cpp", zvtest::Priority::error);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the test needs an unreadable address
    const char* const unreadable = reinterpret_cast<const char*>(uintptr_t{1});
    zvgentl::log_warning(logger, "f", At{1}, "%s", unreadable);
    EXPECT_TRUE(library.lines().empty());
}

TEST_F(Log, KnowsWhetherALineWouldBeWritten)
{
    library.set_level("LogTest.cpp", zvtest::Priority::information);
    EXPECT_TRUE(zvgentl::is_logged(logger, zvgentl::Priority::information));
    EXPECT_FALSE(zvgentl::is_logged(logger, zvgentl::Priority::debug));
    EXPECT_FALSE(zvgentl::is_logged(nullptr, zvgentl::Priority::fatal));
}

TEST_F(Log, DoesNothingWithoutALoggerAFormatOrAChannel)
{
    for (const Entry& entry : entries)
        entry.log(nullptr);
    write_line(logger, zvgentl::Priority::warning, "f", At{1}, nullptr);
    write_bare_line(nullptr, zvgentl::Priority::warning, "f", "x");
    write_bare_line(logger, zvgentl::Priority::warning, "f", nullptr);
    library.set_channel("LogTest.cpp", false);
    zvgentl::log_fatal(logger, "f", At{1}, "x");
    EXPECT_TRUE(library.lines().empty());
}

TEST_F(Log, SurvivesAChannelThatFails)
{
    logger->setChannel(new ThrowingChannel);
    EXPECT_NO_THROW(zvgentl::log_fatal(logger, "f", At{1}, "x"));
}

TEST_F(Log, HandsOverMessagesThatSayWhatNewOnesWould)
{
    const Poco::AutoPtr<KeepingChannel> channel(new KeepingChannel);
    const ChannelOf kept(logger, channel);
    for (int line = 0; line < 3; ++line) {
        const Poco::Message before("source", "text", Poco::Message::PRIO_ERROR);
        zvgentl::log_error(logger, "f", At{1}, "%s", line == 0 ? "a longer text than those after it" : "x");
        const Poco::Message& last = channel->last;
        EXPECT_EQ(logger->name(), last.getSource());
        EXPECT_EQ(line == 0 ? "ter it" : "}[1]: x",
                  last.getText().substr(last.getText().size() - (line == 0 ? 6 : 7)));
        EXPECT_EQ(Poco::Message::PRIO_ERROR, last.getPriority());
        EXPECT_LE(before.getTime(), last.getTime());
        EXPECT_EQ(before.getPid(), last.getPid());
        EXPECT_EQ(before.getTid(), last.getTid());
        EXPECT_EQ(before.getThread(), last.getThread());
        EXPECT_EQ(nullptr, last.getSourceFile());
        EXPECT_EQ(0, last.getSourceLine());
    }
}

TEST_F(Log, NamesAThreadOfPocosAsItIsCalledNow)
{
    const Poco::AutoPtr<KeepingChannel> channel(new KeepingChannel);
    const ChannelOf kept(logger, channel);
    Lines lines(logger);
    Poco::Thread thread("named");
    thread.start(lines);
    thread.join();
    EXPECT_EQ("another", channel->last.getThread());
    EXPECT_EQ(thread.id(), channel->last.getTid());
}

#ifndef _WIN32
// A new process may find the message that this thread has left.
TEST_F(Log, NamesTheNewProcessAfterAFork)
{
    const Poco::AutoPtr<KeepingChannel> channel(new KeepingChannel);
    const ChannelOf kept(logger, channel);
    zvgentl::log_error(logger, "f", At{1}, "x");
    const auto log_and_end = [&] {
        zvgentl::log_error(logger, "f", At{1}, "x");
        std::_Exit(channel->last.getPid() == Poco::Message().getPid() ? 0 : 1);
    };
    for (int process = 0; process < 40; ++process)
        EXPECT_EXIT(log_and_end(), testing::ExitedWithCode(0), "");
}
#endif

TEST_F(Log, AllocatesNothingForALineAfterTheFirst)
{
    zvgentl::log_error(logger, "f", At{1}, "%s", std::string(200, 'x').c_str());
    const zvtest::CountedAllocations allocations;
    for (int line = 0; line < 10; ++line)
        zvgentl::log_error(logger, "f", At{1}, "another line");
    EXPECT_EQ(0, allocations.count());
}

TEST_F(Log, WritesALineWhileAnotherOneIsBeingWritten)
{
    const Poco::AutoPtr<TalkingChannel> channel(new TalkingChannel(library.logger("LogTestInner.cpp")));
    const ChannelOf talking(logger, channel);
    for (int line = 0; line < 3; ++line)
        zvgentl::log_error(logger, "f", At{1}, "outer");
    EXPECT_EQ((std::vector<std::string>(3, "]: outer")), channel->texts);
    EXPECT_EQ(3U, library.lines().size());
    for (const LogLine& line : library.lines())
        EXPECT_EQ("inner", line.message);
}

TEST_F(Log, LeavesTheBracesOutWithoutAFunction)
{
    zvgentl::log_error(logger, nullptr, At{3}, "x");
    EXPECT_FALSE(only_line().has_function);
    EXPECT_EQ(3, only_line().number);
}

TEST_F(Log, CutsTheLoggersNameAtItsLastDot)
{
    zvgentl::log_error(library.logger("a.b.cpp"), "f", At{1}, "x");
    zvgentl::log_error(library.logger("plain"), "f", At{1}, "x");
    const std::vector<LogLine> lines = library.lines();
    ASSERT_EQ(2U, lines.size());
    EXPECT_EQ("a.b", lines[0].logger);
    EXPECT_EQ("a.b.cpp", lines[0].source);
    EXPECT_EQ("plain", lines[1].logger);
    EXPECT_EQ("plain", lines[1].source);
}

TEST_F(Log, CutsALongMessageAtTheEndOfTheLine)
{
    const std::string argument(5000, 'x');
    zvgentl::log_error(logger, "f", At{1}, "start %s end", argument.c_str());
    const LogLine line = only_line();
    EXPECT_EQ(4095U, line.text.size());
    EXPECT_EQ("start xxx", line.message.substr(0, 9));
    EXPECT_EQ('x', line.message.back());
}

TEST_F(Log, FillsTheLineToItsLastCharacter)
{
    zvgentl::log_error(logger, "f", At{1}, "%s", "");
    const size_t frame = only_line().text.size();
    for (const size_t room : {4094 - frame, 4095 - frame, 4096 - frame}) {
        library.clear_lines();
        zvgentl::log_error(logger, "f", At{1}, "%s", std::string(room, 'y').c_str());
        EXPECT_EQ(frame + room < 4095 ? frame + room : 4095, only_line().text.size());
    }
}

TEST_F(Log, SurvivesALoggerAndAFunctionWithLongNames)
{
    const std::string name(5000, 'n');
    zvgentl::log_error(library.logger(name), name.c_str(), At{1}, "%s", name.c_str());
    zvgentl::log_error(logger, name.c_str(), At{1}, "%s", name.c_str());
    for (const LogLine& line : library.lines())
        EXPECT_EQ(4095U, line.text.size());
    EXPECT_EQ(2U, library.lines().size());
}

TEST_F(Log, WritesBareLinesWithoutANumber)
{
    write_bare_line(logger, zvgentl::Priority::warning, "f", "[%d] x", 12);
    EXPECT_EQ(12, only_line().number);
    EXPECT_EQ("x", only_line().message);
    library.clear_lines();
    library.set_level("LogTest.cpp", zvtest::Priority::error);
    write_bare_line(logger, zvgentl::Priority::warning, "f", "x");
    EXPECT_TRUE(library.lines().empty());
}

TEST(UnitLoggers, AreAskedForOncePerUnitWithTheConfiguredLevel)
{
    std::map<std::string, int> times;
    for (const zvtest::InitLoggerCall& call : FakeLoggerLibrary::instance().init_calls()) {
        if (call.name == "Early.cpp") // asked for by a test of the fake itself
            continue;
        EXPECT_FALSE(call.text.has_value());
        EXPECT_EQ(0xFFFFFFFFU, call.priority);
        ++times[call.name.value_or("(null)")];
    }
    std::map<std::string, int> expected;
    for (const auto& [name, logger] : {std::pair{"ZVGRLibGenTL.cpp", zvgentl::api_logger},
                                       {"SystemModule.cpp", zvgentl::system_module_logger},
                                       {"BufferModule.cpp", zvgentl::buffer_module_logger},
                                       {"CameraModule.cpp", zvgentl::camera_module_logger},
                                       {"EventModule.cpp", zvgentl::event_module_logger},
                                       {"StreamModule.cpp", zvgentl::stream_module_logger}}) {
        EXPECT_EQ(name, logger->name());
        expected[name] = 1;
    }
    EXPECT_EQ(expected, times);
}

// A pointer with all its bits in use, which nothing dereferences.
// NOLINTNEXTLINE(performance-no-int-to-ptr): the number is what is tested
const void* const wide_pointer = reinterpret_cast<const void*>(uintptr_t{0x123456789ABCDEF0});

TEST(LogArguments, ArePointersWholeOrTheirLowHalf)
{
    EXPECT_EQ(0x123456789ABCDEF0ULL, zvgentl::address(wide_pointer));
    EXPECT_EQ(0x9ABCDEF0U, zvgentl::low32(wide_pointer));
    EXPECT_EQ(0U, zvgentl::low32(nullptr));
}

TEST(LogArguments, AreTheLowHalfOfNumbersWithItsSign)
{
    EXPECT_EQ(-1, zvgentl::low32_signed(UINT64_MAX));
    EXPECT_EQ(5, zvgentl::low32_signed(0x700000005));
    EXPECT_EQ(INT32_MIN, zvgentl::low32_signed(0x80000000));
}
