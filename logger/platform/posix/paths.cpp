#include "logger/platform/paths.h"

#include <cstdlib>

#include <sys/stat.h>

namespace zvlog::platform {

namespace {

constexpr const char* product = "/zvgentl";

bool is_folder(const std::string& path)
{
    struct stat state = {};
    return stat(path.c_str(), &state) == 0 && S_ISDIR(state.st_mode);
}

// An account without a home often names one that does not exist; it must not be brought into being.
std::string home_folder()
{
    const std::string home = environment("HOME");
    return is_absolute(home) && is_folder(home) ? home : std::string();
}

std::string base_folder(const char* variable, const char* below_home)
{
    const std::string chosen = environment(variable);
    if (is_absolute(chosen))
        return chosen + product;
    const std::string home = home_folder();
    return home.empty() ? std::string() : home + below_home + product;
}

} // namespace

std::string environment(const char* name)
{
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nothing here sets one
    return value == nullptr ? std::string() : std::string(value);
}

bool is_absolute(const std::string& path) { return !path.empty() && path.front() == '/'; }

std::string user_config_folder() { return base_folder("XDG_CONFIG_HOME", "/.config"); }

std::string system_config_folder() { return std::string("/etc") + product; }

std::string user_state_folder() { return base_folder("XDG_STATE_HOME", "/.local/state"); }

std::string expand_home(const std::string& path)
{
    if (path.compare(0, 2, "~/") != 0)
        return path;
    const std::string home = home_folder();
    return home.empty() ? std::string() : home + path.substr(1);
}

bool make_folders(const std::string& folder)
{
    if (folder.empty() || is_folder(folder))
        return !folder.empty();
    if (!make_folders(folder_of(folder)))
        return false;
    return mkdir(folder.c_str(), 0700) == 0 || is_folder(folder);
}

std::string folder_of(const std::string& path)
{
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos)
        return {};
    return slash == 0 ? "/" : path.substr(0, slash);
}

} // namespace zvlog::platform
