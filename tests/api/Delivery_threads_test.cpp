#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "api/DS_modes.h"

// Frames on a thread of the library while consumers queue, flush, ask, revoke and close.

using namespace zvtest;

namespace {

/// A door that one thread opens and others wait at.
class Door {
public:
    void open() { m_is_open = true; }
    void pass() const
    {
        while (!m_is_open)
            std::this_thread::yield();
    }

private:
    std::atomic<bool> m_is_open{false};
};

/// A stream whose frames come on a thread of the library.
class FramesOnAThread : public CountedStream {
protected:
    std::thread library;

    /// Delivers frames until `end_frames`, and returns after the first.
    void start_frames(std::function<void(size_t)> deliver_one)
    {
        m_is_over = false;
        Door running;
        library = std::thread([this, &running, deliver_one = std::move(deliver_one)] {
            deliver_one(0);
            running.open();
            for (size_t i = 1; !m_is_over; ++i)
                deliver_one(i);
        });
        running.pass();
    }
    void start_frames()
    {
        start_frames([this](size_t i) { deliver(*buffers[i % 4]); });
    }
    void end_frames()
    {
        m_is_over = true;
        library.join();
    }

    /// Delivers one frame, and returns when the library is inside it, before the buffer's memory is written.
    /// There `hold` keeps it.
    void start_frame_held_by(const Announced& buffer, std::function<void()> hold)
    {
        const auto inside = std::make_shared<Door>();
        const auto is_first = std::make_shared<std::atomic<bool>>(true);
        fake.after(is_queued() ? "ZVGR_BufferGetInfo" : "ZVGR_StreamGetPtr", [=](const Call&) {
            if (!is_first->exchange(false))
                return;
            inside->open();
            hold();
        });
        library = std::thread([this, &buffer] { deliver(buffer, Frame{0, 0, 0, is_queued() ? -1 : 0x55}); });
        inside->pass();
    }

private:
    std::atomic<bool> m_is_over{false};
};

class StreamThreads : public FramesOnAThread, public testing::WithParamInterface<Mode> {
protected:
    void SetUp() override
    {
        FramesOnAThread::SetUp();
        announce_and_start();
        log.keep_lines(false);
    }
    void TearDown() override
    {
        log.keep_lines(true);
        FramesOnAThread::TearDown();
    }

    bool is_queued() const override { return GetParam() == Mode::queued; }

    void announce_and_start()
    {
        buffers.clear();
        for (int i = 0; i < 4; ++i)
            queue(announce());
        register_event();
        start();
    }

    /// A frame that does not end before its buffer has left the pool.
    void start_frame_that_outlasts(const Announced& buffer)
    {
        fake.allow_stale_handles(); // the library forgets the buffer before the producer does
        start_frame_held_by(buffer, [this, &buffer] {
            // Taken out of the pool under the lock with which the caller then waits.
            while (buffer_info<size_t>(buffer.handle, BUFFER_INFO_SIZE).code == GC_ERR_SUCCESS)
                std::this_thread::yield();
            is_frame_over = true;
        });
    }

