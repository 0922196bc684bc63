#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Program.h"

namespace zvgentl::test {

namespace {

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

using Words = std::vector<std::string>;

/// A command with the arguments that it cannot do without.
class AnyCommand : public testing::TestWithParam<Words> {
protected:
    static Words words(const Words& options = {})
    {
        auto all = GetParam();
        all.insert(all.end(), options.begin(), options.end());
        return all;
    }
};

} // namespace

TEST_P(AnyCommand, NamesTheProducerThatIsNotThere)
{
    const std::string file = u8"/no such/gro\u00df \u0416.cti";
    const Ended ended = Program(words({"--cti", file})).run();
    EXPECT_EQ(1, ended.code);
    EXPECT_EQ("", ended.output);
    EXPECT_TRUE(contains(ended.errors, file)) << ended.errors;
}

TEST_P(AnyCommand, NamesAFileThatIsNoLibrary)
{
    const Folder folder;
    const std::string file = (folder / "text.cti").u8string();
    write_text(file, "no library");
    Program program(words({"--cti", file}));
    const Ended ended = program.run();
    EXPECT_EQ(1, ended.code);
    EXPECT_TRUE(contains(ended.errors, "cannot load " + file)) << ended.errors;
    EXPECT_TRUE(program.left_nothing_temporary());
}

TEST_P(AnyCommand, NamesALibraryThatIsNoProducer)
{
    Program program(words({"--cti", ZV_GRABBER_LIBRARY}));
    const Ended ended = program.run();
    EXPECT_EQ(1, ended.code);
    EXPECT_TRUE(contains(ended.errors, "is not a GenTL producer")) << ended.errors;
    EXPECT_TRUE(program.left_nothing_temporary());
}

TEST_P(AnyCommand, SaysThatTheVariableLeadsNowhere)
{
    const Ended ended = Program(words()).with("GENICAM_GENTL64_PATH", "/no/such/folder").run();
    EXPECT_EQ(1, ended.code);
    EXPECT_TRUE(contains(ended.errors, "GENICAM_GENTL64_PATH (/no/such/folder)")) << ended.errors;
}

TEST_P(AnyCommand, FollowsTheVariableToAFolderOfAnyName)
{
    const Folder folder;
    const auto place = folder.path() / std::filesystem::u8path(u8"gro\u00df \u0416");
    std::filesystem::create_directory(place);
    write_text(place / "text.cti", "no library");
    const Ended ended = Program(words()).with("GENICAM_GENTL64_PATH", place.u8string()).run();
    EXPECT_EQ(1, ended.code);
    EXPECT_TRUE(contains(ended.errors, "cannot load " + (place / "text.cti").u8string())) << ended.errors;
}

INSTANTIATE_TEST_SUITE_P(Commands, AnyCommand, testing::Values(Words{"list"}, Words{"grab"}, Words{"xml"}),
                         [](const auto& words) { return words.param.front(); });

#ifdef ZVGENTL_HAS_GENAPI // without it these say so, whatever the producer
INSTANTIATE_TEST_SUITE_P(FeatureCommands, AnyCommand,
                         testing::Values(Words{"features"}, Words{"get", "Width"}, Words{"set", "Width=16"},
                                         Words{"exec", "AcquisitionStart"}),
                         [](const auto& words) { return words.param.front(); });
#endif

} // namespace zvgentl::test
