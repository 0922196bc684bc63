#include <gtest/gtest.h>

#include "Program.h"

namespace zvgentl::test {

namespace {

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

class AnyCommand : public testing::TestWithParam<const char*> {};

} // namespace

TEST_P(AnyCommand, NamesTheProducerThatIsNotThere)
{
    const Ended ended = Program({GetParam(), "--cti", "/no/such.cti"}).run();
    EXPECT_EQ(1, ended.code);
    EXPECT_EQ("", ended.output);
    EXPECT_TRUE(contains(ended.errors, "/no/such.cti")) << ended.errors;
}

TEST_P(AnyCommand, NamesAFileThatIsNoLibrary)
{
    Program program({GetParam(), "--cti", "/etc/hostname"});
    const Ended ended = program.run();
    EXPECT_EQ(1, ended.code);
    EXPECT_TRUE(contains(ended.errors, "cannot load /etc/hostname")) << ended.errors;
    EXPECT_TRUE(program.left_nothing_temporary());
}

TEST_P(AnyCommand, NamesALibraryThatIsNoProducer)
{
    Program program({GetParam(), "--cti", ZV_GRABBER_LIBRARY});
    const Ended ended = program.run();
    EXPECT_EQ(1, ended.code);
    EXPECT_TRUE(contains(ended.errors, "is not a GenTL producer")) << ended.errors;
    EXPECT_TRUE(program.left_nothing_temporary());
}

TEST_P(AnyCommand, SaysThatTheVariableLeadsNowhere)
{
    const Ended ended = Program({GetParam()}).with("GENICAM_GENTL64_PATH", "/no/such/folder").run();
    EXPECT_EQ(1, ended.code);
    EXPECT_TRUE(contains(ended.errors, "GENICAM_GENTL64_PATH (/no/such/folder)")) << ended.errors;
}

INSTANTIATE_TEST_SUITE_P(Commands, AnyCommand, testing::Values("list", "grab"),
                         [](const auto& name) { return std::string(name.param); });

} // namespace zvgentl::test
