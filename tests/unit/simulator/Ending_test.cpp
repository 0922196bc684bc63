#include <thread>

#include "unit/simulator/fixtures.h"

// What the library promises about the end of streams: from other threads, and from inside callbacks.

namespace {

using namespace zvsim_test;

constexpr uint32_t success = zv_success;

class EndlessQueue : public QueuedStream {
protected:
    EndlessQueue()
    {
        receiver.on_buffer = [](uint64_t buffer) { ZVGR_BufferToQueue(buffer, zv_queue_input); };
        for (int buffers = 0; buffers < 4; ++buffers)
            queued();
    }
};

TEST_F(EndlessQueue, NoCallbackFollowsAStop)
{
    for (uint64_t round = 0; round < 20; ++round) {
        receiver.expect_calls();
        const uint64_t before = receiver.frames();
        ASSERT_EQ(success, start(stream));
        ASSERT_TRUE(receiver.wait_for(before + 5));
        ASSERT_EQ(success, stop());
        receiver.expect_silence();
    }
    EXPECT_EQ(0U, receiver.ends());
}

TEST_F(EndlessQueue, NoCallbackFollowsADelete)
{
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(receiver.wait_for(5));
    ASSERT_EQ(success, ZVGR_StreamDelete(stream));
    receiver.expect_silence();
    EXPECT_GE(receiver.frames(), 5U);
}

TEST_F(EndlessQueue, NoCallbackFollowsAClose)
{
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(receiver.wait_for(5));
    ASSERT_EQ(success, ZVGR_Close(grabber));
    receiver.expect_silence();
    EXPECT_GE(receiver.frames(), 5U);
}

TEST_F(EndlessQueue, NoCallbackFollowsACameraClose)
{
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(receiver.wait_for(5));
    ASSERT_EQ(success, ZVGR_CameraClose(camera));
    receiver.expect_silence();
    EXPECT_GE(receiver.frames(), 5U);
}

TEST_F(CyclicStream, NoCallbackFollowsAStop)
{
    for (uint64_t round = 0; round < 20; ++round) {
        receiver.expect_calls();
        const uint64_t before = receiver.frames();
        ASSERT_EQ(success, start(stream));
        ASSERT_TRUE(receiver.wait_for(before + 5));
        ASSERT_EQ(success, stop());
        receiver.expect_silence();
    }
}

/// Ends a stream on another thread while one of its callbacks is held up, and answers whether the call
/// returned only after the callback.
template <class Call>
bool waits_for_the_callback(Gate& callback_may_return, std::atomic<bool>& has_returned, const Call& call)
{
    bool had_returned = false;
    std::atomic<bool> is_calling{false};
    std::thread caller{[&] {
        is_calling = true;
        call();
        had_returned = has_returned;
    }};
    while (!is_calling)
        std::this_thread::yield();
    for (int turn = 0; turn < 1000; ++turn) // time for a call that does not wait; a slow one goes unnoticed
        std::this_thread::yield();
    callback_may_return.open();
    caller.join();
    return had_returned;
}

class HeldCallback : public QueuedStream {
protected:
    HeldCallback()
    {
        receiver.on_buffer = [this](uint64_t /*buffer*/) {
            inside.open();
            EXPECT_TRUE(may_return.wait());
            has_returned = true;
        };
        queued();
    }
    ~HeldCallback() override
    {
        may_return.open();
        ZVGR_StreamDelete(stream); // before the gates go
    }

    void start_and_enter(uint32_t frames = 0)
    {
        ASSERT_EQ(success, start(stream, frames));
        ASSERT_TRUE(inside.wait());
    }

