#include "unit/logger/Sandbox.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

#include <unistd.h>

#include "platform/environment.h"
#include "platform/paths.h"

namespace fs = std::filesystem;

Folder::Folder() : m_path(platform::make_private_folder("zvlogger-").generic_string())
{
    fs::permissions(m_path, static_cast<fs::perms>(0755)); // for tests that give up the rights of root
}

// Entry by entry: on Windows a log that is still open stays until it is closed, and remove_all would wait for
// that.
Folder::~Folder()
{
    std::vector<fs::path> entries{m_path};
    std::error_code ignored;
    for (const auto& entry : fs::recursive_directory_iterator{m_path, ignored})
        entries.push_back(entry.path());
    std::for_each(entries.rbegin(), entries.rend(), [&](const fs::path& path) { fs::remove(path, ignored); });
}

Environment::~Environment()
{
    for (const auto& [name, value] : m_old)
        platform::set_environment(name.c_str(), value);
}

void Environment::set(const std::string& name, const std::string& value)
{
    m_old.emplace(name, platform::environment(name.c_str()));
    platform::set_environment(name.c_str(), value);
}

void Environment::set_home(const std::string& folder)
{
    set("HOME", folder);
    set("USERPROFILE", folder);
}

void Environment::unset(const std::string& name) { set(name, ""); }

EmptyHome::EmptyHome()
{
    environment.set_home(folder.path());
#ifdef _WIN32
    environment.set("APPDATA", folder / ".config");
    environment.set("LOCALAPPDATA", folder / ".local/state");
#endif
    for (const char* const name :
         {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "ZV_LOGGER_CONFIG", "ZV_SETTINGS_FILE"})
        environment.unset(name);
}

#ifndef _WIN32
Unprivileged::Unprivileged() : m_was_root(geteuid() == 0)
{
    constexpr uid_t nobody = 65534;
    if (m_was_root && seteuid(nobody) != 0)
        throw std::runtime_error("cannot give up the rights of root");
}

Unprivileged::~Unprivileged()
{
    if (m_was_root && seteuid(0) != 0)
        std::abort();
}
#else
// Tests that need it are left out.
Unprivileged::Unprivileged() : m_was_root(false) { throw std::runtime_error("no rights to give up here"); }

Unprivileged::~Unprivileged() = default;
#endif

std::string content_of(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::vector<std::string> lines_of(const std::string& path)
{
    std::istringstream text(content_of(path));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

void write_file(const std::string& path, const std::string& text)
{
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    if (!file.flush())
        throw std::runtime_error("cannot write " + path);
}

bool is_there(const std::string& path) { return fs::exists(fs::symlink_status(path)); }

std::vector<std::string> names_in(const std::string& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    return names;
}

std::size_t count_of(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}
