#include <set>

#include "unit/simulator/fixtures.h"

// What a configuration file brings about, through the interface alone.

namespace {

using namespace zvsim_test;

/// A file that the library reads.
class ConfiguredByFile : public testing::Test {
protected:
    ~ConfiguredByFile() override { ZVGR_Close(grabber); }

    /// How many grabbers a file with this text brings about.
    uint32_t scan_with(const std::string& text) const
    {
        file.write(text);
        return scan();
    }
    /// The cameras of the first grabber, which it opens.
    std::vector<uint32_t> open_first()
    {
        grabber = ZVGR_Open(0);
        return cameras_of(grabber);
    }

    ConfigurationFile file;
    uint32_t grabber{ZV_NO_HANDLE};
};

TEST_F(ConfiguredByFile, OffersTheGrabbersOfTheFile)
{
    ASSERT_EQ(3U, scan_with("grabbers: [{name: First, protocol: GigEVision},"
                            " {name: Second, protocol: CameraLinkHS}]\n"));
    EXPECT_STREQ("First", ZV_DeviceDisplayName(0));
    EXPECT_STREQ("Second", ZV_DeviceDisplayName(1));
    EXPECT_STREQ("ZEVA Demo Grabber", ZV_DeviceDisplayName(2));
    EXPECT_EQ(uint32_t{zv_protocol_gev}, protocol_of(0));
    EXPECT_EQ(uint32_t{zv_protocol_clhs}, protocol_of(1));
    EXPECT_EQ(uint32_t{zv_protocol_cxp}, protocol_of(2));
}

TEST_F(ConfiguredByFile, OffersSixtyFourGrabbersWithSixteenCamerasEach)
{
    ASSERT_EQ(64U, scan_with("demo_grabber: false\n"
                             "grabbers:\n"
                             "  - count: 64\n"
                             "    cameras:\n"
                             "      - {count: 16, serial: S, sensor_width: 32, sensor_height: 16}\n"));
    std::vector<uint32_t> grabbers;
    std::set<uint32_t> cameras;
    for (uint32_t index = 0; index < 64; ++index) {
        grabbers.push_back(ZVGR_Open(index));
        for (const uint32_t camera : cameras_of(grabbers.back())) {
            cameras.insert(camera);
            EXPECT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
            EXPECT_EQ(32, ZVGR_GetCameraValueInt(camera, "Width"));
        }
    }
    EXPECT_EQ(size_t{64} * 16, cameras.size());
    for (const uint32_t opened : grabbers)
        EXPECT_EQ(success, ZVGR_Close(opened));
}

TEST_F(ConfiguredByFile, CameraRecordsHoldTheirLongestTexts)
{
    const std::string longest(64, 'x');
    ASSERT_EQ(2U, scan_with("grabbers: [{cameras: [{vendor: " + longest + ", model: " + longest +
                            ", version: " + longest + ", serial: " + longest + "}]}]\n"));
    const ZvCameraInfo info = camera_info(open_first().at(0));
    EXPECT_EQ(longest, info.vendor_name);
    EXPECT_EQ(longest, info.model_name);
    EXPECT_EQ(longest, info.device_version);
    EXPECT_EQ(longest, info.serial_number);
}

TEST_F(ConfiguredByFile, OffersNothingWhileTheFileIsBrokenAndRecovers)
{
    ASSERT_EQ(2U, scan_with("grabbers: [{}]\n"));
    EXPECT_EQ(0U, scan_with("grabbers: [{name: }]\n"));
    EXPECT_EQ(nullptr, ZV_DeviceDisplayName(0));
    ZvDeviceInfo info{};
    info.version = 3;
    EXPECT_NE(success, ZV_DeviceInfo(0, &info));
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(0));
    EXPECT_EQ(0U, scan());
    EXPECT_EQ(2U, scan_with("grabbers: [{name: A}]\n"));
    EXPECT_STREQ("A", ZV_DeviceDisplayName(0));
}

TEST_F(ConfiguredByFile, OffersNothingWhileTheFileIsMissing)
{
    EXPECT_EQ(0U, scan());
    EXPECT_EQ(2U, scan_with("grabbers: [{}]\n"));
    std::filesystem::remove(file.path());
    EXPECT_EQ(0U, scan());
}

TEST_F(ConfiguredByFile, SeesAnotherTextOfTheSameSizeAndThatAnotherFileIsNamed)
{
    ASSERT_EQ(2U, scan_with("grabbers: [{name: A}]\n"));
    ASSERT_EQ(2U, scan_with("grabbers: [{name: Z}]\n"));
    EXPECT_STREQ("Z", ZV_DeviceDisplayName(0));
    const ConfigurationFile other{"grabbers: [{name: B}, {name: C}]\n"};
    EXPECT_EQ(3U, scan());
    EXPECT_STREQ("C", ZV_DeviceDisplayName(1));
}

TEST_F(ConfiguredByFile, ChangesNothingWhileAGrabberIsOpen)
{
    ASSERT_EQ(2U, scan_with("grabbers: [{name: A}]\n"));
    open_first();
    EXPECT_EQ(2U, scan_with("grabbers: [{name: B}, {name: C}]\n"));
    EXPECT_STREQ("A", ZV_DeviceDisplayName(0));
    EXPECT_EQ(2U, scan_with("garbage\n"));
    EXPECT_EQ(success, ZVGR_Close(grabber));
    EXPECT_EQ(0U, scan());
}

TEST_F(ConfiguredByFile, AGrabberWithoutCamerasOpensAndHasNone)
{
    ASSERT_EQ(1U, scan_with("demo_grabber: false\ngrabbers: [{cameras: []}]\n"));
    EXPECT_TRUE(open_first().empty());
    EXPECT_NE(ZV_NO_HANDLE, grabber);
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetGrabberValueInt(grabber, "Width"));
}

} // namespace
