#include <algorithm>

#include <gmock/gmock.h>

#include "simulator/config/GrabberReader.h"
#include "simulator/faults/FaultConfiguration.h"
#include "unit/simulator/configuration_texts.h"

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using zvsim_test::absolute_path;
using zvsim_test::configured_by;

/// A key with values that it takes, the smallest and the largest among them, and values that it refuses.
struct KeyRow {
    const char* section;
    const char* key;
    std::vector<std::string> accepted;
    std::vector<std::string> refused;
    /// What the message about a refused value names.
    const char* allowed;
};

void PrintTo(const KeyRow& row, std::ostream* out) { *out << row.section << "." << row.key; }

std::string letters(size_t count) { return std::string(count, 'x'); }

const char* const texts = "0 to 64 printable ASCII characters";
const char* const flags = "true, false";

std::vector<KeyRow> rows()
{
    return {
        {"configuration file",
         "demo_grabber",
         {"true", "false"},
         {"yes", "1", "'true'", "", "[true]"},
         flags},
        {"configuration file", "grabbers", {"[]", "[{}]"}, {"", "3", "{}"}, "a list with 0 to 64 entries"},
        {"grabber",
         "name",
         {"A", letters(64)},
         {"''", letters(65), "\"a\\tb\"", "\xC3\xA4", "[a]"},
         "1 to 64 printable ASCII characters"},
        {"grabber",
         "protocol",
         {"CoaXPress", "CameraLinkHS", "GigEVision"},
         {"CXP", "", "0", "USB3Vision"},
         "CoaXPress, CameraLinkHS, GigEVision"},
        {"grabber",
         "count",
         {"1", "64"},
         {"0", "65", "-1", "1.5", "'2'", "two", ""},
         "a whole number from 1 to 64"},
        {"grabber", "reports_geometry", {"true", "false"}, {"on", ""}, flags},
        {"grabber", "image_ids", {"true", "false"}, {"on", ""}, flags},
        {"grabber", "segments_per_buffer", {"1", "256"}, {"0", "257", ""}, "a whole number from 1 to 256"},
        {"grabber", "cameras", {"[]", "[{}]"}, {"", "2", "{}"}, "a list with 0 to 16 entries"},
        {"camera", "vendor", {"''", "A & B", letters(64)}, {letters(65), "\"\\x01\"", ""}, texts},
        {"camera", "model", {"''", letters(64)}, {letters(65), "{a: 1}"}, texts},
        {"camera", "version", {"''", "1.10", letters(64)}, {letters(65), "[1]"}, texts},
        {"camera",
         "serial",
         {"A", "0012", letters(64)},
         {"''", letters(65)},
         "1 to 64 printable ASCII characters"},
        {"camera", "user_id", {"''", letters(64)}, {letters(65), ""}, texts},
        {"camera", "count", {"1", "16"}, {"0", "17", "x"}, "a whole number from 1 to 16"},
        {"camera",
         "sensor_width",
         {"1", "16384"},
         {"0", "16385", "640x480", "1.0"},
         "a whole number from 1 to 16384"},
        {"camera", "sensor_height", {"1", "16384"}, {"0", "16385", "-480"}, "a whole number from 1 to 16384"},
        {"camera", "width", {"1", "640"}, {"0", "641"}, "1 to 640 in steps of 1"},
        {"camera", "height", {"1", "480"}, {"0", "481"}, "1 to 480 in steps of 1"},
        {"camera", "offset_x", {"0", "639"}, {"640"}, "0 to 639 in steps of 1"},
        {"camera", "offset_y", {"0", "479"}, {"480"}, "0 to 479 in steps of 1"},
        {"camera",
         "pixel_formats",
         {"all", "[Mono8]", "[RGB8, BayerRG12p, Mono16]"},
         {"Mono8", "", "{}"},
         "all, or a list of pixel formats"},
        {"camera",
         "pixel_format",
         {"Mono8", "RGB12p", "YUV411_8_UYYVYY"},
         {"mono8", "", "17301505"},
         "Mono8, Mono10,"},
        {"camera", "pixel_format_codes", {"PFNC", "CoaXPress"}, {"pfnc", ""}, "PFNC, CoaXPress"},
        {"camera",
         "test_pattern",
         {"DiagonalRampMoving", "Star"},
         {"Stars", ""},
         "DiagonalRampMoving, GreyHorizontalRamp, GreyVerticalRamp, ColorBar, Checkerboard, Black, White, "
         "Grey, Grid, "
         "VerticalLineMoving, "
         "Blinking, Noise, FrameCounter, Star"},
        {"camera", "stamp", {"true", "false"}, {"no", ""}, flags},
        {"camera",
         "pictures",
         {absolute_path("/no/such/folder")},
         {"pictures", "./a", "~/a"},
         "the absolute path of a folder"},
        {"camera",
         "rate",
         {"0.001", "100000", "29.97", "free-running"},
         {"0", "0.0009", "100001", "-1", "nan", "fast"},
         "free-running, or a number from 0.001 to 100000"},
        {"camera",
         "jitter",
         {"0 s", "1 s", "250 us"},
         {"-1 us", "1.001 s", "5", ""},
         "0 s to 1 s, with one of the units ns, us, ms, s, min"},
        {"camera",
         "start_up",
         {"0 s", "60 s", "1 min"},
         {"-1 ms", "61 s", "0"},
         "0 s to 60 s, with one of the units ns, us, ms, s, min"},
        {"camera",
         "exposure",
         {"1 us", "10 s", "2.5 ms"},
         {"0 s", "999 ns", "10.1 s", "10"},
         "1 us to 10 s, with one of the units ns, us, ms, s, min"},
        {"camera", "gain", {"-12", "48", "0.5"}, {"-12.1", "48.1", "3 dB"}, "a number from -12 to 48"},
        {"camera",
         "acquisition_mode",
         {"Continuous", "SingleFrame", "MultiFrame"},
         {"Single", ""},
         "Continuous, SingleFrame, MultiFrame"},
        {"camera", "frame_count", {"1", "65535"}, {"0", "65536"}, "a whole number from 1 to 65535"},
        {"camera", "triggered", {"true", "false"}, {"Off"}, flags},
        {"camera", "trigger_source", {"Software", "Line0", "Line1"}, {"Line2"}, "Software, Line0, Line1"},
        {"camera",
         "trigger_activation",
         {"RisingEdge", "FallingEdge", "AnyEdge", "LevelHigh", "LevelLow"},
         {"rising_edge"},
         "RisingEdge, FallingEdge, AnyEdge, LevelHigh, LevelLow"},
    };
}

