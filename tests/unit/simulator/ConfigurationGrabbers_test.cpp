#include <set>
#include <stdexcept>

#include <gmock/gmock.h>

#include "zvgr/ZVGRLib.h"

#include "simulator/config/CameraReader.h"
#include "unit/simulator/configuration_texts.h"
#include "unit/simulator/picture_files.h"

namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using zvsim::CameraModel;
using zvsim::Configuration;
using zvsim::GrabberModel;
using zvsim_test::absolute_path;
using zvsim_test::camera_text;
using zvsim_test::configured_by;

/// The one camera of a file without errors.
CameraModel camera_of(const std::string& keys)
{
    const auto configuration = configured_by(camera_text(keys));
    EXPECT_THAT(configuration->errors, IsEmpty());
    if (configuration->grabbers.size() != 1 || configuration->grabbers[0].cameras.size() != 1)
        throw std::runtime_error{"not one camera"};
    return configuration->grabbers[0].cameras[0];
}

std::vector<std::string> errors_of(const std::string& keys)
{
    return configured_by(camera_text(keys))->errors;
}

TEST(ConfigurationGrabbers, WithoutKeysAGrabberIsUsualForItsProtocol)
{
    const auto configuration = configured_by(
        "demo_grabber: false\ngrabbers: [{}, {protocol: CameraLinkHS}, {protocol: GigEVision}]\n");
    ASSERT_EQ(3U, configuration->grabbers.size());
    const auto& grabbers = configuration->grabbers;
    EXPECT_EQ("ZEVA Software Grabber", grabbers[0].display_name);
    EXPECT_EQ(uint32_t{zv_protocol_cxp}, grabbers[0].protocol);
    EXPECT_EQ(uint32_t{zv_protocol_clhs}, grabbers[1].protocol);
    EXPECT_EQ(uint32_t{zv_protocol_gev}, grabbers[2].protocol);
    EXPECT_TRUE(grabbers[0].has_image_ids);
    EXPECT_FALSE(grabbers[1].has_image_ids);
    EXPECT_FALSE(grabbers[2].has_image_ids);
    EXPECT_FALSE(grabbers[0].reports_geometry);
    EXPECT_TRUE(grabbers[1].reports_geometry);
    EXPECT_FALSE(grabbers[2].reports_geometry);
    for (const GrabberModel& grabber : grabbers) {
        EXPECT_EQ(1U, grabber.segments_per_buffer);
        EXPECT_THAT(grabber.cameras, IsEmpty());
    }
}

TEST(ConfigurationGrabbers, KeysOfAGrabberHoldWhateverItsProtocol)
{
    const auto configuration = configured_by("grabbers:\n"
                                             "  - name: Own\n"
                                             "    protocol: CameraLinkHS\n"
                                             "    image_ids: true\n"
                                             "    reports_geometry: false\n"
                                             "    segments_per_buffer: 4\n");
    const GrabberModel& grabber = configuration->grabbers.at(0);
    EXPECT_EQ("Own", grabber.display_name);
    EXPECT_TRUE(grabber.has_image_ids);
    EXPECT_FALSE(grabber.reports_geometry);
    EXPECT_EQ(4U, grabber.segments_per_buffer);
}

TEST(ConfigurationGrabbers, DemoGrabberIsTheLastOneUnlessItIsOff)
{
    EXPECT_EQ("ZEVA Demo Grabber", configured_by("grabbers: [{}]\n")->grabbers.back().display_name);
    EXPECT_EQ(2U, configured_by("demo_grabber: true\ngrabbers: [{}]\n")->grabbers.size());
    EXPECT_EQ(1U, configured_by("demo_grabber: false\ngrabbers: [{}]\n")->grabbers.size());
    EXPECT_THAT(configured_by("demo_grabber: false\ngrabbers: []\n")->grabbers, IsEmpty());
}

TEST(ConfigurationGrabbers, WithoutGrabbersInTheFileThereAreTheBuiltInOnes)
{
    EXPECT_EQ(3U, configured_by("demo_grabber: true\n")->grabbers.size());
    EXPECT_EQ(2U, configured_by("demo_grabber: false\n")->grabbers.size());
    EXPECT_EQ(3U, configured_by("# nothing\n")->grabbers.size());
}

TEST(ConfigurationGrabbers, RepeatedOnesAreNumbered)
{
    const auto configuration =
        configured_by("grabbers: [{name: Left, count: 2, cameras: [{serial: A}]}, {name: Right}]\n");
    ASSERT_EQ(4U, configuration->grabbers.size());
    EXPECT_EQ("Left 1", configuration->grabbers[0].display_name);
    EXPECT_EQ("Left 2", configuration->grabbers[1].display_name);
    EXPECT_EQ("Right", configuration->grabbers[2].display_name);
    EXPECT_EQ("A", configuration->grabbers[0].cameras[0].serial_number);
    EXPECT_EQ("A", configuration->grabbers[1].cameras[0].serial_number);
}

