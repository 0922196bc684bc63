#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "logger/SettingsStore.h"
#include "unit/logger/Sandbox.h"

// When the store reads a file again, and when it goes by what it has read.

namespace fs = std::filesystem;
using platform::FileStamp;
using platform::FileState;
using ::testing::HasSubstr;
using ::testing::Optional;
using zvlog::SettingsFiles;
using zvlog::SettingsPlaces;
using zvlog::SettingsStore;

namespace {

class SettingsCopy : public ::testing::Test {
protected:
    SettingsCopy()
    {
        m_places.chosen = m_folder / "chosen.properties";
        m_places.user = m_folder / "user.properties";
        m_places.system = m_folder / "system.properties";
    }

    platform::FileContent read(const std::string& path)
    {
        ++m_reads;
        platform::FileContent content = platform::read_file(path);
        if (m_settled)
            content.is_settled = *m_settled && content.state == FileState::present;
        return content;
    }

    std::string file() const { return m_places.chosen; }

    /// Puts another text of the same length into the same file and restores its time of modification.
    void edit_in_place(const std::string& text)
    {
        const auto before = fs::last_write_time(file());
        ASSERT_EQ(text.size(), fs::file_size(file()));
        write_file(file(), text);
        fs::last_write_time(file(), before);
    }

    /// Puts another file in its place that has the same length and the same time of modification.
    void replace(const std::string& text)
    {
        ASSERT_EQ(text.size(), fs::file_size(file()));
        write_file(file() + ".new", text);
        fs::last_write_time(file() + ".new", fs::last_write_time(file()));
        fs::rename(file() + ".new", file());
    }

    /// Reads until the file's stamp is old enough. False if this file system's stamps are not trusted.
    bool wait_until_settled()
    {
        for (int look = 0; look < 1000000; ++look) {
            if (platform::read_file(file()).is_settled)
                return true;
        }
        return false;
    }

    Folder m_folder;
    SettingsPlaces m_places;
    std::optional<bool> m_settled{true}; // nothing: as it is
    int m_reads{0};
    std::function<FileStamp(const std::string&)> m_stamp{platform::stamp_of};
    std::vector<std::string> m_warnings;
    SettingsStore m_store{[this] { return m_places; },
                          [this](const std::string& text) { m_warnings.push_back(text); },
                          SettingsFiles{[this](const std::string& path) { return read(path); },
                                        [this](const std::string& path) { return m_stamp(path); }}};
};

TEST_F(SettingsCopy, ASettledFileIsReadOnce)
{
    write_file(file(), "a = 1\nb = 2\nc = x\n");
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(1u, m_store.value_or_add("a", 9, ""));
        EXPECT_THAT(m_store.value("b"), Optional(2u));
        EXPECT_EQ(9u, m_store.value_or_add("c", 9, ""));
        EXPECT_EQ(std::nullopt, m_store.value("d"));
    }
    EXPECT_EQ(1, m_reads);
    EXPECT_THAT(m_warnings, ::testing::ElementsAre(HasSubstr("'x'")));
}

TEST_F(SettingsCopy, AFileThatIsNotSettledIsReadAtEveryCallWhateverItsStamp)
{
    m_settled = false;
    write_file(file(), "a = 1\n");
    const FileStamp first = platform::stamp_of(file());
    m_stamp = [&](const std::string&) { return first; };
    for (std::uint32_t value = 2; value < 10; ++value) {
        edit_in_place("a = " + std::to_string(value) + "\n");
        EXPECT_EQ(value, m_store.value_or_add("a", 0, ""));
        EXPECT_THAT(m_store.value("a"), Optional(value));
    }
    EXPECT_EQ(16, m_reads);
}

struct Difference {
    const char* name;
    void (*make)(FileStamp& stamp);
};

class DifferentStamp : public SettingsCopy, public ::testing::WithParamInterface<Difference> {};

TEST_P(DifferentStamp, MakesTheStoreReadAgain)
{
    write_file(file(), "a = 1\n");
    FileStamp shown = platform::stamp_of(file());
    m_stamp = [&](const std::string&) { return shown; };
    m_store.value("a");
    write_file(file(), "a = 2\n");
    EXPECT_THAT(m_store.value("a"), Optional(1u)) << "the stamp alone counts";
    GetParam().make(shown);
    EXPECT_THAT(m_store.value("a"), Optional(2u));
}

INSTANTIATE_TEST_SUITE_P(Each, DifferentStamp,
                         ::testing::Values(Difference{"Device", [](FileStamp& stamp) { ++stamp.device; }},
                                           Difference{"Node", [](FileStamp& stamp) { ++stamp.node; }},
                                           Difference{"Size", [](FileStamp& stamp) { ++stamp.size; }},
                                           Difference{"Modified", [](FileStamp& stamp) { ++stamp.modified; }},
                                           Difference{"Changed", [](FileStamp& stamp) { ++stamp.changed; }}),
                         [](const auto& test) { return test.param.name; });

