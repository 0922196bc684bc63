#include <ostream>
#include <vector>

#include "Event_fixtures.h"

// What the functions that take an event handle have in common.

namespace zvtest {

namespace {

using Lines = std::vector<ExpectedLine>;

/// A function that takes an event handle, called with arguments that are right apart from it.
struct EventFunction {
    const char* name;
    GC_ERROR (*call)(EVENT_HANDLE);
    /// What it logs before it looks at the handle.
    Lines (*entered)(EVENT_HANDLE);

    friend std::ostream& operator<<(std::ostream& out, const EventFunction& function)
    {
        return out << function.name;
    }
};

GC_ERROR get_data(EVENT_HANDLE handle)
{
    EVENT_NEW_BUFFER_DATA data;
    size_t size = sizeof data;
    return EventGetData(handle, &data, &size, 0);
}

/// EventGetData logs nothing before: how loud its enter line is depends on the event's stream.
Lines entered_get_data(EVENT_HANDLE) { return {}; }

GC_ERROR flush(EVENT_HANDLE handle) { return EventFlush(handle); }

Lines entered_flush(EVENT_HANDLE) { return Lines(1, {Priority::information, "Enter EventFlush"}); }

GC_ERROR kill(EVENT_HANDLE handle) { return EventKill(handle); }

Lines entered_kill(EVENT_HANDLE handle)
{
    return Lines(1, {Priority::information, "Enter EventKill, event handle=0x" + hex16(handle)});
}

GC_ERROR get_info(EVENT_HANDLE handle)
{
    INFO_DATATYPE type = 0;
    size_t value = 0;
    size_t size = sizeof value;
    return EventGetInfo(handle, EVENT_NUM_IN_QUEUE, &type, &value, &size);
}

Lines entered_get_info(EVENT_HANDLE handle)
{
    return Lines(1, {Priority::debug, "Enter EventGetInfo, handle=0x" + low_hex(handle) + ", info=1"});
}

GC_ERROR get_data_info(EVENT_HANDLE handle)
{
    INFO_DATATYPE type = 0;
    uint64_t value = 0;
    size_t size = sizeof value;
    return EventGetDataInfo(handle, nullptr, 0, EVENT_DATA_NUMID, &type, &value, &size);
}

Lines entered_get_data_info(EVENT_HANDLE handle)
{
    return Lines(1, {Priority::debug, "Enter EventGetDataInfo, handle=0x" + low_hex(handle) + ", info=2"});
}

constexpr EventFunction event_functions[] = {
    {"EventGetData", get_data, entered_get_data},
    {"EventFlush", flush, entered_flush},
    {"EventKill", kill, entered_kill},
    {"EventGetInfo", get_info, entered_get_info},
    {"EventGetDataInfo", get_data_info, entered_get_data_info},
};

std::string name_of_function(const testing::TestParamInfo<EventFunction>& tested)
{
    return tested.param.name;
}

class EventFunctionHandle : public EventStream, public testing::WithParamInterface<EventFunction> {
protected:
    void refuses(EVENT_HANDLE handle)
    {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, function.call(handle));
        Lines lines = function.entered(handle);
        lines.push_back(
            {Priority::error, std::string(function.name) + " - GC_ERR_INVALID_HANDLE", "", "ZVGRLibGenTL"});
        EXPECT_TRUE(logged_exactly(lines));
    }

    const EventFunction function{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Functions, EventFunctionHandle, testing::ValuesIn(event_functions),
                         name_of_function);

TEST_P(EventFunctionHandle, IsRefusedWhenNull) { refuses(nullptr); }

TEST_P(EventFunctionHandle, IsRefusedWhenItNamesNothing)
{
    refuses(this);
    refuses(all_ones<EVENT_HANDLE>());
}

TEST_P(EventFunctionHandle, IsRefusedWhenOfAnotherKind)
{
    for (const EVENT_HANDLE handle : {tl, iface, dev, port, ds, buffers[0]->handle})
        refuses(handle);
}

TEST_P(EventFunctionHandle, IsRefusedAfterUnregistering)
{
    unregister();
    refuses(event);
}

TEST_P(EventFunctionHandle, IsRefusedAfterDSClose)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    refuses(event);
}

TEST_P(EventFunctionHandle, IsRefusedAfterDevClose)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DevClose(dev));
    refuses(event);
}

TEST_P(EventFunctionHandle, IsRefusedAfterIFClose)
{
    ASSERT_EQ(GC_ERR_SUCCESS, IFClose(iface));
    refuses(event);
}

TEST_P(EventFunctionHandle, IsRefusedAfterTLClose)
{
    ASSERT_EQ(GC_ERR_SUCCESS, TLClose(tl));
    refuses(event);
    TL_HANDLE again = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, TLOpen(&again));
    refuses(event);
}

TEST_P(EventFunctionHandle, IsRefusedAfterTheDeviceListWasRebuilt)
{
    fake.grabber(0).has_cameras(2);
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    refuses(event);
}

TEST_P(EventFunctionHandle, IsFoundOnAStreamOfALaterDevice)
{
    fake.grabber(0).has_cameras(2);
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    ds = open_stream(open_device(iface, "Device01"), "Stream010");
    EVENT_HANDLE remote = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &remote));
    register_event();
    const GC_ERROR code = function.call(event);
    EXPECT_TRUE(code == GC_ERR_SUCCESS || code == GC_ERR_TIMEOUT) << code;
    EXPECT_NOT_LOGGED(std::string(function.name) + " - GC_ERR_INVALID_HANDLE");
}

TEST_P(EventFunctionHandle, RecordsNoLastErrorWhenRefused)
{
    const std::string before = last_error();
    function.call(nullptr);
    EXPECT_EQ(before, last_error());
}

class EventFunctionBeforeInitialisation : public Library,
                                          public testing::WithParamInterface<EventFunction> {};

INSTANTIATE_TEST_SUITE_P(Functions, EventFunctionBeforeInitialisation, testing::ValuesIn(event_functions),
                         name_of_function);

TEST_P(EventFunctionBeforeInitialisation, IsRefused)
{
    const EventFunction function = GetParam();
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, function.call(this));
    Lines lines = function.entered(this);
    lines.push_back({Priority::error, "No preceding call to GCInitLib", function.name, "ZVGRLibGenTL"});
    EXPECT_TRUE(logged_exactly(lines));
}

TEST_P(EventFunctionBeforeInitialisation, IsRefusedAfterGCCloseLib)
{
    ASSERT_EQ(GC_ERR_SUCCESS, GCInitLib());
    ASSERT_EQ(GC_ERR_SUCCESS, GCCloseLib());
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GetParam().call(this));
}

class OpenLibraryWithoutSystem : public OpenLibrary, public testing::WithParamInterface<EventFunction> {};

INSTANTIATE_TEST_SUITE_P(Functions, OpenLibraryWithoutSystem, testing::ValuesIn(event_functions),
                         name_of_function);

TEST_P(OpenLibraryWithoutSystem, HasNoEvents)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GetParam().call(this));
    EXPECT_LOGGED(Priority::error, std::string(GetParam().name) + " - GC_ERR_INVALID_HANDLE");
}

} // namespace

} // namespace zvtest
