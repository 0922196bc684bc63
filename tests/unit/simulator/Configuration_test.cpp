#include <filesystem>
#include <regex>
#include <set>
#include <stdexcept>
#include <tuple>

#include <nlohmann/json.hpp>

#include "zvgr/ZVGRLib.h"

#include "simulator/Devices.h"
#include "simulator/config/CameraReader.h"
#include "simulator/config/GrabberReader.h"
#include "simulator/faults/FaultKind.h"
#include "unit/simulator/configuration_texts.h"
#include "unit/simulator/picture_files.h"

// The grabbers and cameras that a file and the environment describe; and the schema, the examples and the
// pages, next to what the library reads.

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using namespace zvsim;
using namespace zvsim_test;
using nlohmann::json;
using testing::AllOf;
using testing::ContainerEq;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<CameraModel> cameras_of(const Configuration& configuration)
{
    std::vector<CameraModel> cameras;
    for (const auto& grabber : configuration.grabbers)
        cameras.insert(cameras.end(), grabber.cameras.begin(), grabber.cameras.end());
    return cameras;
}

/// The one camera of a file without errors.
CameraModel camera_of(const std::string& keys)
{
    const auto configuration = configured_by(camera_text(keys));
    EXPECT_THAT(configuration->errors, IsEmpty());
    const auto cameras = cameras_of(*configuration);
    if (cameras.size() != 1)
        throw std::runtime_error{"not one camera"};
    return cameras[0];
}

std::vector<std::string> names_of(const std::string& text)
{
    std::vector<std::string> names;
    const auto configuration = configured_by(text);
    for (const GrabberModel& grabber : configuration->grabbers)
        names.push_back(grabber.display_name);
    return names;
}

/// Sensor, size and offset of the picture, its format, and how many the camera has.
std::string picture_of(const CameraModel& camera)
{
    const auto& start = camera.start;
    const auto pair = [](uint32_t x, uint32_t y) {
        return std::to_string(x) + "x" + std::to_string(y) + " ";
    };
    return pair(camera.sensor_width, camera.sensor_height) + pair(start.width, start.height) +
           pair(start.offset_x, start.offset_y) + start.format->name + " of " +
           std::to_string(camera.formats.size());
}

TEST(ConfigurationGrabbers, HaveTheUsualKeysOfTheirProtocolOrThoseOfTheFile)
{
    const auto configuration = configured_by(
        "demo_grabber: false\ngrabbers: [{}, {protocol: CameraLinkHS}, {protocol: GigEVision}, {name: Own, "
        "protocol: CameraLinkHS, image_ids: true, reports_geometry: false, segments_per_buffer: 4}]\n");
    const auto grabber = [](const char* name, uint32_t protocol, bool has_geometry, bool has_ids,
                            uint32_t segments) {
        return AllOf(Field(&GrabberModel::display_name, name), Field(&GrabberModel::protocol, protocol),
                     Field(&GrabberModel::reports_geometry, has_geometry),
                     Field(&GrabberModel::has_image_ids, has_ids),
                     Field(&GrabberModel::segments_per_buffer, segments),
                     Field(&GrabberModel::cameras, IsEmpty()));
    };
    EXPECT_THAT(configuration->grabbers,
                ElementsAre(grabber("ZEVA Software Grabber", zv_protocol_cxp, false, true, 1),
                            grabber("ZEVA Software Grabber", zv_protocol_clhs, true, false, 1),
                            grabber("ZEVA Software Grabber", zv_protocol_gev, false, false, 1),
                            grabber("Own", zv_protocol_clhs, false, true, 4)));
}

