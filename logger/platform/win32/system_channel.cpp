#include "logger/platform/system_channel.h"

#include <Poco/EventLogChannel.h>

namespace zvlog::platform {

Poco::AutoPtr<Poco::Channel> make_system_channel(const std::string& class_name)
{
    if (class_name != "EventLogChannel")
        return {};
    return Poco::AutoPtr<Poco::Channel>(new Poco::EventLogChannel);
}

} // namespace zvlog::platform
