#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <ostream>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "api/DS_modes.h"

// Frames on a thread of the library while consumers queue, flush, ask, revoke and close.

using namespace zvtest;

namespace {

/// A door that one thread opens and others wait at.
class Door {
public:
    void open()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_is_open = true;
        m_opened.notify_all();
    }
    void pass()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_opened.wait(lock, [this] { return m_is_open; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_opened;
    bool m_is_open{false};
};

/// Hands numbers from one thread to another.
class Channel {
public:
    void put(uint64_t number)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_numbers.push_back(number);
        m_changed.notify_one();
    }
    uint64_t get()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_numbers.empty(); });
        const uint64_t number = m_numbers.front();
        m_numbers.pop_front();
        return number;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<uint64_t> m_numbers;
};

class StreamThreads : public EitherStream {
protected:
    void SetUp() override
    {
        EitherStream::SetUp();
        for (int i = 0; i < 4; ++i)
            queue(announce());
        register_event();
        start();
        log.keep_lines(false);
    }

    void TearDown() override
    {
        log.keep_lines(true);
        EitherStream::TearDown();
    }

    /// A library call within the delivery of a frame, after the buffer was chosen.
    const char* within_delivery() const { return is_queued() ? "ZVGR_BufferGetInfo" : "ZVGR_StreamGetPtr"; }
};

/// Whoever is woken by a frame finds all of it: state, count, pixels.
TEST_P(StreamThreads, AWokenConsumerFindsTheFrameComplete)
{
    constexpr uint64_t frames = 2000;
    constexpr uint64_t no_more = UINT64_MAX;
    Channel input; // the library handles, or just the number, of the buffers in the input pool
    for (const auto& buffer : buffers)
        input.put(buffer->library);

    std::thread library([&] {
        for (uint64_t i = 0; i < frames; ++i) {
            const uint64_t buffer = input.get();
            if (buffer == no_more)
                return;
            const Frame frame{i + 1, i + 1, 0, static_cast<int>(i % 251)};
            if (is_queued())
                fake.deliver_queued(buffer, frame);
            else
                fake.deliver_cyclic(stream(), static_cast<uint32_t>(i % 4), frame);
        }
    });
    for (uint64_t i = 0; i < frames; ++i) {
        Taken taken = take(GENTL_INFINITE);
        while (taken.code == GC_ERR_TIMEOUT) // by a signal whose entry was taken before
            taken = take(GENTL_INFINITE);
        EXPECT_EQ(GC_ERR_SUCCESS, taken.code);
        if (HasFailure()) {
            input.put(no_more);
            break;
        }
        const BUFFER_HANDLE handle = taken.data.BufferHandle;
        EXPECT_EQ(1, buffer_info<bool8_t>(handle, BUFFER_INFO_NEW_DATA).value);
        EXPECT_EQ(0, buffer_info<bool8_t>(handle, BUFFER_INFO_IS_ACQUIRING).value);
        EXPECT_EQ(0, buffer_info<bool8_t>(handle, BUFFER_INFO_IS_QUEUED).value);
        EXPECT_LT(i, stream_info<uint64_t>(STREAM_INFO_NUM_DELIVERED).value);
        EXPECT_EQ(i + 1, buffer_info<uint64_t>(handle, BUFFER_INFO_TIMESTAMP).value);
        const auto& announced = **std::find_if(buffers.begin(), buffers.end(),
                                               [handle](const auto& one) { return one->handle == handle; });
        EXPECT_EQ(static_cast<uint8_t>(i % 251), announced.memory.front());
        EXPECT_EQ(static_cast<uint8_t>(i % 251), announced.memory.back());
        queue(announced);
        input.put(announced.library);
    }
    library.join();
    EXPECT_EQ(frames, stream_info<uint64_t>(STREAM_INFO_NUM_DELIVERED).value);
    EXPECT_EQ(0U, stream_info<uint64_t>(STREAM_INFO_NUM_UNDERRUN).value);
}