    Gate inside;
    Gate may_return;
    std::atomic<bool> has_returned{false};
};

TEST_F(HeldCallback, StopWaitsForIt)
{
    start_and_enter();
    EXPECT_TRUE(waits_for_the_callback(may_return, has_returned, [this] { EXPECT_EQ(success, stop()); }));
}

TEST_F(HeldCallback, DeleteWaitsForIt)
{
    start_and_enter();
    EXPECT_TRUE(waits_for_the_callback(may_return, has_returned,
                                       [this] { EXPECT_EQ(success, ZVGR_StreamDelete(stream)); }));
}

TEST_F(HeldCallback, CameraCloseWaitsForIt)
{
    start_and_enter();
    EXPECT_TRUE(waits_for_the_callback(may_return, has_returned,
                                       [this] { EXPECT_EQ(success, ZVGR_CameraClose(camera)); }));
}

TEST_F(HeldCallback, CloseWaitsForIt)
{
    start_and_enter();
    EXPECT_TRUE(waits_for_the_callback(may_return, has_returned,
                                       [this] { EXPECT_EQ(success, ZVGR_Close(grabber)); }));
}

TEST_F(HeldCallback, AStopAfterTheEndWaitsForTheReportOfTheEnd)
{
    receiver.on_buffer = [this](uint64_t buffer) {
        if (buffer != 0)
            return;
        inside.open();
        EXPECT_TRUE(may_return.wait());
        has_returned = true;
    };
    start_and_enter(1);
    EXPECT_TRUE(waits_for_the_callback(may_return, has_returned, [this] { EXPECT_EQ(success, stop()); }));
}

/// Otherwise the report would seem to be about the acquisition that has just begun.
TEST_F(HeldCallback, AStartAfterTheEndWaitsForTheReportOfTheEnd)
{
    receiver.on_buffer = [this](uint64_t buffer) {
        if (buffer != 0)
            return;
        inside.open();
        EXPECT_TRUE(may_return.wait());
        has_returned = true;
    };
    start_and_enter(1);
    EXPECT_TRUE(
        waits_for_the_callback(may_return, has_returned, [this] { EXPECT_EQ(success, start(stream)); }));
    EXPECT_EQ(success, stop());
}

TEST_F(QueuedStream, CanBeStartedFromTheReportOfItsEnd)
{
    Gate ended;
    receiver.on_buffer = [&, ends = 0](uint64_t buffer) mutable {
        if (buffer != 0) {
            ZVGR_BufferToQueue(buffer, zv_queue_input);
            return;
        }
        if (++ends < 3) {
            EXPECT_EQ(success, start(stream, 2));
        } else {
            ended.open();
        }
    };
    queued();
    ASSERT_EQ(success, start(stream, 2));
    ASSERT_TRUE(ended.wait());
    ASSERT_EQ(success, stop());
    EXPECT_EQ(6U, receiver.frames());
    EXPECT_EQ(3U, receiver.ends());
}

TEST_F(HeldCallback, OtherStreamsGoOnMeanwhile)
{
    start_and_enter();
    Receiver other_receiver;
    uint32_t other = 0;
    ASSERT_EQ(success, ZVGR_CameraOpen2(cameras[1], nullptr));
    ASSERT_EQ(success, ZVGR_StreamCreateAndAlloc(cameras[1], &other, 2, 0));
    ASSERT_EQ(success, ZVGR_CameraCallbackRegister(cameras[1], &Receiver::frame_callback, &other_receiver));
    ASSERT_EQ(success, ZVGR_CameraStartAcquire_GenTL(cameras[1], other, 0));
    EXPECT_TRUE(other_receiver.wait_for(10));
    EXPECT_EQ(success, ZVGR_StreamDelete(other));
}

TEST_F(HeldCallback, ItsBufferCanBeRevokedMeanwhile)
{
    uint64_t reported = 0;
    receiver.on_buffer = [&](uint64_t buffer) {
        reported = buffer;
        inside.open();
        EXPECT_TRUE(may_return.wait());
    };
    start_and_enter();
    EXPECT_EQ(success, ZVGR_BufferRevoke(stream, reported));
    may_return.open();
    EXPECT_EQ(success, stop());
}

TEST_F(QueuedStream, CanBeStoppedFromItsCallback)
{
    Gate stopped;
    receiver.on_buffer = [&](uint64_t buffer) {
        EXPECT_NE(0U, buffer);
        EXPECT_EQ(success, stop());
        receiver.expect_silence();
        stopped.open();
    };
    queued();
    queued();
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(stopped.wait());
    ASSERT_EQ(success, stop());
    EXPECT_EQ(1U, receiver.frames());
}

TEST_F(QueuedStream, CanBeStoppedAndStartedFromItsCallback)
{
    Gate done;
    receiver.on_buffer = [&, rounds = 0](uint64_t buffer) mutable {
        EXPECT_EQ(success, stop());
        ZVGR_BufferToQueue(buffer, zv_queue_input);
        if (++rounds < 5) {
            EXPECT_EQ(success, start(stream));
        } else {
            done.open();
        }
    };
    queued();
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(done.wait());
    ASSERT_EQ(success, stop());
    EXPECT_EQ(5U, receiver.frames());
}

TEST_F(QueuedStream, CanBeDeletedFromItsCallback)
{
    Gate deleted;
    receiver.on_buffer = [&](uint64_t buffer) {
        EXPECT_EQ(success, ZVGR_BufferRevoke(stream, buffer));
        EXPECT_EQ(success, ZVGR_StreamDelete(stream));
        receiver.expect_silence();
        deleted.open();
    };
    queued();
    queued();
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(deleted.wait());
    EXPECT_NE(success, ZVGR_StreamDelete(stream));
    EXPECT_EQ(success, ZVGR_Close(grabber)) << "waits for the callback";
    EXPECT_EQ(1U, receiver.frames());
}

TEST_F(QueuedStream, CanBeClosedFromItsCallback)
{
    Gate closed;
    receiver.on_buffer = [&](uint64_t /*buffer*/) {
        EXPECT_EQ(success, ZVGR_CameraClose(camera));
        EXPECT_EQ(success, ZVGR_Close(grabber));
        receiver.expect_silence();
        closed.open();
    };
    queued();
    queued();
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(closed.wait());
    EXPECT_NE(success, ZVGR_Close(grabber));
    ASSERT_TRUE(receiver.wait_for(1));
}

TEST_F(CyclicStream, CanBeDeletedFromItsCallbackAndTheFrameStaysReadable)
{
    Gate deleted;
    unsigned sum = 0;
    receiver.on_frame = [&](uint32_t handle) {
        const auto* const memory =
            static_cast<const unsigned char*>(ZVGR_StreamGetPtr(handle, ZVGR_StreamGetFrameIndex(handle)));
        EXPECT_EQ(success, ZVGR_StreamDelete(handle));
        EXPECT_EQ(nullptr, ZVGR_StreamGetPtr(handle, 0));
        for (size_t at = 0; at < size_t{64} * 48; ++at)
            sum += memory[at];
        receiver.expect_silence();
        deleted.open();
    };
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(deleted.wait());
    EXPECT_EQ(success, ZVGR_Close(grabber)) << "waits for the callback";
    EXPECT_GT(sum, 0U);
    EXPECT_EQ(1U, receiver.frames());
}

TEST_F(EndlessQueue, StopsAndDeletesFromManyThreadsAtOnce)
{
    for (int round = 0; round < 10; ++round) {
        ASSERT_EQ(success, start(stream));
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread)
            threads.emplace_back([this] { EXPECT_EQ(success, stop()); });
        for (auto& thread : threads)
            thread.join();
    }
    ASSERT_EQ(success, start(stream));
    std::atomic<int> deleted{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            deleted += ZVGR_StreamDelete(stream) == success ? 1 : 0;
            stop();
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(1, deleted);
    receiver.expect_silence();
}

/// Every call from every thread at any time, in any order: nothing to see but that nothing breaks.
TEST_F(EndlessQueue, CallsFromManyThreadsWhileStreaming)
{
    constexpr int rounds = 15;
    std::atomic<bool> is_over{false};
    std::vector<std::thread> threads;
    threads.emplace_back([&] {
        while (!is_over) {
            const uint64_t buffer = queued();
            ZVGR_BufferToQueue(buffer, zv_queue_output);
            ZVGR_BufferToQueue(buffer, zv_queue_input);
            EXPECT_EQ(success, ZVGR_BufferRevoke(stream, buffer));
        }
    });
    threads.emplace_back([&] {
        while (!is_over) {
            uint32_t other = 0;
            uint32_t count = 0;
            EXPECT_EQ(success, ZVGR_StreamCreateAndAlloc(camera, &other, 2, 0));
            start(other); // fails while the first stream runs
            EXPECT_EQ(success, ZVGR_StreamDelete(other));
            EXPECT_EQ(success, ZV_DeviceScan(&count));
            EXPECT_EQ(64, ZVGR_GetCameraValueInt(stream, "Width"));
        }
    });
    threads.emplace_back([&] {
        while (!is_over) {
            const uint32_t other = ZVGR_Open(demo);
            EXPECT_NE(ZV_NO_HANDLE, other);
            EXPECT_EQ(success, ZVGR_Close(other));
        }
    });
    for (uint64_t round = 0; round < rounds; ++round) {
        const uint64_t before = receiver.frames();
        while (start(stream) != success)
            stop(); // whichever stream it is that runs
        EXPECT_TRUE(receiver.wait_for(before + 20));
        EXPECT_EQ(success, stop());
    }
    is_over = true;
    for (auto& thread : threads)
        thread.join();
    receiver.expect_silence();
}

/// A stream that dies before its thread has seen its start still lets a waiting stop go.
TEST_F(OpenCamera, AStopIsNotLeftWaitingForAStreamThatIsDeleted)
{
    std::atomic<bool> is_over{false};
    std::thread stopper{[&] {
        while (!is_over)
            EXPECT_EQ(success, stop());
    }};
    for (int round = 0; round < 300; ++round) {
        uint32_t stream = 0;
        EXPECT_EQ(success, ZVGR_StreamCreate(camera, &stream, 0));
        EXPECT_EQ(success, start(stream));
        EXPECT_EQ(success, ZVGR_StreamDelete(stream));
    }
    is_over = true;
    stopper.join();
}

} // namespace
