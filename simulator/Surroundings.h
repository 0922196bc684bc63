#pragma once

#include <filesystem>
#include <string>
#include <vector>

// What the system tells about whoever uses the library.

namespace zvsim {

/// The value of a variable, on Windows in UTF-8; empty when it is not set.
std::string environment_variable(const char* name);

/// Where the product's configuration files may be when nobody names them: the user's folder, if there is one,
/// then the machine's.
std::vector<std::filesystem::path> configuration_folders();

} // namespace zvsim
