#pragma once

#include <string>

// Paths as texts in UTF-8, with the separators of the system.

namespace platform {

/// True when the path means the same file from every working folder.
bool is_absolute(const std::string& path);

/// The folder that a file is in.
std::string folder_of(const std::string& path);

/// `path` with a leading "~/" replaced by the user's home folder; empty when there is none.
std::string expand_home(const std::string& path);

/// Makes the folder and those above it that are missing, for the user alone. True when it exists afterwards.
bool make_folders(const std::string& folder);

} // namespace platform
