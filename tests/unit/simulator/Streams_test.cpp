#include <cstring>
#include <tuple>
#include <utility>

#include "zvgr/FrameStamp.h"

#include "unit/simulator/fixtures.h"

// Streams while they run: the rules that both modes obey, and what only one of them does.

namespace {

using namespace zvsim_test;
using Buffers = std::vector<uint64_t>;

INSTANTIATE_TEST_SUITE_P(BothModes, EitherMode, testing::Values(Mode::queued, Mode::cyclic), name_of_mode);

TEST_P(EitherMode, FramesCarryCounterChecksumIdsAndTime)
{
    uint64_t frames = 0;
    uint64_t last_time = ticks_now();
    keep_supplied();
    receiver.on_call = [&](uint64_t reported) {
        const auto stamp = zvgr::read_stamp(frame_memory(reported), frame_size);
        ASSERT_TRUE(stamp);
        EXPECT_TRUE(stamp->checksum_ok);
        EXPECT_EQ(frames, stamp->counter);
        uint64_t time = 0;
        if (mode == Mode::queued) {
            EXPECT_EQ(frames, buffer_info(reported, zv_buffer_frame_id));
            EXPECT_EQ(frames, buffer_info(reported, zv_buffer_image_id));
            time = buffer_info(reported, zv_buffer_timestamp);
            requeue(reported);
        } else {
            EXPECT_EQ(stream, reported);
            time = ring_frame_time(stream, ZVGR_StreamGetFrameIndex(stream));
        }
        EXPECT_GE(time, last_time);
        EXPECT_LE(time, ticks_now());
        last_time = time;
        ++frames;
    };
    acquire(200);
}

TEST_P(EitherMode, EndsAfterTheFramesAskedForAndCanBeStartedAgain)
{
    const uint64_t reports_of_end = mode == Mode::queued ? 1 : 0;
    keep_supplied();
    ASSERT_EQ(success, start(6));
    ASSERT_TRUE(receiver.wait_for(6 + reports_of_end));
    ASSERT_TRUE(becomes_true([this] { return !is_grabbing(camera); }));
    acquire(7 + 2 * reports_of_end, 1);
    EXPECT_EQ(7U, receiver.frames());
    EXPECT_EQ(2 * reports_of_end, receiver.ends());
}

TEST_P(EitherMode, AStartWhileRunningFailsAndThatOfAnotherCamera)
{
    ASSERT_EQ(success, ZVGR_CameraOpen2(cameras[1], nullptr));
    EXPECT_NE(success, ZVGR_CameraStartAcquire_GenTL(cameras[1], stream, 0));
    const uint32_t other = create_stream(camera, mode);
    ASSERT_EQ(success, start());
    EXPECT_NE(success, start());
    EXPECT_NE(success, start_stream(other)) << "a camera serves one stream at a time";
    ASSERT_EQ(success, stop());
    EXPECT_EQ(success, start_stream(other));
    EXPECT_EQ(success, stop());
    EXPECT_EQ(success, start());
}

/// Three pictures, written before the library scans.
class WrittenPictures {
protected:
    WrittenPictures()
    {
        for (unsigned number = 0; number < 3; ++number) {
            const TestPicture picture = test_picture(50, 30, Pixels::rgb_8, number);
            write_png(m_folder.file(std::to_string(number) + ".png"), picture);
            expected.push_back(picture.in_memory());
        }
    }

