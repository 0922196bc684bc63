#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "Program.h"

namespace zvgentl::test {

TEST(Info, AsksEveryCommandOfEveryModule)
{
    const Ended ended = Program({"info", "--json"}).run();
    ASSERT_EQ(0, ended.code) << ended.errors;
    std::string modules;
    std::string last;
    const auto info = ended.json()["info"];
    for (const auto& entry : info) {
        const std::string module = entry["module"];
        if (module != last)
            modules += module + " ";
        last = module;
        EXPECT_NE(entry["value"].is_null(), entry["problem"].is_null()) << entry;
    }
    EXPECT_EQ("producer system interface device remote stream buffer ", modules);
}

TEST(Info, ShowsNamesTypesAndBytes)
{
    const Ended ended = with_plain_lines(Program({"info", "--down-to", "system", "--raw"}).run());
    ASSERT_EQ(0, ended.code) << ended.errors;
    EXPECT_THAT(ended.output, StartsWith("producer\n  TL_INFO_ID "));
    EXPECT_THAT(ended.output, testing::ContainsRegex("TL_INFO_CHAR_ENCODING +8 +INT32 +0 +00 00 00 00\n"));
    EXPECT_THAT(ended.output, testing::ContainsRegex("TL_INFO_GENTL_VER_MAJOR +9 +GC_ERR_NOT_IMPLEMENTED\n"));
    EXPECT_THAT(ended.output, testing::Not(HasSubstr("IF_INFO")));
}

TEST(Registers, AreReadAndWritten)
{
    const std::string width = "0x2008"; // as `zvgentl describe Width` shows it
    EXPECT_EQ("640\n",
              with_plain_lines(Program({"read", width, "--as", "unsigned", "--big-endian"}).run()).output);
    const Ended written =
        Program({"write", width, "320", "--as", "unsigned", "--big-endian", "--json"}).run();
    ASSERT_EQ(0, written.code) << written.errors;
    EXPECT_EQ("320", written.json()["value"]);
    EXPECT_THAT(Program({"read", "0x88888888", "--port", "system", "--length", "5"}).run().output,
                HasSubstr("3C 3F 78 6D 6C  "));
}

TEST(Registers, ThatCannotBeReachedAreRefusedByTheProducer)
{
    EXPECT_THAT(Program({"read", "0xFFFFFFF0", "--port", "system"}).run().errors,
                HasSubstr("zvgentl read: GCReadPort failed with GC_ERR_INVALID_ADDRESS (-1015)"));
    EXPECT_THAT(Program({"write", "0", "00", "--port", "system"}).run().errors,
                HasSubstr("zvgentl write: GCWritePort failed with GC_ERR_NOT_IMPLEMENTED (-1003)"));
    EXPECT_THAT(Program({"read", "here"}).run().errors, HasSubstr("\"here\" is not an address"));
}

TEST(Describe, ShowsSelectorsAndFollowsThem)
{
    const Ended ended = with_plain_lines(Program({"describe", "TriggerMode"}).run());
    ASSERT_EQ(0, ended.code) << ended.errors;
    EXPECT_THAT(ended.output, StartsWith("Device00 (remote): TriggerMode\n"));
    EXPECT_THAT(ended.output, HasSubstr("Registers\n"));
    EXPECT_THAT(Program({"describe", "TriggerMod"}).run().errors, HasSubstr("did you mean TriggerMode"));
}

TEST(SavedFeatures, AreLoadedAgain)
{
    const TemporaryFolder folder;
    const std::string file = (folder / "camera.txt").u8string();
    const Ended saved =
        Program({"save", "--set", "Width=320", "--set", "OffsetX=64", "--output", file}).run();
    ASSERT_EQ(0, saved.code) << saved.errors;
    EXPECT_THAT(read_text(folder / "camera.txt"), StartsWith("# Features of Device00 (remote)\n"));
    const Ended loaded = Program({"load", file, "--json"}).run();
    ASSERT_EQ(0, loaded.code) << loaded.errors;
    std::string set;
    const auto features = loaded.json()["features"];
    for (const auto& feature : features)
        if (feature["result"] == "set")
            set += feature["feature"].get<std::string>() + " ";
    EXPECT_THAT(set, HasSubstr("Width "));
    EXPECT_THAT(set, HasSubstr("OffsetX "));
}

TEST(SavedFeatures, ThatCannotBeLoadedAreNamed)
{
    const TemporaryFolder folder;
    write_text(folder / "camera.txt", "Width = 320\nNoSuchFeature = 1\n");
    const std::string file = (folder / "camera.txt").u8string();
    const Ended loaded = with_plain_lines(Program({"load", file}).run());
    EXPECT_EQ(1, loaded.code);
    EXPECT_EQ("Device00 (remote): 1 features set, 0 had their values, 1 failed\n", loaded.output);
    EXPECT_THAT(loaded.errors, StartsWith("zvgentl load: NoSuchFeature: there is no feature NoSuchFeature"));
    write_text(folder / "camera.txt", "nonsense\n");
    EXPECT_EQ("zvgentl load: " + file + ", line 1: it is not of the form NAME = VALUE\n",
              with_plain_lines(Program({"load", file}).run()).errors);
    EXPECT_THAT(Program({"load", "no-such-file"}).run().errors, HasSubstr("there is no file no-such-file"));
}

TEST(Trigger, ExecutesTheCommandAsOftenAsAsked)
{
    const Ended ended = Program({"trigger", "--count", "3", "--rate", "100", "--json"}).run();
    ASSERT_EQ(0, ended.code) << ended.errors;
    EXPECT_EQ("TriggerSoftware", ended.json()["command"]);
    EXPECT_EQ(3, ended.json()["executed"]);
    EXPECT_THAT(Program({"trigger", "--command", "Width"}).run().errors, HasSubstr("Width is not a command"));
}

TEST(Settings, AreThoseThatTheProducerReads)
{
    Program program({"info", "--json"});
    EXPECT_EQ(0, Program({"settings", "set", "GenTL.Stream.BufferAllocMin=7"},
                         {{"ZV_SETTINGS_FILE", (program.folder() / "settings.properties").u8string()}})
                     .run()
                     .code);
    std::string least;
    const auto info = program.run().json()["info"];
    for (const auto& entry : info)
        if (entry["name"] == "STREAM_INFO_BUF_ANNOUNCE_MIN")
            least = entry["value"];
    EXPECT_EQ("7", least);
}

TEST(Explain, NeedsNoProducer)
{
    const Ended ended =
        with_plain_lines(Program({"explain", "-1005"}, {{"GENICAM_GENTL64_PATH", "/no/such"}}).run());
    EXPECT_EQ(0, ended.code);
    EXPECT_THAT(ended.output, StartsWith("GC_ERR_ACCESS_DENIED (-1005)\n"));
}

} // namespace zvgentl::test
