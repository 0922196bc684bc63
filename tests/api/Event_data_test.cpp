#include <array>
#include <cstring>

#include "Event_fixtures.h"

// EventGetData as it waits for a signal, EventKill and EventFlush.

namespace zvtest {

namespace {

class EventGetData : public EventStream {};

TEST_F(EventGetData, LogsTheRecordWithATrailingBlank)
{
    deliver(*buffers[0]);
    forget();
    take(7);
    EXPECT_LOG_LINES(enter_line(7), exit_line(*buffers[0]));
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(EventGetData, WritesNoMoreThanARecord)
{
    deliver(*buffers[0]);
    std::array<uint8_t, 40> room{};
    room.fill(0xA5);
    size_t size = room.size();
    EXPECT_EQ(GC_ERR_SUCCESS, get_data(room.data(), &size));
    EXPECT_EQ(16U, size);
    EXPECT_EQ(0, std::memcmp(room.data(), &buffers[0]->handle, 8));
    EXPECT_EQ(0, std::memcmp(room.data() + 8, &buffers[0]->user, 8));
    for (size_t i = 16; i < room.size(); ++i)
        EXPECT_EQ(0xA5, room[i]) << i;
}

TEST_F(EventGetData, GivesThePrivatePointerThatTheBufferHasNow)
{
    deliver(*buffers[0]);
    int later = 0;
    BUFFER_HANDLE same = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(ds, buffers[0]->memory.data(), buffer_size, &later, &same));
    ASSERT_EQ(buffers[0]->handle, same);
    EXPECT_EQ(&later, take().data.pUserPointer);
}

TEST_F(EventGetData, KeepsEveryEntryOfCollapsedSignals)
{
    deliver_buffers(3);
    for (const auto& buffer : buffers)
        EXPECT_EQ(buffer->handle, take(GENTL_INFINITE).data.BufferHandle);
    // The three frames left one signal and the first call took it.
    EXPECT_GE(milliseconds_of([&] { EXPECT_EQ(GC_ERR_TIMEOUT, take(30).code); }), 30);
}

TEST_F(EventGetData, TimesOutAndTouchesNothing)
{
    const Taken taken = take();
    EXPECT_EQ(GC_ERR_TIMEOUT, taken.code);
    EXPECT_TRUE(is_untouched(taken.data));
    EXPECT_EQ(16U, taken.size);
    EXPECT_LOG_LINES(enter_line(0));
}

TEST_F(EventGetData, WaitsOutItsTimeout)
{
    EXPECT_GE(milliseconds_of([&] { EXPECT_EQ(GC_ERR_TIMEOUT, take(30).code); }), 30);
}

TEST_F(EventGetData, TakesAnEntryWhateverTheTimeout)
{
    for (const uint64_t timeout : {uint64_t{0}, uint64_t{1}, uint64_t{0xFFFFFFFE}, uint64_t{0xFFFFFFFF},
                                   uint64_t{0x100000000}, uint64_t{GENTL_INFINITE}}) {
        SCOPED_TRACE(timeout);
        deliver(*buffers[0]);
        EXPECT_EQ(GC_ERR_SUCCESS, take(timeout).code);
    }
}

TEST_F(EventGetData, LogsTimeoutAndSizeInTheirLow32Bits)
{
    struct Row {
        uint64_t timeout;
        const char* logged;
    };
    constexpr Row rows[] = {
        {0xFFFFFFFE, "-2"}, {0xFFFFFFFF, "-1"}, {0x100000005, "5"}, {GENTL_INFINITE, "-1"}};
    EVENT_NEW_BUFFER_DATA data;
    for (const Row& row : rows) {
        deliver(*buffers[0]);
        forget();
        size_t size = 0x300000010;
        EXPECT_EQ(GC_ERR_SUCCESS, get_data(&data, &size, row.timeout));
        EXPECT_EQ("Enter EventGetData, handle=0x" + low_hex(event) +
                      ", buffer size=16, timeout=" + row.logged + " ms",
                  logged_messages().front());
    }
}

TEST_F(EventGetData, RefusesEveryRoomSmallerThanARecord)
{
    deliver(*buffers[0]);
    auto data = untouched<EVENT_NEW_BUFFER_DATA>();
    for (size_t room = 0; room < sizeof data; ++room) {
        size_t size = room;
        EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, get_data(&data, &size, GENTL_INFINITE)) << room;
        EXPECT_EQ(16U, size) << room;
        EXPECT_TRUE(is_untouched(data)) << room;
    }
    EXPECT_EQ(1U, in_queue());
}

TEST_F(EventGetData, LooksAtTheRoomBeforeTheMissingBuffer)
{
    deliver(*buffers[0]);
    forget();
    size_t size = 8;
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, get_data(nullptr, &size, 5));
    EXPECT_LOG_LINES(
        {Priority::debug, "Enter EventGetData, handle=0x" + low_hex(event) + ", buffer size=8, timeout=5 ms"},
        {Priority::debug, "EventGetData - GC_ERR_BUFFER_TOO_SMALL, wanted size=16", "EventGetData",
         "ZVGRLibGenTL"});
    EXPECT_EQ(16U, size);
    EXPECT_EQ(1U, in_queue());
}

