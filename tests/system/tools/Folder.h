#pragma once

#include <filesystem>
#include <string>

namespace zvgentl::test {

/// An empty folder for one test.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::filesystem::path operator/(const char* name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

void write_text(const std::filesystem::path& file, const std::string& text);
std::string read_text(const std::filesystem::path& file);
std::size_t count_files(const std::filesystem::path& folder);

} // namespace zvgentl::test
