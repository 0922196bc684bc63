#pragma once

#include <optional>
#include <string>

namespace platform {

/// The full path of the file that this code was loaded from, cut at 260 characters; nothing when the system
/// does not know it. Asking does not keep the module loaded.
std::optional<std::string> module_path();

} // namespace platform
