#pragma once

#include <filesystem>

namespace platform {

/// A dynamic library, loaded for as long as the object lives.
class DynamicLibrary {
public:
    /// Throws std::runtime_error with the reason, in words, when the file cannot be loaded.
    explicit DynamicLibrary(const std::filesystem::path& file);
    ~DynamicLibrary();
    DynamicLibrary(const DynamicLibrary&) = delete;
    DynamicLibrary& operator=(const DynamicLibrary&) = delete;

    /// The address of an exported symbol, or null.
    void* find(const char* symbol) const noexcept;
    /// The same of a library that this one needs, by its name without "lib" and ending.
    void* find_in(const char* needed, const char* symbol) const noexcept;

private:
    void* m_library{nullptr};
};

/// The address of a symbol that is exported by a library which the calling module needs, by its name without
/// "lib" and ending; null when it has none.
void* find_needed(const char* library, const char* symbol) noexcept;

} // namespace platform
