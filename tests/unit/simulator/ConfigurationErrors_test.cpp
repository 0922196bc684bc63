#include <algorithm>
#include <filesystem>
#include <fstream>

#include <sys/stat.h>

#include "simulator/config/GrabberReader.h"
#include "simulator/config/YamlDocument.h"
#include "simulator/faults/FaultConfiguration.h"
#include "unit/simulator/configuration_texts.h"
#include "unit/simulator/picture_files.h"

// What a file is refused for, key by key and mistake by mistake, and which file is read.

namespace {

namespace fs = std::filesystem;
using namespace zvsim;
using namespace zvsim_test;
using testing::ElementsAre;
using testing::IsEmpty;

/// A key with values that it takes, the smallest and the largest among them, and values that it refuses. A |
/// separates the values.
struct KeyRow {
    const char* section;
    const char* key;
    std::string accepted;
    std::string refused;
    /// What the message about a refused value names.
    const char* allowed;
};

const char* const whole_file = "configuration file";
const std::string x64(64, 'x');
const std::string x65(65, 'x');
const char* const texts = "0 to 64 printable ASCII characters";
const char* const names = "1 to 64 printable ASCII characters";
const char* const flags = "true, false";
const char* const sides = "a whole number from 1 to 16384";

const KeyRow key_rows[] = {
    {whole_file, "demo_grabber", "true|false", "yes|1|'true'||[true]", flags},
    {whole_file, "grabbers", "[]|[{}]", "|3|{}", "a list with 0 to 64 entries"},
    {"grabber", "name", "A|" + x64, "''|\"a\\tb\"|\xC3\xA4|[a]|" + x65, names},
    {"grabber", "protocol", "CoaXPress|CameraLinkHS|GigEVision", "CXP||0|USB3Vision",
     "CoaXPress, CameraLinkHS, GigEVision"},
    {"grabber", "count", "1|64", "0|65|-1|1.5|'2'|two|", "a whole number from 1 to 64"},
    {"grabber", "reports_geometry", "true|false", "on|", flags},
    {"grabber", "image_ids", "true|false", "on|", flags},
    {"grabber", "segments_per_buffer", "1|256", "0|257|", "a whole number from 1 to 256"},
    {"grabber", "cameras", "[]|[{}]", "|2|{}", "a list with 0 to 16 entries"},
    {"camera", "vendor", "''|A & B|" + x64, "\"\\x01\"||" + x65, texts},
    {"camera", "model", "''|" + x64, "{a: 1}|" + x65, texts},
    {"camera", "version", "''|1.10|" + x64, "[1]|" + x65, texts},
    {"camera", "serial", "A|0012|" + x64, "''|" + x65, names},
    {"camera", "user_id", "''|" + x64, "|" + x65, texts},
    {"camera", "count", "1|16", "0|17|x", "a whole number from 1 to 16"},
    {"camera", "sensor_width", "1|16384", "0|16385|640x480|1.0", sides},
    {"camera", "sensor_height", "1|16384", "0|16385|-480", sides},
    {"camera", "width", "1|640", "0|641", "1 to 640 in steps of 1"},
    {"camera", "height", "1|480", "0|481", "1 to 480 in steps of 1"},
    {"camera", "offset_x", "0|639", "640", "0 to 639 in steps of 1"},
    {"camera", "offset_y", "0|479", "480", "0 to 479 in steps of 1"},
    {"camera", "pixel_formats", "all|[Mono8]|[RGB8, BayerRG12p, Mono16]", "Mono8||{}",
     "all, or a list of pixel formats"},
    {"camera", "pixel_format", "Mono8|RGB12p|YUV411_8_UYYVYY", "mono8||17301505", "Mono8, Mono10,"},
    {"camera", "pixel_format_codes", "PFNC|CoaXPress", "pfnc|", "PFNC, CoaXPress"},
    {"camera", "test_pattern", "DiagonalRampMoving|Star", "Stars|",
     "DiagonalRampMoving, GreyHorizontalRamp, GreyVerticalRamp, ColorBar, Checkerboard, Black, White, Grey, "
     "Grid, VerticalLineMoving, Blinking, Noise, FrameCounter, Star"},
    {"camera", "stamp", "true|false", "no|", flags},
    {"camera", "pictures", absolute_path("/no/such/folder"), "pictures|./a|~/a",
     "the absolute path of a folder"},
    {"camera", "rate", "0.001|100000|29.97|free-running", "0|0.0009|100001|-1|nan|fast",
     "free-running, or a number from 0.001 to 100000"},
    {"camera", "jitter", "0 s|1 s|250 us", "-1 us|1.001 s|5|",
     "0 s to 1 s, with one of the units ns, us, ms, s, min"},
    {"camera", "start_up", "0 s|60 s|1 min", "-1 ms|61 s|0",
     "0 s to 60 s, with one of the units ns, us, ms, s, min"},
    {"camera", "exposure", "1 us|10 s|2.5 ms", "0 s|999 ns|10.1 s|10",
     "1 us to 10 s, with one of the units ns, us, ms, s, min"},
    {"camera", "gain", "-12|48|0.5", "-12.1|48.1|3 dB", "a number from -12 to 48"},
    {"camera", "acquisition_mode", "Continuous|SingleFrame|MultiFrame", "Single|",
     "Continuous, SingleFrame, MultiFrame"},
    {"camera", "frame_count", "1|65535", "0|65536", "a whole number from 1 to 65535"},
    {"camera", "triggered", "true|false", "Off", flags},
    {"camera", "trigger_source", "Software|Line0|Line1", "Line2", "Software, Line0, Line1"},
    {"camera", "trigger_activation", "RisingEdge|FallingEdge|AnyEdge|LevelHigh|LevelLow", "rising_edge",
     "RisingEdge, FallingEdge, AnyEdge, LevelHigh, LevelLow"},
};

std::vector<std::string> values_of(const std::string& list)
{
    std::vector<std::string> values{""};
    for (const char character : list) {
        if (character == '|')
            values.emplace_back();
        else
            values.back() += character;
    }
    return values;
}

/// A file whose last line sets that key, and where the line is.
std::pair<std::string, std::string> text_with(const KeyRow& row, const std::string& value)
{
    const std::string line = std::string{row.key} + ": " + value + "\n";
    const std::string section{row.section};
    if (section == whole_file)
        return {"# comment\n" + line, "grabbers.yaml:2: "};
    if (section == "grabber")
        return {"grabbers:\n  - " + line, "grabbers.yaml:2: "};
    return {"grabbers:\n  - cameras:\n      - " + line, "grabbers.yaml:3: "};
}

TEST(ConfigurationKeys, TakeTheirValues)
{
    for (const KeyRow& row : key_rows) {
        for (const std::string& value : values_of(row.accepted)) {
            const std::string text = text_with(row, value).first;
            EXPECT_THAT(configured_by(text)->errors, IsEmpty()) << text;
        }
    }
}

TEST(ConfigurationKeys, RefuseOthersAndReportLineValueAndWhatIsAllowed)
{
    for (const KeyRow& row : key_rows) {
        for (const std::string& value : values_of(row.refused)) {
            const auto [text, place] = text_with(row, value);
            const auto configuration = configured_by(text);
            EXPECT_THAT(configuration->errors,
                        ElementsAre(Like(place + row.key + " is ~llowed: " + row.allowed + "~")))
                << text;
            EXPECT_THAT(configuration->grabbers, IsEmpty()) << text;
        }
    }
}

TEST(ConfigurationKeys, AreAllInTheTable)
{
    const auto faults = zvsim::fault_keys(); // they have rows of their own
    for (const auto& section : zvsim::configuration_sections()) {
        const std::string name{section.section};
        for (const auto key : section.keys) {
            const bool is_fault = std::find(faults.begin(), faults.end(), key) != faults.end();
            const auto is_it = [&](const KeyRow& row) { return row.section == name && row.key == key; };
            if ((name == whole_file && !is_fault) || name == "grabber" || name == "camera") {
                EXPECT_EQ(1, std::count_if(std::begin(key_rows), std::end(key_rows), is_it))
                    << name << "." << key;
            }
        }
    }
}

std::string repeated(const char* text, int count)
{
    std::string all;
    while (count-- > 0)
        all += text;
    return all;
}

const std::string x61(61, 'x');
const std::string x62(62, 'x');
const std::string small_yuv{"sensor_width: 101\nsensor_height: 51\npixel_format: YUV411_8_UYYVYY\n"};
const std::string largest_sensor{"sensor_width: 16384\nsensor_height: 16384\n"};

/// A file and all its errors, one per line; a ~ stands for any text.
const std::pair<std::string, const char*> mistakes[] = {
    {"grabber: []\n",
     "grabbers.yaml:1: unknown configuration file key \"grabber\"; did you mean grabbers? Allowed: "
     "demo_grabber, grabbers~"},
    {"grabbers:\n  - nmae: x\n", "grabbers.yaml:2: unknown grabber key \"nmae\"; did you mean name?~"},
    {camera_text("Width: 8"), "grabbers.yaml:4: unknown camera key \"Width\"; did you mean width?~"},
    {"demo_grabber: maybe\ngrabbers:\n  - name: [x]\n    cameras:\n      - gain: loud\n        rate: 0\n"
     "  - colour: red\n",
     "grabbers.yaml:3: ~\ngrabbers.yaml:6: ~\ngrabbers.yaml:5: ~\ngrabbers.yaml:7: ~\ngrabbers.yaml:1: ~"},
    {camera_text("vendor:\nmodel: [x]\ngain: {}"),
     "grabbers.yaml:4: vendor is empty; allowed: 0 to 64 ~\ngrabbers.yaml:5: model is a list; allowed: 0 to "
     "64 ~\n"
     "grabbers.yaml:6: gain is a section with keys; allowed: a number from -12 to 48"},
    {"grabbers:\n" + repeated("  - count: 0\n", 30),
     "grabbers.yaml:2: ~\ngrabbers.yaml:21: ~\ngrabbers.yaml: 10 more errors"},

    {"grabbers: [{count: 60}, {count: 4}]\n", ""},
    {"grabbers:\n- count: 60\n- count: 5\n",
     "grabbers.yaml:3: there are more than 64 grabbers; allowed: up to 64 grabbers, including repeated ones"},
    {"grabbers:\n" + repeated("  - {}\n", 65),
     "~grabbers is a list with 65 entries; allowed: a list with 0 to 64 entries"},
    {"grabbers: [{cameras: [{count: 15}, {}]}]\n", ""},
    {"grabbers:\n- cameras:\n  - count: 15\n  - count: 2\n",
     "grabbers.yaml:4: a grabber has more than 16 cameras; allowed: up to 16 cameras, including repeated "
     "ones"},
    {camera_text("serial: " + x61 + "\nuser_id: " + x61 + "\ncount: 16"), ""},
    {camera_text("serial: " + x62 + "\ncount: 2"), "~; allowed: 1 to 61 printable ASCII characters"},
    {camera_text("user_id: " + x62 + "\ncount: 2"), "~; allowed: 0 to 61 printable ASCII characters"},
    {"grabbers:\n- cameras:\n  - serial: A-2\n  - {serial: A, count: 2}\n",
     "grabbers.yaml:4: the serial number \"A-2\" is already used by the camera on line 3; allowed: a "
     "different serial number for each camera of a grabber"},
    {"grabbers: [{cameras: [{serial: A}]}, {cameras: [{serial: A}]}]\n", ""},

    {camera_text("pixel_formats: [Mono8, Mono16]\npixel_format: Mono12"),
     "grabbers.yaml:5: pixel_format is \"Mono12\"; did you mean Mono16? Allowed: Mono8, Mono16"},
    {camera_text("pixel_formats:\n  - Mono8\n  - Mono8\n  - Mono9\n"),
     "grabbers.yaml:6: entry 2 of pixel_formats repeats Mono8; allowed: each format once\n"
     "grabbers.yaml:7: entry 3 of pixel_formats is \"Mono9\"; did you mean Mono8?~BayerRG12p~"},
    {camera_text("pixel_formats: []"), "~a list with 1 to 63 entries"},
    {camera_text(small_yuv + "width: 98"), "~allowed: 4 to 100 in steps of 4~"},
    {camera_text(small_yuv + "offset_x: 2"), "~allowed: 0 to 96 in steps of 4~"},
    {camera_text("pixel_format: BayerGR8\nheight: 3\noffset_y: 5"),
     "~:6: offset_y is \"5\"; allowed: 0 to 478 in steps of 2, limited by the sensor and the pixel format\n"
     "~:5: height is \"3\"; allowed: 2 to 480 in steps of 2~"},
    {camera_text("offset_x: 40\nwidth: 601"), "~allowed: 1 to 600 in steps of 1~"},
    {camera_text("sensor_width: 4\nsensor_height: 2\npixel_formats: all"), ""},
    {camera_text("sensor_width: 3\npixel_formats: [Mono8, Mono10p]"),
     "grabbers.yaml:4: sensor_width is 3; allowed: at least 4 for Mono10p"},
    {camera_text("sensor_height: 1\npixel_formats: [Mono8, BayerRG8]"),
     "grabbers.yaml:4: sensor_height is 1; allowed: at least 2 for BayerRG8"},
    {camera_text(largest_sensor + "pixel_formats: [Mono8, RGBa8]"), ""},
    {camera_text(largest_sensor + "pixel_formats: [Mono8, RGB16]"),
     "grabbers.yaml:4: a buffer of this camera can need 1610612736 bytes; allowed: up to 1073741824 (~)"},
    {"grabbers: [{segments_per_buffer: 5, cameras: [{sensor_width: 16384, sensor_height: 16384}]}]\n",
     "~can need 1342177280 bytes~"},

    {"call_log: b.log", "grabbers.yaml:1: ~the absolute path of a file"},
    {"events: [{do: plug, grabber: 0}]", "~allowed: at, scan"},
    {"events: [{do: plug, grabber: 0, at: 1 s, scan: 1}]", "~allowed: at, scan"},
    {"events: [{scan: 1}]", "~'do' is missing~\n~'grabber' is missing~"},
};

TEST(ConfigurationMistakes, AreReported)
{
    for (const auto& [text, errors] : mistakes)
        EXPECT_THAT(joined(configured_by(text)->errors), Like(errors)) << text;
}

/// The keys of a fault, and its one error.
const std::pair<const char*, const char*> fault_mistakes[] = {
    {"times: 1", "'kind' is missing; allowed: the name of a kind of fault"},
    {"kind: scan-fail", "kind is \"scan-fail\"; did you mean scan-fails? Allowed: ~"},
    {"kind: scan-fails, tims: 1", "unknown fault key \"tims\"; did you mean times? Allowed: ~"},
    {"kind: scan-fails, when: {cal: 1}",
     "unknown 'when' key \"cal\"; did you mean call? Allowed: call, frame, ~"},
    {"kind: call-fails", "'function' is missing; allowed: the name of a function"},
    {"kind: call-fails, function: ZVGR_Opn", "function is \"ZVGR_Opn\"; did you mean ZVGR_Open? Allowed: ~"},
    {"kind: scan-fails, function: ZVGR_Open",
     "'function' does not apply to this kind of fault; allowed: ~status~"},
    {"kind: call-leaves-output-untouched, function: ZVGR_Close",
     "function is \"ZVGR_Close\"~llowed: ~ZVGR_CameraInfo2~"},
    {"kind: scan-fails, status: 0x3000",
     "status is \"0x3000\"; allowed: any number except 0x3000, which means success"},
    {"kind: grabber-name-missing, status: 1", "'status' does not apply~kind~"},
    {"kind: frame-late", "'time' is missing; allowed: a number with a unit, as in 100 ms"},
    {"kind: frame-late, time: 5", "time is \"5\"~ms~"},
    {"kind: camera-open-fails, camera: 1",
     "'camera' is given without its grabber; allowed: grabber and camera"},
    {"kind: scan-fails, when: {frame: 1}", "'frame' applies to frame faults only; allowed: call~"},
    {"kind: scan-fails, when: {after: 1 s, since: scan}",
     "'since' applies to frame faults only; allowed: call~"},
    {"kind: frame-dropped, when: {call: 1}", "'call' applies to call faults only; allowed: frame~"},
    {"kind: frame-dropped, when: {frame: 9, until: 8}",
     "'until' comes before the first occurrence; allowed: a later one"},
    {"kind: frame-dropped, when: {since: start}", "'since' needs 'after'; allowed: after and since"},
    {"kind: frame-dropped, when: {probability: 1.5}",
     "probability is \"1.5\"; allowed: a number from 0 to 1"},
    {"kind: scan-fails, when: {call: 0}", "call is \"0\"; allowed: a whole number from 1 ~"},
    {"kind: frame-truncated, by: 4", "'by' does not apply~bytes~"},
    {"kind: frame-dropped, away_for_scans: 1", "'away_for_scans' does not apply~times~"},
    {"kind: scan-fails, name: Width", "'name' does not apply~status~"},
};

TEST(FaultMistakes, AreReportedWithTheirLineAndWhatIsAllowed)
{
    for (const auto& [keys, error] : fault_mistakes) {
        const auto configuration = configured_by("seed: 1\nfaults:\n- {" + std::string{keys} + "}\n");
        EXPECT_THAT(configuration->errors, ElementsAre(Like("grabbers.yaml:3: " + std::string{error})))
            << keys;
        EXPECT_THAT(configuration->faults.faults, IsEmpty()) << keys;
    }
}

/// A user whose home is a new folder.
class AUser : public testing::Test {
protected:
    const zvsim_test::Folder home;
    const fs::path usual_file{home.path() / ".config/zvgentl/grabbers.yaml"};
#ifdef _WIN32
    static constexpr const char* folder_variable = "APPDATA";
    const Variable chosen_variable{folder_variable, (home.path() / ".config").string()};
    const Variable system_variable{"ProgramData", (home.path() / "machine").string()};
    const std::string system_file{(home.path() / "machine" / "zvgentl" / "grabbers.yaml").string()};
#else
    static constexpr const char* folder_variable = "XDG_CONFIG_HOME";
    const Variable home_variable{"HOME", home.path().string()};
    const Variable chosen_variable{folder_variable, ""};
    const std::string system_file{"/etc/zvgentl/grabbers.yaml"};
#endif
    const Variable named{"ZV_GRABBER_CONFIG", ""};
};

TEST_F(AUser, WithoutAFileReadsNoneButTheSystems)
{
    EXPECT_THAT(ConfigurationFile::find().path, testing::AnyOf("", system_file));
}

TEST_F(AUser, HasAFileOfTheirOwn)
{
    home.write(usual_file, "usual");
    const ConfigurationFile file = ConfigurationFile::find();
    EXPECT_EQ(usual_file, fs::u8path(file.path));
    EXPECT_EQ("usual", file.text);
    EXPECT_EQ("", file.problem);
}

TEST_F(AUser, ChoosesAnotherFolder)
{
    home.write("chosen/zvgentl/grabbers.yaml", "chosen");
    const Variable variable{folder_variable, home.file("chosen").string()};
    EXPECT_EQ("chosen", ConfigurationFile::find().text);
}

TEST_F(AUser, KeepsTheUsualFolderWhenTheChosenOneIsRelative)
{
    home.write(usual_file, "usual");
    const Variable variable{folder_variable, "chosen"};
    EXPECT_EQ("usual", ConfigurationFile::find().text);
}

TEST_F(AUser, CanNameAnyFile)
{
    home.write(usual_file, "usual");
    home.write("any.yaml", "any");
    const Variable variable{"ZV_GRABBER_CONFIG", home.file("any.yaml").string()};
    EXPECT_EQ("any", ConfigurationFile::find().text);
}

/// A file that the variable names and that cannot be read.
class AnUnreadableFile : public AUser {
protected:
    static void expect_problem(const fs::path& path, const std::string& problem)
    {
        const Variable variable{"ZV_GRABBER_CONFIG", path.string()};
        zvsim::Environment environment;
        environment.file = ConfigurationFile::find();
        const auto configuration = Configuration::make(environment);
        EXPECT_THAT(configuration->errors, ElementsAre(Like(path.string() + ":" + problem)));
        EXPECT_THAT(configuration->grabbers, IsEmpty());
    }
};

TEST_F(AnUnreadableFile, IsReportedWithItsReason)
{
    expect_problem("any.yaml", " ZV_GRABBER_CONFIG must be an absolute path");
    expect_problem(home.file("none.yaml"), " cannot be found: No such file~");
    expect_problem(home.path(), " not a regular file");
    home.write("long.yaml", std::string(3 * zvsim::YamlDocument::largest_text, '#'));
    expect_problem(home.file("long.yaml"), " the file is larger than 1 MiB; allowed: up to 1 MiB");
    home.write("binary.yaml", {"\x7F\x45LF\0\0", 6});
    expect_problem(home.file("binary.yaml"), "1: character 127 is not text; allowed: YAML in UTF-8");
}

TEST_F(AnUnreadableFile, MayBeADeviceAPipeOrALinkToItself)
{
    expect_problem("/dev/zero", " not a regular file");
    ASSERT_EQ(0, mkfifo(home.file("pipe").string().c_str(), 0600));
    expect_problem(home.file("pipe"), " not a regular file");
    fs::create_symlink("loop", home.file("loop"));
    expect_problem(home.file("loop"), " cannot be found: Too many levels of symbolic links~");
}

TEST_F(AnUnreadableFile, MayBeOneThatItsOwnerKeepsPrivate)
{
    home.write("secret.yaml", "grabbers: []");
    fs::permissions(home.file("secret.yaml"), fs::perms::none);
    if (std::ifstream{home.file("secret.yaml")})
        GTEST_SKIP() << "this user may read everything";
    expect_problem(home.file("secret.yaml"), " cannot be opened: Permission denied");
}

TEST(ConfigurationFile, DiffersWhenPathTextOrProblemDiffer)
{
    const ConfigurationFile file{"a", "b", "c"};
    EXPECT_EQ(file, (ConfigurationFile{"a", "b", "c"}));
    EXPECT_FALSE(file == (ConfigurationFile{"x", "b", "c"}));
    EXPECT_FALSE(file == (ConfigurationFile{"a", "x", "c"}));
    EXPECT_FALSE(file == (ConfigurationFile{"a", "b", "x"}));
}

} // namespace
