#include "platform/DynamicLibrary.h"

#include <stdexcept>
#include <string>

#include <windows.h>

#include "platform/library_file.h"
#include "platform/win32/wide.h"

namespace platform {

namespace {

std::string in_words(DWORD error)
{
    switch (error) {
    case ERROR_MOD_NOT_FOUND:
        return "a library that it needs is missing";
    case ERROR_PROC_NOT_FOUND:
        return "a library that it needs lacks a function";
    default:
        return describe_error(error);
    }
}

} // namespace

const char* own_system() noexcept { return "Windows"; }

DynamicLibrary::DynamicLibrary(const std::filesystem::path& file)
    // By its full path, so that its own folder is searched for the libraries that it needs in turn.
    : m_library(LoadLibraryExW(std::filesystem::absolute(file).make_preferred().c_str(), nullptr,
                               LOAD_WITH_ALTERED_SEARCH_PATH))
{
    if (m_library != nullptr)
        return;
    const DWORD error = GetLastError();
    const std::string problem = problem_of_library(file);
    throw std::runtime_error(problem.empty() ? in_words(error) : problem); // names no file: callers do
}

DynamicLibrary::~DynamicLibrary() { FreeLibrary(static_cast<HMODULE>(m_library)); }

void* DynamicLibrary::find(const char* symbol) const noexcept
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(m_library), symbol));
}

void* DynamicLibrary::find_in(const char* needed, const char* symbol) const noexcept
{
    return find_needed(needed, symbol);
}

void* find_needed(const char* library, const char* symbol) noexcept
try {
    HMODULE const module = GetModuleHandleA((std::string(library) + ".dll").c_str());
    return module == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(module, symbol));
} catch (...) { // out of memory
    return nullptr;
}

} // namespace platform
