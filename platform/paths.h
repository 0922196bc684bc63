#pragma once

#include <filesystem>
#include <string>
#include <vector>

// Paths, and the folders that have a purpose. Texts are UTF-8, with the separators of the system.

namespace platform {

/// True when the path means the same file from every working folder.
bool is_absolute(const std::string& path);

/// The folder that a file is in.
std::string folder_of(const std::string& path);

/// `path` with a leading "~/" replaced by the user's home folder; empty when there is none.
std::string expand_home(const std::string& path);

/// Makes the folder and those above it that are missing, for the user alone. True when it exists afterwards.
bool make_folders(const std::string& folder);

// Folders that have a purpose. None of them depends on the working folder.

/// The user's home folder; empty when there is none. An account without one often names a folder that does
/// not exist, which must not be created.
std::filesystem::path home_folder();

/// The folder with the user's configuration of the product; empty when the user has none.
std::filesystem::path user_configuration_folder();

/// The folder with the configuration of the product for all users of the machine.
std::filesystem::path machine_configuration_folder();

/// The names of the environment variables that the two folders of configurations depend on.
std::vector<const char*> configuration_variables();

/// The folder for what the product writes of its own accord, such as logs; empty when the user has none.
std::filesystem::path user_state_folder();

/// The folder that holds the running program.
std::filesystem::path program_folder();

/// Creates a new folder that only this user can enter, below the system's folder for temporary files. Its
/// name is one for `remove_leftovers`.
std::filesystem::path make_private_folder(const std::string& prefix);

} // namespace platform
