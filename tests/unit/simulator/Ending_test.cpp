#include <thread>
#include <tuple>

#include "support/on_threads.h"
#include "support/process/process_state.h"
#include "unit/simulator/BlockingMemory.h"
#include "unit/simulator/fixtures.h"

// What the library promises about the end of streams: from other threads, and from inside callbacks.

namespace {

using namespace zvsim_test;

/// A call that ends a running stream.
struct Ending {
    const char* name;
    uint32_t (*end)(uint32_t grabber, uint32_t camera, uint32_t stream);
};

const Ending endings[] = {
    {"Stop", [](uint32_t, uint32_t camera, uint32_t) { return ZVGR_CameraStopAcquire_GenTL(camera); }},
    {"StreamDelete", [](uint32_t, uint32_t, uint32_t stream) { return ZVGR_StreamDelete(stream); }},
    {"CameraClose", [](uint32_t, uint32_t camera, uint32_t) { return ZVGR_CameraClose(camera); }},
    {"Close", [](uint32_t grabber, uint32_t, uint32_t) { return ZVGR_Close(grabber); }},
};

/// Makes a call on another thread, and lets go what it has to wait for: it returns only then.
template <class Call, class LetGo>
void expect_to_wait(const Call& call, const LetGo& let_go)
{
    Gate calling;
    Gate returned;
    std::thread caller{[&] {
        calling.open();
        EXPECT_EQ(success, call());
        returned.open();
    }};
    EXPECT_TRUE(calling.wait());
    EXPECT_TRUE(returned.stays_closed());
    let_go();
    EXPECT_TRUE(returned.wait());
    caller.join();
}

/// A stream whose callback can be held up.
class HeldStream : public OpenStream {
protected:
    explicit HeldStream(Mode its_mode = Mode::queued) : OpenStream{its_mode} {}
    ~HeldStream() override
    {
        may_return.open();
        ZVGR_StreamDelete(stream); // before the gates go
    }

    /// Starts, and returns while the first callback is held up, or that of the end.
    void start_and_enter(bool is_end = false)
    {
        keep_supplied();
        receiver.on_call = [this, is_end](uint64_t reported) {
            if (is_end && reported != 0)
                return;
            inside.open();
            EXPECT_TRUE(may_return.wait());
            has_returned = true;
        };
        ASSERT_EQ(success, start(is_end ? 1 : 0));
        ASSERT_TRUE(inside.wait());
    }
    template <class Call>
    void expect_to_wait_for_the_callback(const Call& call)
    {
        expect_to_wait(call, [this] { may_return.open(); });
        EXPECT_TRUE(has_returned);
    }

    Gate inside;
    Gate may_return;
    std::atomic<bool> has_returned{false};
};

class EveryEnding : public HeldStream, public testing::WithParamInterface<std::tuple<Mode, Ending>> {
protected:
    EveryEnding() : HeldStream{std::get<Mode>(GetParam())} {}

    uint32_t end() const { return std::get<Ending>(GetParam()).end(grabber, camera, stream); }
};

INSTANTIATE_TEST_SUITE_P(Streams, EveryEnding,
                         testing::Combine(testing::Values(Mode::queued, Mode::cyclic),
                                          testing::ValuesIn(endings)),
                         [](const auto& row) {
                             return mode_name(std::get<Mode>(row.param)) + std::get<Ending>(row.param).name;
                         });

TEST_P(EveryEnding, IsFollowedByNoCallback)
{
    keep_supplied();
    ASSERT_EQ(success, start());
    ASSERT_TRUE(receiver.wait_for(5));
    ASSERT_EQ(success, end());
    receiver.expect_silence();
    EXPECT_GE(receiver.frames(), 5U);
    EXPECT_EQ(0U, receiver.ends());
}

TEST_P(EveryEnding, WaitsForARunningCallback)
{
    start_and_enter();
    expect_to_wait_for_the_callback([this] { return end(); });
}

TEST_P(EitherMode, NoCallbackFollowsAnyOfManyStops)
{
    keep_supplied();
    for (int round = 0; round < 20; ++round) {
        receiver.expect_calls();
        acquire(receiver.reported.size() + 5);
        receiver.expect_silence();
    }
    EXPECT_EQ(0U, receiver.ends());
}

TEST_F(HeldStream, AStopAfterTheEndWaitsForTheReportOfTheEnd)
{
    start_and_enter(true);
    expect_to_wait_for_the_callback([this] { return stop(); });
}

/// Otherwise the report would seem to be about the acquisition that has just begun.
TEST_F(HeldStream, AStartAfterTheEndWaitsForTheReportOfTheEnd)
{
    start_and_enter(true);
    expect_to_wait_for_the_callback([this] { return start(); });
    EXPECT_EQ(success, stop());
}

TEST_F(HeldStream, OtherStreamsGoOnMeanwhile)
{
    start_and_enter();
    other_camera_delivers();
}

TEST_F(HeldStream, ItsBufferCanBeRevokedMeanwhile)
{
    start_and_enter();
    EXPECT_EQ(success, ZVGR_BufferRevoke(stream, receiver.reported.at(0)));
    may_return.open();
    EXPECT_EQ(success, stop());
}

/// A buffer in which the stream's thread has been stopped while it draws, and another one behind it.
class DrawingStream : public QueuedStream {
protected:
    DrawingStream()
    {
        EXPECT_EQ(success, start());
        EXPECT_TRUE(blocking.wait_for_access());
    }
    ~DrawingStream() override
    {
        // Before the memory goes. A test that has deleted the stream has no callback to wait for either.
        ZVGR_StreamDelete(stream);
    }