TEST(ConfigurationGrabbers, AreThoseOfTheFileOrElseTheBuiltInOnesAndTheDemoGrabberUnlessItIsOff)
{
    const std::string demo{"ZEVA Demo Grabber"};
    const std::string cxp{"ZEVA Software Grabber CXP-2"};
    const std::string clhs{"ZEVA Software Grabber CLHS-1"};
    EXPECT_THAT(names_of("grabbers: [{name: A}]\n"), ElementsAre("A", demo));
    EXPECT_THAT(names_of("demo_grabber: true\ngrabbers: [{name: A}]\n"), ElementsAre("A", demo));
    EXPECT_THAT(names_of("demo_grabber: false\ngrabbers: [{name: A}]\n"), ElementsAre("A"));
    EXPECT_THAT(names_of("demo_grabber: false\ngrabbers: []\n"), IsEmpty());
    EXPECT_THAT(names_of("demo_grabber: true\n"), ElementsAre(cxp, clhs, demo));
    EXPECT_THAT(names_of("demo_grabber: false\n"), ElementsAre(cxp, clhs));
    EXPECT_THAT(names_of("# nothing\n"), ElementsAre(cxp, clhs, demo));
}

TEST(ConfigurationGrabbers, BuiltInOnesHaveTheirCameras)
{
    const auto configuration = Configuration::make({});
    EXPECT_THAT(configuration->errors, IsEmpty());
    EXPECT_THAT(configuration->warnings, IsEmpty());
    const auto cameras = cameras_of(*configuration);
    std::vector<std::string> pictures;
    for (const auto& camera : cameras) {
        EXPECT_EQ(25, camera.start.frames_per_second);
        pictures.push_back(camera.serial_number + " " + picture_of(camera));
    }
    EXPECT_THAT(pictures, ElementsAre("SCX640-0001 640x480 640x480 0x0 Mono8 of 7",
                                      "SCX800-0002 800x600 800x600 0x0 Mono16 of 3",
                                      "SHS2048-0003 2048x1024 2048x1024 0x0 Mono8 of 3",
                                      "SDEMO-0004 320x240 320x240 0x0 Mono8 of 1"));
    EXPECT_EQ(2U, configuration->grabbers[0].cameras.size());
    const GrabberModel grabber;
    EXPECT_EQ(uint64_t{800} * 600 * 2, (zvsim::CameraDevice{cameras[1], grabber}.payload()));
}

TEST(ConfigurationGrabbers, AreNumberedWithTheirCamerasWhenTheyAreRepeated)
{
    const auto configuration = configured_by(
        "grabbers: [{name: Left, count: 2, cameras: [{serial: S, user_id: Eye, count: 2}, {serial: T}]}, "
        "{name: Right}]\n");
    std::vector<std::string> found;
    for (const GrabberModel& grabber : configuration->grabbers) {
        found.push_back(grabber.display_name);
        for (const CameraModel& camera : grabber.cameras)
            found.push_back(camera.serial_number + " " + camera.user_id);
    }
    found.resize(9); // the demo grabber comes behind them
    EXPECT_THAT(found, ElementsAre("Left 1", "S-1 Eye 1", "S-2 Eye 2", "T ", "Left 2", "S-1 Eye 1",
                                   "S-2 Eye 2", "T ", "Right"));
}

TEST(ConfigurationGrabbers, GiveCamerasWithoutSerialDifferentOnes)
{
    std::set<std::string> serials;
    for (const CameraModel& camera :
         cameras_of(*configured_by("grabbers: [{count: 64, cameras: [{count: 10}, {count: 6}]}]\n")))
        serials.insert(camera.serial_number);
    EXPECT_EQ(size_t{64} * 16 + 1, serials.size());
}

std::vector<std::string> texts_of(const CameraModel& camera)
{
    return {camera.vendor, camera.model, camera.version, camera.user_id};
}

