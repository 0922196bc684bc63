#include <gmock/gmock.h>

#include "TemporaryFolder.h"
#include "platform/environment.h"
#include "support.h"
#include "zvgentl/StreamMode.h"

namespace zvgentl::test {

using namespace tool;
namespace fs = std::filesystem;

namespace {

constexpr const char* variable = "ZV_SETTINGS_FILE";
constexpr const char* fixed = "ZV_SETTINGS_OVERRIDE";

/// A user with folders of his own and no settings yet.
class Settings : public testing::Test {
protected:
    TemporaryFolder folder;
    UserFolders user{folder.path()};
    ScopedVariable named{variable, ""};

    fs::path user_file() const { return user.configuration() / "settings.properties"; }
};

} // namespace

TEST(PrivateFolder, IsForTheUserOnly)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(is_for_its_owner_only(folder.path()));
}

TEST_F(Settings, ComeFromTheNamedFileFirst)
{
    write_text(user_file(), "x = 1\n");
    const fs::path file = folder / "named.properties";
    {
        const ScopedVariable set(variable, file.string());
        EXPECT_EQ(user_file(), current_settings_file()) << "while there is no such file";
        write_text(file, "x = 2\n");
        EXPECT_EQ(file, current_settings_file());
        EXPECT_EQ("", settings_problem());
    }
    EXPECT_EQ(user_file(), current_settings_file());
}

TEST_F(Settings, ThatCannotBeReadAreNamedByTheirOwnPath)
{
    EXPECT_EQ("", settings_problem());
    fs::create_directories(user_file());
    EXPECT_THAT(settings_problem(),
                HasSubstr("the settings file " + user_file().u8string() + " cannot be read"));
    const ScopedVariable set(variable, "relative.properties");
    EXPECT_THAT(settings_problem(), HasSubstr("ZV_SETTINGS_FILE is not an absolute path"));
}

TEST_F(Settings, OfTheUserStayWhileAModeIsChosen)
{
    const ScopedVariable set(fixed, "a = 1");
    {
        const ChosenStreamMode mode(StreamMode::cyclic);
        EXPECT_EQ("a = 1;GenTL.Stream.QueuedBufferMode-Overwrite=0", platform::environment(fixed));
    }
    EXPECT_EQ("a = 1", platform::environment(fixed));
    const ScopedVariable none(fixed, "");
    const ChosenStreamMode mode(StreamMode::queued);
    EXPECT_EQ(";GenTL.Stream.QueuedBufferMode-Overwrite=1", platform::environment(fixed));
    EXPECT_TRUE(fs::is_empty(folder.path())) << "and no file is made";
}

} // namespace zvgentl::test