    template <class Call>
    void expect_to_wait_for_the_drawing(const Call& call)
    {
        expect_to_wait(call, [this] { blocking.let_go(); });
    }

    BlockingMemory blocking{4096};
    uint64_t drawn{queue_memory(stream, blocking.data(), blocking.size())};
    uint64_t next{queued()};
};

class EndedDrawing : public DrawingStream, public testing::WithParamInterface<Ending> {};

INSTANTIATE_TEST_SUITE_P(Streams, EndedDrawing, testing::ValuesIn(endings),
                         [](const auto& row) { return row.param.name; });

TEST_P(EndedDrawing, HoldsUpTheEndAndItsFrameIsNotReported)
{
    expect_to_wait_for_the_drawing([this] { return GetParam().end(grabber, camera, stream); });
    receiver.expect_silence();
    EXPECT_TRUE(receiver.reported.empty());
}

TEST_F(DrawingStream, LeavesTheBufferFirstInItsQueueWhenItIsStopped)
{
    expect_to_wait_for_the_drawing([this] { return stop(); });
    acquire(3, 2);
    EXPECT_EQ((std::vector<uint64_t>{drawn, next, 0}), receiver.reported);
}

/// Whether the buffer is taken to the output queue meanwhile; else it is revoked.
class LostDrawing : public DrawingStream, public testing::WithParamInterface<bool> {};

INSTANTIATE_TEST_SUITE_P(Streams, LostDrawing, testing::Bool());

TEST_P(LostDrawing, IsNotReported)
{
    expect_to_wait_for_the_drawing([this] {
        return GetParam() ? ZVGR_BufferToQueue(drawn, zv_queue_output) : ZVGR_BufferRevoke(stream, drawn);
    });
    ASSERT_TRUE(receiver.wait_for(1));
    ASSERT_EQ(success, stop());
    EXPECT_EQ(std::vector<uint64_t>{next}, receiver.reported);
}

TEST_F(DrawingStream, LosesTheFrameOfABufferThatWasQueuedAgainMeanwhile)
{
    ASSERT_EQ(success, ZVGR_BufferToQueue(drawn, zv_queue_input));
    blocking.let_go();
    ASSERT_TRUE(receiver.wait_for(2));
    ASSERT_EQ(success, stop());
    EXPECT_EQ((std::vector<uint64_t>{next, drawn}), receiver.reported);
    EXPECT_EQ(1, ZVGR_GetGrabberValueInt(camera, "CameraFramesLost"));
    EXPECT_EQ(1U, buffer_info(next, zv_buffer_frame_id)) << "the lost frame has a number";
    EXPECT_EQ(2U, buffer_info(drawn, zv_buffer_frame_id));
}

/// A stream that is ended in its first callback.
class EndedInside : public EitherMode {
protected:
    /// Waits for the callback, before the gate goes: who ended the stream inside it has not.
    ~EndedInside() override
    {
        ZVGR_Close(grabber);
        while (zvtest::thread_count() > m_threads)
            std::this_thread::yield();
    }

    template <class End>
    void start_and_end(const End& end)
    {
        keep_supplied();
        receiver.on_call = [this, end](uint64_t reported) {
            EXPECT_NE(0U, reported);
            end(reported);
            receiver.expect_silence();
            ended.open();
        };
        ASSERT_EQ(success, start());
        ASSERT_TRUE(ended.wait());
    }

