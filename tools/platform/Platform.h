#pragma once

#include <cstdio>
#include <filesystem>
#include <string>

// What the tools need from the operating system; the bodies lie in one folder per system. Texts are UTF-8
// everywhere: std::filesystem::u8path makes a path of one, u8string() a text of a path.

namespace zvgentl::tool {

/// A dynamic library, loaded for as long as the object lives.
class DynamicLibrary {
public:
    /// Throws std::runtime_error with the system's own reason when the file cannot be loaded.
    explicit DynamicLibrary(const std::filesystem::path& file);
    ~DynamicLibrary();
    DynamicLibrary(const DynamicLibrary&) = delete;
    DynamicLibrary& operator=(const DynamicLibrary&) = delete;

    /// The address of an exported symbol, or null.
    void* find(const char* symbol) const noexcept;

private:
    void* m_library{nullptr};
};

/// Separates the folders in a variable such as GENICAM_GENTL64_PATH.
extern const char path_list_separator;

/// The folder that holds the running program.
std::filesystem::path program_folder();

/// The folders in which the producer's settings are looked for: the user's (empty when there is none) and the
/// machine's.
std::filesystem::path user_configuration_folder();
std::filesystem::path machine_configuration_folder();

/// The value of an environment variable; empty when it is not set.
std::string environment(const char* name);
/// Sets an environment variable of this process; an empty value removes it. Call before threads are started.
void set_environment(const char* name, const std::string& value);

/// Creates a new folder that only this user can enter, below the system's folder for temporary files.
std::filesystem::path make_private_folder(const std::string& prefix);

/// Whether the stream shows on a terminal that follows control sequences.
bool is_terminal(std::FILE* stream) noexcept;
/// What is written to the stream arrives as it is, whatever the system does with the ends of lines.
void keep_bytes(std::FILE* stream) noexcept;

} // namespace zvgentl::tool
