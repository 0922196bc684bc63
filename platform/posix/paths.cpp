#include "platform/paths.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include <sys/stat.h>

#include "platform/environment.h"
#include "platform/process.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

bool is_folder(const std::string& path)
{
    struct stat state = {};
    return stat(path.c_str(), &state) == 0 && S_ISDIR(state.st_mode);
}

fs::path product_folder(const char* variable, const char* below_home)
{
    const fs::path chosen = environment(variable);
    if (chosen.is_absolute())
        return chosen / "zvgentl";
    const fs::path home = home_folder();
    return home.empty() ? fs::path() : home / below_home / "zvgentl";
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

fs::path home_folder()
{
    const fs::path home = environment("HOME");
    std::error_code error; // a folder that cannot be looked at is none
    return home.is_absolute() && fs::is_directory(home, error) ? home : fs::path();
}

fs::path user_configuration_folder() { return product_folder("XDG_CONFIG_HOME", ".config"); }

fs::path machine_configuration_folder() { return "/etc/zvgentl"; }

std::vector<const char*> configuration_variables() { return {"XDG_CONFIG_HOME", "HOME"}; }

fs::path user_state_folder() { return product_folder("XDG_STATE_HOME", ".local/state"); }

fs::path program_folder() { return fs::read_symlink("/proc/self/exe").parent_path(); }

fs::path make_private_folder(const std::string& prefix)
{
    std::string name =
        (fs::temp_directory_path() / (prefix + std::to_string(process_id()) + "-XXXXXX")).string();
    if (mkdtemp(name.data()) == nullptr)
        throw std::system_error(errno, std::generic_category(), "cannot create the folder " + name);
    return name;
}

} // namespace platform
