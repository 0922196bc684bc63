#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "genapi/CameraMap.h"
#include "support.h"
#include "zvgentl/FeatureFile.h"

namespace zvgentl::test {

using namespace tool;

namespace {

class FeatureFile : public CameraMap {
protected:
    std::string saved()
    {
        std::vector<std::string> problems;
        const std::string text = to_text(read_features(map, problems), "Camera");
        EXPECT_THAT(problems, testing::IsEmpty());
        return text;
    }

    /// "set unchanged Width cannot be ..."
    std::string loaded(const std::string& text)
    {
        std::string results;
        for (const auto& [feature, result, problem] : apply_features(parse_features(text), map))
            results += (results.empty() ? "" : ", ") + (result == LoadResult::failed ? problem
                                                        : result == LoadResult::set  ? "set"
                                                                                     : "unchanged");
        return results;
    }
};

} // namespace

TEST_F(FeatureFile, HoldsWhatCanBeWrittenForEveryValueOfItsSelectors)
{
    map.set("TriggerSelector", "LineStart");
    map.set("TriggerMode", "7");
    map.set("DeviceUserID", "a\\b\tc");
    EXPECT_EQ("# Camera\n"
              "Width = 640\n"
              "OffsetX = 0\n"
              "PixelFormat = Mono8\n"
              "ReverseX = false\n"
              "ExposureTime = 100\n"
              "Gain = 1.5\n"
              "TriggerSelector = LineStart\n"
              "TriggerMode[TriggerSelector=FrameStart] = 0\n"
              "TriggerMode[TriggerSelector=LineStart] = 7\n"
              "DeviceUserID = a\\\\b\\x09c\n",
              saved());
    EXPECT_EQ("LineStart", text("TriggerSelector")) << "it has its own value back";
}

TEST_F(FeatureFile, IsLoadedInAnOrderThatWorks)
{
    // The offset fits only when the width is smaller, and the trigger modes need their selector.
    EXPECT_EQ("set, set, set, set, unchanged, set", loaded("OffsetX = 320\n"
                                                           "Width = 320\n"
                                                           "TriggerMode[TriggerSelector=LineStart] = 5\n"
                                                           "TriggerMode[TriggerSelector=FrameStart] = 4\n"
                                                           "PixelFormat = Mono8\n"
                                                           "TriggerSelector = LineStart\n"));
    EXPECT_EQ("320", text("OffsetX"));
    EXPECT_EQ("LineStart", text("TriggerSelector"));
    EXPECT_EQ("5", text("TriggerMode"));
    map.set("TriggerSelector", "FrameStart");
    EXPECT_EQ("4", text("TriggerMode"));
}

TEST_F(FeatureFile, GivesWhatItSavedBack)
{
    map.set("DeviceUserID", " x = [y] ");
    map.set("Width", "320");
    map.set("OffsetX", "16");
    const std::string before = saved();
    map.set("DeviceUserID", "other");
    map.set("OffsetX", "0");
    map.set("Width", "1024");
    EXPECT_THAT(loaded(before), Not(HasSubstr("cannot")));
    EXPECT_EQ(before, saved());
}

TEST_F(FeatureFile, NamesWhatCannotBeSetAndSetsTheRest)
{
    EXPECT_EQ(
        "there is no feature Widht; did you mean Width?, Width cannot be \"17\"; allowed: 16 to 1024 in "
        "steps of 16 px, TriggerSelector cannot be \"None\"; allowed: FrameStart, LineStart, set",
        loaded("Widht = 16\nWidth = 17\nTriggerMode[TriggerSelector=None] = 1\nExposureTime = 50"));
    EXPECT_EQ("50", text("ExposureTime"));
    EXPECT_EQ("FrameStart", text("TriggerSelector"));
}

TEST_F(FeatureFile, AcceptsValuesThatTheDeviceRounds)
{
    EXPECT_EQ("set", loaded("ExposureTime = 50.04\n"));
    EXPECT_EQ("50", text("ExposureTime"));
}

TEST_F(FeatureFile, ReportsFeaturesThatTakeTheirValuesFromEachOther)
{
    EXPECT_EQ("Address does not keep its value: another feature of the file changes it again, Mask does not "
              "keep its value: another feature of the file changes it again",
              loaded("Address = 10.0.0.1\nMask = 0x1\n"));
}

TEST(FeatureFileText, IsRefusedWithItsLine)
{
    const std::pair<const char*, const char*> cases[] = {
        {"# comment\n\nWidth\n", "line 3: it is not of the form NAME = VALUE"},
        {"= 5", "line 1: the name of the feature is missing"},
        {"Mode[Selector] = 1", "line 1: \"Selector\" is not of the form SELECTOR=VALUE"},
        {"Mode[Selector=1 = 1", "line 1: it is not of the form NAME = VALUE"},
        {"Name = a\\q", "line 1: after a backslash, only n, x with two digits, or another one may stand"},
        {"Name = a\\x1", "line 1: after a backslash"},
    };
    for (const auto& [text, reason] : cases)
        EXPECT_THAT(error_of([text = text] { parse_features(text); }), StartsWith(reason)) << text;
}

TEST(FeatureFileText, KeepsBlanksAndLineEndsOfValues)
{
    const auto features = parse_features("Name =  a=b \r\nOther=\\n\\\\\n");
    ASSERT_EQ(2U, features.size());
    EXPECT_EQ(" a=b ", features[0].value);
    EXPECT_EQ("\n\\", features[1].value);
    EXPECT_EQ("# c\nName =  a=b \nOther = \\n\\\\\n", to_text(features, "c"));
    EXPECT_EQ("# c\nName = \\x1B\\xC2\\x85\xC3\xA9\n", to_text({{{}, "Name", "\x1b\xC2\x85\xC3\xA9"}}, "c"));
    EXPECT_EQ("\x1b\xC2\x85", parse_features("Name = \\x1B\\xC2\\x85")[0].value);
}

TEST_F(FeatureFile, LeavesOutWhatIsNotStreamableWhereSomethingIs)
{
    FakeRegisters memory;
    const NodeMap streamable(
        description_of("<Category Name=\"Root\"><pFeature>A</pFeature><pFeature>B</pFeature></Category>"
                       "<Integer Name=\"A\"><Streamable>Yes</Streamable><pValue>AReg</pValue></Integer>"
                       "<Integer Name=\"B\"><pValue>BReg</pValue></Integer>" +
                       register_of("AReg", 0) + register_of("BReg", 4)),
        memory);
    std::vector<std::string> problems;
    EXPECT_EQ("# c\nA = 0\n", to_text(read_features(streamable, problems), "c"));
}

} // namespace zvgentl::test
