#pragma once

#include <filesystem>
#include <string>
#include <string_view>

// Files and folders that a process needs only while it works on something. One that is killed leaves them
// behind; the next process that does the same work removes them.

namespace platform {

/// A new name that tells which process it belongs to, and that nobody can foresee: `prefix`, the process, a
/// random number, `suffix`.
std::string working_name(const std::string& prefix, const std::string& suffix);

/// Removes from a folder what has a working name of a process that has ended. What cannot be removed stays.
void remove_leftovers(const std::filesystem::path& folder, std::string_view prefix,
                      std::string_view suffix) noexcept;

} // namespace platform
