#pragma once

#include <string>
#include <utility>
#include <vector>

// The environment of this process. Values are UTF-8.

namespace platform {

/// The value of a variable; empty when it is not set.
std::string environment(const char* name);

/// Variables with their values; empty when they are not set.
using Variables = std::vector<std::pair<const char*, std::string>>;

/// The variables of these names, as they are now.
Variables environment_of(const std::vector<const char*>& names);

/// True if all variables have these values now.
bool environment_is(const Variables& variables);

/// Sets a variable; an empty value removes it. Call before threads are started.
void set_environment(const char* name, const std::string& value);

/// Separates the folders in a variable such as PATH.
extern const char path_list_separator;

} // namespace platform
