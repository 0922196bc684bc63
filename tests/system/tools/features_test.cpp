#include <algorithm>
#include <iterator>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "Program.h"

namespace zvgentl::test {

namespace {

/// A command line and what comes of it.
struct Row {
    const char* line;
    const char* output;
    const char* refusal{nullptr}; // part of the message; null: the command succeeds
};

std::ostream& operator<<(std::ostream& stream, const Row& row) { return stream << row.line; }

Words words_of(const std::string& line)
{
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

class FeatureCommand : public testing::TestWithParam<Row> {};

using PortAndTitle = std::pair<const char*, const char*>;

class FeaturesOfEveryPort : public testing::TestWithParam<PortAndTitle> {};

const nlohmann::json& feature_in(const nlohmann::json& tree, const char* name)
{
    return *std::find_if(tree["features"].begin(), tree["features"].end(),
                         [name](const auto& feature) { return feature["name"] == name; });
}

constexpr const char* locked =
    "zvgentl set: Width cannot be written: it is locked at the moment: the camera is "
    "streaming, or another feature controls it\n";
constexpr const char* read_only = "TLModelName cannot be written: it is read only\n";
constexpr const char* no_interface = "no interface FG7; there are FG0, FG1\n";

const Row rows[] = {
    {"get DeviceModelName", "SoftCam CX 640\n"},
    {"get --device Device10 DeviceModelName", "SoftCam HS 2048\n"},
    {"get --device SCX800-0002 DeviceModelName", "SoftCam CX 800 HDR\n"},
    {"get --interface FG1 DeviceModelName", "SoftCam HS 2048\n"},
    {"get --port system TLModelName", "ZVGRLibGenTL\n"},
    {"get --port system TLModelName GenTLVersionMajor", "TLModelName=ZVGRLibGenTL\nGenTLVersionMajor=1\n"},
    {"get --port system TLModelName --json", "{\n  \"TLModelName\": \"ZVGRLibGenTL\"\n}\n"},
    {"get -s Width=320 -s OffsetX=64 Width OffsetX", "Width=320\nOffsetX=64\n"},
    {"get --port system TLModleName", "",
     "zvgentl get: there is no feature TLModleName; did you mean TLModelName?\n"},
    {"get --port system --set TLModelName=x TLModelName", "", read_only},
    {"features --port system --category Camera", "", "no category Camera; there are Root, SystemInformation"},
    {"features --port interface --interface FG7", "", no_interface},
    {"features --port remote --interface FG7", "", no_interface},
    {"set Width=320 OffsetX=320 ExposureTime=2500.5", "Width=320\nOffsetX=320\nExposureTime=2500.5\n"},
    {"set Width 320", "Width=320\n"},
    {"set Width=0", "", "zvgentl set: Width cannot be \"0\"; allowed: 1 to 640 px\n"},
    {"set OffsetX=320 Width=320", "", "zvgentl set: OffsetX cannot be \"320\"; allowed: 0 to 0 px\n"},
    {"set TLParamsLocked=1 Width=320", "TLParamsLocked=1\n", locked},
    {"set --port system TLModelName x", "", read_only},
    {"exec TimestampLatch", ""},
    {"exec TriggerSoftware", ""},
    {"exec --port system TLVersion", "", "TLVersion is not a command"},
};

} // namespace

TEST_P(FeatureCommand, DoesWhatItSays)
{
    const Row& row = GetParam();
    const Ended ended = with_plain_lines(Program(words_of(row.line)).run());
    EXPECT_EQ(row.refusal == nullptr ? 0 : 1, ended.code);
    EXPECT_EQ(row.output, ended.output);
    if (row.refusal == nullptr)
        EXPECT_EQ("", ended.errors);
    else
        EXPECT_THAT(ended.errors, HasSubstr(row.refusal));
}

INSTANTIATE_TEST_SUITE_P(Rows, FeatureCommand, testing::ValuesIn(rows));

TEST_P(FeaturesOfEveryPort, CanAllBeRead)
{
    const Ended ended = Program({"features", "--port", GetParam().first, "--json"}).run();
    ASSERT_EQ(0, ended.code) << ended.output << ended.errors;
    EXPECT_EQ("", ended.errors);
    const auto tree = ended.json();
    EXPECT_EQ(GetParam().second, tree["port"]);
    for (const auto& feature : tree["features"]) {
        EXPECT_FALSE(feature.contains("problem")) << feature;
        EXPECT_NE("Other", feature["type"]) << feature;
        const std::string access = feature["access"];
        const bool has_value = feature["type"] != "Category" && feature["type"] != "Command";
        const bool is_readable = access != "NA" && access != "NI" && access != "WO";
        EXPECT_EQ(has_value && is_readable, !feature["value"].is_null()) << feature;
    }
}

INSTANTIATE_TEST_SUITE_P(Ports, FeaturesOfEveryPort,
                         testing::Values(PortAndTitle{"system", "system"},
                                         PortAndTitle{"interface", "FG0 (interface)"},
                                         PortAndTitle{"device", "Device00 (device)"},
                                         PortAndTitle{"stream", "Stream000 (stream)"},
                                         PortAndTitle{"buffer", "Stream000 (buffer)"},
                                         PortAndTitle{"remote", "Device00 (remote)"}),
                         [](const auto& row) { return std::string(row.param.first); });

TEST(Features, AreShownAsATree)
{
    const Ended ended = with_plain_lines(Program({"features", "--port", "system"}).run());
    ASSERT_EQ(0, ended.code) << ended.errors;
    EXPECT_THAT(ended.output, StartsWith("system: Root\nSystemInformation\n  TLVendorName "));
    for (const char* const part : {"  TLModelName               String   RO  \"ZVGRLibGenTL\"\n",
                                   "  GenTLVersionMajor         Integer  RO  1\n"})
        EXPECT_THAT(ended.output, HasSubstr(part));
}

TEST(Features, AreLimitedToACategoryAndFollowTheSettings)
{
    const auto tree =
        Program({"features", "--set", "Width=320", "--category", "ImageFormatControl", "--json"})
            .run()
            .json();
    EXPECT_EQ("SensorWidth", tree["features"][0]["name"]);
    EXPECT_EQ(320, feature_in(tree, "OffsetX")["maximum"]) << "what the offset may be follows from the width";
}

TEST(Features, MayBeTextsWithBlanks)
{
    EXPECT_EQ("DeviceUserID=left camera\n",
              with_plain_lines(Program({"set", "DeviceUserID=left camera"}).run()).output);
}

TEST(GrabWithFeatures, GrabsWhatTheFeaturesSay)
{
    Program program({"grab", "--frames", "5", "--json", "--set", "Width=320", "--set", "Height=240", "--set",
                     "AcquisitionFrameRate=500"});
    const Ended ended = program.run();
    ASSERT_EQ(0, ended.code) << ended.output << ended.errors;
    EXPECT_EQ(320, ended.json()["picture"]["width"]);
    EXPECT_EQ(240, ended.json()["picture"]["height"]);
    EXPECT_EQ(320 * 240, ended.json()["buffer_size"]);
    EXPECT_EQ(0, ended.json()["checksums"]["damaged"]);
    EXPECT_TRUE(program.left_nothing_temporary());
}

TEST(GrabWithFeatures, GrabsNothingWhenOneIsRefused)
{
    Program program({"grab", "--frames", "5", "--set", "Width=0"});
    const Ended ended = program.run();
    EXPECT_EQ(1, ended.code);
    EXPECT_EQ("", ended.output);
    EXPECT_THAT(ended.errors, HasSubstr("zvgentl grab: Width cannot be \"0\""));
    EXPECT_TRUE(program.left_nothing_temporary());
}

TEST(Names, MayBeThoseThatUsersGive)
{
    const TemporaryFolder folder;
    write_text(folder / "grabbers.yaml",
               "grabbers: [{cameras: [{user_id: Left}, {user_id: Right}, {user_id: right}]}]\n");
    const Variables variables{{"ZV_GRABBER_CONFIG", (folder / "grabbers.yaml").generic_u8string()}};
    for (const auto& [name, device] : std::map<std::string, std::string>{
             {"left", "Device00"}, {"Right", "Device01"}, {"right", "Device02"}}) {
        const Ended ended = Program({"grab", "--frames", "1", "--json", "--device", name}, variables).run();
        EXPECT_EQ(device, ended.json()["device"]) << ended.errors;
    }
    const Ended ended = Program({"grab", "--device", "RIGHT"}, variables).run();
    EXPECT_EQ(1, ended.code);
    EXPECT_THAT(
        ended.errors,
        HasSubstr("more than one device is called RIGHT: FG0/Device01, FG0/Device02; choose one by its ID"));
}

} // namespace zvgentl::test
