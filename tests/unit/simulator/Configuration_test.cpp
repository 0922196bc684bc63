#include <gmock/gmock.h>

#include "simulator/Configuration.h"
#include "simulator/Devices.h"
#include "unit/simulator/picture_files.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using zvsim::CameraModel;
using zvsim::Configuration;
using zvsim::Environment;

std::vector<CameraModel> cameras_of(const Configuration& configuration)
{
    std::vector<CameraModel> cameras;
    for (const auto& grabber : configuration.grabbers)
        cameras.insert(cameras.end(), grabber.cameras.begin(), grabber.cameras.end());
    return cameras;
}

uint64_t payload_of(const CameraModel& camera)
{
    const zvsim::GrabberModel grabber;
    return zvsim::CameraDevice{camera, grabber}.payload();
}

Environment with_rate(const char* rate)
{
    Environment environment;
    environment.rate = rate;
    return environment;
}

Environment with_format(const char* format)
{
    Environment environment;
    environment.pixel_format = format;
    return environment;
}

Environment with_size(const char* size)
{
    Environment environment;
    environment.size = size;
    return environment;
}

Environment with_pictures(const std::string& folder)
{
    Environment environment;
    environment.pictures = folder;
    return environment;
}

TEST(Configuration, WithoutVariablesHasGrabbersOfBothKinds)
{
    const auto configuration = Configuration::make({});
    EXPECT_THAT(configuration->warnings, IsEmpty());
    ASSERT_EQ(3U, configuration->grabbers.size());
    EXPECT_EQ(2U, configuration->grabbers[0].cameras.size());
    EXPECT_EQ(1U, configuration->grabbers[1].cameras.size());
    EXPECT_EQ(1U, configuration->grabbers[2].cameras.size());

    const auto cameras = cameras_of(*configuration);
    EXPECT_STREQ("Mono8", cameras[0].start.format->name);
    EXPECT_STREQ("Mono16", cameras[1].start.format->name);
    for (const auto& camera : cameras)
        EXPECT_EQ(25, camera.start.frames_per_second);
}

TEST(Configuration, PayloadIsTheSizeOfAPicture)
{
    const auto cameras = cameras_of(*Configuration::make({}));
    EXPECT_EQ(uint64_t{640} * 480, payload_of(cameras[0]));
    EXPECT_EQ(uint64_t{800} * 600 * 2, payload_of(cameras[1]));
}

TEST(Configuration, RateHoldsForAllCameras)
{
    const std::vector<std::pair<const char*, double>> rates{
        {"0", 0}, {"12.5", 12.5}, {"1000", 1000}, {"0.001", 0.001}, {"100000", 100000}};
    for (const auto& [text, rate] : rates) {
        const auto configuration = Configuration::make(with_rate(text));
        EXPECT_THAT(configuration->warnings, IsEmpty());
        for (const auto& camera : cameras_of(*configuration))
            EXPECT_EQ(rate, camera.start.is_rate_set ? camera.start.frames_per_second : 0);
    }
}

TEST(Configuration, SizeHoldsForAllCameras)
{
    for (const auto& camera : cameras_of(*Configuration::make(with_size("2x16384")))) {
        EXPECT_EQ(2U, camera.start.width);
        EXPECT_EQ(16384U, camera.start.height);
    }
}

TEST(Configuration, PixelFormatHoldsForAllCameras)
{
    for (const char* const name : {"Mono8", "Mono16", "BayerRG12p", "YUV411_8_UYYVYY"}) {
        for (const auto& camera : cameras_of(*Configuration::make(with_format(name)))) {
            EXPECT_STREQ(name, camera.start.format->name);
        }
    }
}

TEST(Configuration, MalformedVariablesChangeNothingAndSayWhatIsAllowed)
{
    std::vector<std::pair<Environment, const char*>> malformed;
    for (const char* const rate :
         {"-1", "fast", "25fps", " 25", "1e3", "nan", "inf", "100001", "0.0001", "25,5"})
        malformed.emplace_back(with_rate(rate), "ZV_GRABBER_RATE");
    for (const char* const size : {"640", "640x", "x480", "640X480", "640x480x3", "0x480", "640x0",
                                   "-640x480", "16385x1", "99999999999x1", "640x480 "})
        malformed.emplace_back(with_size(size), "ZV_GRABBER_SIZE");
    for (const char* const format : {"mono8", "Mono11", "RGB", "8"})
        malformed.emplace_back(with_format(format), "ZV_GRABBER_PIXEL_FORMAT");
    malformed.emplace_back(with_pictures("relative/folder"), "ZV_GRABBER_PICTURES");

    const auto defaults = cameras_of(*Configuration::make({}));
    for (const auto& [environment, name] : malformed) {
        const auto configuration = Configuration::make(environment);
        EXPECT_THAT(configuration->warnings,
                    ElementsAre(testing::AllOf(HasSubstr(name), HasSubstr("allowed"))));
        const auto cameras = cameras_of(*configuration);
        ASSERT_EQ(defaults.size(), cameras.size());
        for (size_t index = 0; index < cameras.size(); ++index) {
            EXPECT_EQ(payload_of(defaults[index]), payload_of(cameras[index]));
            EXPECT_EQ(defaults[index].start.frames_per_second, cameras[index].start.frames_per_second);
            EXPECT_EQ(nullptr, cameras[index].pictures);
        }
    }
}

TEST(Configuration, PicturesSetSizeAndFormatOfAllCameras)
{
    const zvsim_test::Folder folder;
    zvsim_test::write_png(folder.file("a.png"),
                          zvsim_test::test_picture(30, 20, zvsim_test::Pixels::grey_16, 1));
    Environment environment = with_pictures(folder.path().string());
    environment.size = "64x64";
    environment.pixel_format = "Mono8";
    const auto configuration = Configuration::make(environment);
    EXPECT_THAT(configuration->warnings, IsEmpty());
    for (const auto& camera : cameras_of(*configuration)) {
        EXPECT_NE(nullptr, camera.pictures);
        EXPECT_EQ(30U, camera.start.width);
        EXPECT_EQ(20U, camera.start.height);
        EXPECT_STREQ("Mono16", camera.start.format->name);
    }
}

TEST(Configuration, PicturesThatCannotBeReadLeaveTheTestPattern)
{
    const zvsim_test::Folder folder;
    const auto configuration = Configuration::make(with_pictures(folder.file("missing").string()));
    EXPECT_THAT(configuration->warnings, ElementsAre(HasSubstr("missing")));
    for (const auto& camera : cameras_of(*configuration))
        EXPECT_EQ(nullptr, camera.pictures);
}

} // namespace
