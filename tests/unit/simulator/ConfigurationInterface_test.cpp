#include <cstring>
#include <fstream>
#include <set>
#include <sstream>

#include "unit/simulator/fixtures.h"
#include "unit/simulator/picture_files.h"

// What a configuration file brings about, through the interface alone.

namespace {

using namespace zvsim_test;

constexpr uint32_t success = zv_success;

/// A file that the library is told to read.
class ConfiguredByFile : public testing::Test {
protected:
    static uint32_t scan()
    {
        uint32_t count = 77;
        EXPECT_EQ(success, ZV_DeviceScan(&count));
        return count;
    }
    /// How many grabbers a file with this text brings about.
    uint32_t scan_with(const std::string& text) const
    {
        m_folder.write("grabbers.yaml", text);
        return scan();
    }
    static uint32_t protocol_of(uint32_t index)
    {
        ZvDeviceInfo info{};
        info.version = 3;
        EXPECT_EQ(success, ZV_DeviceInfo(index, &info));
        return info.protocol;
    }
    const Folder& folder() const { return m_folder; }

private:
    Folder m_folder;
    Variable m_variable{"ZV_GRABBER_CONFIG", m_folder.file("grabbers.yaml").string()};
};

TEST_F(ConfiguredByFile, OffersTheGrabbersOfTheFile)
{
    ASSERT_EQ(
        3U, scan_with(
                "grabbers: [{name: First, protocol: GigEVision}, {name: Second, protocol: CameraLinkHS}]\n"));
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
        ASSERT_NE(ZV_NO_HANDLE, grabbers.back());
        uint32_t handles[zv_max_cameras];
        uint32_t count = zv_max_cameras;
        ASSERT_EQ(success, ZVGR_UpdateCameraList(grabbers.back(), handles, &count));
        ASSERT_EQ(16U, count);
        std::set<std::string> serials;
        for (const uint32_t camera : handles) {
            ZvCameraInfo info{};
            ASSERT_EQ(success, ZVGR_CameraInfo2(camera, &info));
            serials.insert(info.serial_number);
            EXPECT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
            EXPECT_EQ(32, ZVGR_GetCameraValueInt(camera, "Width"));
            cameras.insert(camera);
        }
        EXPECT_EQ(16U, serials.size());
    }
    EXPECT_EQ(size_t{64} * 16, cameras.size());
    for (const uint32_t grabber : grabbers)
        EXPECT_EQ(success, ZVGR_Close(grabber));
}

TEST_F(ConfiguredByFile, CameraRecordsHoldTheirLongestTexts)
{
    const std::string longest(64, 'x');
    ASSERT_EQ(2U, scan_with("grabbers: [{cameras: [{vendor: " + longest + ", model: " + longest +
                            ", version: " + longest + ", serial: " + longest + "}]}]\n"));
    const uint32_t grabber = ZVGR_Open(0);
    uint32_t camera = ZV_NO_HANDLE;
    uint32_t count = 1;
    ASSERT_EQ(success, ZVGR_UpdateCameraList(grabber, &camera, &count));
    ZvCameraInfo info{};
    ASSERT_EQ(success, ZVGR_CameraInfo2(camera, &info));
    EXPECT_EQ(longest, info.vendor_name);
    EXPECT_EQ(longest, info.model_name);
    EXPECT_EQ(longest, info.device_version);
    EXPECT_EQ(longest, info.serial_number);
    EXPECT_EQ(success, ZVGR_Close(grabber));
}

TEST_F(ConfiguredByFile, OffersNothingWhileTheFileIsBrokenAndRecovers)
{
    ASSERT_EQ(2U, scan_with("grabbers: [{}]\n"));
    EXPECT_EQ(0U, scan_with("grabbers: [{name: }]\n"));
    EXPECT_EQ(nullptr, ZV_DeviceDisplayName(0));
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(0));
    EXPECT_EQ(0U, scan());
    EXPECT_EQ(2U, scan_with("grabbers: [{name: A}]\n"));
    EXPECT_STREQ("A", ZV_DeviceDisplayName(0));
}