    std::atomic<bool> is_frame_over{false};
};

/// Whoever is woken by a frame finds all of it: state, count, pixels.
TEST_P(StreamThreads, AWokenConsumerFindsTheFrameComplete)
{
    constexpr uint64_t frames = 2000;
    std::atomic<uint64_t> limit{4}; // of the frames for which a buffer was queued
    std::atomic<bool> is_over{false};
    library = std::thread([&] {
        for (uint64_t i = 0; i < frames && !is_over; ++i) {
            while (i >= limit && !is_over)
                std::this_thread::yield();
            deliver(*buffers[i % 4], Frame{i + 1, i + 1, 0, static_cast<int>(i % 251)});
        }
    });
    for (uint64_t i = 0; i < frames && !HasFailure(); ++i) {
        Taken taken = take(GENTL_INFINITE);
        while (taken.code == GC_ERR_TIMEOUT) // by a signal whose entry was taken before
            taken = take(GENTL_INFINITE);
        EXPECT_EQ(GC_ERR_SUCCESS, taken.code);
        const BUFFER_HANDLE handle = taken.data.BufferHandle;
        const auto found = std::find_if(buffers.begin(), buffers.end(),
                                        [handle](const auto& one) { return one->handle == handle; });
        if (found == buffers.end()) {
            ADD_FAILURE() << "an unknown buffer";
            break;
        }
        const Announced& buffer = **found;
        EXPECT_TRUE(is_new(buffer));
        EXPECT_FALSE(is_acquiring(buffer));
        EXPECT_FALSE(is_in_input_pool(buffer));
        EXPECT_LT(i, num_delivered());
        EXPECT_EQ(i + 1, buffer_info<uint64_t>(handle, BUFFER_INFO_TIMESTAMP).value);
        EXPECT_EQ(static_cast<uint8_t>(i % 251), buffer.memory.front());
        EXPECT_EQ(static_cast<uint8_t>(i % 251), buffer.memory.back());
        queue(buffer);
        ++limit;
    }
    is_over = true;
    library.join();
    EXPECT_EQ(frames, num_delivered());
    EXPECT_EQ(0U, num_underrun());
}

/// Frames race with everything that a consumer may do to its buffers meanwhile.
TEST_P(StreamThreads, FramesRaceWithConsumers)
{
    constexpr size_t rounds = 300;
    const std::function<void(size_t)> consumers[] = {
        [this](size_t i) { queue(*buffers[i % 4]); },
        [this](size_t i) {
            constexpr ACQ_QUEUE_TYPE operations[] = {0, 1, 2, 3, 4, 1000};
            EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, operations[i % 6]));
        },
        [this](size_t i) {
            for (STREAM_INFO_CMD command = STREAM_INFO_NUM_DELIVERED; command <= STREAM_INFO_NUM_STARTED;
                 ++command)
                EXPECT_EQ(GC_ERR_SUCCESS, stream_info<uint64_t>(command).code);
            for (const BUFFER_INFO_CMD command :
                 {BUFFER_INFO_TIMESTAMP, BUFFER_INFO_FRAMEID, BUFFER_INFO_NEW_DATA, BUFFER_INFO_IS_QUEUED,
                  BUFFER_INFO_USER_PTR})
                EXPECT_EQ(GC_ERR_SUCCESS, buffer_info<uint64_t>(buffers[i % 4]->handle, command).code);
        },
        [this](size_t) { take(0); },
    };
    start_frames();
    std::vector<std::thread> threads;
    for (const auto& consumer : consumers) {
        threads.emplace_back([&consumer] {
            for (size_t i = 0; i < rounds; ++i)
                consumer(i);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    end_frames();

    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD));
    EXPECT_EQ(4U, num_announced());
    EXPECT_EQ(0U, num_queued() + num_await_delivery());
}

/// Nothing is delivered while the stream is idle, and every start counts from zero.
TEST_P(StreamThreads, FramesRaceWithStartAndStop)
{
    start_frames();
    for (int i = 0; i < 300; ++i) {
        stop();
        EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_TO_INPUT));
        start();
    }
    end_frames();

    stop();
    start();
    EXPECT_EQ(0U, num_delivered());
    EXPECT_EQ(0U, num_underrun());
    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_TO_INPUT));
    deliver(*buffers[0]);
    EXPECT_EQ(1U, num_delivered());
    EXPECT_EQ(1U, num_in_event());
}

/// Memory goes back to the consumer at once, who frees it: no frame may reach it afterwards.
TEST_P(StreamThreads, FramesRaceWithAnnouncingAndRevoking)
{
    std::atomic<uint64_t> announced{buffers[0]->library};
    fake.allow_stale_handles();
    start_frames([&](size_t i) {
        if (is_queued())
            fake.deliver_queued(announced.load()); // may have been revoked meanwhile
        else
            fake.deliver_cyclic(stream(), static_cast<uint32_t>(i % 4));
    });
    for (int i = 0; i < 300; ++i) {
        std::vector<uint8_t> memory(2000, 0);
        BUFFER_HANDLE handle = nullptr;
        EXPECT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(ds, memory.data(), memory.size(), &memory, &handle));
        announced = is_queued() ? fake.last_buffer() : 0;
        EXPECT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(ds, handle));
        take(0);
        void* base = nullptr;
        EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, handle, &base, nullptr));
        EXPECT_EQ(memory.data(), base);
    }
    end_frames();
    EXPECT_EQ(4U, num_announced());
}

TEST_P(StreamThreads, RevokeWaitsForTheFrameInProgress)
{
    Announced& buffer = *buffers[0];
    start_frame_that_outlasts(buffer);
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffer.handle, nullptr, nullptr));
    EXPECT_TRUE(is_frame_over);
    std::fill(buffer.memory.begin(), buffer.memory.end(), uint8_t{0x11});
    library.join();
    EXPECT_EQ(std::vector<uint8_t>(buffer_size, 0x11), buffer.memory)
        << "the frame reached memory that was given back";
    EXPECT_EQ(3U, num_announced());
}

TEST_P(StreamThreads, CloseWaitsForTheFrameInProgress)
{
    bool was_over_at_deletion = false;
    fake.on("ZVGR_StreamDelete", [&](const Call&) { was_over_at_deletion = is_frame_over; });
    start_frame_that_outlasts(*buffers[0]);
    EXPECT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    EXPECT_TRUE(was_over_at_deletion);
    library.join();
}