TEST(ConfigurationCamera, WithoutKeysIsAnOrdinaryOne)
{
    const CameraModel camera = camera_of("{}");
    EXPECT_THAT(texts_of(camera), ElementsAre("ZEVA Electronics", "SoftCam", "1.0.0", ""));
    EXPECT_EQ("640x480 640x480 0x0 Mono8 of 1", picture_of(camera));
    EXPECT_EQ(25, camera.start.frames_per_second);
    EXPECT_TRUE(camera.start.is_rate_set);
    EXPECT_TRUE(camera.has_stamp);
    EXPECT_EQ(50ms, camera.start_up);
    EXPECT_EQ(nullptr, camera.pictures);
}

TEST(ConfigurationCamera, FollowsEveryKeyOfTheFile)
{
    const CameraModel camera =
        camera_of("vendor: V\nmodel: M\nserial: S\nversion: 1.10\nuser_id: U\n"
                  "rate: 12.5\njitter: 3 ms\nstart_up: 1 s\nexposure: 2.5 ms\ngain: -6\n"
                  "acquisition_mode: MultiFrame\nframe_count: 7\ntriggered: true\n"
                  "trigger_source: Line1\ntrigger_activation: LevelLow\n"
                  "test_pattern: Checkerboard\nstamp: false\npixel_format_codes: CoaXPress");
    EXPECT_THAT(texts_of(camera), ElementsAre("V", "M", "1.10", "U"));
    EXPECT_EQ("S", camera.serial_number);
    EXPECT_EQ(3ms, camera.jitter);
    EXPECT_EQ(1s, camera.start_up);
    EXPECT_FALSE(camera.has_stamp);
    EXPECT_EQ(zvsim::FormatCodes::coaxpress, camera.format_codes);
    const zvsim::CameraSettings& start = camera.start;
    EXPECT_EQ(std::tuple(12.5, 2500, -6, 7U),
              std::tuple(start.frames_per_second, start.exposure_us, start.gain_db, start.frame_count));
    EXPECT_EQ(zvsim::AcquisitionMode::multi_frame, start.mode);
    EXPECT_TRUE(start.is_triggered);
    EXPECT_EQ(zvsim::TriggerSource::line1, start.trigger_source);
    EXPECT_EQ(zvsim::TriggerActivation::level_low, start.trigger_activation);
    EXPECT_EQ(zvsim::TestPattern::checkerboard, start.pattern);
    EXPECT_FALSE(camera_of("rate: free-running").start.is_rate_set);
}

TEST(ConfigurationCamera, ShowsAsMuchAsSensorFormatAndOffsetAllowInItsChoiceOrTheFirstFormat)
{
    const std::pair<const char*, const char*> rows[] = {
        {"pixel_formats: [Mono16, Mono8]", "640x480 640x480 0x0 Mono16 of 2"},
        {"pixel_formats: all\npixel_format: RGB8", "640x480 640x480 0x0 RGB8 of 63"},
        {"pixel_format: Mono12p", "640x480 640x480 0x0 Mono12p of 1"},
        {"sensor_width: 101\nsensor_height: 51\npixel_format: BayerGR8\noffset_x: 10\noffset_y: 2",
         "101x51 90x48 10x2 BayerGR8 of 1"},
        {"offset_x: 40\nwidth: 600", "640x480 600x480 40x0 Mono8 of 1"}};
    for (const auto& [keys, picture] : rows)
        EXPECT_EQ(picture, picture_of(camera_of(keys))) << keys;
}

/// A folder with one grey picture of 30 x 20 pixels with 16 bit.
class ConfigurationPictures : public testing::Test {
protected:
    ConfigurationPictures()
    {
        write_png(folder.file("a.png"), zvsim_test::test_picture(30, 20, Pixels::grey_16, 1));
    }
    std::string key() const { return "pictures: " + folder.path().string() + "\n"; }

    const zvsim_test::Folder folder;
};

