#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "TemporaryFolder.h"
#include "platform/environment.h"
#include "support.h"
#include "zvgentl/LogFiles.h"

namespace zvgentl::test {

using namespace tool;

namespace {

/// A configuration of the test's own, which sends the log to a file of the test's own.
class LogCommand : public testing::Test {
protected:
    LogCommand()
    {
        platform::set_environment("ZV_LOGGER_CONFIG", configuration.u8string());
        platform::set_environment("ZV_TEST_FOLDER", folder.path().generic_u8string());
        write_text(configuration, "logging.loggers.root.level = none\n"
                                  "logging.channels.file.path = ${system.env.ZV_TEST_FOLDER}/own.log\n");
    }
    ~LogCommand() override
    {
        platform::set_environment("ZV_LOGGER_CONFIG", previous);
        platform::set_environment("ZV_TEST_FOLDER", "");
    }

    const std::string previous = platform::environment("ZV_LOGGER_CONFIG");
    const TemporaryFolder folder;
    const std::filesystem::path configuration = folder / "logger.properties";
    const std::filesystem::path log = folder / "own.log";
};

} // namespace

TEST(LogText, IsCutToItsLastLines)
{
    EXPECT_EQ("b\nc\n", last_lines("a\nb\nc\n", 2));
    EXPECT_EQ("c", last_lines("a\nb\nc", 1));
    EXPECT_EQ("a\n", last_lines("a\n", 10));
    EXPECT_EQ("", last_lines("a\n", 0));
    EXPECT_EQ("", last_lines("", 5));
}

TEST_F(LogCommand, SaysWhereTheLogIs)
{
    const Ended ended = run_program_with({"log"});
    EXPECT_EQ(0, ended.code) << ended.errors;
    EXPECT_THAT(ended.output, HasSubstr("own.log"));
    EXPECT_THAT(ended.output, HasSubstr("does not exist yet"));
    EXPECT_THAT(ended.output, testing::ContainsRegex("Level +none\n"));
    EXPECT_THAT(run_program_with({"log", "--json"}).output, HasSubstr("\"level\": \"none\""));
}

TEST_F(LogCommand, SetsTheLevel)
{
    EXPECT_EQ("none\n", run_program_with({"log", "level"}).output);
    EXPECT_EQ(0, run_program_with({"log", "level", "debug"}).code);
    EXPECT_EQ("debug\n", run_program_with({"log", "level"}).output);
    EXPECT_EQ("logging.loggers.root.level = debug\n"
              "logging.channels.file.path = ${system.env.ZV_TEST_FOLDER}/own.log\n",
              read_text(configuration));
    EXPECT_THAT(run_program_with({"log", "level", "loud"}).errors,
                HasSubstr("\"loud\" is not a level; there are none, fatal, critical, error, warning"));
}

TEST_F(LogCommand, ShowsTheLastLinesWithControlCharactersMadeVisible)
{
    write_text(log, "one\ntwo\x1b[2J\nthree\n");
    EXPECT_EQ("two\\x1B[2J\nthree\n", run_program_with({"log", "show", "--lines", "2"}).output);
}

TEST_F(LogCommand, FollowsUntilATextComes)
{
    write_text(log, "one\ntwo\nthree\n");
    EXPECT_EQ("one\ntwo\n", run_program_with({"log", "follow", "--until", "two"}).output);
}

TEST_F(LogCommand, RefusesWhatMakesNoSense)
{
    EXPECT_THAT(run_program_with({"log", "show"}).errors, HasSubstr("there is nothing in the log"));
    EXPECT_EQ(2, run_program_with({"log", "loud"}).code);
    EXPECT_EQ(2, run_program_with({"log", "show", "debug"}).code);
}

TEST_F(LogCommand, ReadsWhatIsAddedAndFilesThatAreReplaced)
{
    GrowingFile file(log.u8string());
    EXPECT_EQ("", file.read());
    write_text(log, "one\n");
    EXPECT_EQ("one\n", file.read());
    EXPECT_EQ("", file.read());
    write_text(log, "one\ntwo\n");
    EXPECT_EQ("two\n", file.read());
    write_text(log, "new\n");
    EXPECT_EQ("new\n", file.read());
}

} // namespace zvgentl::test