/// Frames race with everything that a consumer may do to its buffers meanwhile.
TEST_P(StreamThreads, FramesRaceWithConsumers)
{
    constexpr int rounds = 300;
    std::atomic<bool> is_over{false};
    std::thread library([&] {
        for (uint32_t i = 0; !is_over.load(); ++i)
            deliver(*buffers[i % 4]);
    });
    std::thread queueing([&] {
        for (int i = 0; i < rounds; ++i)
            queue(*buffers[static_cast<size_t>(i) % 4]);
    });
    std::thread flushing([&] {
        for (int i = 0; i < rounds; ++i) {
            const ACQ_QUEUE_TYPE operations[] = {0, 1, 2, 3, 4, 1000};
            EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, operations[i % 6]));
        }
    });
    std::thread asking([&] {
        for (int i = 0; i < rounds; ++i) {
            for (STREAM_INFO_CMD command = STREAM_INFO_NUM_DELIVERED; command <= STREAM_INFO_NUM_STARTED;
                 ++command)
                EXPECT_EQ(GC_ERR_SUCCESS, stream_info<uint64_t>(command).code);
            const BUFFER_HANDLE buffer = buffers[static_cast<size_t>(i) % 4]->handle;
            for (const BUFFER_INFO_CMD command :
                 {BUFFER_INFO_TIMESTAMP, BUFFER_INFO_FRAMEID, BUFFER_INFO_NEW_DATA, BUFFER_INFO_IS_QUEUED,
                  BUFFER_INFO_USER_PTR})
                EXPECT_EQ(GC_ERR_SUCCESS, buffer_info<uint64_t>(buffer, command).code);
        }
    });
    std::thread taking([&] {
        for (int i = 0; i < rounds; ++i)
            take(0);
    });
    for (std::thread* const consumer : {&queueing, &flushing, &asking, &taking})
        consumer->join();
    is_over = true;
    library.join();

    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD));
    EXPECT_EQ(4U, num_announced());
    EXPECT_EQ(0U, num_queued() + num_await_delivery());
}

/// Nothing is delivered while the stream is idle, and every start counts from zero.
TEST_P(StreamThreads, FramesRaceWithStartAndStop)
{
    constexpr int rounds = 300;
    std::atomic<bool> is_over{false};
    std::thread library([&] {
        for (uint32_t i = 0; !is_over.load(); ++i)
            deliver(*buffers[i % 4]);
    });
    for (int i = 0; i < rounds; ++i) {
        stop();
        EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_TO_INPUT));
        start();
    }
    is_over = true;
    library.join();

    stop();
    start();
    EXPECT_EQ(0U, stream_info<uint64_t>(STREAM_INFO_NUM_DELIVERED).value);
    EXPECT_EQ(0U, stream_info<uint64_t>(STREAM_INFO_NUM_UNDERRUN).value);
    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_TO_INPUT));
    deliver(*buffers[0]);
    EXPECT_EQ(1U, stream_info<uint64_t>(STREAM_INFO_NUM_DELIVERED).value);
    EXPECT_EQ(1U, event_info<size_t>(EVENT_NUM_IN_QUEUE).value);
}

/// Memory goes back to the consumer at once, who frees it: no frame may reach it afterwards.
TEST_P(StreamThreads, FramesRaceWithAnnouncingAndRevoking)
{
    constexpr int rounds = 300;
    std::atomic<bool> is_over{false};
    std::atomic<uint64_t> announced{buffers[0]->library};
    fake.allow_stale_handles();
    std::thread library([&] {
        for (uint32_t i = 0; !is_over.load(); ++i) {
            if (is_queued())
                fake.deliver_queued(announced.load()); // may have been revoked meanwhile
            else
                fake.deliver_cyclic(stream(), i % 4);
        }
    });
    for (int i = 0; i < rounds; ++i) {
        std::vector<uint8_t> memory(2000, 0);
        BUFFER_HANDLE handle = nullptr;
        ASSERT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(ds, memory.data(), memory.size(), &memory, &handle));
        announced = is_queued() ? fake.last_buffer() : 0;
        ASSERT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(ds, handle));
        take(0);
        void* base = nullptr;
        ASSERT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, handle, &base, nullptr));
        ASSERT_EQ(memory.data(), base);
    }
    is_over = true;
    library.join();
    EXPECT_EQ(4U, num_announced());
}

/// The library's thread is inside a frame when the consumer revokes its buffer.
TEST_P(StreamThreads, RevokeWaitsForTheFrameInProgress)
{
    Announced& buffer = *buffers[0];
    Door inside;
    std::atomic<bool> is_frame_over{false};
    bool is_first = true;
    fake.allow_stale_handles(); // the library forgets the buffer before the producer does
    fake.after(within_delivery(), [&](const Call&) {
        if (!std::exchange(is_first, false))
            return;
        inside.open();
        // Taken out of the pool under the lock with which the caller then waits.
        while (buffer_info<size_t>(buffer.handle, BUFFER_INFO_SIZE).code == GC_ERR_SUCCESS)
            std::this_thread::yield();
        is_frame_over = true;
    });
    std::thread library([&] { deliver(buffer, Frame{0, 0, 0, is_queued() ? -1 : 0x55}); });
    inside.pass();
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffer.handle, nullptr, nullptr));
    EXPECT_TRUE(is_frame_over.load());
    std::fill(buffer.memory.begin(), buffer.memory.end(), uint8_t{0x11});
    library.join();
    EXPECT_TRUE(std::all_of(buffer.memory.begin(), buffer.memory.end(), [](uint8_t byte) {
        return byte == 0x11;
    })) << "the frame reached memory that was given back";
    EXPECT_EQ(3U, num_announced());
}

