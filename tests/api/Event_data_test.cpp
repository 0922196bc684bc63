#include <array>
#include <cstring>

#include "Event_fixtures.h"

namespace zvtest {

namespace {

class EventGetData : public EventStream {};

TEST_F(EventGetData, GivesHandleAndPrivatePointer)
{
    deliver(*buffers[1]);
    const Taken taken = take();
    EXPECT_EQ(GC_ERR_SUCCESS, taken.code);
    EXPECT_EQ(buffers[1]->handle, taken.data.BufferHandle);
    EXPECT_EQ(buffers[1]->user, taken.data.pUserPointer);
    EXPECT_EQ(sizeof(EVENT_NEW_BUFFER_DATA), taken.size);
}

TEST_F(EventGetData, LogsTheRecordWithATrailingBlank)
{
    deliver(*buffers[0]);
    forget();
    take(7);
    EXPECT_LOG_LINES(enter_line(7), exit_line(*buffers[0]));
}

TEST_F(EventGetData, MakesNoCallOfTheLibrary)
{
    deliver(*buffers[0]);
    forget();
    take();
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(EventGetData, GivesTheOldestEntryFirst)
{
    deliver(*buffers[2]);
    deliver(*buffers[0]);
    deliver(*buffers[1]);
    EXPECT_EQ(buffers[2]->handle, take().data.BufferHandle);
    EXPECT_EQ(buffers[0]->handle, take().data.BufferHandle);
    EXPECT_EQ(buffers[1]->handle, take().data.BufferHandle);
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

TEST_F(EventGetData, GivesARevokedBufferWithoutAPrivatePointer)
{
    deliver(*buffers[0]);
    ASSERT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffers[0]->handle, nullptr, nullptr));
    const Taken taken = take();
    EXPECT_EQ(GC_ERR_SUCCESS, taken.code);
    EXPECT_EQ(buffers[0]->handle, taken.data.BufferHandle);
    EXPECT_EQ(nullptr, taken.data.pUserPointer);
}

TEST_F(EventGetData, LeavesTheBufferInTheOutputQueue)
{
    deliver(*buffers[0]);
    take();
    EXPECT_EQ(1U, awaiting());
}

TEST_F(EventGetData, GivesABufferThatWasQueuedAgainSinceItsFrame)
{
    deliver(*buffers[0]);
    queue(*buffers[0]);
    EXPECT_EQ(buffers[0]->handle, take().data.BufferHandle);
    EXPECT_EQ(0U, awaiting());
}

TEST_F(EventGetData, KeepsEveryEntryOfCollapsedSignals)
{
    deliver_buffers(3);
    for (const auto& buffer : buffers)
        EXPECT_EQ(buffer->handle, take(GENTL_INFINITE).data.BufferHandle);
    // The three frames left one signal and the first call took it.
    EXPECT_GE(milliseconds_of([&] { EXPECT_EQ(GC_ERR_TIMEOUT, take(30).code); }), 30);
}

TEST_F(EventGetData, LeavesNoSignalBehind)
{
    deliver(*buffers[0]);
    EXPECT_EQ(GC_ERR_SUCCESS, take().code);
    EXPECT_GE(milliseconds_of([&] { EXPECT_EQ(GC_ERR_TIMEOUT, take(30).code); }), 30);
}

TEST_F(EventGetData, TakesEntriesThatWereNotSignalled)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_INPUT_TO_OUTPUT));
    for (const auto& buffer : buffers)
        EXPECT_EQ(buffer->handle, take(GENTL_INFINITE).data.BufferHandle);
    EXPECT_EQ(3U, awaiting());
}

// A signal left pending would end the wait at once.
TEST_F(EventGetData, IsNotSignalledByBuffersThatAreMovedToTheOutputQueue)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_INPUT_TO_OUTPUT));
    flush();
    EXPECT_GE(milliseconds_of([&] { EXPECT_EQ(GC_ERR_TIMEOUT, take(30).code); }), 30);
}

TEST_F(EventGetData, FindsNothingAfterOutputBuffersWereDiscarded)
{
    for (const int32_t operation :
         {static_cast<int32_t>(ACQ_QUEUE_OUTPUT_DISCARD), static_cast<int32_t>(ACQ_QUEUE_ALL_TO_INPUT),
          static_cast<int32_t>(ACQ_QUEUE_ALL_DISCARD), 1000}) {
        SCOPED_TRACE(operation);
        deliver_buffers(2);
        ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, operation));
        EXPECT_EQ(GC_ERR_TIMEOUT, take().code);
    }
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

