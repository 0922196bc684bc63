#include "unit/simulator/configured_camera.h"

namespace {

using namespace zvsim_test;

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
        receiver.on_call = [this](uint64_t buffer) {
            ids.push_back(buffer_info(buffer, zv_buffer_frame_id));
            timestamps.push_back(buffer_info(buffer, zv_buffer_timestamp));
        };
        for (int buffers = 0; buffers < 8; ++buffers)
            queued();
    }
    ~TriggeredCamera() override { ZVGR_StreamDelete(stream); } // before what it calls back into goes

    void trigger() const { set("TriggerSoftware", 1); }
    /// Waits until there have been so many frames, stops, and expects their ids to be those from 0 on.
    void stop_after(uint64_t frames)
    {
        ASSERT_TRUE(receiver.wait_for(frames));
        ASSERT_EQ(success, stop());
        ASSERT_EQ(frames, ids.size());
        for (uint64_t id = 0; id < frames; ++id)
            EXPECT_EQ(id, ids[id]);
    }

    std::vector<uint64_t> ids;
    std::vector<uint64_t> timestamps;
};

TEST_F(TriggeredCamera, EachTriggerBringsAFrame)
{
    uint64_t before = ticks_now();
    ASSERT_EQ(success, start());
    for (uint64_t frame = 1; frame <= 4; ++frame) {
        trigger();
        ASSERT_TRUE(receiver.wait_for(frame));
    }
    stop_after(4);
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
    stop_after(5);
}

TEST_F(TriggeredCamera, ASetRateDoesNotDelayTriggers)
{
    set("AcquisitionFrameRateEnable", 1);
    set("AcquisitionFrameRate", 0.001);
    ASSERT_EQ(success, start());
    trigger();
    trigger();
    stop_after(2);
}

TEST_F(TriggeredCamera, TriggersOutsideAnAcquisitionAreForgotten)
{
    trigger();
    ASSERT_EQ(success, start());
    ASSERT_EQ(success, stop());
    trigger();
    ASSERT_EQ(success, start());
    trigger();
    stop_after(1);
}

TEST_F(TriggeredCamera, LinesNeverTrigger)
{
    set("TriggerSource", line0);
    ASSERT_EQ(success, start());
    trigger(); // accepted, but the source is another one
    set("TriggerSource", software);
    trigger();
    stop_after(1);
}

TEST_F(TriggeredCamera, WithoutTheModeFramesComeByThemselves)
{
    ASSERT_EQ(success, start());
    trigger();
    ASSERT_TRUE(receiver.wait_for(1));
    set("TriggerMode", 0);
    stop_after(8);
}

TEST_F(ConfiguredCamera, ATriggeredFrameWithoutABufferIsLost)
{
    set("TriggerMode", 1);
    ASSERT_EQ(success, start());
    set("TriggerSoftware", 1);
    ASSERT_TRUE(becomes_true([this] { return grabber_number("CameraFramesLost") != 0; }));
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
        EXPECT_TRUE(is_grabbing(camera)) << "the stream goes on";
        ASSERT_EQ(success, stop());
        EXPECT_EQ(total, receiver.frames());
        EXPECT_EQ(0U, receiver.ends());
    }

private:
    uint64_t total{0};
};

TEST_F(CountedAcquisition, EachStartBringsASingleFrameOrTheirSetNumber)
{
    set("AcquisitionFrameCount", 3);
    for (const auto& [acquisition_mode, frames] : {std::pair{single_frame, 1U}, {multi_frame, 3U}}) {
        set("AcquisitionMode", acquisition_mode);
        run(frames);
        run(frames);
    }
}

TEST_F(CountedAcquisition, AStartThatAsksForFewerFramesEndsByItself)
{
    set("AcquisitionMode", multi_frame);
    set("AcquisitionFrameCount", 5);
    acquire(3, 2); // two frames and the end
    EXPECT_EQ(2U, receiver.frames());
    EXPECT_EQ(1U, receiver.ends());
}

TEST_F(CountedAcquisition, FramesThatAreLostCount)
{
    set("AcquisitionMode", multi_frame);
    set("AcquisitionFrameCount", 2);
    set("TriggerMode", 1);
    ASSERT_EQ(success, ZVGR_CameraStartAcquire_GenTL(camera, create_stream(camera), 0)); // it has no buffers
    for (int frame = 0; frame < 3; ++frame)
        set("TriggerSoftware", 1);
    ASSERT_TRUE(becomes_true([this] { return grabber_number("CameraFramesLost") == 2; }));
    ASSERT_EQ(success, stop());
    EXPECT_EQ(2U, grabber_number("CameraFramesLost"));
}

} // namespace
