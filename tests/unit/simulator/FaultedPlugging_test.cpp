#include <gmock/gmock.h>

#include "unit/simulator/faults.h"

namespace {

using namespace zvsim_test;
using testing::ElementsAre;

class FaultedPlugging : public Faulty {
protected:
    /// It is away between the second and the third scan.
    void unplug_for_one_scan(const std::string& place) const
    {
        plan("events: [{scan: 2, do: unplug, " + place + "}, {scan: 3, do: plug, " + place + "}]");
    }
    static uint32_t status_of_list(uint32_t grabber)
    {
        uint32_t cameras[zv_max_cameras];
        uint32_t count = zv_max_cameras;
        return ZVGR_UpdateCameraList(grabber, cameras, &count);
    }
};

TEST_F(FaultedPlugging, AnUnpluggedGrabberIsMissingInTheScanAndItsCallsFailUntilItIsBack)
{
    unplug_for_one_scan("grabber: 0");
    EXPECT_EQ(3u, scan());
    EXPECT_STREQ("Two", ZV_DeviceDisplayName(0));
    const uint32_t grabber = open_grabber();
    EXPECT_EQ(2u, scan());
    EXPECT_STREQ("One", ZV_DeviceDisplayName(0));
    EXPECT_EQ(nullptr, ZV_DeviceDisplayName(2));
    EXPECT_NE(success, status_of_list(grabber));
    EXPECT_EQ(3u, scan());
    EXPECT_STREQ("Two", ZV_DeviceDisplayName(0));
    EXPECT_EQ(success, status_of_list(grabber));
}

TEST_F(FaultedPlugging, AnUnpluggedCameraIsMissingInTheListAndKeepsItsHandle)
{
    unplug_for_one_scan("grabber: 0, camera: 0");
    scan();
    const uint32_t grabber = open_grabber();
    const auto before = cameras_of(grabber);
    ASSERT_EQ(2u, before.size());
    scan();
    EXPECT_THAT(cameras_of(grabber), ElementsAre(before[1]));
    EXPECT_NE(success, ZVGR_CameraOpen2(before[0], nullptr));
    EXPECT_EQ(64, ZVGR_GetCameraValueInt(before[1], "Width")) << "the other one is there";
    scan();
    EXPECT_EQ(before, cameras_of(grabber));
    EXPECT_EQ(success, ZVGR_CameraOpen2(before[0], nullptr));
}

TEST_F(FaultedPlugging, TheAcquisitionOfAnUnpluggedCameraEndsByItself)
{
    plan("events: [{scan: 2, do: unplug, grabber: 0, camera: 0}]");
    Acquired acquired{open_camera(), 1}; // the stream waits for buffers after one frame
    ASSERT_EQ(success, acquired.start());
    ASSERT_TRUE(acquired.receiver.wait_for(1));
    scan();
    ASSERT_TRUE(acquired.receiver.wait_for(2));
    EXPECT_EQ(success, acquired.stop());
    EXPECT_EQ(1u, acquired.receiver.ends());
}

TEST_F(FaultedPlugging, ACableCanBePulledAtATime)
{
    bool is_started = false;
    // The time begins with the scan. A machine that is too slow to acquire before it gets another try.
    for (int time = 10; !is_started; time *= 2) {
        plan("events: [{at: " + std::to_string(time) + " ms, do: unplug, grabber: 0, camera: 0}]");
        scan();
        const auto cameras = cameras_of(open_grabber());
        Receiver receiver;
        uint32_t stream = ZV_NO_HANDLE;
        is_started =
            cameras.size() == 2 && ZVGR_CameraOpen2(cameras[0], nullptr) == success &&
            ZVGR_StreamCreate(cameras[0], &stream, 0) == success &&
            ZVGR_StreamBufferCallbackRegister(stream, &Receiver::buffer_callback, &receiver) == success &&
            ZVGR_CameraStartAcquire_GenTL(cameras[0], stream, 0) == success;
        EXPECT_TRUE(!is_started || receiver.wait_for_end()) << "nobody calls, and it ends anyway";
        close_all();
        EXPECT_EQ(is_started ? 1U : 0U, receiver.ends());
    }
}

TEST_F(FaultedPlugging, ACableThatIsPulledLaterDoesNotHoldUpTheEnd)
{
    plan("events: [{at: 10 min, do: unplug, grabber: 0}]");
    EXPECT_EQ(3u, scan());
}

TEST_F(FaultedPlugging, ACameraThatCameBackMustBeOpenedAgain)
{
    unplug_for_one_scan("grabber: 0, camera: 0");
    const uint32_t camera = open_camera();
    Acquired acquired{camera, 2};
    scan();
    scan();
    EXPECT_NE(success, acquired.start());
    EXPECT_EQ(success, ZVGR_CameraClose(camera));
    EXPECT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    acquired.run(2, 1);
    EXPECT_THAT(acquired.ids, ElementsAre(0));
}

TEST_F(FaultedPlugging, EverythingOfALostGrabberOrCameraCanBeEnded)
{
    for (const char* const place : {"grabber: 0", "grabber: 0, camera: 0"}) {
        plan(std::string{"events: [{scan: 2, do: unplug, "} + place + "}]");
        scan();
        const uint32_t grabber = ZVGR_Open(0);
        const uint32_t camera = cameras_of(grabber).at(0);
        ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
        const uint32_t stream = create_stream(camera);
        const uint64_t buffer = announce(stream);
        scan();
        EXPECT_NE(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
        EXPECT_EQ(success, ZVGR_CameraStopAcquire_GenTL(camera));
        EXPECT_EQ(success, ZVGR_BufferRevoke(stream, buffer));
        EXPECT_EQ(success, ZVGR_StreamDelete(stream));
        EXPECT_EQ(success, ZVGR_CameraClose(camera));
        EXPECT_EQ(success, ZVGR_Close(grabber));
    }
}

TEST_F(FaultedPlugging, ACameraCanBeLostWhileItIsOpened)
{
    fault("kind: camera-lost-while-opening, grabber: 0, camera: 0, away_for_scans: 1, times: 1");
    scan();
    const uint32_t grabber = open_grabber();
    const auto cameras = cameras_of(grabber);
    EXPECT_NE(success, ZVGR_CameraOpen2(cameras[0], nullptr));
    EXPECT_THAT(cameras_of(grabber), ElementsAre(cameras[1]));
    EXPECT_EQ(cameras, cameras_of(grabber));
    EXPECT_EQ(success, ZVGR_CameraOpen2(cameras[0], nullptr));
}

TEST_F(FaultedPlugging, ACameraCanBeLostWhileItIsConfigured)
{
    const uint32_t camera = open_camera_with("kind: camera-lost-while-configuring, when: {call: 2}");
    uint32_t size = 4;
    EXPECT_EQ(success, ZVGR_CameraWriteReg(camera, 0x1100, "new", &size));
    EXPECT_NE(success, ZVGR_CameraWriteReg(camera, 0x1100, "old", &size));
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetCameraValueInt(camera, "Width"));
}

TEST_F(FaultedPlugging, ACameraCanBeLostWhileItStreams)
{
    Acquired acquired{
        open_camera_with("kind: camera-lost-while-streaming, when: {frame: 2}, away_for_scans: 1, times: 1"),
        8};
    acquired.run(3);
    EXPECT_THAT(acquired.ids, ElementsAre(0, 1));
    EXPECT_EQ(1u, acquired.receiver.ends());
    EXPECT_NE(success, acquired.start());
}

TEST_F(FaultedPlugging, AGrabberCanBeLostAtAnyCall)
{
    fault("kind: grabber-lost, grabber: 0, when: {call: 2}, away_for_scans: 1");
    scan();
    const uint32_t grabber = open_grabber();
    EXPECT_NE(success, status_of_list(grabber));
    EXPECT_EQ(2u, scan());
    EXPECT_EQ(3u, scan());
    EXPECT_EQ(success, status_of_list(grabber));
}

TEST_F(FaultedPlugging, AGrabberCanBeLostWhileItsCameraStreams)
{
    Acquired acquired{open_camera_with("kind: grabber-lost-while-streaming, when: {frame: 1}"), 4};
    acquired.run(2);
    EXPECT_THAT(acquired.ids, ElementsAre(0));
    EXPECT_EQ(2u, scan());
}

TEST_F(FaultedPlugging, ALossCanEndByTime)
{
    fault("kind: camera-lost-while-opening, away_for: 0 ms, times: 1");
    scan();
    const auto cameras = cameras_of(open_grabber());
    EXPECT_NE(success, ZVGR_CameraOpen2(cameras[0], nullptr));
    EXPECT_EQ(success, ZVGR_CameraOpen2(cameras[0], nullptr));
}

} // namespace
