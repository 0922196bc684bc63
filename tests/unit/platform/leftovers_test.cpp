#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <system_error>

#include <gtest/gtest.h>

#include "platform/files.h"
#include "platform/leftovers.h"
#include "platform/paths.h"
#include "platform/process.h"

namespace {

namespace fs = std::filesystem;

const std::string ended = "2000000011"; // more than systems give to a process

class Leftovers : public ::testing::Test {
protected:
    Leftovers() : m_folder(platform::make_private_folder("zvgentl-leftovers-")) {}
    ~Leftovers() override
    {
        std::error_code ignored;
        fs::remove_all(m_folder, ignored);
    }

    void make(const std::string& name) const { std::ofstream(m_folder / name) << "x"; }

    std::set<std::string> names() const
    {
        std::set<std::string> found;
        for (const auto& entry : fs::directory_iterator(m_folder))
            found.insert(entry.path().filename().u8string());
        return found;
    }

    const fs::path m_folder;
};

TEST_F(Leftovers, OfProcessesThatHaveEndedAreRemoved)
{
    const std::set<std::string> others{"a." + std::to_string(platform::process_id()) +
                                           "-1.new",          // this process works
                                       "a." + ended + ".new", // no working name
                                       "a." + ended + "x.new",
                                       "a.-1.new",
                                       "a.99999999999999-1.new",
                                       "b." + ended + "-1.new",
                                       "a." + ended + "-1.old",
                                       "a"};
    for (const auto& name : others)
        make(name);
    make("a." + ended + "-1f.new");
    make("a." + ended + ".0.new"); // as earlier versions named them
    fs::create_directory(m_folder / ("a." + ended + "-2.new"));
    make("a." + ended + "-2.new/inside");
    platform::remove_leftovers(m_folder, "a.", ".new");
    EXPECT_EQ(others, names());
}

TEST_F(Leftovers, OfAFolderThatIsMissingAreNone)
{
    platform::remove_leftovers(m_folder / "missing", "a.", ".new");
}

TEST_F(Leftovers, HaveNamesOfTheirOwn)
{
    std::set<std::string> found;
    for (int i = 0; i < 100; ++i)
        found.insert(platform::working_name("a.", ".new"));
    EXPECT_EQ(100u, found.size());
    const std::string start = "a." + std::to_string(platform::process_id()) + "-";
    EXPECT_EQ(start, found.begin()->substr(0, start.size()));
}

TEST_F(Leftovers, AFileIsOnlyCreatedWhereThereIsNothing)
{
    const fs::path file = m_folder / "file";
    std::FILE* const created = platform::create_file(file, platform::Readers::usual);
    ASSERT_NE(nullptr, created);
    EXPECT_EQ(2u, std::fwrite("ab", 1, 2, created));
    EXPECT_EQ(2, platform::place_in(created));
    EXPECT_TRUE(platform::seek(created, 1, SEEK_SET));
    EXPECT_EQ('b', std::fgetc(created));
    std::fclose(created);
    EXPECT_EQ(nullptr, platform::create_file(file, platform::Readers::usual));
    EXPECT_EQ(2u, fs::file_size(file));
}

TEST(Process, KnowsWhichProcessesRun)
{
    EXPECT_TRUE(platform::is_running(platform::process_id()));
    for (const std::uint32_t other : {0u, 2000000011u, 0xFFFFFFFEu, 0xFFFFFFFFu})
        EXPECT_FALSE(platform::is_running(other)) << other;
}

} // namespace
