#include <thread>

#include "unit/simulator/configured_camera.h"

namespace {

using namespace zvsim_test;

constexpr uint32_t success = zv_success;

constexpr int software = 0;
constexpr int line0 = 1;
constexpr int single_frame = 1;
constexpr int multi_frame = 2;

/// Frames come for software triggers only; there are buffers for all of them.
class TriggeredCamera : public ConfiguredCamera {
protected:
    TriggeredCamera()
    {
        set("TriggerMode", 1);
        receiver.on_buffer = [this](uint64_t buffer) {
            ids.push_back(buffer_info(buffer, zv_buffer_frame_id));
            timestamps.push_back(buffer_info(buffer, zv_buffer_timestamp));
        };
        for (int buffers = 0; buffers < 8; ++buffers)
            queued();
    }
    ~TriggeredCamera() override { ZVGR_StreamDelete(stream); } // before what it calls back into goes

    void trigger() const { set("TriggerSoftware", 1); }

    std::vector<uint64_t> ids;
    std::vector<uint64_t> timestamps;
};

TEST_F(TriggeredCamera, EachTriggerBringsAFrame)
{
    ASSERT_EQ(success, start());
    uint64_t before = ticks_now();
    for (uint64_t frame = 1; frame <= 4; ++frame) {
        trigger();
        ASSERT_TRUE(receiver.wait_for(frame));
    }
    ASSERT_EQ(success, stop());
    EXPECT_EQ((std::vector<uint64_t>{0, 1, 2, 3}), ids);
    for (const uint64_t timestamp : timestamps) {
        EXPECT_LE(before, timestamp);
        before = timestamp;
    }
}

TEST_F(TriggeredCamera, TriggersThatFollowEachOtherFastBringAFrameEach)
{
    ASSERT_EQ(success, start());
    for (int frame = 0; frame < 5; ++frame)
        trigger();
    ASSERT_TRUE(receiver.wait_for(5));
    ASSERT_EQ(success, stop());
    EXPECT_EQ((std::vector<uint64_t>{0, 1, 2, 3, 4}), ids);
}

TEST_F(TriggeredCamera, ASetRateDoesNotDelayTriggers)
{
    set("AcquisitionFrameRateEnable", 1);
    set("AcquisitionFrameRate", 0.001);
    ASSERT_EQ(success, start());
    trigger();
    trigger();
    ASSERT_TRUE(receiver.wait_for(2));
    ASSERT_EQ(success, stop());
    EXPECT_EQ((std::vector<uint64_t>{0, 1}), ids);
}

TEST_F(TriggeredCamera, TriggersOutsideAnAcquisitionAreForgotten)
{
    trigger();
    ASSERT_EQ(success, start());
    ASSERT_EQ(success, stop());
    trigger();
    ASSERT_EQ(success, start());
    trigger();
    ASSERT_TRUE(receiver.wait_for(1));
    ASSERT_EQ(success, stop());
    EXPECT_EQ((std::vector<uint64_t>{0}), ids);
}

TEST_F(TriggeredCamera, LinesNeverTrigger)
{
    set("TriggerSource", line0);
    ASSERT_EQ(success, start());
    trigger(); // accepted, but the source is another one
    set("TriggerSource", software);
    trigger();
    ASSERT_TRUE(receiver.wait_for(1));
    ASSERT_EQ(success, stop());
    EXPECT_EQ((std::vector<uint64_t>{0}), ids);
}

TEST_F(TriggeredCamera, WithoutTheModeFramesComeByThemselves)
{
    ASSERT_EQ(success, start());
    trigger();
    ASSERT_TRUE(receiver.wait_for(1));
    set("TriggerMode", 0);
    ASSERT_TRUE(receiver.wait_for(8));
    ASSERT_EQ(success, stop());
    EXPECT_EQ((std::vector<uint64_t>{0, 1, 2, 3, 4, 5, 6, 7}), ids);
}

TEST_F(ConfiguredCamera, ATriggeredFrameWithoutABufferIsLost)
{
    set("TriggerMode", 1);
    ASSERT_EQ(success, start());
    set("TriggerSoftware", 1);
    while (grabber_number("CameraFramesLost") == 0)
        std::this_thread::yield();
    const uint64_t buffer = queued();
    set("TriggerSoftware", 1);
    ASSERT_TRUE(receiver.wait_for(1));
    ASSERT_EQ(success, stop());
    EXPECT_EQ(1U, buffer_info(buffer, zv_buffer_frame_id));
    EXPECT_EQ(1U, grabber_number("CameraFramesLost"));
    EXPECT_EQ(1U, grabber_number("CameraFramesDelivered"));
}

class CountedAcquisition : public ConfiguredCamera {
protected:
    CountedAcquisition()
    {
        for (int buffers = 0; buffers < 12; ++buffers)
            queued();
    }
    ~CountedAcquisition() override { ZVGR_StreamDelete(stream); }

