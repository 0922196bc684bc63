#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "logger/SettingsStore.h"
#include "unit/logger/Sandbox.h"

namespace fs = std::filesystem;
using platform::Replacement;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;
using ::testing::SizeIs;
using ::testing::StartsWith;
using zvlog::SettingsPlaces;
using zvlog::SettingsStore;

namespace {

class Settings : public ::testing::Test {
protected:
    std::uint32_t read_or_add(const std::string& key, std::uint32_t value)
    {
        return m_store.value_or_add(key, value, "");
    }

    std::string file() const { return m_places.chosen; }

    /// Puts a text of the same length into the same file, and restores its time.
    void edit_without_a_trace(const std::string& text)
    {
        ASSERT_EQ(text.size(), fs::file_size(file()));
        const auto before = fs::last_write_time(file());
        write_file(file(), text);
        fs::last_write_time(file(), before);
    }

    Folder m_folder;
    SettingsPlaces m_places{m_folder / "chosen.properties",
                            m_folder / "user/settings.properties",
                            m_folder / "system/settings.properties",
                            {}};
    std::vector<std::string> m_warnings;
    SettingsStore m_store{[this] { return m_places; },
                          [this](const std::string& text) { m_warnings.push_back(text); }};
};

TEST_F(Settings, ReadingAddsNothing)
{
    EXPECT_EQ(std::nullopt, m_store.value("a"));
    EXPECT_FALSE(is_there(file()));
    write_file(file(), "b = 1\n");
    EXPECT_EQ(std::nullopt, m_store.value("a"));
    EXPECT_THAT(m_store.value("b"), Optional(1u));
    EXPECT_EQ(1u, read_or_add("b", 4));
    EXPECT_EQ("b = 1\n", content_of(file()));
}

TEST_F(Settings, ThatAreFixedComeFirstAndAreNamedWhenTheyAreWrong)
{
    write_file(file(), "a = 1\nb = 2\n");
    EXPECT_EQ(1u, read_or_add("a", 4));
    m_places.fixed = "a = 3\nb = many";
    EXPECT_EQ(3u, read_or_add("a", 4));
    EXPECT_EQ(4u, read_or_add("b", 4));
    EXPECT_THAT(m_warnings, ElementsAre(HasSubstr("the setting b in ZV_SETTINGS_OVERRIDE is not")));
}

TEST_F(Settings, AnEditThatKeepsSizeAndTimeIsNoticed)
{
    write_file(file(), "a = 1\n");
    EXPECT_EQ(1u, read_or_add("a", 4));
    for (std::uint32_t value = 2; value < 10; ++value) {
        edit_without_a_trace("a = " + std::to_string(value) + "\n");
        EXPECT_EQ(value, read_or_add("a", 4));
        EXPECT_THAT(m_store.value("a"), Optional(value));
    }
}

TEST_F(Settings, AddingKeepsThePermissions)
{
    write_file(file(), "a = 1\n");
    fs::permissions(file(), fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    read_or_add("b", 1);
    EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read,
              fs::status(file()).permissions());
}

#ifndef _WIN32
TEST_F(Settings, AddingAsRootLeavesTheFileToItsOwner)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can take a file away from its owner";
    write_file(file(), "a = 1\n");
    ASSERT_EQ(0, chown(file().c_str(), 65534, 65534));
    read_or_add("b", 1);
    struct stat after = {};
    ASSERT_EQ(0, stat(file().c_str(), &after));
    EXPECT_EQ(65534u, after.st_uid);
    EXPECT_EQ(65534u, after.st_gid);
}
#endif

TEST_F(Settings, ReadingRemovesWhatAKilledProcessHasLeftBehind)
{
    write_file(file(), "a = 1\n");
    const std::string left = file() + ".2000000011-1f.new"; // of a process that has ended
    write_file(left, "a = 2\n");
    EXPECT_THAT(m_store.value("a"), Optional(1u));
    EXPECT_FALSE(is_there(left));
}

TEST_F(Settings, AddingFollowsLinksToAFileThatExistsOrNot)
{
    fs::create_symlink("second", file());
    fs::create_symlink(m_folder / "promised", m_folder / "second");
    read_or_add("a", 1);
    read_or_add("b", 2);
    EXPECT_TRUE(fs::is_symlink(file()));
    EXPECT_THAT(content_of(m_folder / "promised"), AllOf(HasSubstr("a = 1\n"), HasSubstr("b = 2\n")));
}

