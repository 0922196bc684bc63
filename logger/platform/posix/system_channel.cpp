#include "logger/platform/system_channel.h"

#include <algorithm>
#include <array>

#include <Poco/Exception.h>
#include <Poco/Message.h>
#include <syslog.h>

namespace zvlog::platform {

namespace {

struct Facility {
    const char* name;
    int number;
};

constexpr std::array<Facility, 20> facilities{{
    {"LOG_AUTH", LOG_AUTH},     {"LOG_AUTHPRIV", LOG_AUTHPRIV}, {"LOG_CRON", LOG_CRON},
    {"LOG_DAEMON", LOG_DAEMON}, {"LOG_FTP", LOG_FTP},           {"LOG_KERN", LOG_KERN},
    {"LOG_LOCAL0", LOG_LOCAL0}, {"LOG_LOCAL1", LOG_LOCAL1},     {"LOG_LOCAL2", LOG_LOCAL2},
    {"LOG_LOCAL3", LOG_LOCAL3}, {"LOG_LOCAL4", LOG_LOCAL4},     {"LOG_LOCAL5", LOG_LOCAL5},
    {"LOG_LOCAL6", LOG_LOCAL6}, {"LOG_LOCAL7", LOG_LOCAL7},     {"LOG_LPR", LOG_LPR},
    {"LOG_MAIL", LOG_MAIL},     {"LOG_NEWS", LOG_NEWS},         {"LOG_SYSLOG", LOG_SYSLOG},
    {"LOG_USER", LOG_USER},     {"LOG_UUCP", LOG_UUCP},
}};

int facility_number(const std::string& name)
{
    const auto* const found = std::find_if(facilities.begin(), facilities.end(),
                                           [&](const Facility& facility) { return name == facility.name; });
    if (found == facilities.end())
        throw Poco::InvalidArgumentException("facility", name);
    return found->number;
}

int severity(Poco::Message::Priority priority)
{
    // By Poco's numbering, from fatal to trace.
    constexpr std::array<int, 9> severities{LOG_ALERT,  LOG_ALERT, LOG_CRIT,  LOG_ERR,  LOG_WARNING,
                                            LOG_NOTICE, LOG_INFO,  LOG_DEBUG, LOG_DEBUG};
    return severities[static_cast<std::size_t>(std::clamp<int>(priority, 0, 8))];
}

// Not Poco's own, whose openlog() renames the host in the system log and leaves a pointer to the name behind.
class SystemLogChannel final : public Poco::Channel {
public:
    void log(const Poco::Message& message) override
    {
        const int priority = severity(message.getPriority()) | m_facility;
        if (m_name.empty())
            syslog(priority, "%s", message.getText().c_str());
        else
            syslog(priority, "%s: %s", m_name.c_str(), message.getText().c_str());
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
    int m_facility{LOG_USER};
};

} // namespace

Poco::AutoPtr<Poco::Channel> make_system_channel(const std::string& class_name)
{
    if (class_name != "SyslogChannel")
        return {};
    return Poco::AutoPtr<Poco::Channel>(new SystemLogChannel);
}

} // namespace zvlog::platform
