#include <functional>
#include <utility>
#include <vector>

#include "Event_fixtures.h"
#include "support/FailingAllocations.h"

namespace zvtest {

namespace {

/// A stream with a buffer, no event.
class EventSource : public QueuedStream {
protected:
    void SetUp() override
    {
        QueuedStream::SetUp();
        if (HasFatalFailure())
            return;
        announce();
        forget();
    }

    /// GCRegisterEvent on the stream; the handle lands in `event`.
    GC_ERROR add(EVENT_TYPE type = EVENT_NEW_BUFFER) { return GenTL::GCRegisterEvent(ds, type, &event); }
    GC_ERROR remove(EVENTSRC_HANDLE source, EVENT_TYPE type = EVENT_NEW_BUFFER)
    {
        return GenTL::GCUnregisterEvent(source, type);
    }

    struct Kind {
        EVENTSRC_HANDLE handle;
        const char* name;
    };
    /// Every kind of open module but the stream.
    std::vector<Kind> other_kinds() const
    {
        return {{tl, "TLSystem"},
                {iface, "TLInterface"},
                {dev, "TLDevice"},
                {port, "Device"},
                {buffers[0]->handle, "TLBuffer"}};
    }
    /// Handles that name nothing.
    std::vector<EVENTSRC_HANDLE> strangers() { return {&m_stranger, all_ones<EVENTSRC_HANDLE>()}; }

private:
    int m_stranger{0};
};

class GCRegisterEvent : public EventSource {
protected:
    static ExpectedLine enter_line(EVENTSRC_HANDLE source, EVENT_TYPE type)
    {
        return {Priority::information,
                "Enter GCRegisterEvent, source handle=0x" + hex16(source) +
                    ", event type=" + std::to_string(type),
                "GCRegisterEvent", "ZVGRLibGenTL"};
    }
    ExpectedLine exit_line() const
    {
        return {Priority::information, "Exit GCRegisterEvent, handle=0x" + low_hex(event), "GCRegisterEvent",
                "ZVGRLibGenTL"};
    }
};

class GCUnregisterEvent : public EventSource {
protected:
    static ExpectedLine enter_line(EVENTSRC_HANDLE source, EVENT_TYPE type)
    {
        return {Priority::information,
                "Enter GCUnregisterEvent, source handle=0x" + hex16(source) +
                    ", event id= " + std::to_string(type),
                "GCUnregisterEvent", "ZVGRLibGenTL"};
    }
};

constexpr EVENT_TYPE types_that_do_not_exist[] = {
    EVENT_ERROR, EVENT_FEATURE_INVALIDATE, EVENT_FEATURE_CHANGE, EVENT_MODULE, EVENT_CUSTOM_ID, -1};

TEST_F(GCRegisterEvent, GivesAHandle)
{
    event = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, add());
    EXPECT_NE(nullptr, event);
    EXPECT_LOG_LINES(enter_line(ds, 1), exit_line());
    EXPECT_EQ(EVENT_NEW_BUFFER, event_info<int32_t>(EVENT_EVENT_TYPE).value);
}

TEST_F(GCRegisterEvent, GivesARemoteDeviceEvent)
{
    EXPECT_EQ(GC_ERR_SUCCESS, add(EVENT_REMOTE_DEVICE));
    EXPECT_NE(nullptr, event);
    EXPECT_LOG_LINES(enter_line(ds, 4), exit_line());
    EXPECT_EQ(EVENT_REMOTE_DEVICE, event_info<int32_t>(EVENT_EVENT_TYPE).value);
}

TEST_F(GCRegisterEvent, GivesEachTypeItsOwnEvent)
{
    EVENT_HANDLE remote = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &remote));
    EXPECT_EQ(GC_ERR_SUCCESS, add());
    EXPECT_NE(remote, event);
    EXPECT_EQ(EVENT_NEW_BUFFER, event_info<int32_t>(EVENT_EVENT_TYPE).value);
}

TEST_F(GCRegisterEvent, StartsWithAnEmptyEvent)
{
    add();
    EXPECT_EQ(0U, event_info<size_t>(EVENT_NUM_IN_QUEUE).value);
    EXPECT_EQ(0U, event_info<uint64_t>(EVENT_NUM_FIRED).value);
    EXPECT_EQ(GC_ERR_TIMEOUT, take().code);
}