    std::vector<std::vector<unsigned char>> expected;

private:
    Folder m_folder;
    Variable m_variable{"ZV_GRABBER_PICTURES", m_folder.path().string()};
};

class Pictures : protected WrittenPictures, public EitherMode {};

INSTANTIATE_TEST_SUITE_P(BothModes, Pictures, testing::Values(Mode::queued, Mode::cyclic), name_of_mode);

TEST_P(Pictures, ArriveBitForBitInALoop)
{
    uint64_t frames = 0;
    keep_supplied();
    receiver.on_call = [&](uint64_t reported) {
        const auto* const memory = frame_memory(reported);
        const auto& picture = expected[frames++ % 3];
        EXPECT_EQ(picture, std::vector<unsigned char>(memory, memory + picture.size()));
        if (mode == Mode::queued)
            requeue(reported);
    };
    EXPECT_EQ(0x02180014, ZVGR_GetCameraValueEnum(camera, "PixelFormat"));
    EXPECT_EQ(50, ZVGR_GetCameraValueInt(camera, "Width"));
    EXPECT_EQ(30, ZVGR_GetCameraValueInt(camera, "Height"));
    EXPECT_EQ(expected[0].size(), stream_info(stream, zv_stream_payload_now));
    acquire(7);
}

// In queued mode: queues, consumer memory, lost frames, and the report of the end.

TEST_F(QueuedStream, FillsBuffersInTheOrderOfTheirQueueingAndTheLatestCounts)
{
    const Buffers buffers{announce(stream), announce(stream), announce(stream)};
    for (const size_t at : {0U, 1U, 2U, 0U})
        ASSERT_EQ(success, ZVGR_BufferToQueue(buffers[at], zv_queue_input));
    acquire(3);
    EXPECT_EQ((Buffers{buffers[1], buffers[2], buffers[0]}), receiver.reported) << "and none of them twice";
}

TEST_F(QueuedStream, ABufferMovedToTheOutputQueueIsNotFilled)
{
    const Buffers buffers{queued(), queued()};
    ASSERT_EQ(success, ZVGR_BufferToQueue(buffers[0], zv_queue_output));
    ASSERT_EQ(success, start(2));
    ASSERT_TRUE(receiver.wait_for(1));
    ASSERT_EQ(success, ZVGR_BufferToQueue(buffers[0], zv_queue_input));
    ASSERT_TRUE(receiver.wait_for(3));
    ASSERT_EQ(success, stop());
    EXPECT_EQ((Buffers{buffers[1], buffers[0], 0}), receiver.reported);
}

TEST_F(QueuedStream, EndsWithACallbackWithoutABufferAfterTheFramesAskedFor)
{
    receiver.on_call = [this](uint64_t buffer) {
        if (buffer == 0) {
            EXPECT_FALSE(is_grabbing(camera));
        } else {
            requeue(buffer);
        }
    };
    const uint64_t only = queued();
    acquire(6, 5); // a stop after the end is harmless
    EXPECT_EQ((Buffers{only, only, only, only, only, 0}), receiver.reported);
}

TEST_F(QueuedStream, AStopByTheCallerSendsNoEnd)
{
    const uint64_t only = queued();
    acquire(1, 2);
    receiver.expect_silence();
    EXPECT_EQ(Buffers{only}, receiver.reported);
}

TEST_F(QueuedStream, CanBeStartedFromTheReportOfItsEnd)
{
    receiver.on_call = [this](uint64_t buffer) {
        if (buffer != 0)
            requeue(buffer);
        else if (receiver.ends() < 3) {
            EXPECT_EQ(success, start(2));
        }
    };
    queued();
    ASSERT_EQ(success, start(2));
    ASSERT_TRUE(receiver.wait_for_end(3));
    ASSERT_EQ(success, stop());
    EXPECT_EQ(6U, receiver.frames());
}

TEST_F(QueuedStream, FrameIdsBeginAgainWithEveryStart)
{
    const uint64_t buffer = queued();
    for (const uint64_t calls : {2U, 4U, 6U}) {
        acquire(calls, 1);
        EXPECT_EQ(0U, buffer_info(buffer, zv_buffer_frame_id));
        ASSERT_EQ(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
    }
}

TEST_F(QueuedStream, FillsConsumerMemoryAndNothingBeyond)
{
    constexpr size_t margin = 64;
    uint64_t rounds = 0;
    for (const size_t size :
         {size_t{0}, size_t{1}, size_t{31}, size_t{100}, frame_size - 1, frame_size, frame_size + margin}) {
        std::vector<unsigned char> memory(margin + frame_size + 2 * margin, 0x5A);
        unsigned char* const begin = memory.data() + margin;
        const uint64_t buffer = queue_memory(stream, begin, size);
        EXPECT_EQ(begin, memory_of(buffer));
        acquire(2 * ++rounds, 1);
        ASSERT_EQ(success, ZVGR_BufferRevoke(stream, buffer));

        const size_t filled = std::min(size, frame_size);
        const auto untouched = [](unsigned char byte) { return byte == 0x5A; };
        EXPECT_TRUE(std::all_of(memory.data(), begin, untouched));
        EXPECT_TRUE(std::all_of(begin + filled, memory.data() + memory.size(), untouched));
        const auto stamp = zvgr::read_stamp(begin, filled);
        EXPECT_EQ(filled >= zvgr::frame_stamp_size, stamp.has_value());
        EXPECT_EQ(filled == frame_size, stamp && stamp->checksum_ok) << "a cut frame reads as damaged";
    }
}

TEST_F(QueuedStream, WorksWithoutACallback)
{
    const uint32_t silent = create_stream(camera);
    const uint64_t buffer = announce(silent);
    requeue(buffer);
    ASSERT_EQ(success, start_stream(silent, 1));
    EXPECT_TRUE(becomes_true([this] { return !is_grabbing(camera); }));
    EXPECT_TRUE(zvgr::read_stamp(memory_of(buffer), frame_size)->checksum_ok);
    ASSERT_EQ(success, ZVGR_StreamDelete(silent));
}

/// A camera that exposes 2000 frames a second, whether or not they can be delivered.
class PacedStream : public QueuedStream {
protected:
    static constexpr uint64_t period_ticks = 25000000 / 2000;

    PacedStream() : QueuedStream{{coaxpress, "2000"}} {}
};

TEST_F(PacedStream, FramesHaveTheTimesOfTheirRate)
{
    std::vector<std::pair<uint64_t, uint64_t>> frames;
    keep_supplied();
    receiver.on_call = [&](uint64_t buffer) {
        frames.emplace_back(buffer_info(buffer, zv_buffer_frame_id),
                            buffer_info(buffer, zv_buffer_timestamp));
        requeue(buffer);
    };
    acquire(100);
    for (const auto& [id, time] : frames) {
        const uint64_t expected = frames[0].second + (id - frames[0].first) * period_ticks;
        EXPECT_NEAR(static_cast<double>(expected), static_cast<double>(time), 1) << "frame " << id;
    }
}

TEST_F(PacedStream, FramesWithoutABufferAreLostKeepTheirNumbersAndDoNotCountAsRequested)
{
    const auto lost = [this] { return ZVGR_GetGrabberValueInt(camera, "CameraFramesLost"); };
    ASSERT_EQ(success, start(1));
    ASSERT_TRUE(becomes_true([&] { return lost() > 0; }));
    const uint64_t buffer = queued();
    ASSERT_TRUE(receiver.wait_for_end());
    ASSERT_EQ(success, stop());
    EXPECT_EQ((Buffers{buffer, 0}), receiver.reported);
    const uint64_t id = buffer_info(buffer, zv_buffer_frame_id);
    EXPECT_EQ(static_cast<uint64_t>(lost()), id) << "all before it";
    EXPECT_EQ(id, zvgr::read_stamp(memory_of(buffer), frame_size)->counter);
}

// In cyclic mode: the ring, its records, and the callback of the camera.

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

TEST_F(CyclicStream, RingFramesAreAlignedDoNotOverlapAndEndWithTheRing)
{
    for (uint32_t frame = 1; frame < ring_frames; ++frame) {
        const auto* const before = static_cast<unsigned char*>(ZVGR_StreamGetPtr(stream, frame - 1));
        const auto* const memory = static_cast<unsigned char*>(ZVGR_StreamGetPtr(stream, frame));
        EXPECT_GE(memory, before + frame_size);
        EXPECT_EQ(0U, reinterpret_cast<uintptr_t>(memory) % 64);
    }
    ZvFrameAux record{};
    for (const uint32_t frame : {ring_frames, ZV_NO_HANDLE}) {
        EXPECT_EQ(nullptr, ZVGR_StreamGetPtr(stream, frame));
        EXPECT_NE(success, ZVGR_StreamGetAux(stream, frame, &record));
    }
}

} // namespace
