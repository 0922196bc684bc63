#include <cstring>
#include <set>

#include "unit/simulator/fixtures.h"

namespace {

using namespace zvsim_test;

constexpr uint32_t success = zv_success;

ZvDeviceInfo device_info(uint32_t index)
{
    ZvDeviceInfo info{};
    info.version = 3;
    EXPECT_EQ(success, ZV_DeviceInfo(index, &info));
    return info;
}

ZvCameraInfo camera_info(uint32_t camera)
{
    ZvCameraInfo info{};
    EXPECT_EQ(success, ZVGR_CameraInfo2(camera, &info));
    return info;
}

TEST_F(Scanned, OffersTwoGrabbersAndTheDemoGrabberLast)
{
    ASSERT_EQ(3U, grabber_count());
    EXPECT_EQ(uint32_t{zv_protocol_cxp}, device_info(coaxpress).protocol);
    EXPECT_EQ(uint32_t{zv_protocol_clhs}, device_info(camera_link_hs).protocol);
    EXPECT_EQ(uint32_t{zv_protocol_cxp}, device_info(demo).protocol);
    EXPECT_STREQ("ZEVA Demo Grabber", ZV_DeviceDisplayName(demo));
}

TEST_F(Scanned, GrabberNamesDiffer)
{
    std::set<std::string> names;
    for (uint32_t index = 0; index < grabber_count(); ++index)
        names.insert(ZV_DeviceDisplayName(index));
    EXPECT_EQ(grabber_count(), names.size());
}

TEST_F(Scanned, DisplayNameStaysTheSameTextOverScans)
{
    const char* const name = ZV_DeviceDisplayName(coaxpress);
    const std::string before = name;
    const Variable other_configuration{"ZV_GRABBER_RATE", "10"};
    uint32_t count = 0;
    ASSERT_EQ(success, ZV_DeviceScan(&count));
    EXPECT_EQ(before, name);
    EXPECT_EQ(name, ZV_DeviceDisplayName(coaxpress));
}

TEST_F(Scanned, AnIndexBeyondTheScanIsNoGrabber)
{
    ZvDeviceInfo info{};
    info.version = 3;
    EXPECT_NE(success, ZV_DeviceInfo(grabber_count(), &info));
    EXPECT_EQ(nullptr, ZV_DeviceDisplayName(grabber_count()));
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(grabber_count()));
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(ZV_NO_HANDLE));
}

TEST_F(Scanned, RecordsOfAnotherVersionAreRefused)
{
    ZvDeviceInfo info{};
    info.version = 2;
    EXPECT_NE(success, ZV_DeviceInfo(coaxpress, &info));
}

TEST_F(Scanned, NothingButTheProtocolIsWritten)
{
    ZvDeviceInfo info;
    std::memset(&info, 0x5A, sizeof info);
    info.version = 3;
    ASSERT_EQ(success, ZV_DeviceInfo(camera_link_hs, &info));
    ZvDeviceInfo expected;
    std::memset(&expected, 0x5A, sizeof expected);
    expected.version = 3;
    expected.protocol = zv_protocol_clhs;
    EXPECT_EQ(0, std::memcmp(&expected, &info, sizeof info));
}

TEST_F(OpenGrabber, HasTwoCamerasOnTheCoaxpressGrabber) { EXPECT_EQ(2U, cameras.size()); }

TEST_F(OpenGrabber, CamerasSayWhoTheyAre)
{
    std::set<std::string> serial_numbers;
    for (const uint32_t camera : cameras) {
        const ZvCameraInfo info = camera_info(camera);
        EXPECT_STREQ("ZEVA Electronics", info.vendor_name);
        EXPECT_STREQ("1.0.0", info.device_version);
        EXPECT_EQ(0, std::strncmp("SoftCam", info.model_name, 7));
        serial_numbers.insert(info.serial_number);
    }
    EXPECT_EQ(cameras.size(), serial_numbers.size());
}

TEST_F(OpenGrabber, CameraRecordsOfAnotherVersionAreRefused)
{
    ZvCameraInfo info{};
    info.version = 1;
    EXPECT_NE(success, ZVGR_CameraInfo2(cameras.front(), &info));
}

TEST_F(OpenGrabber, CannotBeOpenedTwice) { EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(coaxpress)); }

TEST_F(OpenGrabber, OtherGrabbersCanBeOpenToo)
{
    const uint32_t other = ZVGR_Open(camera_link_hs);
    ASSERT_NE(ZV_NO_HANDLE, other);
    EXPECT_NE(grabber, other);
    EXPECT_EQ(success, ZVGR_Close(other));
}

