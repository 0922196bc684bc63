#include "simulator/Surroundings.h"

#include <cstdlib>

namespace zvsim {

namespace fs = std::filesystem;

namespace {

/// Empty unless the variable holds an absolute path.
fs::path folder_in(const char* variable)
{
    const fs::path path{environment_variable(variable)};
    return path.is_absolute() ? path : fs::path{};
}

} // namespace

std::string environment_variable(const char* name)
{
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nothing here changes it
    return value != nullptr ? value : "";
}

std::vector<fs::path> configuration_folders()
{
    std::vector<fs::path> folders;
    const fs::path chosen = folder_in("XDG_CONFIG_HOME");
    const fs::path home = folder_in("HOME");
    if (!chosen.empty())
        folders.push_back(chosen / "zvgentl");
    else if (!home.empty())
        folders.push_back(home / ".config" / "zvgentl");
    folders.push_back(fs::path{"/etc/zvgentl"});
    return folders;
}

} // namespace zvsim
