#include "platform/folders.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "platform/environment.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

fs::path product_folder(const char* variable, const char* below_home)
{
    const fs::path chosen = environment(variable);
    if (chosen.is_absolute())
        return chosen / "zvgentl";
    const fs::path home = home_folder();
    return home.empty() ? fs::path() : home / below_home / "zvgentl";
}

} // namespace

fs::path home_folder()
{
    const fs::path home = environment("HOME");
    std::error_code error; // a folder that cannot be looked at is none
    return home.is_absolute() && fs::is_directory(home, error) ? home : fs::path();
}

fs::path user_configuration_folder() { return product_folder("XDG_CONFIG_HOME", ".config"); }

fs::path machine_configuration_folder() { return "/etc/zvgentl"; }

fs::path user_state_folder() { return product_folder("XDG_STATE_HOME", ".local/state"); }

fs::path program_folder() { return fs::read_symlink("/proc/self/exe").parent_path(); }

fs::path make_private_folder(const std::string& prefix)
{
    std::string name = (fs::temp_directory_path() / (prefix + "XXXXXX")).string();
    if (mkdtemp(name.data()) == nullptr)
        throw std::system_error(errno, std::generic_category(), "cannot create the folder " + name);
    return name;
}

} // namespace platform
