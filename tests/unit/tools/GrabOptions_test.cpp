#include <algorithm>
#include <initializer_list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zvgentl/Command.h"
#include "zvgentl/GrabOptions.h"

namespace zvgentl::test {

using namespace tool;

namespace {

/// The options that a command line gives, without the words "zvgentl grab".
GrabOptions parsed(const std::string& arguments)
{
    CLI::App app;
    GrabOptions options;
    add_grab_options(app, options);
    app.parse(arguments);
    return options;
}

bool is_refused(const std::string& arguments)
{
    try {
        parsed(arguments);
        return false;
    } catch (const CLI::ParseError&) {
        return true;
    }
}

int run(std::initializer_list<const char*> arguments)
{
    std::vector<const char*> all{"zvgentl"};
    all.insert(all.end(), arguments);
    return run_program(static_cast<int>(all.size()), all.data());
}

} // namespace

TEST(GrabOptions, GrabTenFramesInQueuedModeFromTheFirstDevice)
{
    const GrabOptions options = parsed("");
    EXPECT_EQ("", options.cti);
    EXPECT_EQ("", options.interface_id);
    EXPECT_EQ("", options.device);
    EXPECT_TRUE(options.settings.empty());
    EXPECT_EQ(10U, options.frames);
    EXPECT_EQ(8U, options.buffers);
    EXPECT_EQ(StreamMode::queued, options.mode);
    EXPECT_EQ(5000U, options.timeout_ms);
    EXPECT_EQ("", options.output);
    EXPECT_EQ(FileFormat::png, options.format);
    EXPECT_FALSE(options.json);
    EXPECT_TRUE(options.verify);
}

TEST(GrabOptions, AreAllTakenFromTheCommandLine)
{
    const GrabOptions options = parsed(
        "--cti a.cti --interface FG1 --device Device10 --frames 100 --buffers 16 --mode cyclic --timeout 250 "
        "--output pictures --format tiff --json --no-verify");
    EXPECT_EQ("a.cti", options.cti);
    EXPECT_EQ("FG1", options.interface_id);
    EXPECT_EQ("Device10", options.device);
    EXPECT_EQ(100U, options.frames);
    EXPECT_EQ(16U, options.buffers);
    EXPECT_EQ(StreamMode::cyclic, options.mode);
    EXPECT_EQ(250U, options.timeout_ms);
    EXPECT_EQ("pictures", options.output);
    EXPECT_EQ(FileFormat::tiff, options.format);
    EXPECT_TRUE(options.json);
    EXPECT_FALSE(options.verify);
}

TEST(GrabOptions, KeepTheOrderInWhichFeaturesAreSet)
{
    const GrabOptions options = parsed("--set Width=320 -s Name=a=b --frames 5 --set Width=640");
    ASSERT_EQ(3U, options.settings.size());
    EXPECT_EQ("Width", options.settings[0].name);
    EXPECT_EQ("a=b", options.settings[1].value);
    EXPECT_EQ("640", options.settings[2].value);
    EXPECT_EQ(5U, options.frames);
}

TEST(GrabOptions, TakeZeroFramesAsWithoutEnd) { EXPECT_EQ(0U, parsed("--frames 0").frames); }

TEST(GrabOptions, RefuseWhatMakesNoSense)
{
    for (const char* const arguments :
         {"--frames -1", "--frames many", "--buffers 0", "--buffers 10001", "--mode ring", "--timeout 0",
          "--format jpeg --output x", "--format png", "--unknown", "stray", "--set Width", "--set =1",
          "--set"})
        EXPECT_TRUE(is_refused(arguments)) << arguments;
}

TEST(Program, AnswersTwoToAWrongCommandLine)
{
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    EXPECT_EQ(2, run({}));
    EXPECT_EQ(2, run({"grap"}));
    EXPECT_EQ(2, run({"grab", "--mode", "ring"}));
    EXPECT_EQ(2, run({"list", "--frames", "1"}));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_NE("", testing::internal::GetCapturedStderr());
}

TEST(Program, ExplainsItself)
{
    for (const auto& words : {std::vector<const char*>{"--help"},
                              {"list", "--help"},
                              {"grab", "--help"},
                              {"features", "--help"},
                              {"get", "--help"},
                              {"set", "--help"},
                              {"exec", "--help"},
                              {"xml", "--help"}}) {
        testing::internal::CaptureStdout();
        std::vector<const char*> all{"zvgentl"};
        all.insert(all.end(), words.begin(), words.end());
        EXPECT_EQ(0, run_program(static_cast<int>(all.size()), all.data()));
        const std::string text = testing::internal::GetCapturedStdout();
        EXPECT_NE(std::string::npos, text.find("Examples:")) << text;
        EXPECT_NE(std::string::npos, text.find("Exit codes:")) << text;
        EXPECT_NE(std::string::npos, text.find("GENICAM_GENTL64_PATH")) << text;
    }
}

TEST(Program, TellsItsVersion)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, run({"--version"}));
    EXPECT_EQ(0U, testing::internal::GetCapturedStdout().find("zvgentl "));
}

TEST(Program, KnowsItsCommands)
{
    std::vector<std::string> names;
    for (const auto& command : make_commands())
        names.push_back(command->name());
    for (const char* const name : {"exec", "features", "get", "grab", "list", "set", "xml"})
        EXPECT_NE(names.end(), std::find(names.begin(), names.end(), name)) << name;
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
}

} // namespace zvgentl::test