TEST_F(GCRegisterEvent, MakesNoCallOfTheLibrary)
{
    add();
    add(EVENT_REMOTE_DEVICE);
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(GCRegisterEvent, ReadsItsSettingOncePerEvent)
{
    const SettingsRead expected = plain_read("GenTL.Event.SerializeStreamEvent", 1);
    add();
    EXPECT_EQ(std::vector<SettingsRead>{expected}, settings.reads());
    add(EVENT_REMOTE_DEVICE);
    EXPECT_EQ((std::vector<SettingsRead>{expected, expected}), settings.reads());
}

TEST_F(GCRegisterEvent, ReadsNoSettingForAnEventThatExists)
{
    add();
    forget();
    add();
    EXPECT_TRUE(settings.reads().empty());
}

TEST_F(GCRegisterEvent, GivesTheEventThatExists)
{
    add();
    const EVENT_HANDLE first = std::exchange(event, nullptr);
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, add());
    EXPECT_EQ(first, event);
    EXPECT_LOG_LINES(
        enter_line(ds, 1),
        {Priority::warning,
         "GCRegisterEvent GC_ERR_RESOURCE_IN_USE - event was already set for handle=TLDataStream",
         "GCRegisterEvent", "ZVGRLibGenTL"});
}

TEST_F(GCRegisterEvent, GivesTheRemoteDeviceEventThatExistsLessLoudly)
{
    add(EVENT_REMOTE_DEVICE);
    const EVENT_HANDLE first = std::exchange(event, nullptr);
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, add(EVENT_REMOTE_DEVICE));
    EXPECT_EQ(first, event);
    EXPECT_LOG_LINES(
        enter_line(ds, 4),
        {Priority::information,
         "GCRegisterEvent GC_ERR_RESOURCE_IN_USE - event was already set for handle=TLDataStream",
         "GCRegisterEvent", "ZVGRLibGenTL"});
}

TEST_F(GCRegisterEvent, RegisteringAgainKeepsTheEntries)
{
    queue(*buffers[0]);
    add();
    start();
    deliver(*buffers[0]);
    EXPECT_EQ(GC_ERR_SUCCESS, add());
    EXPECT_EQ(buffers[0]->handle, take().data.BufferHandle);
}

TEST_F(GCRegisterEvent, RefusesTypesThatDoNotExist)
{
    for (const EVENT_TYPE type : types_that_do_not_exist) {
        SCOPED_TRACE(type);
        event = untouched<EVENT_HANDLE>();
        forget();
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, add(type));
        EXPECT_EQ(nullptr, event);
        EXPECT_LOG_LINES(enter_line(ds, type),
                         {Priority::error, "handle=TLDataStream", "GCRegisterEvent", "ZVGRLibGenTL"},
                         error_exit("GCRegisterEvent", "GC_ERR_NOT_IMPLEMENTED", -1003));
    }
    EXPECT_TRUE(settings.reads().empty());
}

TEST_F(GCRegisterEvent, RefusesANullSourceBeforeItLooksAtTheOutput)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCRegisterEvent(nullptr, EVENT_NEW_BUFFER, nullptr));
    EXPECT_LOG_LINES(enter_line(nullptr, 1));
}

TEST_F(GCRegisterEvent, LeavesTheOutputOfANullSourceAlone)
{
    auto handle = untouched<EVENT_HANDLE>();
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCRegisterEvent(nullptr, EVENT_NEW_BUFFER, &handle));
    EXPECT_TRUE(is_untouched(handle));
}

TEST_F(GCRegisterEvent, RefusesAMissingOutputBeforeItLooksAtTheHandle)
{
    for (EVENT_HANDLE* const missing : {static_cast<EVENT_HANDLE*>(nullptr), all_ones<EVENT_HANDLE*>()}) {
        for (const EVENTSRC_HANDLE source : {ds, static_cast<EVENTSRC_HANDLE>(this)}) {
            forget();
            EXPECT_EQ(GC_ERR_INVALID_PARAMETER, GenTL::GCRegisterEvent(source, EVENT_NEW_BUFFER, missing));
            EXPECT_LOG_LINES(enter_line(source, 1),
                             error_exit("GCRegisterEvent", "GC_ERR_INVALID_PARAMETER", -1009));
        }
    }
}

