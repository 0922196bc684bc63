#include "platform/DynamicLibrary.h"

#include <stdexcept>

#include <dlfcn.h>

namespace platform {

DynamicLibrary::DynamicLibrary(const std::filesystem::path& file)
    // An absolute path, because a bare name would be looked for in the system's library folders.
    : m_library(dlopen(std::filesystem::absolute(file).c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (m_library == nullptr)
        throw std::runtime_error(dlerror()); // NOLINT(concurrency-mt-unsafe): the text is kept per thread
}

DynamicLibrary::~DynamicLibrary() { dlclose(m_library); }

void* DynamicLibrary::find(const char* symbol) const noexcept { return dlsym(m_library, symbol); }

void* DynamicLibrary::find_in(const char* /*needed*/, const char* symbol) const noexcept
{
    return find(symbol); // which searches those that it needs as well
}

void* find_needed(const char* /*library*/, const char* symbol) noexcept
{
    return dlsym(RTLD_DEFAULT, symbol);
}

} // namespace platform
