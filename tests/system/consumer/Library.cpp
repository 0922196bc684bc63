#include "system/consumer/Library.h"

#include <stdexcept>

#include <dlfcn.h>

namespace zvsystem {

namespace {

void* load(const std::filesystem::path& file)
{
    void* const library = dlopen(file.string().c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        throw std::runtime_error(dlerror()); // NOLINT(concurrency-mt-unsafe): the text is this thread's own
    return library;
}

} // namespace

Library::Library(const std::filesystem::path& file) : m_library(load(file)), m_functions(m_library) {}

Library::~Library() { dlclose(m_library); }

Producer::Producer(const std::filesystem::path& file) : m_library(file)
{
    check(functions().GCInitLib(), "GCInitLib");
}

Producer::~Producer() { functions().GCCloseLib(); }

} // namespace zvsystem
