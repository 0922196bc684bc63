#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "genapi/NodeMap.h"
#include "zvgentl/Command.h"

namespace zvgentl::test {

using namespace tool;

namespace {

class CommandThatNeedsAParser : public testing::TestWithParam<std::vector<const char*>> {};

struct Ended {
    int code;
    std::string errors;
};

Ended run(std::vector<const char*> words)
{
    words.insert(words.begin(), "zvgentl");
    testing::internal::CaptureStderr();
    const int code = run_program(static_cast<int>(words.size()), words.data());
    return {code, testing::internal::GetCapturedStderr()};
}

} // namespace

TEST_P(CommandThatNeedsAParser, SaysThatThisBuildHasNone)
{
    const Ended ended = run(GetParam());
    EXPECT_EQ(1, ended.code);
    EXPECT_NE(std::string::npos, ended.errors.find("this build has no GenApi parser")) << ended.errors;
    EXPECT_NE(std::string::npos, ended.errors.find("`zvgentl xml`")) << "what to do instead";
}

INSTANTIATE_TEST_SUITE_P(Commands, CommandThatNeedsAParser,
                         testing::Values(std::vector<const char*>{"features"},
                                         std::vector<const char*>{"get", "Width"},
                                         std::vector<const char*>{"set", "Width=1"},
                                         std::vector<const char*>{"exec", "AcquisitionStart"},
                                         std::vector<const char*>{"grab", "--set", "Width=1"}),
                         [](const auto& words) { return std::string(words.param[0]); });

TEST(BuildWithoutAParser, KnowsThatItHasNone) { EXPECT_FALSE(has_genapi_parser()); }

TEST(BuildWithoutAParser, ChecksItsCommandLinesAllTheSame)
{
    EXPECT_EQ(2, run({"get"}).code);
    EXPECT_EQ(2, run({"set", "Width"}).code);
    EXPECT_EQ(2, run({"features", "--port", "camera"}).code);
}

TEST(BuildWithoutAParser, SavesDescriptionsAllTheSame)
{
    const Ended ended = run({"xml", "--cti", "/no/such.cti"});
    EXPECT_EQ(1, ended.code);
    EXPECT_NE(std::string::npos, ended.errors.find("/no/such.cti")) << ended.errors;
    EXPECT_EQ(std::string::npos, ended.errors.find("GenApi")) << ended.errors;
}

} // namespace zvgentl::test