TEST_F(ConfigurationPictures, SetSensorAndFormatUnlessTheFileDoes)
{
    const CameraModel plain = camera_of(key());
    EXPECT_NE(nullptr, plain.pictures);
    EXPECT_EQ("30x20 30x20 0x0 Mono16 of 1", picture_of(plain));
    const CameraModel changed = camera_of(key() + "sensor_width: 64\nwidth: 16\npixel_formats: [RGB8]");
    EXPECT_NE(nullptr, changed.pictures);
    EXPECT_EQ("64x20 16x20 0x0 RGB8 of 1", picture_of(changed));
}

TEST_F(ConfigurationPictures, AreReadOnceForAllCameras)
{
    const auto cameras =
        cameras_of(*configured_by("grabbers: [{count: 2, cameras: [{" + key() + ", count: 2}]}]\n"));
    EXPECT_NE(nullptr, cameras.at(0).pictures);
    EXPECT_EQ(cameras[0].pictures, cameras.at(3).pictures);
}

TEST_F(ConfigurationPictures, ThatCannotBeReadGiveAWarningAndLeaveTheTestPattern)
{
    const std::string missing = folder.file("missing").string();
    Environment variable;
    variable.pictures = missing;
    for (const Environment& environment : {environment_with(camera_text("pictures: " + missing)), variable}) {
        const auto configuration = Configuration::make(environment);
        EXPECT_THAT(configuration->errors, IsEmpty());
        EXPECT_THAT(configuration->warnings, ElementsAre(HasSubstr(missing)));
        for (const CameraModel& camera : cameras_of(*configuration))
            EXPECT_EQ(nullptr, camera.pictures);
    }
}

TEST_F(ConfigurationPictures, OfAllFoldersTogetherTakeNoMoreMemoryThanOneFolderMay)
{
    const zvsim_test::Folder other;
    for (const char* const name : {"a.png", "b.png"})
        write_png(other.file(name), zvsim_test::test_picture(30, 20, Pixels::grey_16, 2));
    std::vector<std::string> warnings;
    zvsim::PictureFolders folders{warnings, uint64_t{2} * 30 * 20 * 2};
    for (const auto* const each : {&folder, &other}) {
        EXPECT_THAT(warnings, IsEmpty());
        const auto pictures = folders.read(each->path().string());
        ASSERT_NE(nullptr, pictures);
        EXPECT_EQ(1200U, pictures->size());
    }
    EXPECT_THAT(warnings, ElementsAre(Like("~b.png is left out~more than 1 GiB~")));
}

/// The cameras of an environment without a mistake.
std::vector<CameraModel> cameras_with(const Environment& environment)
{
    const auto configuration = Configuration::make(environment);
    EXPECT_THAT(configuration->warnings, IsEmpty());
    const auto cameras = cameras_of(*configuration);
    EXPECT_FALSE(cameras.empty());
    return cameras;
}

TEST(ConfigurationVariables, HoldForAllCamerasOfTheFile)
{
    Environment environment =
        environment_with("grabbers: [{count: 2, cameras: [{rate: free-running, width: 8, offset_x: 80}]}]\n");
    environment.size = "101x50";
    environment.pixel_format = "BayerRG12";
    for (const char* const rate : {"0", "12.5", "1000", "0.001", "100000"}) {
        environment.rate = rate;
        for (const CameraModel& camera : cameras_with(environment)) {
            EXPECT_EQ(std::stod(rate), camera.start.is_rate_set ? camera.start.frames_per_second : 0);
            EXPECT_EQ("101x50 100x50 0x0 BayerRG12 of 1", picture_of(camera));
        }
    }
}

TEST(ConfigurationVariables, TakeTheSmallestAndTheLargestSize)
{
    Environment environment;
    environment.size = "2x16384"; // one step of Mono12p, which the first camera offers
    for (const CameraModel& camera : cameras_with(environment))
        EXPECT_EQ(2U, camera.start.width);
}