TEST_F(Settings, AddingLeavesNothingBehindButTheLockFile)
{
    read_or_add("a", 1);
    read_or_add("b", 1);
    EXPECT_THAT(names_in(m_folder.path()),
                ::testing::UnorderedElementsAre("chosen.properties", "chosen.properties.lock"));
}

TEST_F(Settings, AMalformedValueIsTheDefaultAndOneWarning)
{
    write_file(file(), "a = many\nb = -1\n");
    for (int read = 0; read < 3; ++read) {
        EXPECT_EQ(4u, read_or_add("a", 4));
        EXPECT_EQ(std::nullopt, m_store.value("a"));
    }
    EXPECT_THAT(m_warnings, ElementsAre(HasSubstr("'many'")));
    EXPECT_EQ(7u, read_or_add("b", 7));
    EXPECT_THAT(m_warnings, SizeIs(2));
    EXPECT_EQ("a = many\nb = -1\n", content_of(file()));
}

TEST_F(Settings, OnlyTheFirstFileIsReadOfTheChosenTheUsersAndTheSystems)
{
    write_file(m_places.system, "a = 3\nb = 4\n");
    EXPECT_EQ(3u, read_or_add("a", 0));
    write_file(m_places.user, "a = 2\n");
    EXPECT_EQ(2u, read_or_add("a", 0));
    write_file(m_places.chosen, "a = 1\n");
    EXPECT_EQ(1u, read_or_add("a", 0));
    EXPECT_EQ(std::nullopt, m_store.value("b"));
}

TEST_F(Settings, ANewFileTakesOverTheOneThatCountedBefore)
{
    m_places.chosen.clear();
    write_file(m_places.system, "# for all\na = 3\n");
    EXPECT_EQ(4u, read_or_add("b", 4));
    EXPECT_THAT(content_of(m_places.user), StartsWith("# for all\na = 3\n"));
    EXPECT_THAT(m_warnings, IsEmpty());
    EXPECT_EQ(3u, read_or_add("a", 0));
    EXPECT_EQ("# for all\na = 3\n", content_of(m_places.system));
}

TEST_F(Settings, AChosenFileThatDisappearsIsMadeAgain)
{
    read_or_add("a", 1);
    fs::remove(file());
    EXPECT_EQ(2u, read_or_add("a", 2));
    EXPECT_THAT(content_of(file()), HasSubstr("a = 2\n"));
}

TEST_F(Settings, AMissingFolderOrNoneWorksInMemoryWithOneWarning)
{
    const std::string missing = m_folder / "missing/settings.properties";
    for (const auto& [places, warning] : {std::pair{SettingsPlaces{missing, "", "", {}}, "kept in memory"},
                                          std::pair{SettingsPlaces{}, "no configuration folder"}}) {
        m_places = places;
        m_warnings.clear();
        SettingsStore store{[this] { return m_places; },
                            [this](const std::string& text) { m_warnings.push_back(text); }};
        EXPECT_EQ(4u, store.value_or_add("a", 4, ""));
        EXPECT_EQ(4u, store.value_or_add("a", 9, ""));
        EXPECT_EQ(5u, store.value_or_add("b", 5, ""));
        EXPECT_THAT(store.value("b"), Optional(5u));
        EXPECT_THAT(m_warnings, ElementsAre(HasSubstr(warning)));
    }
    EXPECT_FALSE(is_there(m_folder / "missing"));
}

TEST_F(Settings, AReadOnlyFolderWorksInMemoryWithOneWarning)
{
    write_file(m_folder / "locked/settings.properties", "a = 1\n");
    m_places.chosen = m_folder / "locked/settings.properties";
    fs::permissions(m_folder / "locked", static_cast<fs::perms>(0555));
    {
        const Unprivileged user;
        EXPECT_EQ(1u, read_or_add("a", 4));
        EXPECT_EQ(5u, read_or_add("b", 5));
        EXPECT_EQ(5u, read_or_add("b", 6));
        EXPECT_EQ(7u, read_or_add("c", 7));
    }
    EXPECT_EQ("a = 1\n", content_of(m_places.chosen));
    EXPECT_THAT(m_warnings, SizeIs(1));
    fs::permissions(m_folder / "locked", static_cast<fs::perms>(0755));
}