TEST_F(GCRegisterEvent, RefusesEveryKindButTheStream)
{
    for (const Kind& kind : other_kinds()) {
        SCOPED_TRACE(kind.name);
        auto handle = untouched<EVENT_HANDLE>();
        forget();
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCRegisterEvent(kind.handle, EVENT_NEW_BUFFER, &handle));
        EXPECT_TRUE(is_untouched(handle));
        EXPECT_LOG_LINES(enter_line(kind.handle, 1),
                         {Priority::error, std::string("Request not implemented for handle=") + kind.name,
                          "GCRegisterEvent", "ZVGRLibGenTL"},
                         error_exit("GCRegisterEvent", "GC_ERR_INVALID_HANDLE", -1006));
    }
}

TEST_F(GCRegisterEvent, RefusesHandlesThatNameNothing)
{
    for (const EVENTSRC_HANDLE stranger : strangers()) {
        auto handle = untouched<EVENT_HANDLE>();
        forget();
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCRegisterEvent(stranger, EVENT_NEW_BUFFER, &handle));
        EXPECT_TRUE(is_untouched(handle));
        EXPECT_LOG_LINES(enter_line(stranger, 1),
                         {Priority::error, "Request not implemented for handle=Invalid handle"},
                         error_exit("GCRegisterEvent", "GC_ERR_INVALID_HANDLE", -1006));
    }
}

TEST_F(GCRegisterEvent, RefusesAClosedStream)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    forget();
    auto handle = untouched<EVENT_HANDLE>();
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCRegisterEvent(ds, EVENT_NEW_BUFFER, &handle));
    EXPECT_TRUE(is_untouched(handle));
    EXPECT_LOG_LINES(enter_line(ds, 1),
                     {Priority::error, "Request not implemented for handle=Invalid handle"},
                     error_exit("GCRegisterEvent", "GC_ERR_INVALID_HANDLE", -1006));
}

TEST_F(GCRegisterEvent, JudgesTheKindBeforeTheType)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCRegisterEvent(tl, EVENT_MODULE, &event));
}

TEST_F(GCRegisterEvent, GivesAnotherHandleAfterTheStreamWasClosed)
{
    add();
    const EVENT_HANDLE first = event;
    ASSERT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    ds = open_stream(dev, "Stream000");
    EXPECT_EQ(GC_ERR_SUCCESS, add());
    EXPECT_NE(first, event);
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, EventFlush(first));
}

TEST_F(GCRegisterEvent, RecordsNoLastError)
{
    const std::string before = last_error();
    GenTL::GCRegisterEvent(tl, EVENT_NEW_BUFFER, &event);
    GenTL::GCRegisterEvent(ds, EVENT_NEW_BUFFER, nullptr);
    add(EVENT_MODULE);
    EXPECT_EQ(before, last_error());
}

// The queue that an event makes room for is the only large block that a registration asks for.
constexpr size_t size_of_a_queue = 2000;

TEST_F(GCRegisterEvent, AnswersThatThereIsNoMemory)
{
    event = untouched<EVENT_HANDLE>();
    GC_ERROR code = GC_ERR_SUCCESS;
    bool struck = false;
    {
        const auto faults = FailingAllocations::of_at_least(size_of_a_queue);
        code = add();
        struck = faults.struck();
    }
    EXPECT_TRUE(struck);
    EXPECT_EQ(GC_ERR_NOT_AVAILABLE, code);
    EXPECT_EQ(nullptr, event);
    EXPECT_LOG_LINES(
        enter_line(ds, 1),
        {Priority::error,
         "GCRegisterEvent GC_ERR_NOT_AVAILABLE - wasn't able to set event for handle=TLDataStream",
         "GCRegisterEvent", "ZVGRLibGenTL"},
        error_exit("GCRegisterEvent", "GC_ERR_NOT_AVAILABLE", -1014));
}

