#include "platform/module_path.h"

#include <climits>
#include <cstdlib>
#include <dlfcn.h>

namespace zvgentl::platform {

namespace {

constexpr size_t max_path = 260;

std::optional<std::string> find_path()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&module_path), &info) == 0 || info.dli_fname == nullptr)
        return std::nullopt;
    char resolved[PATH_MAX];
    std::string path = realpath(info.dli_fname, resolved) != nullptr ? resolved : info.dli_fname;
    path.resize(path.size() < max_path ? path.size() : max_path);
    return path;
}

// Found while the library is being loaded: the loader reports the name that it was given, which may be
// relative to a folder that the process leaves later.
const std::optional<std::string> path_at_load = find_path();

} // namespace

std::optional<std::string> module_path() { return path_at_load; }

} // namespace zvgentl::platform
