#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Program.h"

namespace zvgentl::test {

namespace {

using Words = std::vector<std::string>;

class WrongCommandLine : public testing::TestWithParam<Words> {};

} // namespace

TEST(CommandLine, IsExplainedOnRequest)
{
    const Ended ended = Program({"--help"}).run();
    EXPECT_EQ(0, ended.code);
    EXPECT_EQ("", ended.errors);
    for (const char* const command : {"list", "grab", "features", "get", "set", "exec", "xml"})
        EXPECT_NE(std::string::npos, ended.output.find(command)) << command;
}

TEST_P(WrongCommandLine, IsRefused)
{
    const Ended ended = Program(GetParam()).run();
    EXPECT_EQ(2, ended.code);
    EXPECT_NE("", ended.errors);
}

INSTANTIATE_TEST_SUITE_P(Lines, WrongCommandLine,
                         testing::Values(Words{}, Words{"--no-such-option"},
                                         Words{"list", "--no-such-option"},
                                         Words{"features", "--port", "camera"}, Words{"get"}, Words{"set"},
                                         Words{"set", "Width"}, Words{"set", "Width=1", "Height"},
                                         Words{"exec"}, Words{"exec", "A", "B"},
                                         Words{"exec", "A", "--timeout", "0"},
                                         Words{"get", "--set", "Width", "Width"}, Words{"xml", "stray"}));

#ifndef ZVGENTL_HAS_GENAPI
TEST(BuildWithoutAParser, SaysSo)
{
    const Ended ended = Program({"features"}).run();
    EXPECT_EQ(1, ended.code);
    EXPECT_NE(std::string::npos, ended.errors.find("this build has no GenApi parser")) << ended.errors;
}
#endif

} // namespace zvgentl::test