/// A stop finds a frame half delivered: the library lets it finish before its own stop returns.
TEST_P(StreamThreads, AFrameThatEndsDuringTheStopIsNotCounted)
{
    Announced& buffer = *buffers[0];
    Door inside;
    Door stopping;
    bool is_first = true;
    fake.after(within_delivery(), [&](const Call&) {
        if (!std::exchange(is_first, false))
            return;
        inside.open();
        stopping.pass();
    });
    std::thread library([&] { deliver(buffer); });
    fake.on("ZVGR_CameraStopAcquire_GenTL", [&](const Call&) {
        stopping.open();
        library.join();
    });
    inside.pass();
    EXPECT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(ds, ACQ_STOP_FLAGS_DEFAULT));
    EXPECT_EQ(0U, stream_info<uint64_t>(STREAM_INFO_NUM_DELIVERED).value);
    EXPECT_EQ(1U, buffer_info<uint8_t>(buffer.handle, BUFFER_INFO_NEW_DATA).value)
        << "the frame itself counts";
}

/// The same when the whole stream is closed.
TEST_P(StreamThreads, CloseWaitsForTheFrameInProgress)
{
    Announced& buffer = *buffers[0];
    Door inside;
    std::atomic<bool> is_frame_over{false};
    bool is_first = true;
    fake.allow_stale_handles(); // the library forgets the buffer before the producer does
    fake.after(within_delivery(), [&](const Call&) {
        if (!std::exchange(is_first, false))
            return;
        inside.open();
        while (buffer_info<size_t>(buffer.handle, BUFFER_INFO_SIZE).code == GC_ERR_SUCCESS)
            std::this_thread::yield();
        is_frame_over = true;
    });
    bool was_over_at_deletion = false;
    fake.on("ZVGR_StreamDelete", [&](const Call&) { was_over_at_deletion = is_frame_over.load(); });
    std::thread library([&] { deliver(buffer); });
    inside.pass();
    EXPECT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    EXPECT_TRUE(was_over_at_deletion);
    library.join();
}

/// Frames come until the library deletes the stream, which it does only when no callback runs any more.
TEST_P(StreamThreads, FramesRaceWithClose)
{
    constexpr int rounds = 30;
    std::function<void()> wait_for_last_frame;
    fake.on("ZVGR_StreamDelete", [&](const Call&) { wait_for_last_frame(); });
    for (int round = 0; round < rounds; ++round) {
        std::atomic<bool> is_over{false};
        Door running;
        std::thread library([&] {
            for (uint32_t i = 0; !is_over.load(); ++i) {
                deliver(*buffers[i % 4]);
                running.open();
            }
        });
        wait_for_last_frame = [&] {
            is_over = true;
            library.join();
        };
        running.pass();
        EXPECT_EQ(GC_ERR_SUCCESS, DSClose(ds));

        buffers.clear();
        ds = open_stream(dev, "Stream000");
        for (int i = 0; i < 4; ++i)
            queue(announce());
        register_event();
        start();
    }
    wait_for_last_frame = [] {};
    EXPECT_EQ(GC_ERR_SUCCESS, DSClose(ds));
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

class WaitingLibrary : public OpenStream, public testing::WithParamInterface<std::tuple<Mode, WaitingCall>> {
protected:
    void SetUp() override
    {
        OpenStream::SetUp();
        fake.allow_handle("ZVGR_BufferToQueue", 0);
        fake.allow_handle("ZVGR_BufferRevoke", 0);
    }
    bool is_queued() const override { return std::get<0>(GetParam()) == Mode::queued; }
};

/// While the library waits for its own callback to end, nothing may be held that the callback needs.
TEST_P(WaitingLibrary, IsNotKeptWaiting)
{
    const WaitingCall& row = std::get<1>(GetParam());
    if (row.is_in_queued_mode_only && !is_queued())
        return;
    Announced& delivered = announce();
    queue(delivered);
    const Announced& other = announce();
    register_event();
    start();

    Door inside;
    Door go_on;
    std::thread library;
    std::atomic<bool> is_first{true};
    fake.on(is_queued() ? "ZVGR_BufferGetInfo" : "ZVGR_StreamGetPtr", [&](const Call&) {
        if (!is_first.exchange(false))
            return;
        inside.open();
        go_on.pass();
    });
    fake.on(row.library_function, [&](const Call&) {
        go_on.open();
        if (library.joinable())
            library.join();
    });
    library = std::thread([&] { deliver(delivered); });
    inside.pass();
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
