#include "logger/SystemChannel.h"

#include <algorithm>
#include <array>

#include <Poco/Exception.h>
#include <Poco/LoggingFactory.h>
#include <Poco/Message.h>

#include "platform/system_log.h"

namespace zvlog {

namespace {

using platform::Severity;

constexpr const char* usual_facility = "LOG_USER";

int facility_number(const std::string& name)
{
    const auto number = platform::find_facility(name);
    if (!number)
        throw Poco::InvalidArgumentException("facility", name);
    return *number;
}

Severity severity_of(Poco::Message::Priority priority)
{
    // By Poco's numbering, from fatal to trace.
    constexpr std::array<Severity, 9> severities{Severity::alert,       Severity::alert,   Severity::critical,
                                                 Severity::error,       Severity::warning, Severity::notice,
                                                 Severity::information, Severity::debug,   Severity::debug};
    return severities[static_cast<std::size_t>(std::clamp<int>(priority, 0, 8))];
}

// Not Poco's own, whose openlog() renames the host in the system log and leaves a pointer to the name behind.
class SystemLogChannel final : public Poco::Channel {
public:
    void log(const Poco::Message& message) override
    {
        const std::string prefix = m_name.empty() ? m_name : m_name + ": ";
        platform::write_to_system_log(m_facility, severity_of(message.getPriority()),
                                      prefix + message.getText());
    }

    void setProperty(const std::string& name, const std::string& value) override
    {
        if (name == "name")
            m_name = value;
        else if (name == "facility")
            m_facility = facility_number(value);
        else
            Poco::Channel::setProperty(name, value);
    }

private:
    std::string m_name;
    int m_facility{facility_number(usual_facility)};
};

} // namespace

Poco::AutoPtr<Poco::Channel> make_system_channel(const std::string& class_name)
{
    if (class_name == "SyslogChannel" && platform::find_facility(usual_facility))
        return Poco::AutoPtr<Poco::Channel>(new SystemLogChannel);
    if (class_name != "EventLogChannel")
        return {};
    try {
        return Poco::LoggingFactory::defaultFactory().createChannel(
            class_name); // which has it on Windows alone
    } catch (const Poco::NotFoundException&) {
        return {};
    }
}

} // namespace zvlog