TEST_F(ConfigurationPictures, OfAVariableSetSizeAndFormatWhateverTheOtherVariables)
{
    Environment environment;
    environment.pictures = folder.path().string();
    environment.size = "64x64";
    environment.pixel_format = "Mono8";
    for (const CameraModel& camera : cameras_with(environment)) {
        EXPECT_NE(nullptr, camera.pictures);
        EXPECT_EQ("30x20 30x20 0x0 Mono16 of 1", picture_of(camera));
    }
}

TEST(ConfigurationVariables, ThatAreMalformedChangeNothingAndSayWhatIsAllowed)
{
    struct Variable {
        const char* name;
        std::string Environment::*value;
        std::vector<const char*> malformed;
    };
    const Variable variables[] = {
        {"ZV_GRABBER_RATE",
         &Environment::rate,
         {"-1", "fast", "25fps", " 25", "1e3", "nan", "inf", "100001", "0.0001", "25,5"}},
        {"ZV_GRABBER_SIZE",
         &Environment::size,
         {"640", "640x", "x480", "640X480", "640x480x3", "0x480", "640x0", "-640x480", "16385x1", "1x16385",
          "99999999999x1", "640x480 "}},
        {"ZV_GRABBER_PIXEL_FORMAT", &Environment::pixel_format, {"mono8", "Mono11", "RGB", "8"}},
        {"ZV_GRABBER_PICTURES", &Environment::pictures, {"relative/folder"}},
        {"ZV_GRABBER_FAULTS", &Environment::faults, {"no", "OFF"}},
    };
    for (const Variable& variable : variables) {
        for (const char* const value : variable.malformed) {
            Environment environment = environment_with(camera_text("rate: free-running\nwidth: 8"));
            environment.*variable.value = value;
            const auto configuration = Configuration::make(environment);
            EXPECT_THAT(configuration->warnings, ElementsAre(Like(std::string{variable.name} + "=" + value +
                                                                  " is ignored; allowed: ~")));
            const auto cameras = cameras_of(*configuration);
            ASSERT_EQ(1U, cameras.size());
            EXPECT_FALSE(cameras[0].start.is_rate_set);
            EXPECT_EQ("640x480 8x480 0x0 Mono8 of 1", picture_of(cameras[0]));
            EXPECT_EQ(nullptr, cameras[0].pictures);
        }
    }
}

TEST(ConfigurationVariables, ThatACameraCannotFollowLeaveItAloneWithAWarning)
{
    for (const char* const size : {"3x8", "16384x16384"}) {
        Environment environment =
            environment_with(camera_text("serial: A\npixel_formats: [Mono10p, RGB16]\nsensor_width: 80"));
        environment.size = size;
        const auto configuration = Configuration::make(environment);
        EXPECT_THAT(configuration->warnings,
                    ElementsAre("camera A keeps its picture settings: those of the environment are too small "
                                "for its pixel format or too large for a buffer"));
        EXPECT_EQ(80U, configuration->grabbers.at(0).cameras.at(0).sensor_width);
    }
}

using Words = std::vector<std::string>;

const fs::path project{ZV_PROJECT_FOLDER};

std::string project_text(const char* file) { return zvsim_test::text_of(project / file); }

/// What the first group of an expression finds in a text.
Words found_in(const std::string& text, const std::string& expression)
{
    const std::regex regex{expression};
    Words words;
    for (std::sregex_iterator found{text.begin(), text.end(), regex}; found != std::sregex_iterator{};
         ++found)
        words.push_back((*found)[1]);
    return words;
}

Words fault_kinds()
{
    Words names;
    for (size_t kind = 0; kind < zvsim::fault_kind_count; ++kind)
        names.emplace_back(row_of(static_cast<zvsim::FaultKind>(kind)).name);
    return names;
}

/// Without order, and with repetitions.
std::multiset<std::string> collected(const Words& words) { return {words.begin(), words.end()}; }