/// A stop finds a frame half delivered: the library lets it finish before its own stop returns.
TEST_P(StreamThreads, AFrameThatEndsDuringTheStopIsNotCounted)
{
    Announced& buffer = *buffers[0];
    Door stopping;
    start_frame_held_by(buffer, [&stopping] { stopping.pass(); });
    fake.on("ZVGR_CameraStopAcquire_GenTL", [&](const Call&) {
        stopping.open();
        library.join();
    });
    EXPECT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(ds, ACQ_STOP_FLAGS_DEFAULT));
    EXPECT_EQ(0U, num_delivered());
    EXPECT_TRUE(is_new(buffer)) << "the frame itself counts";
}

/// Frames come until the library deletes the stream, which it does only when no callback runs any more.
TEST_P(StreamThreads, FramesRaceWithClose)
{
    fake.on("ZVGR_StreamDelete", [&](const Call&) { end_frames(); });
    for (int round = 0; round < 30; ++round) {
        if (round > 0) {
            ds = open_stream(dev, "Stream000");
            announce_and_start();
        }
        start_frames();
        EXPECT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    }
}

INSTANTIATE_IN_BOTH_MODES(StreamThreads);

/// A call into the library that returns only after the callback in progress has.
struct WaitingCall {
    const char* name;
    const char* library_function;
    GC_ERROR (*call)(DS_HANDLE stream, BUFFER_HANDLE buffer);
    bool is_in_queued_mode_only;
};

std::ostream& operator<<(std::ostream& out, const WaitingCall& row) { return out << row.name; }

const WaitingCall waiting_calls[] = {
    {"queueing", "ZVGR_BufferToQueue",
     [](DS_HANDLE stream, BUFFER_HANDLE buffer) { return DSQueueBuffer(stream, buffer); }, false},
    {"flushing", "ZVGR_BufferToQueue",
     [](DS_HANDLE stream, BUFFER_HANDLE) { return DSFlushQueue(stream, ACQ_QUEUE_UNQUEUED_TO_INPUT); }, true},
    {"revoking", "ZVGR_BufferRevoke",
     [](DS_HANDLE stream, BUFFER_HANDLE buffer) { return DSRevokeBuffer(stream, buffer, nullptr, nullptr); },
     false},
    {"announcing", "ZVGR_GetCameraValueEnum",
     [](DS_HANDLE stream, BUFFER_HANDLE buffer) {
         return DSAllocAndAnnounceBuffer(stream, 64, nullptr, &buffer);
     },
     false},
    {"stopping", "ZVGR_CameraStopAcquire_GenTL",
     [](DS_HANDLE stream, BUFFER_HANDLE) { return DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT); },
     false},
    {"asking", "ZVGR_StreamGetInfo",
     [](DS_HANDLE stream, BUFFER_HANDLE) {
         uint64_t value = 0;
         INFO_DATATYPE type = 0;
         size_t size = sizeof value;
         return DSGetInfo(stream, STREAM_INFO_PAYLOAD_SIZE, &type, &value, &size);
     },
     false},
};

class WaitingLibrary : public FramesOnAThread,
                       public testing::WithParamInterface<std::tuple<Mode, WaitingCall>> {
protected:
    bool is_queued() const override { return std::get<Mode>(GetParam()) == Mode::queued; }
};

/// While the library waits for its own callback to end, nothing may be held that the callback needs.
TEST_P(WaitingLibrary, IsNotKeptWaiting)
{
    const WaitingCall& row = std::get<WaitingCall>(GetParam());
    if (row.is_in_queued_mode_only && !is_queued())
        return;
    Announced& delivered = announce();
    queue(delivered);
    const Announced& other = announce();
    register_event();
    start();

    Door go_on;
    start_frame_held_by(delivered, [&go_on] { go_on.pass(); });
    fake.on(row.library_function, [&](const Call&) {
        go_on.open();
        if (library.joinable())
            library.join();
    });
    EXPECT_EQ(GC_ERR_SUCCESS, row.call(ds, other.handle));
    ASSERT_FALSE(library.joinable()) << "the library was not called";
    EXPECT_EQ(delivered.handle, take().data.BufferHandle);
}

std::string name_of_call(const testing::TestParamInfo<std::tuple<Mode, WaitingCall>>& info)
{
    return testing::PrintToString(std::get<0>(info.param)) + "_" + std::get<1>(info.param).name;
}

INSTANTIATE_TEST_SUITE_P(Calls, WaitingLibrary,
                         testing::Combine(testing::Values(Mode::queued, Mode::cyclic),
                                          testing::ValuesIn(waiting_calls)),
                         name_of_call);

} // namespace
