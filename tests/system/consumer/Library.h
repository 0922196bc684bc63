#pragma once

#include <filesystem>

#include "system/consumer/Functions.h"

namespace zvsystem {

/// A file, as consumers load it: by the dynamic loader, with its symbols kept to itself.
class LoadedFile {
public:
    /// Throws std::runtime_error with the loader's words when the file cannot be loaded.
    explicit LoadedFile(const std::filesystem::path& file)
        : m_handle{dlopen(file.string().c_str(), RTLD_NOW | RTLD_LOCAL)}
    {
        if (m_handle == nullptr)
            throw std::runtime_error{dlerror()}; // NOLINT(concurrency-mt-unsafe): this thread's own
    }
    /// Unloads it.
    ~LoadedFile() { dlclose(m_handle); }
    LoadedFile(const LoadedFile&) = delete;
    LoadedFile& operator=(const LoadedFile&) = delete;

    void* handle() const noexcept { return m_handle; }
    Symbol find(const char* name) const { return find_symbol(m_handle, name); }

private:
    void* m_handle;
};

/// The producer's file and its functions.
class Library {
public:
    explicit Library(const std::filesystem::path& file) : m_file{file} {}

    const Functions& functions() const noexcept { return m_functions; }

private:
    LoadedFile m_file;
    Functions m_functions{m_file.handle()};
};

/// A loaded and initialised producer.
class Producer {
public:
    explicit Producer(const std::filesystem::path& file) : m_library(file)
    {
        check(functions().GCInitLib(), "GCInitLib");
    }
    /// Ends it, whatever is still open, and unloads it.
    ~Producer() { functions().GCCloseLib(); }
    Producer(const Producer&) = delete;
    Producer& operator=(const Producer&) = delete;

    const Functions& functions() const noexcept { return m_library.functions(); }

private:
    Library m_library;
};

} // namespace zvsystem
