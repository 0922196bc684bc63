#include <array>
#include <cstring>

#include "api/Event_fixtures.h"
#include "api/Function.h"

// EventGetData as it waits for a signal, the values of EventGetDataInfo, EventKill and EventFlush.

namespace zvtest {

namespace {

class EventGetData : public EventStream {};

TEST_F(EventGetData, WritesNoMoreThanARecord)
{
    deliver(*buffers[0]);
    std::array<uint8_t, 40> room{};
    room.fill(0xA5);
    std::array<uint8_t, 40> expected = room;
    std::memcpy(expected.data(), &buffers[0]->handle, 8);
    std::memcpy(expected.data() + 8, &buffers[0]->user, 8);
    size_t size = room.size();
    EXPECT_EQ(GC_ERR_SUCCESS, get_data(room.data(), &size));
    EXPECT_EQ(16U, size);
    EXPECT_EQ(expected, room);
}

TEST_F(EventGetData, TimesOutAndTouchesNothing)
{
    const Taken taken = take();
    EXPECT_EQ(GC_ERR_TIMEOUT, taken.code);
    EXPECT_TRUE(is_untouched(taken.data));
    EXPECT_EQ(16U, taken.size);
    EXPECT_LOG_LINES(enter_line(0));
}

TEST_F(EventGetData, TakesAnEntryWhateverTheTimeoutAndLogsItsLow32Bits)
{
    struct Row {
        uint64_t timeout;
        int logged;
    };
    for (const Row& row : {Row{0, 0}, Row{7, 7}, Row{0xFFFFFFFE, -2}, Row{0xFFFFFFFF, -1},
                           Row{0x100000005, 5}, Row{GENTL_INFINITE, -1}}) {
        SCOPED_TRACE(row.timeout);
        stop(); // so that every call is logged alike
        EXPECT_EQ(GC_ERR_TIMEOUT, take().code);
        start();
        deliver(*buffers[0]);
        forget();
        EVENT_NEW_BUFFER_DATA data;
        size_t size = 0x300000010;
        EXPECT_EQ(GC_ERR_SUCCESS, get_data(&data, &size, row.timeout));
        EXPECT_LOG_LINES(enter_line(row.logged), exit_line(*buffers[0]));
        EXPECT_TRUE(fake.calls().empty());
    }
}

TEST_F(EventGetData, RefusesEveryRoomSmallerThanARecordWithAndWithoutABuffer)
{
    deliver(*buffers[0]);
    auto data = untouched<EVENT_NEW_BUFFER_DATA>();
    for (size_t room = 0; room < sizeof data; ++room) {
        for (void* const buffer : {static_cast<void*>(&data), static_cast<void*>(nullptr)}) {
            SCOPED_TRACE(room);
            forget();
            size_t size = room;
            EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, get_data(buffer, &size, 5));
            EXPECT_EQ(16U, size);
            EXPECT_LOG_LINES(enter_line(5, Priority::debug, room), too_small);
        }
    }
    EXPECT_TRUE(is_untouched(data));
    EXPECT_EQ(1U, in_queue());
}

TEST_F(EventGetData, DropsTheOldestEntryWithoutABuffer)
{
    deliver_buffers(2);
    for (void* const missing : {static_cast<void*>(nullptr), all_ones<void*>()}) {
        size_t size = 100;
        EXPECT_EQ(GC_ERR_SUCCESS, get_data(missing, &size));
        EXPECT_EQ(100U, size);
    }
    EXPECT_EQ(0U, in_queue());
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, discard()) << "also when there is none";
    EXPECT_LOG_LINES(enter_line(0), discarded);
}

class EventGetDataInfo : public EventStream {
protected:
    ExpectedLine enter_line(EVENT_DATA_INFO_CMD command) const
    {
        return {Priority::debug,
                "Enter EventGetDataInfo, handle=0x" + low_hex(event) + ", info=" + std::to_string(command),
                "EventGetDataInfo", "ZVGRLibGenTL"};
    }
};

TEST_F(EventGetDataInfo, ValueTakesTheNextEntry)
{
    deliver_buffers(2);
    forget();
    const auto info = data_info<EVENT_NEW_BUFFER_DATA>(EVENT_DATA_VALUE);
    EXPECT_EQ(GC_ERR_SUCCESS, info.code);
    EXPECT_EQ(INFO_DATATYPE_PTR, info.type);
    EXPECT_EQ(16U, info.size);
    EXPECT_EQ(buffers[0]->handle, info.value.BufferHandle);
    EXPECT_EQ(buffers[0]->user, info.value.pUserPointer);
    EXPECT_LOG_LINES(enter_line(EVENT_DATA_VALUE),
                     {Priority::debug, "Exit EventGetDataInfo", "EventGetDataInfo", "ZVGRLibGenTL"});
    EXPECT_EQ(2U, awaiting());
    EXPECT_EQ(buffers[1]->handle, take().data.BufferHandle);
}

