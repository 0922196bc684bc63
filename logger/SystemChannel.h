#pragma once

#include <string>

#include <Poco/AutoPtr.h>
#include <Poco/Channel.h>

namespace zvlog {

/// A channel to the log of the operating system, by its class name in Poco's configuration files; null if
/// this system has none of that name. Nothing is opened before the first line.
Poco::AutoPtr<Poco::Channel> make_system_channel(const std::string& class_name);

} // namespace zvlog