    /// Starts, waits for frames that are expected, and then long enough for another one: the other camera has
    /// delivered a few meanwhile.
    void run(uint64_t frames)
    {
        ASSERT_EQ(success, start());
        ASSERT_TRUE(receiver.wait_for(total += frames));
        other_camera_delivers();
        EXPECT_EQ(static_cast<int64_t>(zv_channel_grabbing),
                  ZVGR_GetGrabberValueEnum(camera, "CameraChannelState"))
            << "the stream goes on";
        ASSERT_EQ(success, stop());
        EXPECT_EQ(total, receiver.frames());
        EXPECT_EQ(0U, receiver.ends());
    }

private:
    void other_camera_delivers()
    {
        Receiver other_receiver;
        uint32_t other = 0;
        ASSERT_EQ(success, ZVGR_CameraOpen2(cameras[1], nullptr));
        ASSERT_EQ(success, ZVGR_StreamCreateAndAlloc(cameras[1], &other, 2, 0));
        ASSERT_EQ(success,
                  ZVGR_CameraCallbackRegister(cameras[1], &Receiver::frame_callback, &other_receiver));
        ASSERT_EQ(success, ZVGR_CameraStartAcquire_GenTL(cameras[1], other, 0));
        EXPECT_TRUE(other_receiver.wait_for(5));
        ASSERT_EQ(success, ZVGR_StreamDelete(other));
    }

    uint64_t total{0};
};

TEST_F(CountedAcquisition, ASingleFrameComesForEachStart)
{
    set("AcquisitionMode", single_frame);
    run(1);
    run(1);
}

TEST_F(CountedAcquisition, MultiFrameBringsItsNumberForEachStart)
{
    set("AcquisitionMode", multi_frame);
    set("AcquisitionFrameCount", 3);
    run(3);
    run(3);
}

TEST_F(CountedAcquisition, AStartThatAsksForFewerFramesEndsByItself)
{
    set("AcquisitionMode", multi_frame);
    set("AcquisitionFrameCount", 5);
    ASSERT_EQ(success, start(2));
    ASSERT_TRUE(receiver.wait_for(3)); // two frames and the end
    ASSERT_EQ(success, stop());
    EXPECT_EQ(2U, receiver.frames());
    EXPECT_EQ(1U, receiver.ends());
}

TEST_F(CountedAcquisition, FramesThatAreLostCount)
{
    set("AcquisitionMode", multi_frame);
    set("AcquisitionFrameCount", 2);
    set("TriggerMode", 1);
    uint32_t empty = 0;
    ASSERT_EQ(success, ZVGR_StreamCreate(camera, &empty, 0));
    ASSERT_EQ(success, ZVGR_CameraStartAcquire_GenTL(camera, empty, 0));
    for (int frame = 0; frame < 3; ++frame)
        set("TriggerSoftware", 1);
    while (grabber_number("CameraFramesLost") < 2)
        std::this_thread::yield();
    ASSERT_EQ(success, stop());
    EXPECT_EQ(2U, grabber_number("CameraFramesLost"));
}

} // namespace
