#include <utility>

#include <gtest/gtest.h>

#include "TemporaryFolder.h"
#include "platform/environment.h"
#include "zvgentl/TemporarySettings.h"

namespace zvgentl::test {

using namespace tool;
namespace fs = std::filesystem;

namespace {

constexpr const char* variable = "ZV_SETTINGS_FILE";
constexpr const char* mode_key = "GenTL.Stream.QueuedBufferMode-Overwrite";

/// A user with folders of his own and no settings yet.
class Settings : public testing::Test {
protected:
    TemporaryFolder folder;
    UserFolders user{folder.path()};
    ScopedVariable named{variable, ""};

    fs::path user_file() const { return user.configuration() / "settings.properties"; }
};

} // namespace

TEST(WithSetting, ReplacesTheKeyAndKeepsEverythingElse)
{
    const std::pair<const char*, const char*> cases[] = {
        {"", "a.b = 1\n"},
        {"# comment\nx = 1\n\ny: 2", "# comment\nx = 1\n\ny: 2\na.b = 1\n"},
        {"a.b=0\n  a.b : 3\na.b\n\ta.b\t= 4\r\n", "a.b = 1\n"},
        {"a.b.c = 1\n#a.b = 2\n!a.b = 2\n", "a.b.c = 1\n#a.b = 2\n!a.b = 2\na.b = 1\n"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(expected, with_setting(text, "a.b", "1"));
}

TEST_F(Settings, ComeFromTheNamedFileFirst)
{
    write_text(user_file(), "x = 1\n");
    const fs::path file = folder / "named.properties";
    write_text(file, "x = 2\n");
    const ScopedVariable set(variable, file.string());
    EXPECT_EQ(file, current_settings_file());
}

TEST_F(Settings, AreCopiedWithTheModeAndTakenAwayAgain)
{
    const std::string missing = (folder / "missing").string(); // so that the user's file counts
    const ScopedVariable set(variable, missing);
    write_text(user_file(), std::string("x = 1\n") + mode_key + " = 1\n");
    fs::path copy;
    {
        const TemporarySettings settings(StreamMode::cyclic);
        copy = platform::environment(variable);
        EXPECT_NE(user_file(), copy);
        EXPECT_EQ(std::string("x = 1\n") + mode_key + " = 0\n", read_text(copy));
        write_text(copy.parent_path() / "lock", "what the settings store may put beside it");
    }
    EXPECT_EQ(missing, platform::environment(variable));
    EXPECT_FALSE(fs::exists(copy.parent_path()));
    EXPECT_EQ(std::string("x = 1\n") + mode_key + " = 1\n", read_text(user_file()));
}

TEST_F(Settings, HoldOnlyTheModeWhenThereAreNoneAndAreForTheUserOnly)
{
    const TemporarySettings settings(StreamMode::queued);
    const fs::path file = platform::environment(variable);
    EXPECT_EQ(std::string(mode_key) + " = 1\n", read_text(file));
    EXPECT_TRUE(is_for_its_owner_only(file.parent_path()));
}

TEST_F(Settings, OfAProcessThatWasKilledAreRemoved)
{
    const fs::path own = platform::make_private_folder("zvgentl-");
    const fs::path left = own.parent_path() / "zvgentl-2000000011-abcdef"; // of a process that has ended
    write_text(left / "settings.properties", "x = 1\n");
    TemporarySettings::remove_leftovers();
    EXPECT_FALSE(fs::exists(left));
    EXPECT_TRUE(fs::exists(own));
    fs::remove_all(own);
}

} // namespace zvgentl::test
