#include <string>

#include <gmock/gmock.h>

#include "Program.h"

namespace zvgentl::test {

namespace {

class DescriptionOfEveryPort : public testing::TestWithParam<const char*> {};

} // namespace

TEST_P(DescriptionOfEveryPort, CanBeSaved)
{
    const Ended ended = Program({"xml", "--port", GetParam()}).run();
    ASSERT_EQ(0, ended.code) << ended.errors;
    EXPECT_THAT(ended.output, StartsWith("<?xml"));
    EXPECT_THAT(ended.output, HasSubstr("Name=\"Device\"")) << "the port's node";
    EXPECT_THAT(ended.output, HasSubstr("</RegisterDescription>"));
}

INSTANTIATE_TEST_SUITE_P(Ports, DescriptionOfEveryPort,
                         testing::Values("system", "interface", "device", "stream", "buffer", "remote"),
                         [](const auto& port) { return std::string(port.param); });

TEST(Descriptions, AreSavedAsTheyLieInTheDeviceOrUnpacked)
{
    const TemporaryFolder folder;
    const std::string file = (folder.path() / std::filesystem::u8path(u8"gro\u00df \u0416")).u8string();
    const auto saved = [&file] { return read_text(std::filesystem::u8path(file)); };
    EXPECT_EQ(0, Program({"xml", "--port", "system", "--output", file}).run().code);
    EXPECT_EQ(3391U, saved().size());
    EXPECT_EQ(saved(), Program({"xml", "--port", "system"}).run().output) << "byte for byte";

    EXPECT_EQ(0, Program({"xml", "--port", "buffer", "--raw", "--output", file}).run().code);
    EXPECT_EQ(640U, saved().size());
    EXPECT_EQ("PK", saved().substr(0, 2));

    EXPECT_EQ(0, Program({"xml", "--port", "buffer", "-o", file}).run().code);
    EXPECT_EQ("<?xml", saved().substr(0, 5));
    EXPECT_THAT(saved(), HasSubstr("</RegisterDescription>"));
}

TEST(Descriptions, CannotBeSavedWhereNothingCanBeWritten)
{
    const TemporaryFolder folder;
    write_text(folder / "file", "");
    const std::string file = (folder / "file" / "system.xml").u8string();
    const Ended ended = Program({"xml", "--port", "system", "--output", file}).run();
    EXPECT_EQ(1, ended.code);
    EXPECT_THAT(ended.errors, HasSubstr("zvgentl xml: cannot write " + file));
}

} // namespace zvgentl::test
