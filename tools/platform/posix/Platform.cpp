#include "platform/Platform.h"

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include <dlfcn.h>
#include <unistd.h>

namespace zvgentl::tool {

const char path_list_separator = ':';

DynamicLibrary::DynamicLibrary(const std::filesystem::path& file)
    // An absolute path, because a bare name would be looked for in the system's library folders.
    : m_library(dlopen(std::filesystem::absolute(file).c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (m_library == nullptr)
        throw std::runtime_error(dlerror()); // NOLINT(concurrency-mt-unsafe): the text is kept per thread
}

DynamicLibrary::~DynamicLibrary() { dlclose(m_library); }

void* DynamicLibrary::find(const char* symbol) const noexcept { return dlsym(m_library, symbol); }

std::filesystem::path program_folder()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

std::filesystem::path user_configuration_folder()
{
    const std::filesystem::path chosen = environment("XDG_CONFIG_HOME");
    if (chosen.is_absolute())
        return chosen / "zvgentl";
    const std::filesystem::path home = environment("HOME");
    return home.is_absolute() ? home / ".config" / "zvgentl" : std::filesystem::path();
}

std::filesystem::path machine_configuration_folder() { return "/etc/zvgentl"; }

std::string environment(const char* name)
{
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): set before threads start
    return value == nullptr ? std::string() : value;
}

void set_environment(const char* name, const std::string& value)
{
    if (value.empty())
        unsetenv(name); // NOLINT(concurrency-mt-unsafe): see above
    else
        setenv(name, value.c_str(), 1); // NOLINT(concurrency-mt-unsafe): see above
}

std::filesystem::path make_private_folder(const std::string& prefix)
{
    std::string name = (std::filesystem::temp_directory_path() / (prefix + "XXXXXX")).string();
    if (mkdtemp(name.data()) == nullptr)
        throw std::system_error(errno, std::generic_category(), "cannot create the folder " + name);
    return name;
}

bool is_terminal(std::FILE* stream) noexcept { return isatty(fileno(stream)) != 0; }

void keep_bytes(std::FILE* /*stream*/) noexcept {}

} // namespace zvgentl::tool