TEST_F(ConfiguredByFile, OffersNothingWhileTheFileIsMissing)
{
    EXPECT_EQ(0U, scan());
    EXPECT_EQ(2U, scan_with("grabbers: [{}]\n"));
    std::filesystem::remove(folder().file("grabbers.yaml"));
    EXPECT_EQ(0U, scan());
}

TEST_F(ConfiguredByFile, SeesAChangeThatLeavesTheSizeOfTheFileAlone)
{
    ASSERT_EQ(2U, scan_with("grabbers: [{name: A}]\n"));
    ASSERT_EQ(2U, scan_with("grabbers: [{name: B}]\n"));
    EXPECT_STREQ("B", ZV_DeviceDisplayName(0));
}

TEST_F(ConfiguredByFile, SeesThatAnotherFileIsNamed)
{
    ASSERT_EQ(2U, scan_with("grabbers: [{name: A}]\n"));
    folder().write("other.yaml", "grabbers: [{name: B}, {name: C}]\n");
    const Variable variable{"ZV_GRABBER_CONFIG", folder().file("other.yaml").string()};
    EXPECT_EQ(3U, scan());
    EXPECT_STREQ("C", ZV_DeviceDisplayName(1));
}

TEST_F(ConfiguredByFile, ChangesNothingWhileAGrabberIsOpen)
{
    ASSERT_EQ(2U, scan_with("grabbers: [{name: A}]\n"));
    const uint32_t grabber = ZVGR_Open(0);
    ASSERT_NE(ZV_NO_HANDLE, grabber);
    EXPECT_EQ(2U, scan_with("grabbers: [{name: B}, {name: C}]\n"));
    EXPECT_STREQ("A", ZV_DeviceDisplayName(0));
    EXPECT_EQ(2U, scan_with("garbage\n"));
    EXPECT_EQ(success, ZVGR_Close(grabber));
    EXPECT_EQ(0U, scan());
}

TEST_F(ConfiguredByFile, ABrokenFileIsFoundByTheFirstCallOfAnyKind)
{
    ASSERT_EQ(0U, scan_with("[\n"));
    ZvDeviceInfo info{};
    info.version = 3;
    EXPECT_NE(success, ZV_DeviceInfo(0, &info));
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(0));
}

TEST_F(ConfiguredByFile, AGrabberWithoutCamerasOpensAndHasNone)
{
    ASSERT_EQ(1U, scan_with("demo_grabber: false\ngrabbers: [{cameras: []}]\n"));
    const uint32_t grabber = ZVGR_Open(0);
    ASSERT_NE(ZV_NO_HANDLE, grabber);
    uint32_t camera = 0;
    uint32_t count = 1;
    EXPECT_EQ(success, ZVGR_UpdateCameraList(grabber, &camera, &count));
    EXPECT_EQ(0U, count);
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetGrabberValueInt(grabber, "Width"));
    EXPECT_EQ(success, ZVGR_Close(grabber));
}

TEST_F(ConfiguredByFile, ReportsCodesOfTheCodeSpaceOfTheCamera)
{
    ASSERT_EQ(
        1U,
        scan_with("demo_grabber: false\n"
                  "grabbers: [{cameras: [{pixel_format: Mono16}, {pixel_format: Mono16, pixel_format_codes: "
                  "CoaXPress}]}]\n"));
    const uint32_t grabber = ZVGR_Open(0);
    uint32_t cameras[2];
    uint32_t count = 2;
    ASSERT_EQ(success, ZVGR_UpdateCameraList(grabber, cameras, &count));
    EXPECT_EQ(0x01100007, ZVGR_GetCameraValueEnum(cameras[0], "PixelFormat"));
    EXPECT_EQ(0x105, ZVGR_GetCameraValueEnum(cameras[1], "PixelFormat"));
    EXPECT_EQ(success, ZVGR_Close(grabber));
}

} // namespace
