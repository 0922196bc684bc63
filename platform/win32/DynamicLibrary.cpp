#include "platform/DynamicLibrary.h"

#include <stdexcept>
#include <string>

#include <windows.h>

#include "platform/win32/wide.h"

namespace platform {

DynamicLibrary::DynamicLibrary(const std::filesystem::path& file)
    // By its full path, so that its own folder is searched for the libraries that it needs in turn.
    : m_library(LoadLibraryExW(std::filesystem::absolute(file).make_preferred().c_str(), nullptr,
                               LOAD_WITH_ALTERED_SEARCH_PATH))
{
    if (m_library == nullptr)
        throw std::runtime_error(describe_error(GetLastError())); // names no file: callers do
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
