#include "platform/DynamicLibrary.h"

#include <stdexcept>

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

} // namespace platform
