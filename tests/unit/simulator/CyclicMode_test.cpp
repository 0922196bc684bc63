#include <cstring>
#include <tuple>
#include <utility>

#include "zvgr/FrameStamp.h"

#include "unit/simulator/fixtures.h"

// What only streams in cyclic mode do: their ring, its records, and the callback of their camera.

namespace {

using namespace zvsim_test;

constexpr size_t readable_beyond = size_t{64} << 20U;

TEST_F(CyclicStream, ReusesTheRingInOrder)
{
    std::vector<uint32_t> indices;
    receiver.on_call = [&](uint64_t /*stream*/) { indices.push_back(ZVGR_StreamGetFrameIndex(stream)); };
    EXPECT_EQ(UINT32_MAX, ZVGR_StreamGetFrameIndex(stream)) << "nothing filled yet";
    acquire(10);
    for (size_t frame = 0; frame < indices.size(); ++frame)
        EXPECT_EQ(frame % ring_frames, indices[frame]);
}

TEST_F(CyclicStream, TheTimeIsUnalignedInItsRecordAndNothingElseIsWritten)
{
    acquire(1, 1);
    unsigned char record[sizeof(ZvFrameAux)];
    std::memset(record, 0x5A, sizeof record);
    ASSERT_EQ(success, ZVGR_StreamGetAux(stream, 0, reinterpret_cast<ZvFrameAux*>(record)));
    uint64_t time = 0;
    std::memcpy(&time, record + 17, sizeof time);
    EXPECT_EQ(ring_frame_time(stream, 0), time);
    EXPECT_GT(time, 0U);
    std::memset(record + 17, 0x5A, sizeof time);
    EXPECT_TRUE(std::all_of(std::begin(record), std::end(record), [](unsigned char c) { return c == 0x5A; }));
}

TEST_F(CyclicStream, AFrameStaysIntactWhileItsCallbackRuns)
{
    Gate let_go;
    Gate inside;
    bool was_intact = false;
    receiver.on_call = [&, is_first = true](uint64_t reported) mutable {
        if (!std::exchange(is_first, false))
            return;
        const auto* const memory = frame_memory(reported);
        const std::vector<unsigned char> before(memory, memory + frame_size);
        inside.open();
        EXPECT_TRUE(let_go.wait());
        was_intact = std::equal(before.begin(), before.end(), memory);
    };
    ASSERT_EQ(success, start());
    ASSERT_TRUE(inside.wait());
    EXPECT_EQ(0U, ZVGR_StreamGetFrameIndex(stream)) << "the index names the frame of the running callback";
    let_go.open();
    ASSERT_TRUE(receiver.wait_for(2 * ring_frames));
    ASSERT_EQ(success, stop());
    EXPECT_TRUE(was_intact);
}

TEST_F(CyclicStream, ReadersMayRunPastTheEndOfEveryRingFrame)
{
    acquire(ring_frames, ring_frames);
    for (uint32_t frame = 0; frame < ring_frames; ++frame) {
        const auto* const memory = static_cast<const unsigned char*>(ZVGR_StreamGetPtr(stream, frame));
        EXPECT_TRUE(zvgr::read_stamp(memory, frame_size)->checksum_ok);
        const volatile unsigned char* const beyond = memory + frame_size;
        for (size_t page = 0; page < readable_beyond; page += 4096)
            std::ignore = beyond[page];
        std::ignore = beyond[readable_beyond - 1];
        if (frame == ring_frames - 1) { // every byte is zero, and so is the one before it
            EXPECT_EQ(0, beyond[0]);
            EXPECT_EQ(0, std::memcmp(memory + frame_size, memory + frame_size + 1, readable_beyond - 1));
        }
    }
}

TEST_F(CyclicStream, StillGrabsWhileItsLastFrameIsReported)
{
    receiver.on_call = [&, frames = 0](uint64_t /*stream*/) mutable {
        if (++frames == 6) {
            EXPECT_TRUE(is_grabbing(camera));
        }
    };
    acquire(6, 6);
}

TEST_F(CyclicStream, TheCameraCallbackDoesNotServeQueuedStreams)
{
    Receiver queued_receiver;
    const uint32_t queued = create_stream(camera, Mode::queued, &queued_receiver);
    requeue(announce(queued));
    receiver.expect_silence();
    ASSERT_EQ(success, start_stream(queued, 1));
    ASSERT_TRUE(queued_receiver.wait_for(2));
    ASSERT_EQ(success, ZVGR_StreamDelete(queued));
    receiver.expect_calls();
    acquire(1, 1); // the callback is not forgotten with a queued stream
}

TEST_F(CyclicStream, TheCameraCallbackIsForgottenWithItsStream)
{
    ASSERT_EQ(success, ZVGR_StreamDelete(stream));
    receiver.expect_silence();
    const uint32_t other = create_stream(camera, Mode::cyclic);
    ASSERT_EQ(success, start_stream(other, 3));
    EXPECT_TRUE(becomes_true([this] { return !is_grabbing(camera); }));
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

TEST_F(CyclicStream, FramesBeyondTheRingFail)
{
    ZvFrameAux record{};
    for (const uint32_t frame : {ring_frames, ZV_NO_HANDLE}) {
        EXPECT_EQ(nullptr, ZVGR_StreamGetPtr(stream, frame));
        EXPECT_NE(success, ZVGR_StreamGetAux(stream, frame, &record));
    }
}

} // namespace