TEST(ConfigurationGrabbers, SixtyFourAreTheMost)
{
    EXPECT_EQ(65U, configured_by("grabbers: [{count: 60}, {count: 4}]\n")->grabbers.size());
    EXPECT_THAT(
        configured_by("grabbers:\n- count: 60\n- count: 5\n")->errors,
        ElementsAre("grabbers.yaml:3: there are more than 64 grabbers; allowed: up to 64 grabbers, with "
                    "their count"));
    std::string text{"grabbers:\n"};
    for (int grabber = 0; grabber < 65; ++grabber)
        text += "  - {}\n";
    EXPECT_THAT(
        configured_by(text)->errors,
        ElementsAre(HasSubstr("grabbers is a list with 65 entries; allowed: a list with 0 to 64 entries")));
}

TEST(ConfigurationGrabbers, SixteenCamerasAreTheMost)
{
    EXPECT_EQ(16U, configured_by("grabbers: [{cameras: [{count: 15}, {}]}]\n")->grabbers[0].cameras.size());
    EXPECT_THAT(
        configured_by("grabbers:\n- cameras:\n  - count: 15\n  - count: 2\n")->errors,
        ElementsAre("grabbers.yaml:4: a grabber has more than 16 cameras; allowed: up to 16 cameras, with "
                    "their count"));
}

TEST(ConfigurationGrabbers, RepeatedCamerasHaveNumberedSerialsAndUserIds)
{
    const auto configuration =
        configured_by("grabbers: [{cameras: [{serial: S, user_id: Eye, count: 2}, {serial: T}]}]\n");
    const auto& cameras = configuration->grabbers.at(0).cameras;
    ASSERT_EQ(3U, cameras.size());
    EXPECT_EQ("S-1", cameras[0].serial_number);
    EXPECT_EQ("S-2", cameras[1].serial_number);
    EXPECT_EQ("T", cameras[2].serial_number);
    EXPECT_EQ("Eye 1", cameras[0].user_id);
    EXPECT_EQ("Eye 2", cameras[1].user_id);
}

TEST(ConfigurationGrabbers, NumbersBehindATextLeaveItShorter)
{
    const std::string text(61, 'x');
    EXPECT_THAT(errors_of("serial: " + text + "\nuser_id: " + text + "\ncount: 16\n"), IsEmpty());
    EXPECT_THAT(errors_of("serial: x" + text + "\ncount: 2\n"), ElementsAre(HasSubstr("allowed: 1 to 61 ")));
    EXPECT_THAT(errors_of("user_id: x" + text + "\ncount: 2\n"), ElementsAre(HasSubstr("allowed: 0 to 61 ")));
}

TEST(ConfigurationGrabbers, CamerasWithoutSerialGetDifferentOnes)
{
    const auto configuration = configured_by("grabbers: [{count: 64, cameras: [{count: 10}, {count: 6}]}]\n");
    std::set<std::string> serials;
    for (const GrabberModel& grabber : configuration->grabbers) {
        for (const CameraModel& camera : grabber.cameras)
            serials.insert(camera.serial_number);
    }
    EXPECT_EQ(size_t{64} * 16 + 1, serials.size());
}

TEST(ConfigurationGrabbers, SerialsOfAGrabberDiffer)
{
    EXPECT_THAT(
        configured_by("grabbers:\n- cameras:\n  - serial: A-2\n  - {serial: A, count: 2}\n")->errors,
        ElementsAre("grabbers.yaml:4: the serial number \"A-2\" is that of the camera in line 3; allowed: a "
                    "serial number for each camera of a grabber"));
    EXPECT_THAT(configured_by("grabbers: [{cameras: [{serial: A}]}, {cameras: [{serial: A}]}]\n")->errors,
                IsEmpty());
}

TEST(ConfigurationCamera, WithoutKeysIsAnOrdinaryOne)
{
    const CameraModel camera = camera_of("{}");
    EXPECT_EQ("ZEVA Electronics", camera.vendor);
    EXPECT_EQ("SoftCam", camera.model);
    EXPECT_EQ("1.0.0", camera.version);
    EXPECT_EQ("", camera.user_id);
    EXPECT_EQ(640U, camera.start.width);
    EXPECT_EQ(480U, camera.start.height);
    EXPECT_STREQ("Mono8", camera.start.format->name);
    EXPECT_EQ(1U, camera.formats.size());
    EXPECT_EQ(25, camera.start.frames_per_second);
    EXPECT_TRUE(camera.start.is_rate_set);
    EXPECT_TRUE(camera.has_stamp);
    EXPECT_EQ(50ms, camera.start_up);
    EXPECT_EQ(nullptr, camera.pictures);
}

