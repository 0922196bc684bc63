#include <set>
#include <stdexcept>
#include <tuple>

#include "zvgr/ZVGRLib.h"

#include "simulator/Devices.h"
#include "simulator/config/CameraReader.h"
#include "unit/simulator/configuration_texts.h"
#include "unit/simulator/picture_files.h"

// The grabbers and cameras that a file and the environment describe.

namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using namespace zvsim;
using namespace zvsim_test;

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

} // namespace
