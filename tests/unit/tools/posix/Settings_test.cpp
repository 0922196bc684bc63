#include <gtest/gtest.h>

#include "unit/tools/TemporaryFolder.h"
#include "zvgentl/StreamMode.h"

namespace zvgentl::test {

TEST(SettingsOfThisSystem, ComeFromTheFolderThatTheUserChose)
{
    const TemporaryFolder folder;
    const UserFolders user(folder.path());
    const ScopedVariable named("ZV_SETTINGS_FILE", "");
    const ScopedVariable chosen("XDG_CONFIG_HOME", (folder / "chosen").string());
    write_text(user.configuration() / "settings.properties", "x = 1\n");
    const std::filesystem::path file = folder / "chosen" / "zvgentl" / "settings.properties";
    write_text(file, "x = 2\n");
    EXPECT_EQ(file, tool::current_settings_file());
}

} // namespace zvgentl::test
