#include "logger/GuardedChannel.h"

#include <exception>
#include <utility>

#include <Poco/Exception.h>

namespace zvlog {

GuardedChannel::GuardedChannel(std::string logger, Poco::AutoPtr<Poco::Channel> target, Notices& notices)
    : m_logger(std::move(logger)), m_target(std::move(target)), m_notices(notices)
{
}

void GuardedChannel::log(const Poco::Message& message)
try {
    m_notices.deliver();
    m_target->log(message);
} catch (const Poco::Exception& failure) {
    report(failure.displayText());
} catch (const std::exception& failure) {
    report(failure.what());
} catch (...) {
    report("unknown failure");
}

void GuardedChannel::report(const std::string& reason) noexcept
try {
    if (m_is_reported.exchange(true))
        return;
    m_notices.post("lines of the logger '" + m_logger + "' are lost: " + reason);
    m_notices.deliver();
} catch (...) {
    // Out of memory: the report is lost as well.
}

} // namespace zvlog
