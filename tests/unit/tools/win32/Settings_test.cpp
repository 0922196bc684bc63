#include <gtest/gtest.h>

#include "unit/tools/TemporaryFolder.h"
#include "zvgentl/StreamMode.h"

namespace zvgentl::test {

namespace fs = std::filesystem;

namespace {

class SettingsOfThisSystem : public testing::Test {
protected:
    TemporaryFolder folder;
    UserFolders user{folder.path()};
    ScopedVariable named{"ZV_SETTINGS_FILE", ""};
};

} // namespace

TEST_F(SettingsOfThisSystem, ComeFromTheMachinesFolderWhenTheUserHasNone)
{
    const ScopedVariable machine("ProgramData", (folder / "machine").string());
    const fs::path file = folder / "machine" / "zvgentl" / "settings.properties";
    write_text(file, "x = 1\n");
    EXPECT_EQ(file, tool::current_settings_file());
}

TEST_F(SettingsOfThisSystem, ComeFromAUserOfAnyName)
{
    const fs::path roaming = folder.path() / L"J\u00f6rg \u0416";
    const ScopedVariable variable("APPDATA", roaming.u8string());
    const fs::path file = roaming / "zvgentl" / "settings.properties";
    write_text(file, "x = 1\n");
    EXPECT_EQ(file, tool::current_settings_file());
}

} // namespace zvgentl::test
