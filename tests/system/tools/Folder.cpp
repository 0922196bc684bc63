#include "Folder.h"

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include <stdlib.h> // mkdtemp, which <cstdlib> does not have

namespace zvgentl::test {

namespace fs = std::filesystem;

Folder::Folder()
{
    std::string name = (fs::temp_directory_path() / "zvgentl-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("cannot create " + name);
    m_path = name;
}

Folder::~Folder()
{
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

void write_text(const fs::path& file, const std::string& text)
{
    std::ofstream(file, std::ios::binary) << text;
}

std::string read_text(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::size_t count_files(const fs::path& folder)
{
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

} // namespace zvgentl::test
