#pragma once

#include <string>

// The environment of this process. Values are UTF-8.

namespace platform {

/// The value of a variable; empty when it is not set.
std::string environment(const char* name);

/// Sets a variable; an empty value removes it. Call before threads are started.
void set_environment(const char* name, const std::string& value);

/// Separates the folders in a variable such as PATH.
extern const char path_list_separator;

} // namespace platform
