#include <array>
#include <filesystem>
#include <string>

#include <dlfcn.h>

#include "system/fixture.h"

// TL_INFO_PATHNAME is the file that was loaded, whatever name it was loaded by.

using namespace GenTL;
using namespace zvsystem;

namespace {

namespace fs = std::filesystem;

class Path : public testing::Test {
protected:
    Path() : m_folder_before(fs::current_path()) { surroundings(); }
    ~Path() override { fs::current_path(m_folder_before); }

    static std::string path_of(const Library& library)
    {
        const Functions& gentl = library.functions();
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.GCInitLib());
        std::array<char, 1024> path{};
        size_t size = path.size();
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.GCGetInfo(TL_INFO_PATHNAME, &type, path.data(), &size));
        EXPECT_EQ(INFO_DATATYPE_STRING, type);
        EXPECT_EQ(std::string(path.data()).size() + 1, size);
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.GCCloseLib());
        return path.data();
    }

    const fs::path m_file{producer_file};

private:
    fs::path m_folder_before;
};

// The host may change its folder between loading and asking.
TEST_F(Path, IsAbsoluteAfterALoadByARelativePath)
{
    fs::current_path(m_file.parent_path());
    const Library library(".." / m_file.parent_path().filename() / m_file.filename());
    fs::current_path("/");
    EXPECT_EQ(m_file, path_of(library));
}

TEST_F(Path, IsThatOfTheFileBehindALink)
{
    const fs::path link = surroundings().folder() / "linked";
    fs::create_directory_symlink(m_file.parent_path(), link);
    const Library library(link / m_file.filename());
    EXPECT_EQ(m_file, path_of(library));
}

// Blanks, and letters outside ASCII.
TEST_F(Path, IsHandedOutByteForByte)
{
    const fs::path folder = surroundings().folder() / "ein Ordner für Bilder";
    fs::create_directories(folder);
    for (const auto* name : {"ZVGRLibGenTL.cti", ZV_GRABBER_LIBRARY, ZV_LOGGER_LIBRARY})
        fs::copy_file(m_file.parent_path() / name, folder / name);
    const fs::path copy = folder / m_file.filename();
    {
        const Library library(copy);
        EXPECT_EQ(fs::canonical(copy), path_of(library));
    }
    EXPECT_FALSE(is_mapped("ZVGRLibGenTL.cti"));
}

} // namespace
