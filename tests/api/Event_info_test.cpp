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

    GC_ERROR ask(EVENT_INFO_CMD command, INFO_DATATYPE* type, void* buffer, size_t* size)
    {
        return GenTL::EventGetInfo(event, command, type, buffer, size);
    }
    ExpectedLine enter_line(EVENT_INFO_CMD command) const
    {
        return {Priority::debug,
                "Enter EventGetInfo, handle=0x" + low_hex(event) + ", info=" + std::to_string(command),
                "EventGetInfo", "ZVGRLibGenTL"};
    }
    const ExpectedLine exit_line{Priority::debug, "Exit EventGetInfo", "EventGetInfo", "ZVGRLibGenTL"};

    EVENT_HANDLE m_remote{nullptr};
};

/// What EventGetInfo answers after three frames, of which one was taken.
struct EventInfoRow {
    EVENT_INFO_CMD command;
    INFO_DATATYPE type;
    size_t width;
    uint64_t value;
    uint64_t remote_value; // of the event that nothing fires
};

constexpr EventInfoRow event_info_rows[] = {
    {EVENT_EVENT_TYPE, INFO_DATATYPE_INT32, 4, 1, 4},
    {EVENT_NUM_IN_QUEUE, INFO_DATATYPE_SIZET, 8, 2, 0},
    {EVENT_NUM_FIRED, INFO_DATATYPE_UINT64, 8, 3, 0},
    {EVENT_SIZE_MAX, INFO_DATATYPE_SIZET, 8, 16, 0},
    {EVENT_INFO_DATA_SIZE_MAX, INFO_DATATYPE_SIZET, 8, 16, 0},
};

class EventGetInfoRow : public EventGetInfo, public testing::WithParamInterface<EventInfoRow> {
protected:
    const EventInfoRow row{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Commands, EventGetInfoRow, testing::ValuesIn(event_info_rows),
                         [](const auto& row) { return "Command" + std::to_string(row.param.command); });

TEST_P(EventGetInfoRow, GivesTypeWidthAndValue)
{
    uint64_t value = 0;
    size_t size = row.width;
    INFO_DATATYPE type = untouched<INFO_DATATYPE>();
    EXPECT_EQ(GC_ERR_SUCCESS, ask(row.command, &type, &value, &size));
    EXPECT_EQ(row.type, type);
    EXPECT_EQ(row.width, size);
    EXPECT_EQ(row.value, value);
    EXPECT_LOG_LINES(enter_line(row.command), exit_line);
    EXPECT_TRUE(fake.calls().empty());
}

TEST_P(EventGetInfoRow, GivesTheValueOfARemoteDeviceEvent)
{
    event = m_remote;
    uint64_t value = 0;
    size_t size = sizeof value;
    INFO_DATATYPE type = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, ask(row.command, &type, &value, &size));
    EXPECT_EQ(row.remote_value, value);
    EXPECT_EQ(row.width, size);
}

TEST_P(EventGetInfoRow, WritesItsWidthAlone)
{
    auto room = untouched<std::array<uint8_t, 20>>();
    size_t size = room.size();
    INFO_DATATYPE type = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, ask(row.command, &type, room.data(), &size));
    EXPECT_EQ(row.width, size);
    const auto is_untouched_byte = [](uint8_t byte) { return byte == 0xA5; };
    EXPECT_TRUE(
        std::all_of(room.begin() + static_cast<std::ptrdiff_t>(row.width), room.end(), is_untouched_byte));
}

TEST_P(EventGetInfoRow, GivesTypeAndWidthWithoutABuffer)
{
    for (void* const missing : {static_cast<void*>(nullptr), all_ones<void*>()}) {
        size_t size = 0;
        INFO_DATATYPE type = untouched<INFO_DATATYPE>();
        EXPECT_EQ(GC_ERR_SUCCESS, ask(row.command, &type, missing, &size));
        EXPECT_EQ(row.type, type);
        EXPECT_EQ(row.width, size);
    }
    EXPECT_EQ(2U, in_queue());
}

TEST_P(EventGetInfoRow, RefusesTooLittleRoomSilently)
{
    for (const size_t room : {size_t{1}, row.width - 1}) {
        forget();
        auto value = untouched<uint64_t>();
        size_t size = room;
        INFO_DATATYPE type = untouched<INFO_DATATYPE>();
        EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, ask(row.command, &type, &value, &size));
        EXPECT_EQ(row.width, size);
        EXPECT_EQ(row.type, type);
        EXPECT_TRUE(is_untouched(value));
        EXPECT_LOG_LINES(enter_line(row.command));
    }
}

