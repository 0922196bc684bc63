#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "genapi/NodeMap.h"
#include "support.h"

namespace zvgentl::test {

using namespace tool;

namespace {

class CommandThatNeedsAParser : public testing::TestWithParam<std::vector<const char*>> {};

} // namespace

TEST_P(CommandThatNeedsAParser, SaysThatThisBuildHasNone)
{
    const Ended ended = run_program_with(GetParam());
    EXPECT_EQ(1, ended.code);
    EXPECT_THAT(ended.errors, HasSubstr("this build has no GenApi parser"));
    EXPECT_THAT(ended.errors, HasSubstr("`zvgentl xml`")) << "what to do instead";
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
    EXPECT_EQ(2, run_program_with({"get"}).code);
    EXPECT_EQ(2, run_program_with({"set", "Width"}).code);
}

TEST(BuildWithoutAParser, SavesDescriptionsAllTheSame)
{
    const Ended ended = run_program_with({"xml", "--cti", "/no/such.cti"});
    EXPECT_EQ(1, ended.code);
    EXPECT_THAT(ended.errors, HasSubstr("/no/such.cti"));
    EXPECT_THAT(ended.errors, Not(HasSubstr("GenApi")));
}

} // namespace zvgentl::test