    Gate ended;

private:
    const size_t m_threads{zvtest::thread_count()};
};

INSTANTIATE_TEST_SUITE_P(BothModes, EndedInside, testing::Values(Mode::queued, Mode::cyclic), name_of_mode);

TEST_P(EndedInside, CanBeStopped)
{
    start_and_end([this](uint64_t /*reported*/) { EXPECT_EQ(success, stop()); });
    EXPECT_EQ(success, stop());
    EXPECT_EQ(1U, receiver.frames());
}

TEST_P(EndedInside, CanBeDeleted)
{
    start_and_end([this](uint64_t reported) {
        if (mode == Mode::queued) {
            EXPECT_EQ(success, ZVGR_BufferRevoke(stream, reported));
        }
        EXPECT_EQ(success, ZVGR_StreamDelete(stream));
    });
    EXPECT_NE(success, ZVGR_StreamDelete(stream));
    EXPECT_EQ(success, ZVGR_Close(grabber)) << "waits for the callback";
    EXPECT_EQ(1U, receiver.frames());
}

TEST_P(EndedInside, CanBeClosed)
{
    start_and_end([this](uint64_t /*reported*/) {
        EXPECT_EQ(success, ZVGR_CameraClose(camera));
        EXPECT_EQ(success, ZVGR_Close(grabber));
    });
    EXPECT_NE(success, ZVGR_Close(grabber));
    EXPECT_TRUE(receiver.wait_for(1));
}

TEST_P(EitherMode, CanBeStoppedAndStartedFromItsCallback)
{
    Gate done;
    keep_supplied();
    receiver.on_call = [&](uint64_t /*reported*/) {
        EXPECT_EQ(success, stop());
        if (receiver.reported.size() < 4) {
            EXPECT_EQ(success, start());
        } else {
            done.open();
        }
    };
    ASSERT_EQ(success, start());
    ASSERT_TRUE(done.wait());
    ASSERT_EQ(success, stop());
    EXPECT_EQ(4U, receiver.frames());
}

TEST_F(CyclicStream, ItsFrameStaysReadableInACallbackThatDeletesTheStream)
{
    unsigned sum = 0;
    receiver.on_call = [&](uint64_t reported) {
        const auto* const memory = frame_memory(reported);
        EXPECT_EQ(success, ZVGR_StreamDelete(stream));
        EXPECT_EQ(nullptr, ZVGR_StreamGetPtr(stream, 0));
        for (size_t at = 0; at < frame_size; ++at)
            sum += memory[at];
    };
    ASSERT_EQ(success, start());
    ASSERT_TRUE(receiver.wait_for(1));
    EXPECT_EQ(success, ZVGR_Close(grabber));
    EXPECT_GT(sum, 0U);
}

TEST_P(EitherMode, StopsAndDeletesFromManyThreadsAtOnce)
{
    keep_supplied();
    for (int round = 0; round < 10; ++round) {
        ASSERT_EQ(success, start());
        zvtest::on_threads([this](int /*thread*/) { EXPECT_EQ(success, stop()); });
    }
    ASSERT_EQ(success, start());
    std::atomic<int> deleted{0};
    zvtest::on_threads([&](int /*thread*/) {
        deleted += ZVGR_StreamDelete(stream) == success ? 1 : 0;
        stop();
    });
    EXPECT_EQ(1, deleted);
    receiver.expect_silence();
}

/// Every call from every thread at any time, in any order: all that shows is that nothing breaks.
TEST_F(QueuedStream, TakesCallsFromManyThreadsWhileItRuns)
{
    keep_supplied();
    {
        Repeated threads;
        threads.call([this](int /*round*/) {
            const uint64_t buffer = queued();
            ZVGR_BufferToQueue(buffer, zv_queue_output);
            ZVGR_BufferToQueue(buffer, zv_queue_input);
            EXPECT_EQ(success, ZVGR_BufferRevoke(stream, buffer));
        });
        threads.call([this](int /*round*/) {
            const uint32_t other = create_stream(camera, Mode::cyclic);
            start_stream(other); // fails while the first stream runs
            EXPECT_EQ(success, ZVGR_StreamDelete(other));
            scan();
            EXPECT_EQ(64, ZVGR_GetCameraValueInt(stream, "Width"));
        });
        threads.call([](int /*round*/) {
            const uint32_t other = ZVGR_Open(demo);
            EXPECT_NE(ZV_NO_HANDLE, other);
            EXPECT_EQ(success, ZVGR_Close(other));
        });
        for (int round = 0; round < 15; ++round) {
            const uint64_t before = receiver.reported.size();
            while (start() != success)
                stop(); // whichever stream it is that runs
            EXPECT_TRUE(receiver.wait_for(before + 20));
            EXPECT_EQ(success, stop());
        }
    }
    receiver.expect_silence();
}

/// A stream that dies before its thread has seen its start still lets a waiting stop go.
TEST_F(OpenCamera, AStopIsNotLeftWaitingForAStreamThatIsDeleted)
{
    Repeated stopper;
    stopper.call([this](int /*round*/) { EXPECT_EQ(success, stop()); });
    for (int round = 0; round < 300; ++round) {
        const uint32_t stream = create_stream(camera);
        EXPECT_EQ(success, start_stream(stream));
        EXPECT_EQ(success, ZVGR_StreamDelete(stream));
    }
}

} // namespace