TEST_F(GCRegisterEvent, AnswersThatThereIsNoMemoryForARemoteDeviceEventLessLoudly)
{
    event = untouched<EVENT_HANDLE>();
    GC_ERROR code = GC_ERR_SUCCESS;
    {
        const auto faults = FailingAllocations::of_at_least(size_of_a_queue);
        code = add(EVENT_REMOTE_DEVICE);
    }
    EXPECT_EQ(GC_ERR_NOT_AVAILABLE, code);
    EXPECT_EQ(nullptr, event);
    EXPECT_LOG_LINES(
        enter_line(ds, 4),
        {Priority::information,
         "GCRegisterEvent GC_ERR_NOT_AVAILABLE - wasn't able to set event for handle=TLDataStream",
         "GCRegisterEvent", "ZVGRLibGenTL"});
}

TEST_F(GCRegisterEvent, WorksAgainOnceThereIsMemory)
{
    {
        const auto faults = FailingAllocations::of_at_least(size_of_a_queue);
        EXPECT_EQ(GC_ERR_NOT_AVAILABLE, add());
    }
    // What failed is skipped by every search through the stream's events.
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, EventFlush(ds));
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, remove(ds));
    EXPECT_EQ(GC_ERR_SUCCESS, add());
    EXPECT_EQ(GC_ERR_TIMEOUT, take().code);
}

TEST_F(GCRegisterEvent, SurvivesEveryFailureOfMemory)
{
    log.set_level(Priority::fatal); // lines ask for memory too
    for (long n = 1;; ++n) {
        SCOPED_TRACE(n);
        GC_ERROR code = GC_ERR_SUCCESS;
        bool struck = false;
        {
            const auto faults = FailingAllocations::nth(n);
            code = add();
            struck = faults.struck();
        }
        if (code != GC_ERR_SUCCESS) {
            EXPECT_EQ(GC_ERR_NOT_AVAILABLE, code);
            EXPECT_EQ(nullptr, event);
            continue;
        }
        EXPECT_EQ(GC_ERR_TIMEOUT, take().code);
        EXPECT_EQ(GC_ERR_SUCCESS, remove(ds));
        if (!struck)
            break;
    }
}

TEST_F(GCUnregisterEvent, TakesTheEventAway)
{
    add();
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, remove(ds));
    EXPECT_LOG_LINES(enter_line(ds, 1),
                     {Priority::information, "Exit GCUnregisterEvent", "GCUnregisterEvent", "ZVGRLibGenTL"});
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, EventFlush(event));
}

TEST_F(GCUnregisterEvent, MakesNoCallOfTheLibrary)
{
    add();
    remove(ds);
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(GCUnregisterEvent, OfNothing)
{
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, remove(ds));
    EXPECT_LOG_LINES(enter_line(ds, 1));
}

TEST_F(GCUnregisterEvent, FindsNothingTheSecondTime)
{
    add();
    remove(ds);
    forget();
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, remove(ds));
    EXPECT_LOG_LINES(enter_line(ds, 1));
}

TEST_F(GCUnregisterEvent, MakesRoomForAFreshEvent)
{
    add();
    queue(*buffers[0]);
    start();
    deliver(*buffers[0]);
    const EVENT_HANDLE first = event;
    remove(ds);
    EXPECT_EQ(GC_ERR_SUCCESS, add());
    EXPECT_NE(first, event);
    EXPECT_EQ(0U, event_info<size_t>(EVENT_NUM_IN_QUEUE).value);
    EXPECT_EQ(0U, event_info<uint64_t>(EVENT_NUM_FIRED).value);
}

TEST_F(GCUnregisterEvent, LeavesQueuedBuffersInTheOutputQueue)
{
    add();
    queue(*buffers[0]);
    start();
    deliver(*buffers[0]);
    remove(ds);
    EXPECT_EQ(1U, stream_info<size_t>(STREAM_INFO_NUM_AWAIT_DELIVERY).value);
}

TEST_F(GCUnregisterEvent, LetsFramesArriveUntold)
{
    add();
    remove(ds);
    queue(*buffers[0]);
    start();
    deliver(*buffers[0]);
    EXPECT_EQ(1U, stream_info<uint64_t>(STREAM_INFO_NUM_DELIVERED).value);
}