TEST_F(SettingsCopy, AReplacedFileIsReadEvenIfSizeAndTimeStayTheSame)
{
    write_file(file(), "a = 1\n");
    m_store.value("a");
    for (std::uint32_t value = 2; value < 10; ++value) {
        replace("a = " + std::to_string(value) + "\n");
        EXPECT_THAT(m_store.value("a"), Optional(value));
    }
    EXPECT_EQ(9, m_reads);
}

TEST_F(SettingsCopy, AnEditOfASettledFileIsNoticedEvenIfSizeAndTimeStayTheSame)
{
    m_settled.reset();
    write_file(file(), "a = 1\n");
    for (std::uint32_t value = 2; value < 6; ++value) {
        if (!wait_until_settled())
            GTEST_SKIP() << "needs a file system whose stamps are trusted";
        EXPECT_THAT(m_store.value("a"), Optional(value - 1));
        const int reads = m_reads;
        EXPECT_THAT(m_store.value("a"), Optional(value - 1));
        EXPECT_EQ(reads, m_reads);
        edit_in_place("a = " + std::to_string(value) + "\n");
        EXPECT_THAT(m_store.value("a"), Optional(value));
        replace("a = " + std::to_string(value + 1) + "\n");
        EXPECT_THAT(m_store.value("a"), Optional(value + 1));
        edit_in_place("a = " + std::to_string(value) + "\n");
        EXPECT_THAT(m_store.value("a"), Optional(value));
    }
}

#ifndef _WIN32
// Its files have stamps that say nothing about their content.
TEST_F(SettingsCopy, AFileOfAFileSystemWithoutStampsIsNeverSettled)
{
    platform::read_file("/proc/version");
    write_file(file(), "a = 1\n");
    if (!wait_until_settled())
        GTEST_SKIP() << "needs a file system whose stamps are trusted";
    const auto content = platform::read_file("/proc/version");
    EXPECT_EQ(FileState::present, content.state);
    EXPECT_FALSE(content.is_settled);
}
#endif

TEST_F(SettingsCopy, ADefaultIsWrittenAndThenReadFromTheFile)
{
    write_file(file(), "a = 1\n");
    EXPECT_EQ(1u, m_store.value_or_add("a", 9, ""));
    EXPECT_EQ(5u, m_store.value_or_add("b", 5, ""));
    EXPECT_THAT(content_of(file()), HasSubstr("b = 5\n"));
    EXPECT_EQ(5u, m_store.value_or_add("b", 7, ""));
    fs::remove(file());
    EXPECT_EQ(7u, m_store.value_or_add("b", 7, ""));
    EXPECT_THAT(content_of(file()), HasSubstr("b = 7\n"));
}

TEST_F(SettingsCopy, AFileThatComesFirstIsReadAsSoonAsItIsThere)
{
    write_file(m_places.system, "a = 3\n");
    EXPECT_THAT(m_store.value("a"), Optional(3u));
    write_file(m_places.user, "a = 2\n");
    EXPECT_THAT(m_store.value("a"), Optional(2u));
    write_file(m_places.chosen, "a = 1\n");
    EXPECT_THAT(m_store.value("a"), Optional(1u));
    fs::remove(m_places.chosen);
    EXPECT_THAT(m_store.value("a"), Optional(2u));
    const int reads = m_reads;
    EXPECT_THAT(m_store.value("a"), Optional(2u));
    EXPECT_EQ(reads, m_reads);
}

TEST_F(SettingsCopy, AFileThatComesFirstAndCannotBeReadIsNotPassedOver)
{
    write_file(m_places.user, "a = 2\n");
    EXPECT_THAT(m_store.value("a"), Optional(2u));
    fs::create_directory(m_places.chosen);
    EXPECT_EQ(std::nullopt, m_store.value("a"));
    EXPECT_THAT(m_warnings, ::testing::ElementsAre(HasSubstr("not a regular file")));
}

TEST_F(SettingsCopy, AFolderOfTheUserThatAppearsIsNoticed)
{
    m_places.chosen.clear();
    const std::string user = std::exchange(m_places.user, "");
    write_file(m_places.system, "a = 3\n");
    EXPECT_THAT(m_store.value("a"), Optional(3u));
    m_places.user = user;
    write_file(user, "a = 2\n");
    EXPECT_THAT(m_store.value("a"), Optional(2u));
}

TEST_F(SettingsCopy, TheEnvironmentIsFollowedAtEveryCall)
{
    EmptyHome home;
    SettingsStore store{zvlog::settings_places, [](const std::string&) {},
                        SettingsFiles{[this](const std::string& path) { return read(path); }}};
    write_file(home.user_settings(), "a = 1\n");
    EXPECT_THAT(store.value("a"), Optional(1u));
    EXPECT_THAT(store.value("a"), Optional(1u));
    EXPECT_EQ(1, m_reads);

    write_file(m_folder / "named", "a = 2\n");
    home.environment.set("ZV_SETTINGS_FILE", m_folder / "named");
    EXPECT_THAT(store.value("a"), Optional(2u));
    home.environment.unset("ZV_SETTINGS_FILE");
    EXPECT_THAT(store.value("a"), Optional(1u));

    const Folder other;
    const std::string there = other.path() + home.user_settings().substr(home.folder.path().size());
    write_file(there, "a = 3\n");
    home.environment.set_home(other.path());
#ifdef _WIN32
    home.environment.set("APPDATA", other / ".config");
#endif
    EXPECT_THAT(store.value("a"), Optional(3u));
}