TEST_F(OpenGrabber, CameraHandlesStayTheSameOverScans)
{
    for (int scan = 0; scan < 3; ++scan) {
        std::vector<uint32_t> again(zv_max_cameras);
        uint32_t count = zv_max_cameras;
        ASSERT_EQ(success, ZVGR_UpdateCameraList(grabber, again.data(), &count));
        again.resize(count);
        EXPECT_EQ(cameras, again);
    }
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

TEST_F(OpenGrabber, HandlesOfAllKindsDifferAndAreNeverZero)
{
    std::set<uint32_t> handles{0, ZV_NO_HANDLE, grabber};
    handles.insert(cameras.begin(), cameras.end());
    size_t expected = 3 + cameras.size();
    for (const uint32_t camera : cameras) {
        ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
        uint32_t queued = 0;
        uint32_t cyclic = 0;
        ASSERT_EQ(success, ZVGR_StreamCreate(camera, &queued, 0));
        ASSERT_EQ(success, ZVGR_StreamCreateAndAlloc(camera, &cyclic, 2, 0));
        handles.insert({queued, cyclic});
        expected += 2;
    }
    EXPECT_EQ(expected, handles.size());
}

TEST_F(OpenGrabber, ClosingKillsEveryHandleBelow)
{
    const uint32_t camera = cameras.front();
    uint32_t stream = 0;
    uint64_t buffer = 0;
    ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    ASSERT_EQ(success, ZVGR_StreamCreate(camera, &stream, 0));
    ASSERT_EQ(success, ZVGR_BufferAllocAndAnnounce(stream, 100, nullptr, &buffer));
    ASSERT_EQ(success, ZVGR_Close(grabber));

    uint64_t value = 0;
    ZvCameraInfo info{};
    EXPECT_NE(success, ZVGR_Close(grabber));
    EXPECT_NE(success, ZVGR_CameraInfo2(camera, &info));
    EXPECT_NE(success, ZVGR_CameraOpen2(camera, nullptr));
    EXPECT_NE(success, ZVGR_CameraClose(camera));
    EXPECT_NE(success, ZVGR_CameraStopAcquire_GenTL(camera));
    EXPECT_NE(success, ZVGR_StreamGetInfo(stream, zv_stream_payload_now, &value));
    EXPECT_NE(success, ZVGR_StreamDelete(stream));
    EXPECT_NE(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
    EXPECT_NE(success, ZVGR_BufferGetInfo(buffer, zv_buffer_address, &value));
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetCameraValueInt(camera, "Width"));
}

TEST_F(Scanned, HandlesAreNotGivenOutAgain)
{
    std::set<uint64_t> handles;
    for (int round = 0; round < 50; ++round) {
        const uint32_t grabber = ZVGR_Open(demo);
        uint32_t camera = 0;
        uint32_t count = 1;
        uint32_t stream = 0;
        uint64_t buffer = 0;
        uint64_t next_buffer = 0;
        ASSERT_EQ(success, ZVGR_UpdateCameraList(grabber, &camera, &count));
        ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
        ASSERT_EQ(success, ZVGR_StreamCreate(camera, &stream, 0));
        ASSERT_EQ(success, ZVGR_BufferAllocAndAnnounce(stream, 100, nullptr, &buffer));
        ASSERT_EQ(success, ZVGR_BufferRevoke(stream, buffer));
        ASSERT_EQ(success, ZVGR_BufferAllocAndAnnounce(stream, 100, nullptr, &next_buffer));
        for (const uint64_t handle :
             {uint64_t{grabber}, uint64_t{camera}, uint64_t{stream}, buffer, next_buffer})
            EXPECT_TRUE(handles.insert(handle).second) << handle << " came back";
        ASSERT_EQ(success, ZVGR_Close(grabber));
    }
}

TEST_F(OpenGrabber, AReopenedGrabberHasNewHandles)
{
    ASSERT_EQ(success, ZVGR_Close(grabber));
    const uint32_t again = ZVGR_Open(coaxpress);
    EXPECT_NE(ZV_NO_HANDLE, again);
    EXPECT_NE(grabber, again);
    grabber = again;
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
    uint32_t stream = 0;
    ASSERT_EQ(success, ZVGR_StreamCreate(camera, &stream, 0));
    ASSERT_EQ(success, ZVGR_CameraClose(camera));
    EXPECT_EQ(uint64_t{64} * 48, stream_info(stream, zv_stream_payload_now));
    EXPECT_NE(success, start(stream)) << "the camera is closed";
    ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    EXPECT_EQ(success, start(stream));
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

} // namespace