TEST_F(GCUnregisterEvent, KeepsARemoteDeviceEvent)
{
    add(EVENT_REMOTE_DEVICE);
    forget();
    EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, remove(ds, EVENT_REMOTE_DEVICE));
    EXPECT_LOG_LINES(enter_line(ds, 4),
                     {Priority::error, "handle=TLDataStream", "GCUnregisterEvent", "ZVGRLibGenTL"},
                     error_exit("GCUnregisterEvent", "GC_ERR_NOT_IMPLEMENTED", -1003));
    EXPECT_EQ(GC_ERR_SUCCESS, EventFlush(event));
}

TEST_F(GCUnregisterEvent, LeavesTheOtherTypeAlone)
{
    EVENT_HANDLE remote = nullptr;
    GenTL::GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &remote);
    add();
    EXPECT_EQ(GC_ERR_SUCCESS, remove(ds));
    EXPECT_EQ(GC_ERR_SUCCESS, EventFlush(remote));
}

TEST_F(GCUnregisterEvent, RefusesOtherTypesWithTheNameOfTheKind)
{
    std::vector<Kind> kinds = other_kinds();
    kinds.push_back({ds, "TLDataStream"});
    for (const Kind& kind : kinds) {
        for (const EVENT_TYPE type : types_that_do_not_exist) {
            SCOPED_TRACE(std::string(kind.name) + " " + std::to_string(type));
            forget();
            EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, remove(kind.handle, type));
            EXPECT_LOG_LINES(enter_line(kind.handle, type),
                             {Priority::error, std::string("handle=") + kind.name, "GCUnregisterEvent"},
                             error_exit("GCUnregisterEvent", "GC_ERR_NOT_IMPLEMENTED", -1003));
        }
    }
}

TEST_F(GCUnregisterEvent, RefusesEveryKindButTheStreamSilently)
{
    for (const Kind& kind : other_kinds()) {
        SCOPED_TRACE(kind.name);
        forget();
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, remove(kind.handle));
        EXPECT_LOG_LINES(enter_line(kind.handle, 1));
    }
}

TEST_F(GCUnregisterEvent, RefusesHandlesThatNameNothingSilently)
{
    std::vector<EVENTSRC_HANDLE> handles = strangers();
    handles.push_back(nullptr);
    for (const EVENTSRC_HANDLE stranger : handles) {
        for (const EVENT_TYPE type : {EVENT_NEW_BUFFER, EVENT_REMOTE_DEVICE}) {
            forget();
            EXPECT_EQ(GC_ERR_INVALID_HANDLE, remove(stranger, type));
            EXPECT_LOG_LINES(enter_line(stranger, type));
        }
    }
}

TEST_F(GCUnregisterEvent, RefusesAClosedStreamSilently)
{
    add();
    ASSERT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    forget();
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, remove(ds));
    EXPECT_LOG_LINES(enter_line(ds, 1));
}

class RegistrationBeforeInitialisation : public Library {};

TEST_F(RegistrationBeforeInitialisation, RefusesToRegister)
{
    auto handle = untouched<EVENT_HANDLE>();
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GenTL::GCRegisterEvent(nullptr, EVENT_NEW_BUFFER, &handle));
    EXPECT_TRUE(is_untouched(handle));
    EXPECT_LOG_LINES(
        {Priority::information, "Enter GCRegisterEvent, source handle=0x0000000000000000, event type=1"},
        {Priority::error, "No preceding call to GCInitLib", "GCRegisterEvent", "ZVGRLibGenTL"});
}

TEST_F(RegistrationBeforeInitialisation, RefusesToUnregister)
{
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GenTL::GCUnregisterEvent(nullptr, EVENT_NEW_BUFFER));
    EXPECT_LOG_LINES(
        {Priority::information, "Enter GCUnregisterEvent, source handle=0x0000000000000000, event id= 1"},
        {Priority::error, "No preceding call to GCInitLib", "GCUnregisterEvent", "ZVGRLibGenTL"});
}

} // namespace

} // namespace zvtest
