#pragma once

#include <string>

#include <Poco/AutoPtr.h>
#include <Poco/Channel.h>

namespace zvlog {

/// A channel into the log of the operating system, by the class name that Poco's configuration files use for
/// it; null when this system has none of that name. Nothing is opened before the first line.
Poco::AutoPtr<Poco::Channel> make_system_channel(const std::string& class_name);

} // namespace zvlog
