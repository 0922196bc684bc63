#include "platform/paths.h"

#include <sys/stat.h>

#include "platform/folders.h"

namespace platform {

namespace {

bool is_folder(const std::string& path)
{
    struct stat state = {};
    return stat(path.c_str(), &state) == 0 && S_ISDIR(state.st_mode);
}

} // namespace

bool is_absolute(const std::string& path) { return !path.empty() && path.front() == '/'; }

std::string folder_of(const std::string& path)
{
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos)
        return {};
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string expand_home(const std::string& path)
{
    if (path.compare(0, 2, "~/") != 0)
        return path;
    const std::string home = home_folder().string();
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

} // namespace platform
