#include "modules/CameraModule.h"
#include "modules/EventModule.h"
#include "modules/StreamModule.h"
#include "support/fixtures.h"

// Events in states that the exported functions never bring about: of a stream that is closed, and of a type
// that nothing fires.

namespace zvtest {

namespace {

using zvgentl::CameraModule;
using zvgentl::EventRef;
using zvgentl::StreamModule;

/// A call of an exported function with an event handle and otherwise right arguments.
struct EventCall {
    const char* name;
    GC_ERROR (*call)(EVENT_HANDLE);
};

const EventCall event_calls[] = {
    {"EventGetData",
     [](EVENT_HANDLE handle) {
         EVENT_NEW_BUFFER_DATA data;
         size_t size = sizeof data;
         return EventGetData(handle, &data, &size, 0);
     }},
    {"EventFlush", [](EVENT_HANDLE handle) { return EventFlush(handle); }},
    {"EventKill", [](EVENT_HANDLE handle) { return EventKill(handle); }},
    {"EventGetInfo",
     [](EVENT_HANDLE handle) {
         return size_query([&](auto... out) { return EventGetInfo(handle, EVENT_NUM_FIRED, out...); }).code;
     }},
    {"EventGetDataInfo",
     [](EVENT_HANDLE handle) {
         return size_query([&](auto... out) {
                    return EventGetDataInfo(handle, nullptr, 0, EVENT_DATA_NUMID, out...);
                })
             .code;
     }},
};

class EventOfAClosedStream : public OpenDevice {};

TEST_F(EventOfAClosedStream, IsKnownButNotAvailable)
{
    StreamModule& stream = *static_cast<CameraModule*>(port)->get_Stream(0);
    ASSERT_FALSE(stream.is_Open());
    stream.get_Events().add(stream, EVENT_NEW_BUFFER);
    const EVENT_HANDLE event = stream.get_Events().find(EVENT_NEW_BUFFER).get();
    for (const EventCall& tested : event_calls) {
        EXPECT_EQ(GC_ERR_NOT_AVAILABLE, tested.call(event)) << tested.name;
        EXPECT_LOGGED(Priority::error, "Exit, Returning error GC_ERR_NOT_AVAILABLE (0xFFFFFC0A)", tested.name,
                      "ZVGRLibGenTL");
    }
    stream.get_Events().clear();
}

class UnknownEventData : public QueuedStream {};

TEST_F(UnknownEventData, LeavesEveryOutputAlone)
{
    register_event();
    for (const EVENT_DATA_INFO_CMD command : {-1, 3, 1000}) {
        const auto info = query<uint64_t>(
            8, [&](auto... out) { return EventGetDataInfo(event, nullptr, 0, command, out...); });
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, info.code) << command;
        EXPECT_EQ(8U, info.size) << "also the size, which every other query sets to 0";
        EXPECT_TRUE(is_untouched(info.type));
        EXPECT_TRUE(is_untouched(info.value));
    }
}

/// A type-4 event with entries, which only a test can make.
class FiredRemoteDeviceEvent : public QueuedStream {
protected:
    void SetUp() override
    {
        QueuedStream::SetUp();
        if (HasFatalFailure())
            return;
        ASSERT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &event));
        announce();
        const EventRef module = static_cast<StreamModule*>(ds)->get_Events().find(EVENT_REMOTE_DEVICE);
        for (int i = 0; i < 2; ++i)
            module->append(static_cast<zvgentl::BufferModule*>(buffers[0]->handle));
        forget();
    }

    uint8_t data{0xA5};
    size_t size{100};
};

TEST_F(FiredRemoteDeviceEvent, GivesNoBytes)
{
    EXPECT_EQ(GC_ERR_SUCCESS, EventGetData(event, &data, &size, 0));
    EXPECT_EQ(0U, size);
    EXPECT_EQ(0xA5, data);
    EXPECT_LOG_LINES({Priority::debug,
                      "Enter EventGetData, handle=0x" + low_hex(event) + ", buffer size=100, timeout=0 ms"},
                     {Priority::debug, "Exit EventGetData", "EventGetData", "ZVGRLibGenTL"});
    EXPECT_EQ(1U, event_info<size_t>(EVENT_NUM_IN_QUEUE).value);
}

TEST_F(FiredRemoteDeviceEvent, ThrottlesItsExitLineToo)
{
    start();
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, EventGetData(event, &data, &size, 0));
    EXPECT_LOGGED(Priority::debug, "Exit EventGetData");
    EXPECT_EQ(GC_ERR_SUCCESS, EventGetData(event, &data, &size, 0));
    EXPECT_LOGGED(Priority::trace, "Exit EventGetData");
}

TEST_F(FiredRemoteDeviceEvent, DropsAnEntryAndLeavesItsBufferAlone)
{
    queue(*buffers[0]);
    EXPECT_EQ(GC_ERR_SUCCESS, EventGetData(event, nullptr, &size, 0));
    EXPECT_EQ(1U, event_info<size_t>(EVENT_NUM_IN_QUEUE).value);
    EXPECT_EQ(1U, stream_info<size_t>(STREAM_INFO_NUM_QUEUED).value);
}

TEST_F(FiredRemoteDeviceEvent, GivesItsEntriesToADataQueryWithoutBytes)
{
    INFO_DATATYPE type = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, EventGetDataInfo(event, nullptr, 0, EVENT_DATA_VALUE, &type, &data, &size));
    EXPECT_EQ(INFO_DATATYPE_PTR, type);
    EXPECT_EQ(0U, size);
    EXPECT_EQ(0xA5, data);
    EXPECT_EQ(1U, event_info<size_t>(EVENT_NUM_IN_QUEUE).value);
}

} // namespace

} // namespace zvtest