TEST_F(EventGetData, LogsTheRoomThatItWants)
{
    EVENT_NEW_BUFFER_DATA data;
    size_t size = 8;
    get_data(&data, &size, 5);
    EXPECT_LOG_LINES(
        {Priority::debug, "Enter EventGetData, handle=0x" + low_hex(event) + ", buffer size=8, timeout=5 ms"},
        {Priority::debug, "EventGetData - GC_ERR_BUFFER_TOO_SMALL, wanted size=16", "EventGetData",
         "ZVGRLibGenTL"});
}

TEST_F(EventGetData, LooksAtTheRoomBeforeTheMissingBuffer)
{
    deliver(*buffers[0]);
    size_t size = 8;
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, get_data(nullptr, &size));
    EXPECT_EQ(16U, size);
    EXPECT_EQ(1U, in_queue());
}

TEST_F(EventGetData, RefusesAMissingSize)
{
    deliver(*buffers[0]);
    EVENT_NEW_BUFFER_DATA data;
    for (size_t* const missing : {static_cast<size_t*>(nullptr), all_ones<size_t*>()}) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, get_data(&data, missing));
        EXPECT_LOG_LINES({Priority::debug,
                          "Enter EventGetData, handle=0x" + low_hex(event) + ", buffer size=0, timeout=0 ms"},
                         error_exit("EventGetData", "GC_ERR_INVALID_PARAMETER", -1009));
    }
    EXPECT_EQ(1U, in_queue());
}

TEST_F(EventGetData, ChecksTheHandleBeforeTheSize)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::EventGetData(ds, nullptr, nullptr, 0));
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

TEST_F(DiscardingEventGetData, TakesTheBufferOutOfEveryQueue)
{
    deliver_buffers(2);
    EXPECT_EQ(GC_ERR_SUCCESS, discard());
    EXPECT_EQ(1U, awaiting());
    EXPECT_EQ(1U, stream_info<size_t>(STREAM_INFO_NUM_QUEUED).value);
    EXPECT_EQ(0, buffer_info<uint8_t>(buffers[0]->handle, BUFFER_INFO_IS_QUEUED).value);
    EXPECT_EQ(buffers[1]->handle, take().data.BufferHandle);
}

TEST_F(DiscardingEventGetData, SucceedsOnAnEmptyQueue)
{
    EXPECT_EQ(GC_ERR_SUCCESS, discard());
    EXPECT_LOG_LINES(enter_line(0), {Priority::debug, "EventGetData, pBuffer is NULL, discard next event",
                                     "EventGetData", "ZVGRLibGenTL"});
}

TEST_F(DiscardingEventGetData, DoesNotWait)
{
    size_t size = 16;
    EXPECT_EQ(GC_ERR_SUCCESS, get_data(nullptr, &size, GENTL_INFINITE));
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

TEST_F(DiscardingEventGetData, DropsARevokedBuffer)
{
    deliver(*buffers[0]);
    ASSERT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffers[0]->handle, nullptr, nullptr));
    EXPECT_EQ(GC_ERR_SUCCESS, discard());
    EXPECT_EQ(0U, in_queue());
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

TEST_F(RemoteDeviceEvent, WaitsOutItsTimeout)
{
    size_t size = 1;
    EXPECT_GE(milliseconds_of([&] { EXPECT_EQ(GC_ERR_TIMEOUT, get_data(&m_byte, &size, 30)); }), 30);
}

TEST_F(RemoteDeviceEvent, DiscardsWithoutNeedingRoom)
{
    size_t size = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, get_data(nullptr, &size));
    EXPECT_LOG_LINES(
        {Priority::debug, "Enter EventGetData, handle=0x" + low_hex(event) + ", buffer size=0, timeout=0 ms"},
        {Priority::debug, "EventGetData, pBuffer is NULL, discard next event"});
}

TEST_F(RemoteDeviceEvent, CanBeKilled)
{
    EXPECT_EQ(GC_ERR_SUCCESS, kill());
    size_t size = 1;
    EXPECT_EQ(GC_ERR_ABORT, get_data(&m_byte, &size));
}

TEST_F(RemoteDeviceEvent, LivesUntilTheStreamIsClosed)
{
    EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, GenTL::GCUnregisterEvent(ds, EVENT_REMOTE_DEVICE));
    EXPECT_EQ(GC_ERR_SUCCESS, flush());
    ASSERT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, flush());
}

} // namespace

} // namespace zvtest