class DiscardingEventGetData : public EventStream {};

TEST_F(DiscardingEventGetData, DropsTheOldestEntry)
{
    deliver_buffers(2);
    for (void* const missing : {static_cast<void*>(nullptr), all_ones<void*>()}) {
        size_t size = 100;
        EXPECT_EQ(GC_ERR_SUCCESS, get_data(missing, &size));
        EXPECT_EQ(100U, size);
    }
    EXPECT_EQ(0U, in_queue());
}

TEST_F(DiscardingEventGetData, SucceedsOnAnEmptyQueue)
{
    EXPECT_EQ(GC_ERR_SUCCESS, discard());
    EXPECT_LOG_LINES(enter_line(0), {Priority::debug, "EventGetData, pBuffer is NULL, discard next event",
                                     "EventGetData", "ZVGRLibGenTL"});
}

TEST_F(DiscardingEventGetData, LeavesTheSignal)
{
    deliver(*buffers[0]);
    discard();
    EXPECT_EQ(GC_ERR_TIMEOUT, take(GENTL_INFINITE).code);
}

TEST_F(DiscardingEventGetData, LeavesAKillForALaterCall)
{
    kill();
    EXPECT_EQ(GC_ERR_SUCCESS, discard());
    EXPECT_EQ(GC_ERR_ABORT, take().code);
}

/// `event` is of the type that nothing ever fires.
class RemoteDeviceEvent : public EventStream {
protected:
    void SetUp() override
    {
        EventStream::SetUp();
        if (HasFatalFailure())
            return;
        ASSERT_EQ(GC_ERR_SUCCESS, GenTL::GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &event));
        forget();
    }

    uint8_t m_byte{0xA5};
};

TEST_F(RemoteDeviceEvent, NeverHasData)
{
    deliver(*buffers[0]);
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_INPUT_TO_OUTPUT));
    EXPECT_EQ(0U, fired());
    size_t size = 0;
    EXPECT_EQ(GC_ERR_TIMEOUT, get_data(&m_byte, &size));
    EXPECT_EQ(0U, size);
    EXPECT_EQ(0xA5, m_byte);
}

TEST_F(RemoteDeviceEvent, DiscardsWithoutNeedingRoom)
{
    size_t size = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, get_data(nullptr, &size));
    EXPECT_LOG_LINES(
        {Priority::debug, "Enter EventGetData, handle=0x" + low_hex(event) + ", buffer size=0, timeout=0 ms"},
        {Priority::debug, "EventGetData, pBuffer is NULL, discard next event"});
}

class EventKill : public EventStream {};

TEST_F(EventKill, DropsOneEntryOfTheAbortedCall)
{
    deliver_buffers(2);
    EXPECT_EQ(GC_ERR_SUCCESS, kill());
    const Taken aborted = take();
    EXPECT_EQ(GC_ERR_ABORT, aborted.code);
    EXPECT_TRUE(is_untouched(aborted.data));
    EXPECT_EQ(16U, aborted.size);
    EXPECT_EQ(1U, in_queue());
    EXPECT_EQ(2U, fired());
    EXPECT_EQ(2U, awaiting());
    EXPECT_EQ(buffers[1]->handle, take().data.BufferHandle);
}

TEST_F(EventKill, IsSeenAfterAFlush)
{
    deliver(*buffers[0]);
    kill();
    flush();
    EXPECT_EQ(GC_ERR_ABORT, take().code);
}

TEST_F(EventKill, LogsItsHandle)
{
    kill();
    EXPECT_LOG_LINES({Priority::information, "Enter EventKill, event handle=0x" + hex16(event), "EventKill",
                      "ZVGRLibGenTL"},
                     {Priority::information, "Exit EventKill", "EventKill", "ZVGRLibGenTL"});
    EXPECT_TRUE(fake.calls().empty());
}

class EventFlush : public EventStream {};

TEST_F(EventFlush, DropsEveryEntry)
{
    deliver_buffers(3);
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, flush());
    EXPECT_LOG_LINES({Priority::information, "Enter EventFlush", "EventFlush", "ZVGRLibGenTL"},
                     {Priority::information, "Exit EventFlush", "EventFlush", "ZVGRLibGenTL"});
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_EQ(0U, in_queue());
    EXPECT_EQ(3U, fired());
}

} // namespace

} // namespace zvtest
