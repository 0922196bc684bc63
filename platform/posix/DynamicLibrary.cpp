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

} // namespace platform