/// A file with that line in a section of that kind, and the number of the line.
std::pair<std::string, int> text_with(const KeyRow& row, const std::string& value)
{
    const std::string line = std::string{row.key} + ": " + value + "\n";
    const std::string section{row.section};
    if (section == "configuration file")
        return {"# comment\n" + line, 2};
    if (section == "grabber")
        return {"grabbers:\n  - " + line, 2};
    return {"grabbers:\n  - cameras:\n      - " + line, 3};
}

class ConfigurationKey : public testing::TestWithParam<KeyRow> {};

TEST_P(ConfigurationKey, TakesItsValues)
{
    for (const std::string& value : GetParam().accepted)
        EXPECT_THAT(configured_by(text_with(GetParam(), value).first)->errors, IsEmpty()) << value;
}

TEST_P(ConfigurationKey, RefusesOthersAndTellsLineValueAndWhatIsAllowed)
{
    for (const std::string& value : GetParam().refused) {
        const auto [text, line] = text_with(GetParam(), value);
        const auto configuration = configured_by(text);
        const std::string start = "grabbers.yaml:" + std::to_string(line) + ": ";
        EXPECT_THAT(configuration->errors,
                    ElementsAre(AllOf(StartsWith(start + GetParam().key + " is "),
                                      HasSubstr(std::string{"; allowed: "} + GetParam().allowed))))
            << value;
        EXPECT_THAT(configuration->grabbers, IsEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(Every, ConfigurationKey, testing::ValuesIn(rows()), [](const auto& test) {
    const std::string section{test.param.section};
    return (section == "configuration file" ? "file" : section) + "_" + test.param.key;
});

TEST(ConfigurationKeys, AreAllInTheTable)
{
    const auto table = rows();
    for (const auto& section : zvsim::configuration_sections()) {
        const std::string name{section.section};
        if (name != "configuration file" && name != "grabber" && name != "camera")
            continue;
        for (const auto key : section.keys) {
            const auto& faults = zvsim::fault_keys();
            if (std::find(faults.begin(), faults.end(), key) != faults.end())
                continue;
            const auto is_it = [&](const KeyRow& row) { return row.section == name && row.key == key; };
            EXPECT_TRUE(std::any_of(table.begin(), table.end(), is_it)) << name << "." << key;
        }
    }
}

TEST(ConfigurationKeys, UnknownOnesAreReportedInEverySection)
{
    EXPECT_THAT(
        configured_by("grabber: []\n")->errors,
        ElementsAre(StartsWith("grabbers.yaml:1: \"grabber\" is no key of a configuration file (meant is "
                               "grabbers?); allowed: demo_grabber, grabbers")));
    EXPECT_THAT(configured_by("grabbers:\n  - nmae: x\n")->errors,
                ElementsAre(StartsWith("grabbers.yaml:2: \"nmae\" is no key of a grabber (meant is name?)")));
    EXPECT_THAT(
        configured_by("grabbers:\n  - cameras:\n      - Width: 8\n")->errors,
        ElementsAre(StartsWith("grabbers.yaml:3: \"Width\" is no key of a camera (meant is width?)")));
}

TEST(ConfigurationKeys, AllMistakesOfAFileAreReportedAtOnce)
{
    EXPECT_THAT(
        configured_by("demo_grabber: maybe\n"
                      "grabbers:\n"
                      "  - name: [x]\n"
                      "    cameras:\n"
                      "      - gain: loud\n"
                      "        rate: 0\n"
                      "  - colour: red\n")
            ->errors,
        testing::UnorderedElementsAre(StartsWith("grabbers.yaml:1: "), StartsWith("grabbers.yaml:3: "),
                                      StartsWith("grabbers.yaml:5: "), StartsWith("grabbers.yaml:6: "),
                                      StartsWith("grabbers.yaml:7: ")));
}

TEST(ConfigurationKeys, ErrorsBeyondTwentyAreCounted)
{
    std::string text{"grabbers:\n"};
    for (int grabber = 0; grabber < 30; ++grabber)
        text += "  - count: 0\n";
    const auto errors = configured_by(text)->errors;
    ASSERT_EQ(21U, errors.size());
    EXPECT_EQ("grabbers.yaml: 10 more errors", errors.back());
}

} // namespace