TEST_F(EventGetInfo, RefusesUnknownCommands)
{
    for (const EVENT_INFO_CMD command : {5, -1, static_cast<int>(EVENT_INFO_CUSTOM_ID)}) {
        SCOPED_TRACE(command);
        forget();
        auto value = untouched<uint64_t>();
        auto type = untouched<INFO_DATATYPE>();
        size_t size = sizeof value;
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, ask(command, &type, &value, &size));
        EXPECT_EQ(0U, size);
        EXPECT_TRUE(is_untouched(value));
        EXPECT_LOG_LINES(
            enter_line(command),
            {Priority::error, "info= " + std::to_string(command), "EventGetInfo", "ZVGRLibGenTL"},
            error_exit("EventGetInfo", "GC_ERR_NOT_IMPLEMENTED", -1003));
    }
}

TEST_F(EventGetInfo, RefusesMalformedArgumentsBeforeItLooksAtTheHandle)
{
    struct Arguments {
        INFO_DATATYPE* type;
        void* buffer;
        size_t* size;
    };
    INFO_DATATYPE type = untouched<INFO_DATATYPE>();
    uint64_t value = untouched<uint64_t>();
    size_t size = 8;
    size_t zero = 0;
    const Arguments rows[] = {
        {nullptr, &value, &size}, {all_ones<INFO_DATATYPE*>(), &value, &size},
        {&type, &value, nullptr}, {&type, &value, all_ones<size_t*>()},
        {&type, &value, &zero},
    };
    event = &value;
    for (const Arguments& row : rows) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, ask(EVENT_NUM_FIRED, row.type, row.buffer, row.size));
        EXPECT_LOG_LINES(enter_line(EVENT_NUM_FIRED),
                         error_exit("EventGetInfo", "GC_ERR_INVALID_PARAMETER", -1009));
    }
    EXPECT_TRUE(is_untouched(type));
    EXPECT_TRUE(is_untouched(value));
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

    std::string id() const { return "Event0x" + hex(reinterpret_cast<uintptr_t>(event)); }
};

TEST_F(EventGetDataInfo, GivesTheIdOfTheEvent)
{
    const auto info = data_info<std::string>(EVENT_DATA_ID);
    EXPECT_EQ(GC_ERR_SUCCESS, info.code);
    EXPECT_EQ(INFO_DATATYPE_STRING, info.type);
    EXPECT_EQ(id(), info.value);
    EXPECT_EQ(id().size() + 1, info.size);
    EXPECT_LOG_LINES(enter_line(EVENT_DATA_ID), exit_line);
}

TEST_F(EventGetDataInfo, GivesTheSizeOfTheId)
{
    const auto info = data_info_size(EVENT_DATA_ID);
    EXPECT_EQ(GC_ERR_SUCCESS, info.code);
    EXPECT_EQ(INFO_DATATYPE_STRING, info.type);
    EXPECT_EQ(id().size() + 1, info.size);
}

TEST_F(EventGetDataInfo, CopiesTheStartOfAnIdThatDoesNotFit)
{
    const auto info = data_info<std::string>(EVENT_DATA_ID, 5);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, info.code);
    EXPECT_EQ(5U, info.size);
    EXPECT_EQ(0, std::memcmp("Event", info.bytes.data(), 5));
    const std::string text =
        "EventGetDataInfo - GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold data (5/" +
        std::to_string(id().size() + 1) + ")";
    EXPECT_LOG_LINES(enter_line(EVENT_DATA_ID), {Priority::error, text, "EventGetDataInfo", "ZVGRLibGenTL"},
                     {Priority::error, "Exit, Returning error ret (0xFFFFFC08)", "EventGetDataInfo"});
    EXPECT_EQ(text, last_error());
}

TEST_F(EventGetDataInfo, TellsWhenOnlyTheTerminatorDoesNotFit)
{
    const size_t length = id().size();
    const auto info = data_info<std::string>(EVENT_DATA_ID, length);
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, info.code);
    EXPECT_EQ(length, info.size);
    EXPECT_EQ(0, std::memcmp(id().data(), info.bytes.data(), length));
    EXPECT_EQ(
        "EventGetDataInfo - GC_ERR_INVALID_PARAMETER: buffer size too small to contain NULL termination (" +
            std::to_string(length) + "/" + std::to_string(length + 1) + ")",
        last_error());
    EXPECT_LOGGED(Priority::error, "Exit, Returning error ret (0xFFFFFC0F)", "EventGetDataInfo");
}

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

TEST_F(EventGetDataInfo, ValueOfARevokedBufferHasNoPrivatePointer)
{
    deliver(*buffers[0]);
    ASSERT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffers[0]->handle, nullptr, nullptr));
    const auto info = data_info<EVENT_NEW_BUFFER_DATA>(EVENT_DATA_VALUE);
    EXPECT_EQ(buffers[0]->handle, info.value.BufferHandle);
    EXPECT_EQ(nullptr, info.value.pUserPointer);
}

