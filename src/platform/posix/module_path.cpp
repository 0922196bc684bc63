#include "platform/module_path.h"

#include <climits>
#include <cstdlib>
#include <dlfcn.h>

namespace zvgentl::platform {

namespace {

constexpr size_t max_path = 260;

} // namespace

std::optional<std::string> module_path()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&module_path), &info) == 0 || info.dli_fname == nullptr)
        return std::nullopt;
    // The loader reports the name that it was given, which may be relative.
    char resolved[PATH_MAX];
    std::string path = realpath(info.dli_fname, resolved) != nullptr ? resolved : info.dli_fname;
    path.resize(path.size() < max_path ? path.size() : max_path);
    return path;
}

} // namespace zvgentl::platform
