#include <gmock/gmock.h>

#include "system/tools/Program.h"

// Output that cannot be written.

namespace zvgentl::test {

namespace fs = std::filesystem;

namespace {

/// A command with arguments that print something.
class Printing : public testing::TestWithParam<Words> {};

/// Tells the exit code of a command at the start of a pipe.
const char* const code_to_errors = "{ \"$0\" \"$@\"; echo \"code $?\" >&2; }";

} // namespace

TEST_P(Printing, SaysThatTheDiskIsFull)
{
    const Ended ended = Program(GetParam()).through_shell("\"$0\" \"$@\" >/dev/full").run();
    EXPECT_EQ(1, ended.code);
    EXPECT_THAT(ended.errors, HasSubstr("cannot write to standard output: No space left on device"));
}

TEST_P(Printing, SaysThatTheOutputIsClosed)
{
    Program program(GetParam());
    const Ended ended = program.with("ZV_LOGGER_CONFIG", "").through_shell("\"$0\" \"$@\" >&-").run();
    EXPECT_EQ(1, ended.code);
    EXPECT_THAT(ended.errors, HasSubstr("cannot write to standard output: it is closed"));
}

TEST_P(Printing, EndsQuietlyWhenNobodyReads)
{
    // A pipe in both directions that loses its reader, so that nothing depends on who is faster.
    const std::string command =
        "mkfifo \"$TMPDIR/pipe\" && exec 3<>\"$TMPDIR/pipe\" 4>\"$TMPDIR/pipe\" 3>&- && "
        "\"$0\" \"$@\" >&4";
    const Ended ended = Program(GetParam()).through_shell(command).run();
    EXPECT_EQ(141, ended.code);
    EXPECT_EQ("", ended.errors);
}

INSTANTIATE_TEST_SUITE_P(Commands, Printing,
                         testing::Values(Words{"list"}, Words{"list", "--json"}, Words{"xml"},
                                         Words{"--help"}, Words{"grab", "--help"}, Words{"--version"},
                                         Words{"grab", "--frames", "2"},
                                         Words{"grab", "--frames", "2", "--json"},
                                         Words{"grab", "--frames", "2", "--format", "raw", "--output", "-"}),
                         [](const auto& words) { return "Number" + std::to_string(words.index); });

TEST(FullDisk, LeavesTheSummaryOfAGrab)
{
    const Ended ended = Program({"grab", "--frames", "2"}).through_shell("\"$0\" \"$@\" >/dev/full").run();
    EXPECT_THAT(ended.errors, HasSubstr("Delivered  2 of 2 frames"));
}

TEST(FullDisk, EndsAGrabThatSavesFrames)
{
    for (const Words& words :
         {Words{"--format", "raw", "--output", "/dev/full"}, Words{"--frames-csv", "/dev/full"}}) {
        Words all{"grab", "--frames", "20", "--json"};
        all.insert(all.end(), words.begin(), words.end());
        const Ended ended = Program(all).run();
        EXPECT_EQ(1, ended.code);
        EXPECT_EQ("failed", ended.json()["outcome"]);
        EXPECT_THAT(ended.json()["problem"], HasSubstr("No space left on device"));
        EXPECT_THAT(ended.errors, HasSubstr("zvgentl grab: cannot write /dev/full: No space left on device"));
    }
}

TEST(FullDisk, LeavesNoHalfOfAFile)
{
    const TemporaryFolder folder;
    // A limit for the size of files is the disk of users who are not root.
    const std::string limit = "ulimit -f 100; trap '' XFSZ; \"$0\" \"$@\"";
    for (const Words& words :
         {Words{"grab", "--frames", "9", "--format", "raw", "--output", (folder / "a.raw").string()},
          Words{"grab", "--frames", "9", "--format", "raw", "--output", (folder / "a").string()},
          Words{"grab", "--frames", "9", "--format", "tiff", "--output", (folder / "a").string()}}) {
        const Ended ended = Program(words).through_shell(limit).run();
        EXPECT_EQ(1, ended.code);
        EXPECT_THAT(ended.errors, HasSubstr("cannot write"));
        EXPECT_THAT(ended.output, HasSubstr("Delivered  ")) << "the summary";
        EXPECT_FALSE(fs::exists(folder / "a.raw"));
        if (fs::exists(folder / "a")) {
            EXPECT_EQ(0U, count_files(folder / "a"));
        }
    }
}

TEST(BrokenPipe, EndsAGrabQuietly)
{
    const Ended ended = Program({"grab", "--frames", "0", "--format", "raw", "--output", "-"})
                            .through_shell(std::string(code_to_errors) + " | head -c 100 | tr -d -c x")
                            .run();
    EXPECT_EQ(0, ended.code);
    EXPECT_EQ("code 141\n", ended.errors);
}

TEST(NoTemporaryFolder, IsNeeded)
{
    for (const Words& words :
         {Words{"grab", "--frames", "1"}, Words{"grab", "--frames", "1", "--mode", "cyclic"}}) {
        Program program(words);
        const Ended ended = program.with("TMPDIR", "/no/such/folder").run();
        EXPECT_EQ(0, ended.code) << ended.errors;
    }
}

TEST(BadSettings, AreNamedAndDoNotKeepGrabFromWorking)
{
    Program program({"grab", "--frames", "1", "--json"});
    fs::create_directory(program.folder() / "settings.properties");
    const Ended ended = program.run();
    EXPECT_EQ(0, ended.code);
    EXPECT_EQ("complete", ended.json()["outcome"]);
    EXPECT_THAT(ended.errors,
                HasSubstr((program.folder() / "settings.properties").string() + " cannot be read"));
}

} // namespace zvgentl::test
