#include <thread>
#include <utility>

#include "zvgr/FrameStamp.h"

#include "unit/simulator/fixtures.h"

// What only streams in queued mode do: their queues, consumer memory, lost frames, and the report of the end.

namespace {

using namespace zvsim_test;

using Buffers = std::vector<uint64_t>;

TEST_F(QueuedStream, FillsBuffersInTheOrderOfTheirQueueing)
{
    const Buffers buffers{announce(stream), announce(stream), announce(stream)};
    for (const size_t at : {1U, 2U, 0U})
        ASSERT_EQ(success, ZVGR_BufferToQueue(buffers[at], zv_queue_input));
    acquire(3);
    EXPECT_EQ((Buffers{buffers[1], buffers[2], buffers[0]}), receiver.reported);
}

TEST_F(QueuedStream, QueueingAgainMovesToTheBack)
{
    const Buffers buffers{queued(), queued(), queued()};
    ASSERT_EQ(success, ZVGR_BufferToQueue(buffers[0], zv_queue_input));
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

TEST_F(QueuedStream, AFilledBufferWaitsUntilItIsQueuedAgain)
{
    receiver.on_call = [this](uint64_t buffer) {
        if (receiver.reported.size() < 10) {
            EXPECT_EQ(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
        }
    };
    const uint64_t only = queued();
    acquire(10);
    EXPECT_EQ(Buffers(10, only), receiver.reported);
}

TEST_F(QueuedStream, ThePatternMoves)
{
    const uint64_t a = queued();
    const uint64_t b = queued();
    acquire(3, 2);
    const auto pixels = [](uint64_t buffer) {
        return std::vector<unsigned char>(memory_of(buffer) + zvgr::frame_stamp_size,
                                          memory_of(buffer) + frame_size);
    };
    EXPECT_NE(pixels(a), pixels(b));
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

/// A camera that exposes 2000 frames a second, whatever becomes of them.
class PacedStream : public QueuedStream {
protected:
    static constexpr uint64_t period_ticks = 25000000 / 2000;

    PacedStream() : QueuedStream{{coaxpress, "2000"}} {}

    /// Waits for this many frames, and then until the next one has been lost for want of this buffer.
    void wait_and_miss_the_next(uint64_t frames, uint64_t buffer)
    {
        ASSERT_TRUE(receiver.wait_for(frames));
        const uint64_t too_late = buffer_info(buffer, zv_buffer_timestamp) + 3 * period_ticks;
        ASSERT_TRUE(becomes_true([&] { return ticks_now() >= too_late; }));
    }
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

TEST_F(PacedStream, AFrameWithoutABufferIsLostAndKeepsItsNumber)
{
    // The buffer comes back too late again and again, until the thread has had its chance to notice a loss.
    std::atomic<uint64_t> next_id{0};
    std::atomic<bool> has_gap{false};
    receiver.on_call = [&](uint64_t buffer) {
        const uint64_t id = buffer_info(buffer, zv_buffer_frame_id);
        EXPECT_GE(id, next_id);
        EXPECT_EQ(id, zvgr::read_stamp(memory_of(buffer), frame_size)->counter);
        has_gap = has_gap || id > next_id;
        next_id = id + 1;
    };
    const uint64_t buffer = queued();
    ASSERT_EQ(success, start());
    uint64_t frames = 0;
    EXPECT_TRUE(becomes_true([&] {
        wait_and_miss_the_next(++frames, buffer);
        requeue(buffer);
        return has_gap.load();
    }));
    ASSERT_EQ(success, stop());
}

TEST_F(PacedStream, LostFramesDoNotCountAsRequested)
{
    constexpr uint64_t requested = 10;
    const uint64_t buffer = queued();
    ASSERT_EQ(success, start(requested));
    for (uint64_t frames = 1; frames < requested; ++frames) {
        wait_and_miss_the_next(frames, buffer);
        requeue(buffer);
    }
    ASSERT_TRUE(receiver.wait_for_end());
    ASSERT_EQ(success, stop());
    EXPECT_EQ(requested, receiver.frames());
    EXPECT_EQ(1U, receiver.ends());
}

} // namespace
