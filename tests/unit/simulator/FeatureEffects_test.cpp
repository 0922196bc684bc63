#include <tuple>
#include <utility>

#include <gmock/gmock.h>

#include "unit/simulator/configured_camera.h"

// What the features of a camera do to its frames, and triggers.

namespace {

using namespace zvsim_test;
using testing::AnyOf;
using testing::ElementsAre;

constexpr int white = 6;
constexpr int grey = 7;
constexpr int black = 5;

TEST_F(ConfiguredCamera, SizesAndFormatSetThePayload)
{
    set("TestPattern", white);
    EXPECT_EQ(66U * 50U, number("PayloadSize"));
    set_picture(20, 10, 0, 0);
    for (const auto& [format, size] : {std::pair{mono8, 200U}, {mono16, 400U}, {mono12p, 300U}}) {
        set("PixelFormat", format);
        EXPECT_EQ(size, number("PayloadSize"));
        EXPECT_EQ(size, stream_info(stream, zv_stream_payload_now));
        EXPECT_EQ(std::vector<unsigned char>(size, 0xFF), frame());
    }
    EXPECT_EQ(66U * 50U, stream_info(stream, zv_stream_payload_at_creation));
    EXPECT_EQ(300U, stream_info(create_stream(camera), zv_stream_payload_at_creation));
}

TEST_F(ConfiguredCamera, SizeAndOffsetCutThePictureOut)
{
    const auto whole = frame(); // the diagonal ramp
    set_picture(20, 10, 7, 11);
    const auto part = frame();
    ASSERT_EQ(200U, part.size());
    for (size_t y = 0; y < 10; ++y) {
        for (size_t x = 0; x < 20; ++x)
            ASSERT_EQ(whole[(y + 11) * 66 + x + 7], part[y * 20 + x]) << x << " " << y;
    }
}

TEST_F(ConfiguredCamera, ExposureAndGainSetTheBrightness)
{
    set("TestPattern", grey);
    const std::tuple<double, double, double> rows[] = {{10000, 0, 128},
                                                       {5000, 0, 64},
                                                       {5000, 6.0206, 128}, // twice as bright
                                                       {5000, -12, 64 * 0.2512},
                                                       {5000, 48, 255}}; // no more than the full scale
    for (const auto& [exposure, gain, expected] : rows) {
        set("ExposureTime", exposure);
        set("Gain", gain);
        EXPECT_NEAR(expected, frame().at(0), 1);
    }
}

TEST_F(ConfiguredCamera, PatternExposureAndGainActOnTheNextFrame)
{
    set("TestPattern", white);
    const std::function<void()> changes[] = {[this] { set("ExposureTime", 5000.0); },
                                             [this] { set("Gain", 6.0206); },
                                             [this] { set("TestPattern", black); }};
    std::vector<int> pixels;
    receiver.on_call = [&](uint64_t buffer) {
        pixels.push_back(memory_of(buffer)[0]);
        if (pixels.size() > std::size(changes))
            return;
        changes[pixels.size() - 1]();
        requeue(buffer);
    };
    queued(); // the only one: the next frame is drawn when the settings have changed
    acquire(4);
    EXPECT_THAT(pixels, ElementsAre(255, AnyOf(127, 128), AnyOf(254, 255), 0));
}

TEST_F(ConfiguredCamera, AFasterRateOrNoneDoesNotWaitForTheSlowOne)
{
    const std::function<void()> changes[] = {[this] { set("AcquisitionFrameRate", 500.0); },
                                             [this] { set("AcquisitionFrameRateEnable", 0); }};
    uint64_t frames = 0;
    for (const auto& change : changes) {
        set("AcquisitionFrameRateEnable", 1);
        set("AcquisitionFrameRate", 0.001);
        const std::vector<uint64_t> buffers{queued(), queued(), queued()};
        ASSERT_EQ(success, start());
        ASSERT_TRUE(receiver.wait_for(frames + 1));
        change(); // the second frame would have come in a quarter of an hour
        ASSERT_TRUE(receiver.wait_for(frames += 3));
        ASSERT_EQ(success, stop());
        for (const uint64_t id : {0U, 1U, 2U})
            EXPECT_EQ(id, buffer_info(buffers[id], zv_buffer_frame_id));
    }
}

TEST_F(ConfiguredCamera, ASmallerBufferTakesThePartOfALargerPictureThatFits)
{
    set("TestPattern", white);
    set("Width", 10);
    const uint64_t buffer = queued();
    set("Width", 66);
    acquire(2, 1);
    EXPECT_EQ(std::vector<unsigned char>(500, 0xFF),
              std::vector<unsigned char>(memory_of(buffer), memory_of(buffer) + 500));
}

TEST_F(ConfiguredCamera, ARingGrowsWithThePictureAtTheNextStart)
{
    set("TestPattern", white);
    Receiver frames;
    const uint32_t ring = create_stream(camera, Mode::cyclic, &frames);
    set("PixelFormat", mono16);
    EXPECT_EQ(66U * 50U, stream_info(ring, zv_stream_payload_at_creation));
    EXPECT_EQ(66U * 50U * 2, stream_info(ring, zv_stream_payload_now));
    ASSERT_EQ(success, ZVGR_CameraStartAcquire_GenTL(camera, ring, ring_frames));
    ASSERT_TRUE(frames.wait_for(ring_frames));
    ASSERT_EQ(success, stop());
    for (uint32_t frame = 0; frame < ring_frames; ++frame) {
        const auto* const pixels = static_cast<const unsigned char*>(ZVGR_StreamGetPtr(ring, frame));
        EXPECT_EQ(std::vector<unsigned char>(66 * 50 * 2, 0xFF),
                  std::vector<unsigned char>(pixels, pixels + 66 * 50 * 2));
    }
    ASSERT_EQ(success, ZVGR_StreamDelete(ring));
}

TEST_F(ConfiguredCamera, ItsOwnCommandsNeitherStartNorStopAnything)
{
    set("AcquisitionStart", 1);
    EXPECT_EQ(0U, number("ParametersAreLocked"));
    queued();
    receiver.on_call = [this](uint64_t buffer) {
        set("AcquisitionStop", 1);
        requeue(buffer);
    };
    ASSERT_EQ(success, start());
    ASSERT_TRUE(receiver.wait_for(5));
    set("AcquisitionStart", 1);
    ASSERT_TRUE(receiver.wait_for(10));
    ASSERT_EQ(success, stop());
    set("AcquisitionStop", 1);
    EXPECT_EQ(0U, receiver.ends());
}

/// A pair of registers that is always written at once is always read as it was written.
TEST_F(ConfiguredCamera, RegistersAreReadAndWrittenFromManyThreadsWhileFramesCome)
{
    const RegisterPlace& pair = camera_register("AcquisitionFrameRate"); // ExposureTime is behind it
    const auto pair_of = [](double first) {
        Bytes bytes = bytes_of(first);
        const Bytes second = bytes_of(first + 1);
        bytes.insert(bytes.end(), second.begin(), second.end());
        return bytes;
    };
    ASSERT_EQ(success, write_camera(camera, pair.address, pair_of(1000)).status);
    receiver.on_call = requeue;
    queued();
    queued();
    ASSERT_EQ(success, start());
    {
        Repeated threads;
        for (const double first : {1000.0, 2000.0})
            threads.call([&, first](int round) {
                EXPECT_EQ(success, write_camera(camera, pair.address, pair_of(first + round % 7)).status);
                const Bytes read = read_camera(camera, pair.address, 16).bytes;
                EXPECT_EQ(pair_of(float_from({read.begin(), read.begin() + 8})), read);
                set("TestPattern", round % 14);
                set("AcquisitionFrameRateEnable", round % 2);
                EXPECT_NE(success, write("Width", 32).status) << "the camera acquires";
                EXPECT_EQ(1U, grabber_number("CameraLinkState"));
            });
        EXPECT_TRUE(receiver.wait_for(200));
    }
    ASSERT_EQ(success, stop());
}

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