TEST(ConfigurationCamera, IdentityIsWhatTheFileSays)
{
    const CameraModel camera = camera_of("vendor: V\nmodel: M\nserial: S\nversion: 1.10\nuser_id: U");
    EXPECT_EQ("V", camera.vendor);
    EXPECT_EQ("M", camera.model);
    EXPECT_EQ("S", camera.serial_number);
    EXPECT_EQ("1.10", camera.version);
    EXPECT_EQ("U", camera.user_id);
}

TEST(ConfigurationCamera, FeaturesStartAsTheFileSays)
{
    const CameraModel camera =
        camera_of("rate: 12.5\njitter: 3 ms\nstart_up: 1 s\nexposure: 2.5 ms\ngain: -6\n"
                  "acquisition_mode: MultiFrame\nframe_count: 7\ntriggered: true\n"
                  "trigger_source: Line1\ntrigger_activation: LevelLow\n"
                  "test_pattern: Checkerboard\nstamp: false\npixel_format_codes: CoaXPress");
    EXPECT_EQ(12.5, camera.start.frames_per_second);
    EXPECT_EQ(3ms, camera.jitter);
    EXPECT_EQ(1s, camera.start_up);
    EXPECT_EQ(2500, camera.start.exposure_us);
    EXPECT_EQ(-6, camera.start.gain_db);
    EXPECT_EQ(zvsim::AcquisitionMode::multi_frame, camera.start.mode);
    EXPECT_EQ(7U, camera.start.frame_count);
    EXPECT_TRUE(camera.start.is_triggered);
    EXPECT_EQ(zvsim::TriggerSource::line1, camera.start.trigger_source);
    EXPECT_EQ(zvsim::TriggerActivation::level_low, camera.start.trigger_activation);
    EXPECT_EQ(zvsim::TestPattern::checkerboard, camera.start.pattern);
    EXPECT_FALSE(camera.has_stamp);
    EXPECT_EQ(zvsim::FormatCodes::coaxpress, camera.format_codes);
}

TEST(ConfigurationCamera, FreeRunningHasNoRate)
{
    EXPECT_FALSE(camera_of("rate: free-running").start.is_rate_set);
}

TEST(ConfigurationCamera, OffersTheFormatsOfItsListAndStartsWithTheFirst)
{
    const CameraModel camera = camera_of("pixel_formats: [Mono16, Mono8]");
    ASSERT_EQ(2U, camera.formats.size());
    EXPECT_STREQ("Mono16", camera.start.format->name);
    EXPECT_STREQ("Mono8", camera.formats[1]->name);
}

TEST(ConfigurationCamera, StartsWithTheFormatOfItsChoice)
{
    EXPECT_STREQ("RGB8", camera_of("pixel_formats: all\npixel_format: RGB8").start.format->name);
    EXPECT_EQ(zvsim::pixel_formats().size(), camera_of("pixel_formats: all").formats.size());
}

TEST(ConfigurationCamera, AStartFormatAloneIsTheOnlyOne)
{
    const CameraModel camera = camera_of("pixel_format: Mono12p");
    ASSERT_EQ(1U, camera.formats.size());
    EXPECT_STREQ("Mono12p", camera.formats[0]->name);
}

TEST(ConfigurationCamera, StartFormatStandsInItsList)
{
    EXPECT_THAT(errors_of("pixel_formats: [Mono8, Mono16]\npixel_format: Mono12"),
                ElementsAre(AllOf(HasSubstr("grabbers.yaml:5: pixel_format is \"Mono12\""),
                                  HasSubstr("; allowed: Mono8, Mono16"))));
}

TEST(ConfigurationCamera, FormatsOfAListDifferAndExist)
{
    EXPECT_THAT(
        errors_of("pixel_formats:\n  - Mono8\n  - Mono8\n  - Mono9\n"),
        ElementsAre(
            "grabbers.yaml:6: entry 2 of pixel_formats is Mono8 again; allowed: each format once",
            AllOf(HasSubstr("grabbers.yaml:7: entry 3 of pixel_formats is \"Mono9\" (meant is Mono8?)"),
                  HasSubstr("BayerRG12p"))));
    EXPECT_THAT(errors_of("pixel_formats: []"), ElementsAre(HasSubstr("a list with 1 to 63 entries")));
}