TEST_F(Settings, AValueInTheFileBeatsOneInMemory)
{
    m_places.chosen = m_folder / "later/settings.properties";
    EXPECT_EQ(4u, read_or_add("a", 4));
    write_file(m_places.chosen, "a = 8\n");
    EXPECT_EQ(8u, read_or_add("a", 4));
}

TEST_F(Settings, AFileThatMayNotBeReadIsLeftAlone)
{
    write_file(file(), "a = 1\n");
    fs::permissions(file(), fs::perms::none);
    fs::permissions(m_folder.path(), static_cast<fs::perms>(0777));
    {
        const Unprivileged user;
        EXPECT_EQ(4u, read_or_add("a", 4));
        EXPECT_EQ(5u, read_or_add("b", 5));
    }
    fs::permissions(file(), fs::perms::owner_all);
    EXPECT_EQ("a = 1\n", content_of(file()));
    EXPECT_THAT(m_warnings, ElementsAre(HasSubstr("cannot be read"), HasSubstr("kept in memory")));
}

TEST_F(Settings, WhatIsNotAFileIsLeftAlone)
{
    ASSERT_EQ(0, mkfifo(file().c_str(), 0666));
    EXPECT_EQ(4u, read_or_add("a", 4));
    EXPECT_TRUE(fs::is_fifo(file()));
    EXPECT_THAT(m_warnings, ElementsAre(HasSubstr("not a regular file"), HasSubstr("kept in memory")));
}

TEST_F(Settings, ARelativeChosenFileIsRefusedWithOneWarning)
{
    const auto old_folder = fs::current_path();
    fs::current_path(m_folder.path());
    write_file(m_folder / "relative.properties", "a = 1\n");
    m_places.chosen = "relative.properties";
    EXPECT_EQ(4u, read_or_add("a", 4));
    EXPECT_EQ(4u, read_or_add("a", 4));
    fs::current_path(old_folder);
    EXPECT_EQ("a = 1\n", content_of(m_folder / "relative.properties"));
    EXPECT_THAT(content_of(m_places.user), HasSubstr("a = 4\n"));
    EXPECT_THAT(m_warnings, ElementsAre(HasSubstr("not an absolute path")));
}

TEST_F(Settings, AKeyThatNoFileCanHoldIsItsDefault)
{
    for (const char* const key : {"", "a=b", "#a", "a\nb"})
        EXPECT_EQ(4u, read_or_add(key, 4));
    EXPECT_FALSE(is_there(file()));
}

// An editor knows nothing of the store's lock: an edit must survive if it comes after the store has read the
// file and before it replaces it.
struct Edit {
    const char* name;
    const char* before; // empty: the file does not exist
    void (*edit)(const std::string& file);
    Replacement replacement;
    const char* after; // as before
};

class EditedFile : public ::testing::TestWithParam<Edit> {};

TEST_P(EditedFile, IsReplacedOnlyIfNobodyTouchedIt)
{
    const Folder folder;
    const std::string file = folder / "settings.properties";
    const std::string before = GetParam().before;
    if (!before.empty())
        write_file(file, before);
    const auto seen = platform::read_file(file);
    GetParam().edit(file);
    std::string reason;
    EXPECT_EQ(GetParam().replacement,
              platform::replace_file(file, seen, "a = 1\nb = 2\n", platform::Flush::first, reason));
    EXPECT_EQ(GetParam().after, content_of(file));
    EXPECT_THAT(names_in(folder.path()), SizeIs(*GetParam().after == '\0' ? 0 : 1));
}

void write_three(const std::string& file) { write_file(file, "a = 3\n"); }

INSTANTIATE_TEST_SUITE_P(
    All, EditedFile,
    ::testing::Values(Edit{"Untouched", "a = 1\n", [](const std::string&) {}, Replacement::done,
                           "a = 1\nb = 2\n"},
                      Edit{"Written", "a = 1\n", write_three, Replacement::outdated, "a = 3\n"},
                      Edit{"Replaced", "a = 1\n",
                           [](const std::string& file) {
                               write_three(file + ".new");
                               fs::rename(file + ".new", file);
                           },
                           Replacement::outdated, "a = 3\n"},
                      Edit{"Made", "", write_three, Replacement::outdated, "a = 3\n"},
                      Edit{"Deleted", "a = 1\n", [](const std::string& file) { fs::remove(file); },
                           Replacement::outdated, ""}),
    [](const auto& test) { return test.param.name; });

} // namespace
