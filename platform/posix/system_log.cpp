#include "platform/system_log.h"

#include <algorithm>
#include <array>

#include <syslog.h>

namespace platform {

static_assert(static_cast<int>(Severity::alert) == LOG_ALERT);
static_assert(static_cast<int>(Severity::debug) == LOG_DEBUG);

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

} // namespace

std::optional<int> find_facility(const std::string& name)
{
    const auto* const found = std::find_if(facilities.begin(), facilities.end(),
                                           [&](const Facility& facility) { return name == facility.name; });
    return found == facilities.end() ? std::nullopt : std::optional<int>(found->number);
}

void write_to_system_log(int facility, Severity severity, const std::string& line)
{
    syslog(facility | static_cast<int>(severity), "%s", line.c_str());
}

} // namespace platform