class Schema : public testing::Test {
protected:
    const json schema = json::parse(project_text("docs/zv-grabber.schema.json")); // braces make a list
    /// By the name that messages give it.
    json section(const std::string& name) const
    {
        if (name == "configuration file")
            return schema;
        return schema.at("definitions").at(name == "'when'" ? "trigger" : name);
    }
    json property(const char* of, const char* key) const { return section(of).at("properties").at(key); }
};

TEST_F(Schema, DescribesExactlyTheKeysThatAreRead)
{
    std::set<std::string> sections;
    for (const auto& read : zvsim::configuration_sections()) {
        const json described = section(read.section); // must outlive its items
        std::set<std::string> keys;
        for (const auto& property : described.at("properties").items()) {
            keys.insert(property.key());
            EXPECT_NE("", property.value().value("description", "")) << property.key();
        }
        EXPECT_THAT(keys, ContainerEq(std::set<std::string>{read.keys.begin(), read.keys.end()}));
        EXPECT_EQ(json(false), described.at("additionalProperties")) << read.section;
        sections.insert(read.section);
    }
    EXPECT_EQ(6U, sections.size());
}

TEST_F(Schema, HasTheLimitsOfTheLibrary)
{
    EXPECT_EQ(zvsim::most_grabbers, property("configuration file", "grabbers").at("maxItems"));
    EXPECT_EQ(zvsim::most_grabbers, property("grabber", "count").at("maximum"));
    EXPECT_EQ(zvsim::most_segments, property("grabber", "segments_per_buffer").at("maximum"));
    EXPECT_EQ(zvsim::most_cameras, property("grabber", "cameras").at("maxItems"));
    EXPECT_EQ(zvsim::most_cameras, property("camera", "count").at("maximum"));
    for (const char* const key : {"sensor_width", "sensor_height", "width", "height"})
        EXPECT_EQ(zvsim::largest_side, property("camera", key).at("maximum"));
    for (const char* const key : {"vendor", "model", "serial", "version", "user_id"})
        EXPECT_EQ(zvsim::longest_identity, property("camera", key).at("maxLength"));
    EXPECT_EQ(zvsim::lowest_rate, property("camera", "rate").at("oneOf").at(1).at("minimum"));
    EXPECT_EQ(zvsim::highest_rate, property("camera", "rate").at("oneOf").at(1).at("maximum"));
    EXPECT_EQ(zvsim::lowest_gain_db, property("camera", "gain").at("minimum"));
    EXPECT_EQ(zvsim::highest_gain_db, property("camera", "gain").at("maximum"));
    EXPECT_EQ(zvsim::most_frames, property("camera", "frame_count").at("maximum"));
}

/// The words that the one message about a text says are allowed.
Words words_for(const std::string& text)
{
    const auto errors = configured_by(text)->errors;
    const std::string error = errors.size() == 1 ? errors[0] : "";
    return found_in(error.substr(error.rfind("llowed: ") + 8), "([^ ,]+)");
}

TEST_F(Schema, HasTheWordsThatAreRead)
{
    EXPECT_EQ(words_for("grabbers: [{protocol: x}]"), property("grabber", "protocol").at("enum"));
    for (const std::string key :
         {"test_pattern", "pixel_format_codes", "acquisition_mode", "trigger_source", "trigger_activation"})
        EXPECT_EQ(words_for(zvsim_test::camera_text(key + ": x")),
                  property("camera", key.c_str()).at("enum"));
    EXPECT_EQ(words_for(zvsim_test::camera_text("pixel_format: x")),
              schema.at("definitions").at("pixel_format").at("enum"));
    EXPECT_EQ(fault_kinds(), property("fault", "kind").at("enum"));
    Words functions;
    for (size_t function = 0; function < zvsim::function_count; ++function)
        functions.emplace_back(zvsim::row_of(static_cast<zvsim::Function>(function)).name);
    EXPECT_EQ(functions, property("fault", "function").at("enum"));
}