class FlushedSettings : public SettingsCopy {
protected:
    SettingsStore m_flushing{
        [this] { return m_places; }, [](const std::string&) {},
        SettingsFiles{platform::read_file, platform::stamp_of,
                      [this](const std::string& path, const platform::FileContent& seen,
                             const std::string& text, platform::Flush flush, std::string& reason) {
                          m_flushes.push_back(flush);
                          return platform::replace_file(path, seen, text, flush, reason);
                      }}};
    std::vector<platform::Flush> m_flushes;
};

using platform::Flush;

TEST_F(FlushedSettings, AreNotBeforePeopleHaveEditedThem)
{
    m_flushing.value_or_add("a", 1, "");
    m_flushing.value_or_add("b", 1, "");
    write_file(file(), content_of(file()) + "# mine\n");
    m_flushing.value_or_add("c", 1, "");
    m_flushing.value_or_add("d", 1, "");
    EXPECT_THAT(m_flushes, ::testing::ElementsAre(Flush::later, Flush::later, Flush::first, Flush::first));
}

TEST_F(FlushedSettings, AreIfTheyContainThoseOfTheSystem)
{
    write_file(m_places.system, "a = 3\n");
    m_flushing.value_or_add("b", 1, "");
    m_flushing.value_or_add("c", 1, "");
    EXPECT_THAT(m_flushes, ::testing::ElementsAre(Flush::first, Flush::first));
}

TEST_F(FlushedSettings, AreIfTheyWereThereBefore)
{
    write_file(file(), "a = 3\n");
    m_flushing.value_or_add("b", 1, "");
    EXPECT_THAT(m_flushes, ::testing::ElementsAre(Flush::first));
}

TEST(EnvironmentCopy, IsCurrentUntilAVariableChangesComesOrGoes)
{
    Environment environment;
    environment.set("ZV_TEST_SET", "1");
    environment.unset("ZV_TEST_UNSET");
    const auto copy = [] { return platform::EnvironmentCopy({"ZV_TEST_SET", "ZV_TEST_UNSET"}); };
    EXPECT_TRUE(platform::EnvironmentCopy().is_current());

    const auto first = copy();
    EXPECT_TRUE(first.is_current());
    environment.set("ZV_TEST_SET", "2");
    EXPECT_FALSE(first.is_current());

    const auto second = copy();
    EXPECT_TRUE(second.is_current());
    environment.set("ZV_TEST_UNSET", "1");
    EXPECT_FALSE(second.is_current());

    const auto third = copy();
    EXPECT_TRUE(third.is_current());
    environment.unset("ZV_TEST_SET");
    EXPECT_FALSE(third.is_current());
}

#ifndef _WIN32
TEST(EnvironmentCopy, NoticesAValueThatIsOverwrittenWhereItIs)
{
    static char variable[] = "ZV_TEST_OWNED=1";
    ASSERT_EQ(0, putenv(variable));
    const platform::EnvironmentCopy copy({"ZV_TEST_OWNED"});
    EXPECT_TRUE(copy.is_current());
    variable[sizeof variable - 2] = '2';
    EXPECT_FALSE(copy.is_current());
    unsetenv("ZV_TEST_OWNED");
}
#endif

// The clock and the stamp in milliseconds; the clock of stamps may tick every 10 ms only.
struct Age {
    const char* name;
    std::int64_t changed;
    std::int64_t now;
    bool is_settled;
};

constexpr Age ages[] = {
    {"just now", 5001, 5001, false},
    {"one tick ago", 5001, 5011, false},
    {"two ticks ago", 5001, 5021, false},
    {"long ago", 5001, 5022, true},
    {"years ago", 5001, 99999999, true},
    {"in the future", 5001, 4001, false},
    {"by a file system of whole seconds", 5000, 99999999, false},
    {"by a file system without such a stamp", 0, 99999999, false},
};

TEST(Stamp, IsSettledOnceTheClockHasLeftIt)
{
    for (const Age& age : ages) {
        FileStamp stamp;
        stamp.state = FileState::present;
        stamp.changed = age.changed * 1000000;
        EXPECT_EQ(age.is_settled, platform::is_settled(stamp, age.now * 1000000)) << age.name;
        stamp.state = FileState::unreadable;
        EXPECT_FALSE(platform::is_settled(stamp, age.now * 1000000)) << age.name;
    }
}

TEST(Stamp, TellsAMissingFileFromOthers)
{
    const Folder folder;
    EXPECT_EQ(FileState::missing, platform::stamp_of(folder / "none").state);
    EXPECT_EQ(FileState::missing, platform::stamp_of(folder / "none/below").state);
    write_file(folder / "some", "text");
    const FileStamp stamp = platform::stamp_of(folder / "some");
    EXPECT_EQ(FileState::present, stamp.state);
    EXPECT_EQ(4u, stamp.size);
    EXPECT_EQ(platform::read_file(folder / "some").stamp, stamp);
}

} // namespace
