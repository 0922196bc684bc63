#pragma once

#include <filesystem>
#include <string>

// What a file is that is taken for a dynamic library.

namespace platform {

/// Why this system cannot load the file, in words: no library at all, one of another system or processor, cut
/// off, unreadable. Empty when the file itself looks right.
std::string problem_of_library(const std::filesystem::path& file);

/// Whether a library of Linux lacks its end, on which the system would end the process that loads it.
bool is_cut_off(const std::filesystem::path& file);

/// The name of this system.
const char* own_system() noexcept;

} // namespace platform
