#pragma once

#include <filesystem>

#include "system/consumer/Functions.h"

namespace zvsystem {

/// The producer's file, as a consumer loads it: by the dynamic loader, with its symbols kept to itself.
class Library {
public:
    /// Throws std::runtime_error with the loader's words when the file cannot be loaded.
    explicit Library(const std::filesystem::path& file);
    /// Unloads it.
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    const Functions& functions() const noexcept { return m_functions; }

private:
    void* m_library;
    Functions m_functions;
};

/// A loaded and initialised producer.
class Producer {
public:
    explicit Producer(const std::filesystem::path& file);
    /// Ends it, whatever is still open, and unloads it.
    ~Producer();
    Producer(const Producer&) = delete;
    Producer& operator=(const Producer&) = delete;

    const Functions& functions() const noexcept { return m_library.functions(); }

private:
    Library m_library;
};

} // namespace zvsystem
