#include <algorithm>
#include <cstring>
#include <thread>

#include "zvgr/FrameStamp.h"

#include "unit/simulator/fixtures.h"

namespace {

using namespace zvsim_test;

constexpr uint32_t success = zv_success;
constexpr size_t frame_size = size_t{64} * 48;
constexpr size_t readable_beyond = size_t{64} << 20U;

uint64_t frame_time(uint32_t stream, uint32_t frame)
{
    ZvFrameAux record{};
    EXPECT_EQ(success, ZVGR_StreamGetAux(stream, frame, &record));
    return record.timestamp;
}

TEST_F(CyclicStream, ReusesTheRingInOrder)
{
    std::vector<uint32_t> indices;
    receiver.on_frame = [&](uint32_t handle) {
        EXPECT_EQ(stream, handle);
        indices.push_back(ZVGR_StreamGetFrameIndex(handle));
    };
    EXPECT_EQ(UINT32_MAX, ZVGR_StreamGetFrameIndex(stream)) << "nothing filled yet";
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(receiver.wait_for(10));
    ASSERT_EQ(success, stop());
    for (size_t frame = 0; frame < indices.size(); ++frame)
        EXPECT_EQ(frame % ring_frames, indices[frame]);
}

TEST_F(CyclicStream, FramesCarryCounterChecksumAndTime)
{
    const uint64_t before = ticks_now();
    uint64_t frames = 0;
    uint64_t last_time = 0;
    receiver.on_frame = [&](uint32_t handle) {
        const uint32_t index = ZVGR_StreamGetFrameIndex(handle);
        const auto stamp = zvgr::read_stamp(ZVGR_StreamGetPtr(handle, index), frame_size);
        ASSERT_TRUE(stamp);
        EXPECT_TRUE(stamp->checksum_ok);
        EXPECT_EQ(frames, stamp->counter);
        const uint64_t time = frame_time(handle, index);
        EXPECT_GE(time, std::max(before, last_time));
        EXPECT_LE(time, ticks_now());
        last_time = time;
        ++frames;
    };
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(receiver.wait_for(500));
    ASSERT_EQ(success, stop());
}

TEST_F(CyclicStream, TheTimeStandsUnalignedInItsRecordAndNothingElseIsWritten)
{
    ASSERT_EQ(success, start(stream, 1));
    ASSERT_TRUE(receiver.wait_for(1));
    ASSERT_EQ(success, stop());
    unsigned char record[sizeof(ZvFrameAux)];
    std::memset(record, 0x5A, sizeof record);
    ASSERT_EQ(success, ZVGR_StreamGetAux(stream, 0, reinterpret_cast<ZvFrameAux*>(record)));
    uint64_t time = 0;
    std::memcpy(&time, record + 17, sizeof time);
    EXPECT_EQ(frame_time(stream, 0), time);
    EXPECT_GT(time, 0U);
    std::memset(record + 17, 0x5A, sizeof time);
    EXPECT_TRUE(std::all_of(std::begin(record), std::end(record), [](unsigned char c) { return c == 0x5A; }));
}

TEST_F(CyclicStream, AFrameStaysIntactWhileItsCallbackRuns)
{
    Gate let_go;
    Gate inside;
    bool was_intact = false;
    receiver.on_frame = [&, is_first = true](uint32_t handle) mutable {
        if (!std::exchange(is_first, false))
            return;
        const auto* const memory =
            static_cast<const unsigned char*>(ZVGR_StreamGetPtr(handle, ZVGR_StreamGetFrameIndex(handle)));
        const std::vector<unsigned char> before(memory, memory + frame_size);
        inside.open();
        EXPECT_TRUE(let_go.wait());
        was_intact = std::equal(before.begin(), before.end(), memory);
    };
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(inside.wait());
    EXPECT_EQ(0U, ZVGR_StreamGetFrameIndex(stream)) << "the index names the frame of the running callback";
    let_go.open();
    ASSERT_TRUE(receiver.wait_for(2 * ring_frames));
    ASSERT_EQ(success, stop());
    EXPECT_TRUE(was_intact);
}

TEST_F(CyclicStream, ReadersMayRunPastTheEndOfEveryRingFrame)
{
    ASSERT_EQ(success, start(stream, ring_frames));
    ASSERT_TRUE(receiver.wait_for(ring_frames));
    ASSERT_EQ(success, stop());
    std::vector<unsigned char> copy(frame_size + readable_beyond);
    for (uint32_t frame = 0; frame < ring_frames; ++frame) {
        std::memcpy(copy.data(), ZVGR_StreamGetPtr(stream, frame), copy.size());
        EXPECT_TRUE(zvgr::read_stamp(copy.data(), copy.size())->checksum_ok);
    }
    // Behind the last frame there are only zeros.
    EXPECT_TRUE(std::all_of(copy.begin() + frame_size, copy.end(), [](unsigned char c) { return c == 0; }));
}

TEST_F(CyclicStream, EndsAfterTheFramesAskedFor)
{
    receiver.on_frame = [&, frames = 0](uint32_t /*stream*/) mutable {
        if (++frames == 6) {
            EXPECT_EQ(zv_channel_grabbing, ZVGR_GetGrabberValueEnum(camera, "CameraChannelState"));
        }
    };
    ASSERT_EQ(success, start(stream, 6));
    ASSERT_TRUE(receiver.wait_for(6));
    while (ZVGR_GetGrabberValueEnum(camera, "CameraChannelState") == zv_channel_grabbing)
        std::this_thread::yield();
    EXPECT_EQ(success, start(stream, 1)) << "it has ended: it can start again";
    ASSERT_TRUE(receiver.wait_for(7));
    ASSERT_EQ(success, stop());
    EXPECT_EQ(7U, receiver.frames());
}

TEST_F(CyclicStream, AStartWhileRunningFails)
{
    ASSERT_EQ(success, start(stream));
    EXPECT_NE(success, start(stream));
    ASSERT_EQ(success, stop());
    EXPECT_EQ(success, start(stream));
}

TEST_F(CyclicStream, TheCameraCallbackDoesNotServeQueuedStreams)
{
    uint32_t queued = 0;
    uint64_t buffer = 0;
    Receiver queued_receiver;
    ASSERT_EQ(success, ZVGR_StreamCreate(camera, &queued, 0));
    ASSERT_EQ(success,
              ZVGR_StreamBufferCallbackRegister(queued, &Receiver::buffer_callback, &queued_receiver));
    ASSERT_EQ(success, ZVGR_BufferAllocAndAnnounce(queued, frame_size, nullptr, &buffer));
    ASSERT_EQ(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
    receiver.expect_silence();
    ASSERT_EQ(success, start(queued, 1));
    ASSERT_TRUE(queued_receiver.wait_for(2));
    ASSERT_EQ(success, ZVGR_StreamDelete(queued));
    receiver.expect_calls();
    ASSERT_EQ(success, start(stream, 1));
    EXPECT_TRUE(receiver.wait_for(1)) << "and is not forgotten with one";
}

TEST_F(CyclicStream, TheCameraCallbackIsForgottenWithItsStream)
{
    ASSERT_EQ(success, ZVGR_StreamDelete(stream));
    receiver.expect_silence();
    uint32_t other = 0;
    ASSERT_EQ(success, ZVGR_StreamCreateAndAlloc(camera, &other, 2, 0));
    ASSERT_EQ(success, start(other, 3));
    while (ZVGR_GetGrabberValueEnum(camera, "CameraChannelState") == zv_channel_grabbing)
        std::this_thread::yield();
    EXPECT_EQ(success, ZVGR_StreamDelete(other));
}

TEST_F(CyclicStream, RingFramesDoNotOverlap)
{
    for (uint32_t frame = 1; frame < ring_frames; ++frame) {
        const auto* const before = static_cast<unsigned char*>(ZVGR_StreamGetPtr(stream, frame - 1));
        const auto* const memory = static_cast<unsigned char*>(ZVGR_StreamGetPtr(stream, frame));
        EXPECT_GE(memory, before + frame_size);
        EXPECT_EQ(0U, reinterpret_cast<uintptr_t>(memory) % 64);
    }
}

} // namespace