TEST_F(EventGetDataInfo, GivesTypeAndSizeOfAValueWithoutTakingIt)
{
    for (const size_t entries : {size_t{0}, size_t{1}}) {
        deliver_buffers(entries);
        for (void* const missing : {static_cast<void*>(nullptr), all_ones<void*>()}) {
            auto type = untouched<INFO_DATATYPE>();
            size_t size = 0;
            EXPECT_EQ(GC_ERR_SUCCESS,
                      GenTL::EventGetDataInfo(event, nullptr, 0, EVENT_DATA_VALUE, &type, missing, &size));
            EXPECT_EQ(INFO_DATATYPE_PTR, type);
            EXPECT_EQ(16U, size);
        }
        EXPECT_EQ(entries, in_queue());
    }
}

TEST_F(EventGetDataInfo, TakesNoEntryWithoutRoom)
{
    deliver(*buffers[0]);
    for (const size_t room : {size_t{1}, size_t{8}, size_t{15}}) {
        forget();
        const auto info = data_info<EVENT_NEW_BUFFER_DATA>(EVENT_DATA_VALUE, room);
        EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, info.code);
        EXPECT_EQ(INFO_DATATYPE_PTR, info.type);
        EXPECT_EQ(16U, info.size);
        EXPECT_TRUE(is_untouched(info.value));
        EXPECT_LOG_LINES(enter_line(EVENT_DATA_VALUE),
                         {Priority::warning, "EventGetDataInfo - GC_ERR_BUFFER_TOO_SMALL, wanted size=16",
                          "EventGetDataInfo", "ZVGRLibGenTL"});
    }
    EXPECT_EQ(1U, in_queue());
}

TEST_F(EventGetDataInfo, HasNoValueInAnEmptyQueue)
{
    const auto info = data_info<EVENT_NEW_BUFFER_DATA>(EVENT_DATA_VALUE, 100);
    EXPECT_EQ(GC_ERR_NOT_AVAILABLE, info.code);
    EXPECT_EQ(INFO_DATATYPE_PTR, info.type);
    EXPECT_EQ(100U, info.size);
    EXPECT_TRUE(is_untouched(info.value));
    EXPECT_LOG_LINES(enter_line(EVENT_DATA_VALUE), FAILED_WITH(GC_ERR_NOT_AVAILABLE));
}

TEST_F(EventGetDataInfo, DoesNotReadTheDatumPassedIn)
{
    deliver(*buffers[0]);
    auto data = untouched<EVENT_NEW_BUFFER_DATA>();
    INFO_DATATYPE type = 0;
    size_t size = sizeof data;
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::EventGetDataInfo(event, all_ones<const void*>(), SIZE_MAX,
                                                      EVENT_DATA_VALUE, &type, &data, &size));
    EXPECT_EQ(buffers[0]->handle, data.BufferHandle);
}

/// An entry that is dropped, or taken as a value, rather than waited for.
TEST_F(EventStream, KeepsSignalsAndKillsOfEntriesThatNobodyWaitedFor)
{
    const auto take_value = [this] { return data_info<EVENT_NEW_BUFFER_DATA>(EVENT_DATA_VALUE).code; };
    for (const bool is_dropped : {true, false}) {
        SCOPED_TRACE(is_dropped);
        deliver(*buffers[0]);
        EXPECT_EQ(GC_ERR_SUCCESS, is_dropped ? discard() : take_value());
        EXPECT_EQ(0U, in_queue());
        EXPECT_EQ(GC_ERR_TIMEOUT, take(GENTL_INFINITE).code) << "the signal is gone";
        deliver(*buffers[0]);
        kill();
        EXPECT_EQ(GC_ERR_SUCCESS, is_dropped ? discard() : take_value());
        EXPECT_EQ(GC_ERR_ABORT, take().code) << "the kill is gone";
    }
}

TEST_F(EventStream, HasARemoteDeviceEventThatNothingFires)
{
    ASSERT_EQ(GC_ERR_SUCCESS, GenTL::GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &event));
    deliver(*buffers[0]);
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_INPUT_TO_OUTPUT));
    EXPECT_EQ(0U, fired());
    uint8_t byte = 0xA5;
    size_t size = 0;
    EXPECT_EQ(GC_ERR_TIMEOUT, get_data(&byte, &size));
    EXPECT_EQ(0U, size);
    EXPECT_EQ(GC_ERR_NOT_AVAILABLE, data_info<uint8_t>(EVENT_DATA_VALUE).code);
    EXPECT_EQ(0xA5, byte);

    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, get_data(nullptr, &size)) << "it needs no room";
    EXPECT_LOG_LINES(enter_line(0, Priority::debug, 0), discarded);
    INFO_DATATYPE type = 0;
    size = 100;
    EXPECT_EQ(GC_ERR_SUCCESS,
              GenTL::EventGetDataInfo(event, nullptr, 0, EVENT_DATA_VALUE, &type, nullptr, &size));
    EXPECT_EQ(0U, size);
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

TEST_F(EventKill, IsLoggedAndSeenAfterAFlush)
{
    deliver(*buffers[0]);
    forget();
    kill();
    EXPECT_LOG_LINES({Priority::information, "Enter EventKill, event handle=0x" + hex16(event), "EventKill",
                      "ZVGRLibGenTL"},
                     {Priority::information, "Exit EventKill", "EventKill", "ZVGRLibGenTL"});
    EXPECT_TRUE(fake.calls().empty());
    flush();
    EXPECT_EQ(GC_ERR_ABORT, take().code);
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
    EXPECT_EQ(3U, awaiting());
}

} // namespace

} // namespace zvtest
