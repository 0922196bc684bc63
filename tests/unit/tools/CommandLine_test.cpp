#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "TemporaryFolder.h"
#include "genapi/NodeMap.h"
#include "platform/environment.h"
#include "support.h"
#include "zvgentl/Commands.h"

namespace zvgentl::test {

using namespace tool;

namespace {

using Words = std::vector<const char*>;

/// A command with the arguments that it cannot do without.
class AnyCommand : public testing::TestWithParam<Words> {};

GrabOptions kept;

int keep(const GrabOptions& options)
{
    kept = options;
    return exit_success;
}

// A command like any other, with the options of `grab`.
const CommandRegistration registration({"keep", "Keep the options for a test", "no footer"}, describe_grab,
                                       keep);

/// The options that a command line gives.
GrabOptions parsed(Words words)
{
    words.insert(words.begin(), "keep");
    const Ended ended = run_program_with(words);
    EXPECT_EQ(0, ended.code) << ended.errors;
    return kept;
}

} // namespace

TEST(GrabOptions, GrabTenFramesInQueuedModeFromTheFirstDevice)
{
    const GrabOptions options = parsed({});
    EXPECT_EQ("", options.cti + options.interface_id + options.device + options.output);
    EXPECT_TRUE(options.settings.empty());
    EXPECT_EQ(10U, options.frames);
    EXPECT_EQ(8U, options.buffers);
    EXPECT_EQ(StreamMode::queued, options.mode);
    EXPECT_EQ(5000U, options.timeout_ms);
    EXPECT_EQ(SaveFormat::png, options.format);
    EXPECT_FALSE(options.json);
    EXPECT_TRUE(options.verify);
}

TEST(GrabOptions, AreAllTakenFromTheCommandLine)
{
    const GrabOptions options =
        parsed({"--cti",    "a.cti",     "--interface", "FG1",    "--device", "Device10",   "--frames",
                "0",        "--buffers", "16",          "--mode", "cyclic",   "--timeout",  "250",
                "--output", "pictures",  "--format",    "tiff",   "--json",   "--no-verify"});
    EXPECT_EQ("a.cti", options.cti);
    EXPECT_EQ("FG1", options.interface_id);
    EXPECT_EQ("Device10", options.device);
    EXPECT_EQ(0U, options.frames);
    EXPECT_EQ(16U, options.buffers);
    EXPECT_EQ(StreamMode::cyclic, options.mode);
    EXPECT_EQ(250U, options.timeout_ms);
    EXPECT_EQ("pictures", options.output);
    EXPECT_EQ(SaveFormat::tiff, options.format);
    EXPECT_TRUE(options.json);
    EXPECT_FALSE(options.verify);
}

TEST(GrabOptions, HaveNoEndByTheNumberOfFramesWhenTheyHaveADuration)
{
    EXPECT_EQ(10U, parsed({}).wanted());
    EXPECT_EQ(0U, parsed({"--duration", "5"}).wanted());
    EXPECT_EQ(10U, parsed({"--duration", "5", "--frames", "10"}).wanted());
}

TEST(GrabOptions, KeepTheOrderInWhichFeaturesAreSet)
{
    const GrabOptions options =
        parsed({"--set", "Width=320", "-s", "Name=a=b", "--frames", "5", "--set", "Width=640"});
    ASSERT_EQ(3U, options.settings.size());
    EXPECT_EQ("Width", options.settings[0].name);
    EXPECT_EQ("a=b", options.settings[1].value);
    EXPECT_EQ("640", options.settings[2].value);
    EXPECT_EQ(5U, options.frames);
}

TEST(CommandLine, IsRefusedWithTheReason)
{
    const std::pair<Words, const char*> cases[] = {
        {{}, "a command is missing; `zvgentl --help` lists"},
        {{"grap"}, "there is no command \"grap\"; did you mean grab?"},
        {{"Liste"}, "there is no command \"Liste\"; did you mean list?"},
        {{"photograph"}, "there is no command \"photograph\"; `zvgentl --help` lists the commands"},
        {{"help", "grap"}, "did you mean grab?"},
        {{"--cti", "list"}, "a command is missing"},
        {{"--no-such-option"}, "a command is missing"},
        {{"grab", "--append", "--overwrite", "--output", "x"}, "--overwrite excludes --append"},
        {{"grab", "--append"}, "--append requires --output"},
        {{"list", "--frames", "1"}, "not expected"},
        {{"list", "--no-such-option"}, "not expected: --no-such-option"},
        {{"grab", "--unknown"}, "not expected: --unknown"},
        {{"grab", "stray"}, "not expected: stray"},
        {{"grab", "--frames", "-1"}, "--frames: Value -1 not in range 0 to 1000000000000"},
        {{"grab", "--frames", "many"}, "--frames: Value many not in range"},
        {{"grab", "--buffers", "0"}, "--buffers: Value 0 not in range 1 to 10000"},
        {{"grab", "--buffers", "10001"}, "--buffers: Value 10001 not in range 1 to 10000"},
        {{"grab", "--timeout", "0"}, "--timeout: Value 0 not in range 1 to 86400000"},
        {{"grab", "--mode", "ring"}, "--mode: \"ring\" is not one of queued, cyclic"},
        {{"grab", "--format", "jpeg", "--output", "x"}, "--format: \"jpeg\" is not one of png, tiff, raw"},
        {{"grab", "--format", "png"}, "--format requires --output"},
        {{"grab", "--set", "Width"}, "--set: \"Width\" is not of the form NAME=VALUE"},
        {{"grab", "--set", "=1"}, "--set: \"=1\" is not of the form NAME=VALUE"},
        {{"grab", "--set"}, "--set: 1 required NAME=VALUE missing"},
        {{"features", "--port", "camera"},
         "--port: \"camera\" is not one of system, interface, device, stream, buffer, remote"},
        {{"get"}, "NAME is required"},
        {{"get", "--set", "Width", "Width"}, "--set: \"Width\" is not of the form NAME=VALUE"},
        {{"set"}, "NAME=VALUE is required"},
        {{"set", "Width"}, "expected NAME=VALUE for every feature, or one name and one value"},
        {{"set", "Width=1", "Height"}, "expected NAME=VALUE for every feature, or one name and one value"},
        {{"exec"}, "NAME is required"},
        {{"exec", "A", "B"}, "not expected: B"},
        {{"exec", "A", "--timeout", "0"}, "--timeout: Value 0 not in range 1 to 86400000"},
        {{"xml", "stray"}, "not expected: stray"},
        {{"explain"}, "TEXT is required"},
        {{"describe"}, "NAME is required"},
        {{"load"}, "FILE is required"},
        {{"read"}, "ADDRESS is required"},
        {{"read", "0", "--as", "word"}, "--as: \"word\" is not one of bytes, unsigned, signed, float, text"},
        {{"read", "0", "--length", "0"}, "--length: Value 0 not in range 1 to 16777216"},
        {{"write", "0"}, "VALUE is required"},
        {{"trigger", "--rate", "0"}, "--rate: Value 0 not in range 1 to 100000"},
        {{"info", "--down-to", "remote"}, "--down-to: \"remote\" is not one of system, interface"},
    };
    for (const auto& [words, reason] : cases) {
        const Ended ended = run_program_with(words);
        EXPECT_EQ(2, ended.code) << reason;
        EXPECT_EQ("", ended.output) << reason;
        EXPECT_THAT(ended.errors, HasSubstr(reason));
    }
}

TEST(CommandLine, IsExplainedOnRequest)
{
    for (const char* const command :
         {"", "describe", "exec", "explain", "features", "get", "grab", "info", "list", "load", "log", "read",
          "save", "set", "settings", "trigger", "write", "xml"}) {
        const Ended ended = run_program_with(*command == '\0' ? Words{"--help"} : Words{command, "--help"});
        EXPECT_EQ(0, ended.code);
        for (const char* const part : {"Examples:", "Exit codes:", "GENICAM_GENTL64_PATH"})
            EXPECT_THAT(ended.output, HasSubstr(part));
    }
}

TEST(CommandLine, IsExplainedByTheCommandHelp)
{
    EXPECT_EQ(run_program_with({"--help"}).output, run_program_with({"help"}).output);
    EXPECT_EQ(run_program_with({"list", "--help"}).output, run_program_with({"help", "list"}).output);
    EXPECT_EQ(run_program_with({"list", "--help"}).output, run_program_with({"--help", "list"}).output);
}

TEST(CommandLine, MayBeginWithOptionsOfTheCommand)
{
    for (const Words& words :
         {Words{"--frames", "5", "keep", "--device", "list"}, Words{"-n", "5", "--device", "list", "keep"},
          Words{"--frames=5", "-d", "list", "keep"}}) {
        EXPECT_EQ(0, run_program_with(words).code);
        EXPECT_EQ(5U, kept.frames);
        EXPECT_EQ("list", kept.device);
    }
}

TEST(CommandLine, ListsTheCommandsByName)
{
    const std::string help = run_program_with({"--help"}).output;
    std::size_t place = 0;
    for (const char* const name :
         {"describe", "exec", "explain", "features", "get", "grab", "info", "keep", "list", "load", "log",
          "read", "save", "set", "settings", "trigger", "write", "xml"}) {
        const std::string line = std::string("\n  ") + name + "  ";
        place = help.find(line, place);
        ASSERT_NE(std::string::npos, place) << line << " is missing from\n" << help;
    }
}

TEST(CommandLine, AsksForTheVersion)
{
    const Ended ended = run_program_with({"--version"});
    EXPECT_EQ(0, ended.code);
    EXPECT_THAT(ended.output, StartsWith("zvgentl "));
}

TEST_P(AnyCommand, NamesTheProducerThatItCannotUse)
{
    const TemporaryFolder folder;
    const std::string text = (folder / "text.cti").u8string();
    write_text(folder / "text.cti", "not a library");
    const std::pair<std::string, std::string> cases[] = {
        {"/no/such.cti", std::string("zvgentl ") + GetParam()[0] + ": there is no file /no/such.cti"},
        {text, "cannot load " + text},
        {ZV_GRABBER_LIBRARY, "is not a GenTL producer: it does not export GCInitLib, GCCloseLib, GCGetInfo, "
                             "GCGetLastError, GCReadPort and 52 more"},
    };
    const std::string settings = platform::environment("ZV_SETTINGS_FILE");
    for (const auto& [file, reason] : cases) {
        Words words = GetParam();
        words.insert(words.end(), {"--cti", file.c_str()});
        const Ended ended = run_program_with(words);
        EXPECT_EQ(1, ended.code);
        EXPECT_EQ("", ended.output);
        EXPECT_THAT(ended.errors, HasSubstr(reason));
        EXPECT_EQ(settings, platform::environment("ZV_SETTINGS_FILE"));
    }
}

INSTANTIATE_TEST_SUITE_P(Commands, AnyCommand,
                         testing::Values(Words{"list"}, Words{"grab"}, Words{"xml"}, Words{"features"},
                                         Words{"get", "Width"}, Words{"set", "Width=16"},
                                         Words{"exec", "AcquisitionStart"}, Words{"describe", "Width"},
                                         Words{"info"}, Words{"read", "0"}, Words{"write", "0", "00"},
                                         Words{"save"}, Words{"trigger"}),
                         [](const auto& words) { return std::string(words.param.front()); });

} // namespace zvgentl::test
