#include <algorithm>
#include <cstring>

#include "Event_fixtures.h"

namespace zvtest {

namespace {

class EventGetInfo : public EventStream {
protected:
    void SetUp() override
    {
        EventStream::SetUp();
        if (HasFatalFailure())
            return;
        ASSERT_EQ(GC_ERR_SUCCESS, GenTL::GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &m_remote));
        deliver_buffers(3);
        take();
        forget();
    }

    EVENT_HANDLE m_remote{nullptr};
};

TEST_F(EventGetInfo, KnowsNoDataOfARemoteDeviceEvent)
{
    event = m_remote;
    EXPECT_EQ(EVENT_REMOTE_DEVICE, event_info<int32_t>(EVENT_EVENT_TYPE).value);
    EXPECT_EQ(0U, in_queue());
    EXPECT_EQ(0U, fired());
    EXPECT_EQ(0U, event_info<size_t>(EVENT_SIZE_MAX).value);
    EXPECT_EQ(0U, event_info<size_t>(EVENT_INFO_DATA_SIZE_MAX).value);
}

TEST_F(EventGetInfo, CountsOnAfterAFlush)
{
    flush();
    EXPECT_EQ(0U, in_queue());
    deliver_buffers(2);
    EXPECT_EQ(5U, fired());
    EXPECT_EQ(2U, in_queue());
}

class EventGetDataInfo : public EventStream {
protected:
    GC_ERROR ask(EVENT_DATA_INFO_CMD command, INFO_DATATYPE* type, void* buffer, size_t* size)
    {
        return GenTL::EventGetDataInfo(event, nullptr, 0, command, type, buffer, size);
    }
    template <class T>
    Info<T> data_info(EVENT_DATA_INFO_CMD command, size_t room = default_room)
    {
        return query<T>(room, [&](auto... out) { return ask(command, out...); });
    }
    Info<int> data_info_size(EVENT_DATA_INFO_CMD command)
    {
        return size_query([&](auto... out) { return ask(command, out...); });
    }
    ExpectedLine enter_line(EVENT_DATA_INFO_CMD command) const
    {
        return {Priority::debug,
                "Enter EventGetDataInfo, handle=0x" + low_hex(event) + ", info=" + std::to_string(command),
                "EventGetDataInfo", "ZVGRLibGenTL"};
    }
    const ExpectedLine exit_line{Priority::debug, "Exit EventGetDataInfo", "EventGetDataInfo",
                                 "ZVGRLibGenTL"};
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
    EXPECT_LOG_LINES(enter_line(EVENT_DATA_VALUE), exit_line);
    EXPECT_EQ(2U, awaiting());
    EXPECT_EQ(buffers[1]->handle, take().data.BufferHandle);
}

TEST_F(EventGetDataInfo, LeavesNothingForALaterWait)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_INPUT_TO_OUTPUT));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(GC_ERR_SUCCESS, data_info<EVENT_NEW_BUFFER_DATA>(EVENT_DATA_VALUE).code);
    EXPECT_EQ(0U, in_queue());
    EXPECT_GE(milliseconds_of([&] { EXPECT_EQ(GC_ERR_TIMEOUT, take(30).code); }), 30);
}

TEST_F(EventGetDataInfo, ValueLeavesTheSignal)
{
    deliver(*buffers[0]);
    data_info<EVENT_NEW_BUFFER_DATA>(EVENT_DATA_VALUE);
    EXPECT_EQ(GC_ERR_TIMEOUT, take(GENTL_INFINITE).code);
}

TEST_F(EventGetDataInfo, ValueLeavesAKill)
{
    deliver_buffers(2);
    kill();
    EXPECT_EQ(GC_ERR_SUCCESS, data_info<EVENT_NEW_BUFFER_DATA>(EVENT_DATA_VALUE).code);
    EXPECT_EQ(GC_ERR_ABORT, take().code);
}

TEST_F(EventGetDataInfo, GivesTypeAndSizeOfAValueWithoutTakingIt)
{
    for (const size_t entries : {size_t{0}, size_t{1}}) {
        deliver_buffers(entries);
        for (void* const missing : {static_cast<void*>(nullptr), all_ones<void*>()}) {
            auto type = untouched<INFO_DATATYPE>();
            size_t size = 0;
            EXPECT_EQ(GC_ERR_SUCCESS, ask(EVENT_DATA_VALUE, &type, missing, &size));
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
    EXPECT_LOG_LINES(enter_line(EVENT_DATA_VALUE),
                     error_exit("EventGetDataInfo", "GC_ERR_NOT_AVAILABLE", -1014));
}

TEST_F(EventGetDataInfo, HasNoValueForARemoteDeviceEvent)
{
    ASSERT_EQ(GC_ERR_SUCCESS, GenTL::GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &event));
    EXPECT_EQ(GC_ERR_NOT_AVAILABLE, data_info<uint8_t>(EVENT_DATA_VALUE).code);
    const auto size = data_info_size(EVENT_DATA_VALUE);
    EXPECT_EQ(GC_ERR_SUCCESS, size.code);
    EXPECT_EQ(0U, size.size);
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

} // namespace

} // namespace zvtest