TEST_F(EventGetDataInfo, TakesNoEntryToTellItsSize)
{
    deliver(*buffers[0]);
    const auto info = data_info_size(EVENT_DATA_VALUE);
    EXPECT_EQ(GC_ERR_SUCCESS, info.code);
    EXPECT_EQ(INFO_DATATYPE_PTR, info.type);
    EXPECT_EQ(16U, info.size);
    EXPECT_EQ(1U, in_queue());
}

TEST_F(EventGetDataInfo, TellsTheSizeOfAValueThatIsNotThere)
{
    const auto info = data_info_size(EVENT_DATA_VALUE);
    EXPECT_EQ(GC_ERR_SUCCESS, info.code);
    EXPECT_EQ(16U, info.size);
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

TEST_F(EventGetDataInfo, GivesTheHandleAsANumber)
{
    const auto info = data_info<EVENT_HANDLE>(EVENT_DATA_NUMID, 20);
    EXPECT_EQ(GC_ERR_SUCCESS, info.code);
    EXPECT_EQ(INFO_DATATYPE_UINT64, info.type);
    EXPECT_EQ(8U, info.size);
    EXPECT_EQ(event, info.value);
    EXPECT_LOG_LINES(enter_line(EVENT_DATA_NUMID), exit_line);
}

TEST_F(EventGetDataInfo, GivesTheSizeOfTheNumber)
{
    const auto info = data_info_size(EVENT_DATA_NUMID);
    EXPECT_EQ(GC_ERR_SUCCESS, info.code);
    EXPECT_EQ(INFO_DATATYPE_UINT64, info.type);
    EXPECT_EQ(8U, info.size);
}

TEST_F(EventGetDataInfo, RefusesTooLittleRoomForTheNumberSilently)
{
    const auto info = data_info<EVENT_HANDLE>(EVENT_DATA_NUMID, 7);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, info.code);
    EXPECT_EQ(INFO_DATATYPE_UINT64, info.type);
    EXPECT_EQ(8U, info.size);
    EXPECT_TRUE(is_untouched(info.value));
    EXPECT_LOG_LINES(enter_line(EVENT_DATA_NUMID));
}

TEST_F(EventGetDataInfo, RefusesUnknownCommands)
{
    for (const EVENT_DATA_INFO_CMD command : {3, -1, static_cast<int>(EVENT_DATA_CUSTOM_ID)}) {
        SCOPED_TRACE(command);
        forget();
        const auto info = data_info<uint64_t>(command);
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, info.code);
        EXPECT_TRUE(is_untouched(info.value));
        EXPECT_LOG_LINES(
            enter_line(command),
            {Priority::error, "info= " + std::to_string(command), "EventGetDataInfo", "ZVGRLibGenTL"},
            error_exit("EventGetDataInfo", "GC_ERR_NOT_IMPLEMENTED", -1003));
    }
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

TEST_F(EventGetDataInfo, TakesAnAllOnesBufferAsMissing)
{
    deliver(*buffers[0]);
    for (const EVENT_DATA_INFO_CMD command : {EVENT_DATA_ID, EVENT_DATA_VALUE, EVENT_DATA_NUMID}) {
        INFO_DATATYPE type = 0;
        size_t size = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, ask(command, &type, all_ones<void*>(), &size));
        EXPECT_NE(0U, size);
    }
    EXPECT_EQ(1U, in_queue());
}

TEST_F(EventGetDataInfo, RefusesMalformedArgumentsBeforeItLooksAtTheHandle)
{
    struct Arguments {
        INFO_DATATYPE* type;
        void* buffer;
        size_t* size;
    };
    INFO_DATATYPE type = untouched<INFO_DATATYPE>();
    uint64_t value = untouched<uint64_t>();
    size_t size = 8;
    size_t zero = 0;
    const Arguments rows[] = {
        {nullptr, &value, &size}, {all_ones<INFO_DATATYPE*>(), &value, &size},
        {&type, &value, nullptr}, {&type, &value, all_ones<size_t*>()},
        {&type, &value, &zero},
    };
    event = &value;
    for (const Arguments& row : rows) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, ask(EVENT_DATA_NUMID, row.type, row.buffer, row.size));
        EXPECT_LOG_LINES(enter_line(EVENT_DATA_NUMID),
                         error_exit("EventGetDataInfo", "GC_ERR_INVALID_PARAMETER", -1009));
    }
    EXPECT_TRUE(is_untouched(type));
    EXPECT_TRUE(is_untouched(value));
}

} // namespace

} // namespace zvtest
