#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <list>
#include <string>

#include "platform/environment.h"
#include "platform/paths.h"

namespace zvgentl::test {

/// An empty folder for one test.
class TemporaryFolder {
public:
    TemporaryFolder() : m_path(platform::make_private_folder("zvgentl-test-")) {}
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::filesystem::path operator/(const char* name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

inline void write_text(const std::filesystem::path& file, const std::string& text)
{
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

inline std::string read_text(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// Sets an environment variable for one test.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const std::string& value)
        : m_name(name), m_previous(platform::environment(name))
    {
        platform::set_environment(name, value);
    }
    ~ScopedVariable() { platform::set_environment(m_name, m_previous); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const char* m_name;
    std::string m_previous;
};

/// A user of this system whose folders are elsewhere, for one test. The bodies are in one folder per system.
class UserFolders {
public:
    explicit UserFolders(const std::filesystem::path& home);

    /// Where this user keeps the settings of the producer.
    std::filesystem::path configuration() const;

private:
    std::filesystem::path m_home;
    std::list<ScopedVariable> m_variables;
};

/// Whether only the user that created the file has access to it.
bool is_for_its_owner_only(const std::filesystem::path& file);

} // namespace zvgentl::test
