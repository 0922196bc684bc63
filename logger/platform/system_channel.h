#pragma once

#include <string>

#include <Poco/AutoPtr.h>
#include <Poco/Channel.h>

// The log of the operating system.

namespace zvlog::platform {

/// A channel into the log of the operating system, by the class name that Poco's configuration files use for
/// it; null when this system has none of that name. Nothing is opened before the first line.
Poco::AutoPtr<Poco::Channel> make_system_channel(const std::string& class_name);

} // namespace zvlog::platform