TEST(ConfigurationCamera, PictureIsAsLargeAsTheSensorAllows)
{
    const CameraModel camera =
        camera_of("sensor_width: 101\nsensor_height: 51\npixel_format: BayerGR8\noffset_x: 10\n"
                  "offset_y: 2");
    EXPECT_EQ(101U, camera.sensor_width);
    EXPECT_EQ(51U, camera.sensor_height);
    EXPECT_EQ(90U, camera.start.width);
    EXPECT_EQ(48U, camera.start.height);
    EXPECT_EQ(10U, camera.start.offset_x);
    EXPECT_EQ(2U, camera.start.offset_y);
}

TEST(ConfigurationCamera, PictureStandsInTheStepsOfTheStartFormat)
{
    const std::string sensor{"sensor_width: 101\nsensor_height: 51\npixel_format: YUV411_8_UYYVYY\n"};
    EXPECT_THAT(errors_of(sensor + "width: 98"), ElementsAre(HasSubstr("allowed: 4 to 100 in steps of 4")));
    EXPECT_THAT(errors_of(sensor + "offset_x: 2"), ElementsAre(HasSubstr("allowed: 0 to 96 in steps of 4")));
    EXPECT_THAT(errors_of("pixel_format: BayerGR8\nheight: 3\noffset_y: 5"),
                ElementsAre(HasSubstr(":6: offset_y is \"5\"; allowed: 0 to 478 in steps of 2"),
                            HasSubstr(":5: height is \"3\"; allowed: 2 to 480 in steps of 2")));
}

TEST(ConfigurationCamera, PictureAndOffsetStayOnTheSensor)
{
    EXPECT_EQ(600U, camera_of("offset_x: 40\nwidth: 600").start.width);
    EXPECT_THAT(errors_of("offset_x: 40\nwidth: 601"),
                ElementsAre(HasSubstr("allowed: 1 to 600 in steps of 1")));
}

TEST(ConfigurationCamera, SensorHasRoomForEveryFormat)
{
    EXPECT_THAT(errors_of("sensor_width: 4\nsensor_height: 2\npixel_formats: all"), IsEmpty());
    EXPECT_THAT(errors_of("sensor_width: 3\npixel_formats: [Mono8, Mono10p]"),
                ElementsAre("grabbers.yaml:4: sensor_width is 3; allowed: at least 4 for Mono10p"));
    EXPECT_THAT(errors_of("sensor_height: 1\npixel_formats: [Mono8, BayerRG8]"),
                ElementsAre("grabbers.yaml:4: sensor_height is 1; allowed: at least 2 for BayerRG8"));
}

TEST(ConfigurationCamera, BufferTakesOneGibibyteAtMost)
{
    EXPECT_THAT(errors_of("sensor_width: 16384\nsensor_height: 16384\npixel_formats: [Mono8, RGBa8]"),
                IsEmpty());
    EXPECT_THAT(errors_of("sensor_width: 16384\nsensor_height: 16384\npixel_formats: [Mono8, RGB16]"),
                ElementsAre(HasSubstr(
                    "grabbers.yaml:4: a buffer of this camera can take 1610612736 bytes; allowed: up "
                    "to 1073741824")));
    EXPECT_THAT(
        configured_by("grabbers: [{segments_per_buffer: 5, cameras: [{sensor_width: 16384, sensor_height: "
                      "16384}]}]\n")
            ->errors,
        ElementsAre(HasSubstr("can take 1342177280 bytes")));
}

/// A folder with one grey picture of 30 x 20 pixels with 16 bit.
class ConfigurationPictures : public testing::Test {
protected:
    ConfigurationPictures()
    {
        write_png(folder.file("a.png"), zvsim_test::test_picture(30, 20, zvsim_test::Pixels::grey_16, 1));
    }
    std::string key() const { return "pictures: " + folder.path().string() + "\n"; }

    const zvsim_test::Folder folder;
};

TEST_F(ConfigurationPictures, SetSensorAndFormat)
{
    const CameraModel camera = camera_of(key());
    ASSERT_NE(nullptr, camera.pictures);
    EXPECT_EQ(30U, camera.sensor_width);
    EXPECT_EQ(20U, camera.start.height);
    EXPECT_STREQ("Mono16", camera.start.format->name);
}

TEST_F(ConfigurationPictures, GiveWayToTheKeysOfTheFile)
{
    const CameraModel camera = camera_of(key() + "sensor_width: 64\nwidth: 16\npixel_formats: [RGB8]");
    ASSERT_NE(nullptr, camera.pictures);
    EXPECT_EQ(64U, camera.sensor_width);
    EXPECT_EQ(20U, camera.sensor_height);
    EXPECT_EQ(16U, camera.start.width);
    EXPECT_STREQ("RGB8", camera.start.format->name);
}

