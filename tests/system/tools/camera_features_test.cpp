#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Program.h"

namespace zvgentl::test {

namespace {

using Words = std::vector<std::string>;

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

Ended run(const Words& words) { return Program(words).run(); }

class FeaturesOfEveryPort : public testing::TestWithParam<const char*> {};

} // namespace

TEST_P(FeaturesOfEveryPort, CanAllBeRead)
{
    const Ended ended = run({"features", "--port", GetParam(), "--json"});
    ASSERT_EQ(0, ended.code) << ended.output << ended.errors;
    EXPECT_EQ("", ended.errors);
    const auto features = ended.json()["features"]; // must outlive its items
    for (const auto& feature : features) {
        EXPECT_FALSE(feature.contains("problem")) << feature;
        EXPECT_NE("Other", feature["type"]) << feature;
        const std::string access = feature["access"];
        const bool holds_value = feature["type"] != "Category" && feature["type"] != "Command";
        const bool is_readable = access != "NA" && access != "NI" && access != "WO";
        EXPECT_EQ(holds_value && is_readable, !feature["value"].is_null()) << feature;
    }
}

INSTANTIATE_TEST_SUITE_P(Ports, FeaturesOfEveryPort,
                         testing::Values("system", "interface", "device", "stream", "buffer", "remote"),
                         [](const auto& port) { return std::string(port.param); });

TEST(FeaturesOfACamera, AreThoseOfTheChosenDevice)
{
    EXPECT_EQ("SoftCam CX 640\n", run({"get", "DeviceModelName"}).output);
    EXPECT_EQ("SoftCam HS 2048\n", run({"get", "--device", "Device10", "DeviceModelName"}).output);
    EXPECT_EQ("SoftCam CX 800 HDR\n", run({"get", "--device", "SCX800-0002", "DeviceModelName"}).output);
    EXPECT_EQ("SoftCam HS 2048\n", run({"get", "--interface", "FG1", "DeviceModelName"}).output);
}

TEST(FeaturesOfACamera, AreSetInTheOrderInWhichTheyAreWritten)
{
    const Ended ended = run(
        {"set", "Width=320", "Height=240", "OffsetX=320", "ExposureTime=2500.5", "DeviceUserID=left camera"});
    EXPECT_EQ(0, ended.code) << ended.errors;
    EXPECT_EQ("Width=320\nHeight=240\nOffsetX=320\nExposureTime=2500.5\nDeviceUserID=left camera\n",
              ended.output);
    const Ended wrong = run({"set", "OffsetX=320", "Width=320"});
    EXPECT_EQ(1, wrong.code);
    EXPECT_EQ("", wrong.output);
    EXPECT_EQ("zvgentl set: OffsetX cannot be \"320\"; allowed: 0 to 0 px\n", wrong.errors);
}

TEST(FeaturesOfACamera, AreSetByNameAndValueToo)
{
    const Ended ended = run({"set", "Width", "320"});
    EXPECT_EQ(0, ended.code) << ended.errors;
    EXPECT_EQ("Width=320\n", ended.output);
}

TEST(FeaturesOfACamera, AreSetBeforeOthersAreRead)
{
    EXPECT_EQ("Width=320\nOffsetX=64\n",
              run({"get", "-s", "Width=320", "-s", "OffsetX=64", "Width", "OffsetX"}).output);
    const Ended ended = run({"features", "--set", "Width=320", "--category", "ImageFormatControl", "--json"});
    ASSERT_EQ(0, ended.code) << ended.errors;
    const auto tree = ended.json();
    const auto offset = std::find_if(tree["features"].begin(), tree["features"].end(),
                                     [](const auto& feature) { return feature["name"] == "OffsetX"; });
    ASSERT_NE(tree["features"].end(), offset);
    EXPECT_EQ(320, (*offset)["maximum"]) << "what the offset may be follows from the width";
}

TEST(FeaturesOfACamera, AreRefusedWithWhatIsAllowed)
{
    const std::pair<const char*, const char*> cases[] = {
        {"Width=0", "Width cannot be \"0\"; allowed: 1 to 640"},
        {"Width=wide", "Width cannot be \"wide\"; allowed: a whole number"},
        {"PixelFormat=Green", "PixelFormat cannot be \"Green\"; allowed: Mono8"},
        {"ExposureTime=-1", "ExposureTime cannot be \"-1\"; allowed: "},
        {"DeviceVendorName=", "DeviceVendorName cannot be written: it is read only"},
        {"TriggerSoftware=1", "TriggerSoftware is a command and has no value; `zvgentl exec"},
        {"Heigth=10", "there is no feature Heigth; did you mean Height"},
    };
    for (const auto& [assignment, reason] : cases) {
        const Ended ended = run({"set", assignment});
        EXPECT_EQ(1, ended.code) << assignment;
        EXPECT_TRUE(contains(ended.errors, reason)) << ended.errors;
    }
}

TEST(FeaturesOfACamera, AreLockedByTheTransportLayer)
{
    const Ended ended = run({"set", "TLParamsLocked=1", "Width=320"});
    EXPECT_EQ(1, ended.code);
    EXPECT_EQ("TLParamsLocked=1\n", ended.output) << "what came before is done";
    EXPECT_TRUE(contains(ended.errors, "Width cannot be written: it is locked at the moment"))
        << ended.errors;
}

TEST(CommandsOfACamera, AreExecuted)
{
    for (const char* const command : {"TimestampLatch", "TriggerSoftware", "AcquisitionStop"}) {
        const Ended ended = run({"exec", command});
        EXPECT_EQ(0, ended.code) << ended.errors;
        EXPECT_EQ("", ended.output + ended.errors);
    }
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
    EXPECT_TRUE(contains(ended.errors, "zvgentl grab: Width cannot be \"0\"")) << ended.errors;
    EXPECT_TRUE(program.left_nothing_temporary());
}

} // namespace zvgentl::test
