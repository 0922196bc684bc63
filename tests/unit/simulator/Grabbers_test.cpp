#include <cstring>
#include <set>

#include "unit/simulator/fixtures.h"

// Grabbers and cameras as they are found and opened, and the effects of a configuration file.

namespace {

using namespace zvsim_test;

TEST(BuiltInGrabbers, AreTwoAndTheDemoGrabberLast)
{
    ASSERT_EQ(3U, scan());
    EXPECT_STREQ("ZEVA Software Grabber CXP-2", ZV_DeviceDisplayName(0));
    EXPECT_STREQ("ZEVA Demo Grabber", ZV_DeviceDisplayName(2));
}

TEST_F(Scanned, DisplayNameStaysTheSameTextOverScans)
{
    const char* const name = ZV_DeviceDisplayName(coaxpress);
    const std::string before = name;
    const Variable other_configuration{"ZV_GRABBER_RATE", "10"};
    scan();
    EXPECT_EQ(before, name);
    EXPECT_EQ(name, ZV_DeviceDisplayName(coaxpress));
}

TEST_F(Scanned, AnIndexBeyondTheScanIsNotAGrabber)
{
    ZvDeviceInfo info{};
    info.version = 3;
    EXPECT_NE(success, ZV_DeviceInfo(3, &info));
    EXPECT_EQ(nullptr, ZV_DeviceDisplayName(3));
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(3));
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(ZV_NO_HANDLE));
}

TEST_F(OpenGrabber, RecordsOfAnotherVersionAreRefused)
{
    ZvDeviceInfo grabber_record{};
    grabber_record.version = 2;
    EXPECT_NE(success, ZV_DeviceInfo(coaxpress, &grabber_record));
    ZvCameraInfo camera_record{};
    camera_record.version = 1;
    EXPECT_NE(success, ZVGR_CameraInfo2(cameras.front(), &camera_record));
}

TEST_F(Scanned, NothingButTheProtocolIsWritten)
{
    ZvDeviceInfo info;
    std::memset(&info, 0x5A, sizeof info);
    info.version = 3;
    ZvDeviceInfo expected = info;
    ASSERT_EQ(success, ZV_DeviceInfo(camera_link_hs, &info));
    expected.protocol = zv_protocol_clhs;
    EXPECT_EQ(0, std::memcmp(&expected, &info, sizeof info));
}

TEST_F(OpenGrabber, CannotBeOpenedTwiceButOthersCanBeOpenToo)
{
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(coaxpress));
    const uint32_t other = ZVGR_Open(camera_link_hs);
    ASSERT_NE(ZV_NO_HANDLE, other);
    EXPECT_NE(grabber, other);
    EXPECT_EQ(success, ZVGR_Close(other));
}

TEST_F(OpenGrabber, CameraHandlesStayTheSameOverScans)
{
    for (int scan = 0; scan < 3; ++scan)
        EXPECT_EQ(cameras, cameras_of(grabber));
}

TEST_F(OpenGrabber, CameraListStaysWithinItsRoom)
{
    for (uint32_t room = 0; room < 2; ++room) {
        std::vector<uint32_t> list(2, 77);
        uint32_t count = room;
        ASSERT_EQ(success, ZVGR_UpdateCameraList(grabber, list.data(), &count));
        EXPECT_EQ(2U, count);
        EXPECT_EQ(room == 1 ? cameras.front() : 77, list[0]);
        EXPECT_EQ(77U, list[1]);
    }
}

TEST_F(Scanned, HandlesOfAllKindsDifferAndAreNotGivenOutAgain)
{
    std::set<uint64_t> handles{0, ZV_NO_HANDLE};
    for (int round = 0; round < 50; ++round) {
        const uint32_t grabber = ZVGR_Open(camera_link_hs);
        const uint32_t camera = cameras_of(grabber).at(0);
        ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
        const uint32_t stream = create_stream(camera);
        const uint64_t buffer = announce(stream);
        ASSERT_EQ(success, ZVGR_BufferRevoke(stream, buffer));
        for (const uint64_t handle : std::vector<uint64_t>{
                 grabber, camera, stream, create_stream(camera, Mode::cyclic), buffer, announce(stream)})
            EXPECT_TRUE(handles.insert(handle).second) << handle << " came back";
        ASSERT_EQ(success, ZVGR_Close(grabber));
    }
}

TEST_F(OpenCamera, CanBeOpenedAgainAndIsClosedByOneClose)
{
    EXPECT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    EXPECT_EQ(success, ZVGR_CameraClose(camera));
    EXPECT_NE(success, ZVGR_CameraClose(camera));
}

TEST_F(OpenCamera, TakesNoForeignDescription)
{
    EXPECT_NE(success, ZVGR_CameraOpen2(camera, "/etc/hostname"));
}

TEST_F(OpenCamera, StreamsOutliveTheCloseOfTheirCamera)
{
    const uint32_t stream = create_stream(camera);
    ASSERT_EQ(success, ZVGR_CameraClose(camera));
    EXPECT_EQ(frame_size, stream_info(stream, zv_stream_payload_now));
    EXPECT_NE(success, start_stream(stream)) << "the camera is closed";
    ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    EXPECT_EQ(success, start_stream(stream));
    EXPECT_EQ(success, ZVGR_StreamDelete(stream));
    EXPECT_NE(success, ZVGR_StreamDelete(stream));
}

TEST_F(OpenGrabber, AClosedCameraHasNoStreams)
{
    uint32_t stream = 77;
    EXPECT_NE(success, ZVGR_StreamCreate(cameras.front(), &stream, 0));
    EXPECT_NE(success, ZVGR_StreamCreateAndAlloc(cameras.front(), &stream, 4, 0));
    EXPECT_EQ(77U, stream);
}

/// A file that the library reads.
class ConfiguredByFile : public testing::Test {
protected:
    ~ConfiguredByFile() override { ZVGR_Close(grabber); }

    /// How many grabbers a file with this text leads to.
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
    const std::string texts[] = {std::string(64, 'V'), std::string(64, 'M'), std::string(64, '1'),
                                 std::string(64, 'S')};
    ASSERT_EQ(2U, scan_with("grabbers: [{cameras: [{vendor: " + texts[0] + ", model: " + texts[1] +
                            ", version: " + texts[2] + ", serial: " + texts[3] + "}]}]\n"));
    const ZvCameraInfo info = camera_info(open_first().at(0));
    EXPECT_EQ(texts[0], info.vendor_name);
    EXPECT_EQ(texts[1], info.model_name);
    EXPECT_EQ(texts[2], info.device_version);
    EXPECT_EQ(texts[3], info.serial_number);
}

TEST_F(ConfiguredByFile, OffersNothingWhileTheFileIsBrokenOrMissingAndRecovers)
{
    EXPECT_EQ(0U, scan()) << "missing";
    EXPECT_EQ(2U, scan_with("grabbers: [{}]\n"));
    EXPECT_EQ(0U, scan_with("grabbers: [{name: }]\n"));
    EXPECT_EQ(nullptr, ZV_DeviceDisplayName(0));
    ZvDeviceInfo info{};
    info.version = 3;
    EXPECT_NE(success, ZV_DeviceInfo(0, &info));
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(0));
    EXPECT_EQ(0U, scan());
    EXPECT_EQ(2U, scan_with("grabbers: [{name: A}]\n"));
    EXPECT_STREQ("A", ZV_DeviceDisplayName(0));
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