TEST_F(Schema, HasTheWordsOfTheFeatures)
{
    const std::string description = project_text("simulator/features/camera.xml");
    const std::pair<std::string, const char*> features[] = {{"TestPattern", "test_pattern"},
                                                            {"AcquisitionMode", "acquisition_mode"},
                                                            {"TriggerSource", "trigger_source"},
                                                            {"TriggerActivation", "trigger_activation"}};
    for (const auto& [feature, key] : features) {
        const size_t start = description.find("<Enumeration Name=\"" + feature + "\"");
        const std::string element =
            description.substr(start, description.find("</Enumeration>", start) - start);
        EXPECT_EQ(found_in(element, "<EnumEntry Name=\"(\\w+)\""), property("camera", key).at("enum"));
    }
}

void expect_no_errors_in(const fs::path& example)
{
    const auto configuration = configured_by(zvsim_test::text_of(example));
    EXPECT_THAT(configuration->errors, IsEmpty()) << example;
    EXPECT_FALSE(configuration->grabbers.empty()) << example;
}

const fs::path examples = project / "examples/grabbers";

TEST(Examples, AreReadWithoutErrors)
{
    for (const auto& entry : fs::directory_iterator{examples})
        if (entry.path().filename() != "pictures.yaml")
            expect_no_errors_in(entry.path());
}

TEST(Examples, NameAFolderOfPictures) { expect_no_errors_in(examples / "pictures.yaml"); }

TEST(Examples, ShowAsMuchAsThereCanBe)
{
    const auto configuration = configured_by(project_text("examples/grabbers/many.yaml"));
    ASSERT_EQ(zvsim::most_grabbers + 1, configuration->grabbers.size());
    for (size_t index = 0; index < zvsim::most_grabbers; ++index)
        EXPECT_EQ(zvsim::most_cameras, configuration->grabbers[index].cameras.size());
}

TEST(GrabberPage, ShowsFilesThatAreReadWithoutErrors)
{
    const Words blocks = found_in(project_text("docs/software-grabber.md"), "```yaml\n([^`]*)```");
    EXPECT_FALSE(blocks.empty());
    for (const std::string& block : blocks)
        EXPECT_THAT(configured_by(block)->errors, IsEmpty()) << block;
}

TEST(GrabberPage, NamesEveryKeyOfGrabbersAndCameras)
{
    const std::string page = project_text("docs/software-grabber.md");
    for (const auto& section : zvsim::configuration_sections()) {
        const std::string name{section.section};
        if (name != "grabber" && name != "camera")
            continue;
        for (const auto key : section.keys)
            EXPECT_THAT(page, HasSubstr("\n| `" + std::string{key} + "` |")) << name;
    }
}

TEST(FaultPage, NamesEveryKindOnceWithAnExampleThatIsRead)
{
    Words documented;
    for (const std::string& row :
         found_in(project_text("docs/faults.md"), "\n\\| `([^\n]*\\| `\\{kind: [^\n]*)")) {
        documented.push_back(row.substr(0, row.find('`')));
        const auto faults = found_in(row, "(\\{kind: [^`]*)");
        const auto configuration = configured_by("faults: [" + faults.at(0) + "]");
        EXPECT_THAT(configuration->errors, IsEmpty()) << row;
        ASSERT_EQ(1U, configuration->faults.faults.size()) << row;
        EXPECT_EQ(documented.back(), row_of(configuration->faults.faults.front().kind).name);
    }
    EXPECT_THAT(collected(documented), ContainerEq(collected(fault_kinds())));
}

TEST(FaultMatrix, TriesEveryKindOnTheProducer)
{
    const Words tried = found_in(project_text("tests/system/faults/matrix.cpp"), "row\\(\"([^,\"]*)");
    const Words kinds = fault_kinds();
    EXPECT_THAT((std::set<std::string>{tried.begin(), tried.end()}),
                ContainerEq(std::set<std::string>{kinds.begin(), kinds.end()}));
}

} // namespace