TEST_F(ConfigurationPictures, AreReadOnceForAllCameras)
{
    const auto configuration =
        configured_by("grabbers: [{count: 2, cameras: [{" + key() + ", count: 2}]}]\n");
    const auto& grabbers = configuration->grabbers;
    EXPECT_THAT(configuration->errors, IsEmpty());
    EXPECT_EQ(grabbers.at(0).cameras.at(0).pictures, grabbers.at(1).cameras.at(1).pictures);
}

TEST_F(ConfigurationPictures, ThatCannotBeReadGiveAWarningAndLeaveTheTestPattern)
{
    const auto configuration = configured_by(camera_text("pictures: " + absolute_path("/no/such/folder")));
    EXPECT_THAT(configuration->errors, IsEmpty());
    EXPECT_THAT(configuration->warnings, ElementsAre(HasSubstr("/no/such/folder")));
    EXPECT_EQ(nullptr, configuration->grabbers.at(0).cameras.at(0).pictures);
}

TEST_F(ConfigurationPictures, OfAllFoldersTogetherTakeNoMoreMemoryThanOneFolderMay)
{
    const zvsim_test::Folder other;
    for (const char* const name : {"a.png", "b.png"})
        write_png(other.file(name), zvsim_test::test_picture(30, 20, zvsim_test::Pixels::grey_16, 2));
    std::vector<std::string> warnings;
    zvsim::PictureFolders folders{warnings, uint64_t{2} * 30 * 20 * 2};
    const auto first = folders.read(folder.path().string());
    ASSERT_NE(nullptr, first);
    EXPECT_EQ(1200U, first->size());
    EXPECT_THAT(warnings, IsEmpty());
    const auto second = folders.read(other.path().string());
    ASSERT_NE(nullptr, second);
    EXPECT_EQ(1200U, second->size());
    EXPECT_THAT(warnings, ElementsAre(AllOf(HasSubstr("b.png is left out"), HasSubstr("more than 1 GiB"))));
}

zvsim::Environment with_file(const std::string& text)
{
    zvsim::Environment environment;
    environment.file.path = "grabbers.yaml";
    environment.file.text = text;
    return environment;
}

TEST(ConfigurationVariables, HoldForAllCamerasOfTheFile)
{
    zvsim::Environment environment =
        with_file("grabbers: [{count: 2, cameras: [{rate: free-running, width: 8, offset_x: 80}]}]\n");
    environment.rate = "10";
    environment.size = "101x50";
    environment.pixel_format = "BayerRG12";
    const auto configuration = Configuration::make(environment);
    EXPECT_THAT(configuration->warnings, IsEmpty());
    ASSERT_EQ(3U, configuration->grabbers.size());
    for (const GrabberModel& grabber : configuration->grabbers) {
        const CameraModel& camera = grabber.cameras.at(0);
        EXPECT_TRUE(camera.start.is_rate_set);
        EXPECT_EQ(10, camera.start.frames_per_second);
        EXPECT_EQ(101U, camera.sensor_width);
        EXPECT_EQ(100U, camera.start.width);
        EXPECT_EQ(0U, camera.start.offset_x);
        EXPECT_EQ(50U, camera.start.height);
        EXPECT_STREQ("BayerRG12", camera.start.format->name);
        EXPECT_EQ(1U, camera.formats.size());
    }
}

TEST(ConfigurationVariables, ThatSetNothingLeaveTheFileAlone)
{
    const auto configuration = Configuration::make(with_file(camera_text("rate: free-running\nwidth: 8")));
    EXPECT_FALSE(configuration->grabbers.at(0).cameras.at(0).start.is_rate_set);
    EXPECT_EQ(8U, configuration->grabbers.at(0).cameras.at(0).start.width);
}

TEST(ConfigurationVariables, ThatACameraCannotFollowLeaveItAloneWithAWarning)
{
    for (const char* const size : {"3x8", "16384x16384"}) {
        zvsim::Environment environment =
            with_file(camera_text("serial: A\npixel_formats: [Mono10p, RGB16]\nsensor_width: 80"));
        environment.size = size;
        const auto configuration = Configuration::make(environment);
        EXPECT_THAT(configuration->warnings, ElementsAre(HasSubstr("camera A keeps its picture")));
        EXPECT_EQ(80U, configuration->grabbers.at(0).cameras.at(0).sensor_width);
    }
}

} // namespace
