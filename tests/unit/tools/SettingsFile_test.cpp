#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "TemporaryFolder.h"
#include "platform/environment.h"
#include "support.h"
#include "zvgentl/SettingsFile.h"

namespace zvgentl::test {

using namespace tool;

namespace {

constexpr const char* minimum = "GenTL.Stream.BufferAllocMin";

/// A settings file of the test's own, named by the variable.
class SettingsCommand : public testing::Test {
protected:
    SettingsCommand() { platform::set_environment("ZV_SETTINGS_FILE", file.u8string()); }
    ~SettingsCommand() override { platform::set_environment("ZV_SETTINGS_FILE", previous); }

    const std::string previous = platform::environment("ZV_SETTINGS_FILE");
    const TemporaryFolder folder;
    const UserFolders user{folder / "home"};
    const std::filesystem::path file = folder / "settings.properties";
};

} // namespace

TEST(SettingsText, HasOneValueForEachKey)
{
    std::string found;
    for (const auto& [key, value] : settings_of("# A = 1\nA = 2\n B: 0x3 \r\nword\n! C=1\nA=4"))
        found += key + "=" + value + ";";
    EXPECT_EQ("A=4;B=0x3;", found);
}

TEST(SettingsText, IsChangedInPlace)
{
    EXPECT_EQ("# A\nA = 1\nA = 9\nB = 3\n", with_setting_changed("# A\nA = 1\nA = 2\nB = 3\n", "A", "9"));
    EXPECT_EQ("B = 3\nA = 9\n", with_setting_changed("B = 3", "A", "9"));
    EXPECT_EQ("B = 3\r\nA = 9\r\n", with_setting_changed("B = 3\r\n", "A", "9"));
    EXPECT_EQ("A = 9\n", with_setting_changed("", "A", "9"));
    EXPECT_EQ("# A\nB = 3\n", with_setting_removed("# A\nA = 1\nB = 3\nA = 2\n", "A"));
}

TEST(SettingsText, HasNumbersOf32Bits)
{
    EXPECT_EQ(8U, parse_setting("8"));
    EXPECT_EQ(0xFFFFFFFFU, parse_setting("0xFFFFFFFF"));
    for (const char* const text : {"", "x", "-1", "4294967296", "1 ", "0x"})
        EXPECT_EQ(std::nullopt, parse_setting(text)) << text;
}

TEST_F(SettingsCommand, ListsDefaultsWithoutAFile)
{
    const Ended ended = run_program_with({"settings"});
    EXPECT_EQ(0, ended.code) << ended.errors;
    EXPECT_THAT(ended.output, StartsWith("There is no settings file yet; the defaults count.\n"));
    EXPECT_THAT(ended.output, testing::ContainsRegex("GenTL.Stream.BufferAllocMin +4 +4 +the minimum"));
    EXPECT_FALSE(std::filesystem::exists(file)) << "nothing is written by looking";
}

TEST_F(SettingsCommand, SetsGetsAndUnsets)
{
    write_text(file, "# mine\nGenTL.Stream.BufferAllocMin = 6\nOther = 1\n");
    EXPECT_EQ("6\n", run_program_with({"settings", "get", minimum}).output);
    EXPECT_EQ(0, run_program_with({"settings", "set", "GenTL.Stream.BufferAllocMin=0x8"}).code);
    EXPECT_EQ("# mine\nGenTL.Stream.BufferAllocMin = 0x8\nOther = 1\n", read_text(file));
    EXPECT_EQ(0, run_program_with({"settings", "unset", minimum, "Other"}).code);
    EXPECT_EQ("# mine\n", read_text(file));
    EXPECT_EQ("4\n", run_program_with({"settings", "get", minimum}).output);
    EXPECT_EQ(0, run_program_with({"settings", "set", minimum, "5"}).code);
    EXPECT_EQ(
        "GenTL.Stream.BufferAllocMin=5\nGenTL.Stream.QueuedBufferMode-Overwrite=-\n",
        run_program_with({"settings", "get", minimum, "GenTL.Stream.QueuedBufferMode-Overwrite"}).output);
}

TEST_F(SettingsCommand, TellsWhatIsWrongInTheFile)
{
    write_text(file, "GenTL.Stream.BufferAllocMin = many\nMine = 1\n");
    const std::string text = run_program_with({"settings"}).output;
    EXPECT_THAT(text, HasSubstr("! \"many\" is not a number from 0 to 4294967295; the default counts"));
    EXPECT_THAT(text, testing::ContainsRegex("Mine +1 +- +not a setting of this producer"));
    EXPECT_THAT(
        run_program_with({"settings", "--json"}).output,
        HasSubstr("\"key\": \"GenTL.Stream.BufferAllocMin\",\n      \"value\": 4,\n      \"default\": 4,\n"
                  "      \"is_set\": true,\n"));
}

TEST_F(SettingsCommand, RefusesWhatMakesNoSense)
{
    const auto errors = [](std::vector<const char*> words) { return run_program_with(words).errors; };
    EXPECT_THAT(
        errors({"settings", "get", "GenTL.Stream.BufferAlocMin"}),
        HasSubstr("there is no setting GenTL.Stream.BufferAlocMin; did you mean " + std::string(minimum)));
    EXPECT_THAT(errors({"settings", "set", "GenTL.Stream.BufferAllocMin=lots"}),
                HasSubstr("cannot be \"lots\""));
    EXPECT_FALSE(std::filesystem::exists(file));
    for (const auto& words : std::vector<std::vector<const char*>>{{"settings", "list", "x"},
                                                                   {"settings", "get"},
                                                                   {"settings", "show", "x"},
                                                                   {"settings", "set", "x"}})
        EXPECT_EQ(2, run_program_with(words).code);
    platform::set_environment("ZV_SETTINGS_FILE", "relative.properties");
    EXPECT_THAT(errors({"settings"}), HasSubstr("ZV_SETTINGS_FILE must be an absolute path"));
}

TEST_F(SettingsCommand, SaysWhatCannotBeReadOrWritten)
{
    std::filesystem::create_directory(file);
    EXPECT_THAT(run_program_with({"settings"}).errors, HasSubstr("cannot read the settings file"));
    platform::set_environment("ZV_SETTINGS_FILE", (folder / "no" / "such" / "file").u8string());
    EXPECT_THAT(run_program_with({"settings", "set", minimum, "5"}).errors,
                HasSubstr("cannot write the settings file"));
}

} // namespace zvgentl::test
