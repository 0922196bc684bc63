#pragma once

#include <string>

// Where the files of the library are on this system. Nothing here depends on the working directory.

namespace zvlog::platform {

/// The value of an environment variable; empty when it is not set.
std::string environment(const char* name);

/// True when the path means the same file from every working directory.
bool is_absolute(const std::string& path);

/// The folder with the user's configuration of the product; empty when the user has none.
std::string user_config_folder();

/// The folder with the configuration of the product for all users.
std::string system_config_folder();

/// The folder for what the product writes on its own behalf, such as logs; empty when the user has none.
std::string user_state_folder();

/// `path` with a leading "~/" replaced by the user's home folder; empty when there is none.
std::string expand_home(const std::string& path);

/// Makes the folder and those above it that are missing, for the user alone. True when it exists afterwards.
bool make_folders(const std::string& folder);

/// The folder that a file is in.
std::string folder_of(const std::string& path);

} // namespace zvlog::platform
