#include <algorithm>
#include <thread>

#include "zvgr/FrameStamp.h"

#include "unit/simulator/BlockingMemory.h"
#include "unit/simulator/fixtures.h"

namespace {

using namespace zvsim_test;

constexpr uint32_t success = zv_success;
constexpr size_t frame_size = size_t{64} * 48;

TEST_F(QueuedStream, FillsBuffersInTheOrderOfTheirQueueing)
{
    std::vector<uint64_t> filled;
    receiver.on_buffer = [&](uint64_t buffer) { filled.push_back(buffer); };
    const uint64_t a = announced();
    const uint64_t b = announced();
    const uint64_t c = announced();
    for (const uint64_t buffer : {b, c, a})
        ASSERT_EQ(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(receiver.wait_for(3));
    ASSERT_EQ(success, stop());
    EXPECT_EQ((std::vector<uint64_t>{b, c, a}), filled);
}

TEST_F(QueuedStream, QueueingAgainMovesToTheBack)
{
    std::vector<uint64_t> filled;
    receiver.on_buffer = [&](uint64_t buffer) { filled.push_back(buffer); };
    const uint64_t a = queued();
    const uint64_t b = queued();
    const uint64_t c = queued();
    ASSERT_EQ(success, ZVGR_BufferToQueue(a, zv_queue_input));
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(receiver.wait_for(3));
    ASSERT_EQ(success, stop());
    EXPECT_EQ((std::vector<uint64_t>{b, c, a}), filled) << "and none of them twice";
}

TEST_F(QueuedStream, ABufferMovedToTheOutputQueueIsNotFilled)
{
    std::vector<uint64_t> filled;
    receiver.on_buffer = [&](uint64_t buffer) { filled.push_back(buffer); };
    const uint64_t a = queued();
    const uint64_t b = queued();
    ASSERT_EQ(success, ZVGR_BufferToQueue(a, zv_queue_output));
    ASSERT_EQ(success, start(stream, 2));
    ASSERT_TRUE(receiver.wait_for(1));
    ASSERT_EQ(success, ZVGR_BufferToQueue(a, zv_queue_input));
    ASSERT_TRUE(receiver.wait_for(3));
    ASSERT_EQ(success, stop());
    EXPECT_EQ((std::vector<uint64_t>{b, a, 0}), filled);
}

TEST_F(QueuedStream, AFilledBufferWaitsUntilItIsQueuedAgain)
{
    std::vector<uint64_t> filled;
    receiver.on_buffer = [&](uint64_t buffer) {
        filled.push_back(buffer);
        if (filled.size() < 10) {
            EXPECT_EQ(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
        }
    };
    const uint64_t only = queued();
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(receiver.wait_for(10));
    ASSERT_EQ(success, stop());
    EXPECT_EQ(std::vector<uint64_t>(10, only), filled);
}

TEST_F(QueuedStream, FramesCarryCounterChecksumIdsAndTime)
{
    const uint64_t before = ticks_now();
    uint64_t frames = 0;
    uint64_t last_time = 0;
    receiver.on_buffer = [&](uint64_t buffer) {
        const auto stamp = zvgr::read_stamp(memory(buffer), frame_size);
        ASSERT_TRUE(stamp);
        EXPECT_TRUE(stamp->checksum_ok);
        EXPECT_EQ(frames, stamp->counter);
        EXPECT_EQ(frames, buffer_info(buffer, zv_buffer_frame_id));
        EXPECT_EQ(frames, buffer_info(buffer, zv_buffer_image_id));
        const uint64_t time = buffer_info(buffer, zv_buffer_timestamp);
        EXPECT_GE(time, std::max(before, last_time));
        EXPECT_LE(time, ticks_now());
        last_time = time;
        ++frames;
        ZVGR_BufferToQueue(buffer, zv_queue_input);
    };
    for (int buffers = 0; buffers < 4; ++buffers)
        queued();
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(receiver.wait_for(500));
    ASSERT_EQ(success, stop());
}

TEST_F(QueuedStream, ThePatternMoves)
{
    const uint64_t a = queued();
    const uint64_t b = queued();
    ASSERT_EQ(success, start(stream, 2));
    ASSERT_TRUE(receiver.wait_for(3));
    const auto pixels = [](uint64_t buffer) {
        const auto* const begin = memory(buffer) + zvgr::frame_stamp_size;
        return std::vector<unsigned char>(begin, memory(buffer) + frame_size);
    };
    EXPECT_NE(pixels(a), pixels(b));
}

TEST_F(QueuedStream, EndsWithACallbackWithoutABufferAfterTheFramesAskedFor)
{
    std::vector<uint64_t> reported;
    receiver.on_buffer = [&](uint64_t buffer) {
        reported.push_back(buffer);
        if (buffer == 0) {
            EXPECT_NE(zv_channel_grabbing, ZVGR_GetGrabberValueEnum(camera, "CameraChannelState"));
        } else {
            ZVGR_BufferToQueue(buffer, zv_queue_input);
        }
    };
    const uint64_t only = queued();
    ASSERT_EQ(success, start(stream, 5));
    ASSERT_TRUE(receiver.wait_for(6));
    EXPECT_EQ(success, stop()) << "a stop after the end is harmless";
    EXPECT_EQ((std::vector<uint64_t>{only, only, only, only, only, 0}), reported);
}

TEST_F(QueuedStream, AStopByTheCallerSendsNoEnd)
{
    queued();
    ASSERT_EQ(success, start(stream, 2));
    ASSERT_TRUE(receiver.wait_for(1));
    ASSERT_EQ(success, stop());
    receiver.expect_silence();
    EXPECT_EQ(1U, receiver.frames());
    EXPECT_EQ(0U, receiver.ends());
}

TEST_F(QueuedStream, AStartWhileRunningFails)
{
    uint32_t other = 0;
    ASSERT_EQ(success, ZVGR_StreamCreate(camera, &other, 0));
    ASSERT_EQ(success, start(stream));
    EXPECT_NE(success, start(stream));
    EXPECT_NE(success, start(other)) << "a camera serves one stream at a time";
    ASSERT_EQ(success, stop());
    EXPECT_EQ(success, start(other));
}

TEST_F(QueuedStream, CanBeStartedAgainOnceItHasEnded)
{
    Gate second_end;
    receiver.on_buffer = [&, rounds = 0](uint64_t buffer) mutable {
        if (buffer != 0) {
            ZVGR_BufferToQueue(buffer, zv_queue_input);
        } else if (++rounds == 1) {
            EXPECT_EQ(success, start(stream, 3)); // from inside the callback that reports the end
        } else {
            second_end.open();
        }
    };
    queued();
    ASSERT_EQ(success, start(stream, 2));
    ASSERT_TRUE(second_end.wait());
    ASSERT_EQ(success, stop());
    EXPECT_EQ(5U, receiver.frames());
}

TEST_F(QueuedStream, FrameIdsBeginAgainWithEveryStart)
{
    const uint64_t buffer = queued();
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(success, start(stream, 1));
        ASSERT_TRUE(receiver.wait_for(2 * static_cast<uint64_t>(round + 1)));
        ASSERT_EQ(success, stop());
        EXPECT_EQ(0U, buffer_info(buffer, zv_buffer_frame_id));
        ASSERT_EQ(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
    }
}

TEST_F(QueuedStream, FillsConsumerMemoryAndNothingBeyond)
{
    constexpr size_t margin = 64;
    for (const size_t size :
         {size_t{0}, size_t{1}, size_t{31}, size_t{100}, frame_size - 1, frame_size, frame_size + margin}) {
        std::vector<unsigned char> memory(margin + frame_size + 2 * margin, 0x5A);
        uint64_t buffer = 0;
        ASSERT_EQ(success, ZVGR_BufferAnnounce(stream, memory.data() + margin, size, nullptr, &buffer));
        EXPECT_EQ(reinterpret_cast<uintptr_t>(memory.data() + margin),
                  buffer_info(buffer, zv_buffer_address));
        ASSERT_EQ(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
        receiver.on_buffer = nullptr;
        Gate end;
        receiver.on_buffer = [&](uint64_t filled) {
            if (filled == 0)
                end.open();
        };
        ASSERT_EQ(success, start(stream, 1));
        ASSERT_TRUE(end.wait());
        ASSERT_EQ(success, stop());
        ASSERT_EQ(success, ZVGR_BufferRevoke(stream, buffer));

        const size_t filled = std::min(size, frame_size);
        const auto untouched = [](unsigned char byte) { return byte == 0x5A; };
        EXPECT_TRUE(std::all_of(memory.begin(), memory.begin() + margin, untouched));
        EXPECT_TRUE(
            std::all_of(memory.begin() + static_cast<ptrdiff_t>(margin + filled), memory.end(), untouched));
        const auto stamp = zvgr::read_stamp(memory.data() + margin, filled);
        EXPECT_EQ(filled >= zvgr::frame_stamp_size, stamp.has_value());
        EXPECT_EQ(filled == frame_size, stamp && stamp->checksum_ok) << "a cut frame reads as damaged";
    }
}

TEST_F(QueuedStream, WorksWithoutACallback)
{
    uint32_t silent = 0;
    uint64_t buffer = 0;
    ASSERT_EQ(success, ZVGR_StreamCreate(camera, &silent, 0));
    ASSERT_EQ(success, ZVGR_BufferAllocAndAnnounce(silent, frame_size, nullptr, &buffer));
    ASSERT_EQ(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
    ASSERT_EQ(success, start(silent, 1));
    ASSERT_EQ(success, ZVGR_StreamDelete(silent));
}

/// A buffer in which the stream's thread has been stopped while it draws.
class DrawingStream : public QueuedStream {
protected:
    DrawingStream()
    {
        EXPECT_EQ(success, ZVGR_BufferAnnounce(stream, blocking.data(), blocking.size(), nullptr, &drawn));
        EXPECT_EQ(success, ZVGR_BufferToQueue(drawn, zv_queue_input));
        next = queued();
        receiver.on_buffer = [this](uint64_t buffer) { reported.push_back(buffer); };
        EXPECT_EQ(success, start(stream));
        EXPECT_TRUE(blocking.wait_for_access());
    }
    ~DrawingStream() override
    {
        // Before the memory goes. A test that has deleted the stream has no callback to wait for either.
        ZVGR_StreamDelete(stream);
    }

    /// Makes a call on another thread while the drawing is stopped, lets the drawing go on, and answers
    /// whether the call returned only then.
    template <class Call>
    bool returns_after_the_drawing(const Call& call)
    {
        std::atomic<bool> is_let_go{false};
        std::atomic<bool> is_calling{false};
        bool was_let_go = false;
        std::thread caller{[&] {
            is_calling = true;
            call();
            was_let_go = is_let_go;
        }};
        while (!is_calling)
            std::this_thread::yield();
        for (int turn = 0; turn < 1000;
             ++turn) // time for a call that does not wait; a slow one goes unnoticed
            std::this_thread::yield();
        is_let_go = true;
        blocking.let_go();
        caller.join();
        return was_let_go;
    }

    BlockingMemory blocking{4096};
    uint64_t drawn{0};
    uint64_t next{0};
    std::vector<uint64_t> reported;
};

TEST_F(DrawingStream, RevokeWaitsForTheDrawingAndTheFrameIsNotReported)
{
    EXPECT_TRUE(returns_after_the_drawing([this] { EXPECT_EQ(success, ZVGR_BufferRevoke(stream, drawn)); }));
    ASSERT_TRUE(receiver.wait_for(1));
    ASSERT_EQ(success, stop());
    EXPECT_EQ(std::vector<uint64_t>{next}, reported);
}

TEST_F(DrawingStream, StopWaitsForTheDrawingAndTheBufferStaysFirstInItsQueue)
{
    EXPECT_TRUE(returns_after_the_drawing([this] { EXPECT_EQ(success, stop()); }));
    EXPECT_TRUE(reported.empty());
    ASSERT_EQ(success, start(stream, 2));
    ASSERT_TRUE(receiver.wait_for(3));
    ASSERT_EQ(success, stop());
    EXPECT_EQ((std::vector<uint64_t>{drawn, next, 0}), reported);
}

TEST_F(DrawingStream, DeleteWaitsForTheDrawing)
{
    EXPECT_TRUE(returns_after_the_drawing([this] { EXPECT_EQ(success, ZVGR_StreamDelete(stream)); }));
    receiver.expect_silence();
    EXPECT_TRUE(reported.empty());
}

TEST_F(DrawingStream, CameraCloseWaitsForTheDrawing)
{
    EXPECT_TRUE(returns_after_the_drawing([this] { EXPECT_EQ(success, ZVGR_CameraClose(camera)); }));
    receiver.expect_silence();
    EXPECT_TRUE(reported.empty());
}

TEST_F(DrawingStream, CloseWaitsForTheDrawing)
{
    EXPECT_TRUE(returns_after_the_drawing([this] { EXPECT_EQ(success, ZVGR_Close(grabber)); }));
    receiver.expect_silence();
    EXPECT_TRUE(reported.empty());
}

TEST_F(DrawingStream, ABufferTakenToTheOutputQueueIsCompleteAndNotReported)
{
    EXPECT_TRUE(returns_after_the_drawing(
        [this] { EXPECT_EQ(success, ZVGR_BufferToQueue(drawn, zv_queue_output)); }));
    ASSERT_TRUE(receiver.wait_for(1));
    ASSERT_EQ(success, stop());
    EXPECT_EQ(std::vector<uint64_t>{next}, reported);
}

TEST_F(DrawingStream, ABufferQueuedAgainMovesToTheBackAndItsFrameIsLost)
{
    ASSERT_EQ(success, ZVGR_BufferToQueue(drawn, zv_queue_input));
    blocking.let_go();
    ASSERT_TRUE(receiver.wait_for(2));
    ASSERT_EQ(success, stop());
    EXPECT_EQ((std::vector<uint64_t>{next, drawn}), reported);
    EXPECT_EQ(1U, buffer_info(next, zv_buffer_frame_id)) << "the lost frame has a number";
    EXPECT_EQ(2U, buffer_info(drawn, zv_buffer_frame_id));
}

/// A camera that exposes 2000 frames a second, whatever becomes of them.
class PacedStream : public QueuedStream {
protected:
    static constexpr uint64_t period_ticks = 25000000 / 2000;

    PacedStream() : QueuedStream{coaxpress, "2000"} {}
};

TEST_F(PacedStream, FramesHaveTheTimesOfTheirRate)
{
    std::vector<std::pair<uint64_t, uint64_t>> frames;
    receiver.on_buffer = [&](uint64_t buffer) {
        frames.emplace_back(buffer_info(buffer, zv_buffer_frame_id),
                            buffer_info(buffer, zv_buffer_timestamp));
        ZVGR_BufferToQueue(buffer, zv_queue_input);
    };
    for (int buffers = 0; buffers < 4; ++buffers)
        queued();
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(receiver.wait_for(100));
    ASSERT_EQ(success, stop());
    for (const auto& [id, time] : frames) {
        const auto expected = static_cast<double>(frames.front().second) +
                              static_cast<double>((id - frames.front().first) * period_ticks);
        EXPECT_NEAR(expected, static_cast<double>(time), 1) << "frame " << id;
    }
}

TEST_F(PacedStream, AFrameWithoutABufferIsLostAndKeepsItsNumber)
{
    // The buffer comes back too late again and again, until the thread has had its chance to notice a loss.
    uint64_t next_id = 0;
    bool has_gap = false;
    const auto give_up = std::chrono::steady_clock::now() + patience;
    receiver.on_buffer = [&](uint64_t buffer) {
        const uint64_t id = buffer_info(buffer, zv_buffer_frame_id);
        EXPECT_GE(id, next_id);
        EXPECT_EQ(id, zvgr::read_stamp(memory(buffer), frame_size)->counter);
        has_gap = has_gap || id > next_id;
        next_id = id + 1;
    };
    const uint64_t buffer = queued();
    ASSERT_EQ(success, start(stream));
    for (uint64_t frames = 1; std::chrono::steady_clock::now() < give_up; ++frames) {
        ASSERT_TRUE(receiver.wait_for(frames));
        if (has_gap)
            break;
        const uint64_t too_late = buffer_info(buffer, zv_buffer_timestamp) + 3 * period_ticks;
        while (ticks_now() < too_late)
            std::this_thread::yield();
        ASSERT_EQ(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
    }
    ASSERT_EQ(success, stop());
    EXPECT_TRUE(has_gap);
}

TEST_F(PacedStream, LostFramesDoNotCountAsRequested)
{
    constexpr uint64_t requested = 10;
    const uint64_t buffer = queued();
    ASSERT_EQ(success, start(stream, requested));
    for (uint64_t frames = 1; frames < requested; ++frames) {
        ASSERT_TRUE(receiver.wait_for(frames));
        const uint64_t too_late = buffer_info(buffer, zv_buffer_timestamp) + 3 * period_ticks;
        while (ticks_now() < too_late)
            std::this_thread::yield();
        ASSERT_EQ(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
    }
    ASSERT_TRUE(receiver.wait_for(requested + 1));
    ASSERT_EQ(success, stop());
    EXPECT_EQ(requested, receiver.frames());
    EXPECT_EQ(1U, receiver.ends());
}

} // namespace
