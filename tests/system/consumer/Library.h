#pragma once

#include <filesystem>

#include "system/consumer/Functions.h"

namespace zvsystem {

/// The producer's file, as a consumer loads it: by the dynamic loader, with its symbols kept to itself.
class Library {
public:
    /// Throws std::runtime_error with the loader's words when the file cannot be loaded.
    explicit Library(const std::filesystem::path& file) : m_library(load(file)), m_functions(m_library) {}
    /// Unloads it.
    ~Library() { dlclose(m_library); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    const Functions& functions() const noexcept { return m_functions; }

private:
    static void* load(const std::filesystem::path& file)
    {
        void* const library = dlopen(file.string().c_str(), RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
            throw std::runtime_error(
                dlerror()); // NOLINT(concurrency-mt-unsafe): the text is this thread's own
        return library;
    }

    void* m_library;
    Functions m_functions;
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
