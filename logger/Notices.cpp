#include "logger/Notices.h"

#include <exception>
#include <utility>

#include <Poco/Exception.h>
#include <Poco/Message.h>

#include "platform/visible_text.h"

namespace zvlog {

namespace {

bool is_plain(const Poco::Message& message)
{
    return platform::is_plain(message.getText()) && platform::is_plain(message.getSource()) &&
           platform::is_plain(message.getThread());
}

Poco::Message made_visible(const Poco::Message& message)
{
    Poco::Message copy(message);
    copy.setText(platform::visible(message.getText()));
    copy.setSource(platform::visible(message.getSource()));
    copy.setThread(platform::visible(message.getThread()));
    return copy;
}

} // namespace

Notices::Notices(Poco::AutoPtr<Poco::Channel> log) : m_log(std::move(log)) {}

void Notices::post(const std::string& text)
{
    const std::lock_guard lock(m_mutex);
    m_texts.push_back("ZVLogger::" + platform::visible(text));
    m_is_waiting.store(true, std::memory_order_relaxed);
}

void Notices::deliver() noexcept
try {
    if (!m_is_waiting.load(std::memory_order_relaxed))
        return;
    std::vector<std::string> texts;
    {
        const std::lock_guard lock(m_mutex);
        texts.swap(m_texts);
        m_is_waiting.store(false, std::memory_order_relaxed);
    }
    for (const std::string& text : texts)
        m_log->log(Poco::Message("ZVLogger", text, Poco::Message::PRIO_WARNING));
} catch (...) {
    // Without a log, nothing can be reported.
}

GuardedChannel::GuardedChannel(std::string logger, Poco::AutoPtr<Poco::Channel> target, Notices& notices)
    : m_logger(std::move(logger)), m_target(std::move(target)), m_notices(notices)
{
}

void GuardedChannel::log(const Poco::Message& message)
try {
    m_notices.deliver();
    if (is_plain(message))
        m_target->log(message);
    else
        m_target->log(made_visible(message));
} catch (const Poco::Exception& failure) {
    report(failure.displayText());
} catch (const std::exception& failure) {
    report(failure.what());
} catch (...) {
    report("unknown error");
}

void GuardedChannel::report(const std::string& reason) noexcept
try {
    if (m_is_reported.exchange(true))
        return;
    m_notices.post("lines of the logger '" + m_logger + "' are lost: " + reason);
    m_notices.deliver();
} catch (...) {
    // Without memory the report is lost as well.
}

} // namespace zvlog
