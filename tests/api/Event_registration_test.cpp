#include <utility>
#include <vector>

#include "api/lines.h"
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
    static GC_ERROR remove(EVENTSRC_HANDLE source, EVENT_TYPE type = EVENT_NEW_BUFFER)
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
};

/// A type that exists, and how loud its lines are about events that exist and memory that does not.
struct TypeRow {
    EVENT_TYPE type;
    Priority existing;
    Priority no_memory;
    bool has_exit_line;
};

constexpr TypeRow types[] = {
    {EVENT_NEW_BUFFER, Priority::warning, Priority::error, true},
    {EVENT_REMOTE_DEVICE, Priority::information, Priority::information, false}, // less loud
};

constexpr EVENT_TYPE types_that_do_not_exist[] = {
    EVENT_ERROR, EVENT_FEATURE_INVALIDATE, EVENT_FEATURE_CHANGE, EVENT_MODULE, EVENT_CUSTOM_ID, -1};

class GCRegisterEvent : public EventSource {
protected:
    static ExpectedLine line(Priority priority, const std::string& message)
    {
        return {priority, message, "GCRegisterEvent", "ZVGRLibGenTL"};
    }
    static ExpectedLine enter_line(EVENTSRC_HANDLE source, EVENT_TYPE type)
    {
        return line(Priority::information, "Enter GCRegisterEvent, source handle=0x" + hex16(source) +
                                               ", event type=" + std::to_string(type));
    }
};

TEST_F(GCRegisterEvent, GivesANewEventOfItsTypeOrTheOneThatExists)
{
    for (const TypeRow& row : types) {
        SCOPED_TRACE(row.type);
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, add(row.type));
        EXPECT_TRUE(fake.calls().empty());
        EXPECT_EQ((std::vector<SettingsRead>{plain_read("GenTL.Event.SerializeStreamEvent", 1)}),
                  settings.reads());
        EXPECT_LOG_LINES(enter_line(ds, row.type),
                         line(Priority::information, "Exit GCRegisterEvent, handle=0x" + low_hex(event)));
        EXPECT_EQ(row.type, event_info<int32_t>(EVENT_EVENT_TYPE).value);

        const EVENT_HANDLE first = std::exchange(event, nullptr);
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, add(row.type));
        EXPECT_EQ(first, event);
        EXPECT_LOG_LINES(
            enter_line(ds, row.type),
            line(row.existing,
                 "GCRegisterEvent GC_ERR_RESOURCE_IN_USE - event was already set for handle=TLDataStream"));
    }
}

TEST_F(GCRegisterEvent, RefusesTypesThatDoNotExist)
{
    const std::string before = last_error();
    for (const EVENT_TYPE type : types_that_do_not_exist) {
        SCOPED_TRACE(type);
        event = untouched<EVENT_HANDLE>();
        forget();
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, add(type));
        EXPECT_EQ(nullptr, event);
        EXPECT_LOG_LINES(enter_line(ds, type), line(Priority::error, "handle=TLDataStream"),
                         FAILED_WITH(GC_ERR_NOT_IMPLEMENTED));
    }
    EXPECT_TRUE(settings.reads().empty());
    EXPECT_EQ(before, last_error());
}

TEST_F(GCRegisterEvent, RefusesEveryKindButTheStreamWhateverTheType)
{
    const std::string before = last_error();
    for (const Kind& kind : other_kinds()) {
        for (const EVENT_TYPE type : {EVENT_NEW_BUFFER, EVENT_MODULE}) {
            SCOPED_TRACE(kind.name);
            auto handle = untouched<EVENT_HANDLE>();
            forget();
            EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCRegisterEvent(kind.handle, type, &handle));
            EXPECT_TRUE(is_untouched(handle));
            EXPECT_LOG_LINES(
                enter_line(kind.handle, type),
                line(Priority::error, std::string("Request not implemented for handle=") + kind.name),
                FAILED_WITH(GC_ERR_INVALID_HANDLE));
        }
    }
    EXPECT_EQ(before, last_error());
}

TEST_F(GCRegisterEvent, AnswersThatThereIsNoMemoryWhateverPartOfTheEventLacksIt)
{
    log.set_level(Priority::fatal); // lines are made of memory as well
    for (long nth = 1;; ++nth) {
        SCOPED_TRACE(nth);
        GC_ERROR code = GC_ERR_SUCCESS;
        bool struck = false;
        {
            const auto faults = FailingAllocations::nth(nth);
            code = add();
            struck = faults.struck();
        }
        if (!struck)
            break;
        EXPECT_EQ(GC_ERR_NOT_AVAILABLE, code);
        EXPECT_EQ(nullptr, event);
        EXPECT_EQ(GC_ERR_NOT_INITIALIZED, remove(ds));
    }
    EXPECT_EQ(GC_ERR_TIMEOUT, take().code) << "the one that was made can be waited for";
}

TEST_F(GCRegisterEvent, AnswersThatThereIsNoMemory)
{
    // The queue that an event makes room for is the only large block that a registration asks for.
    constexpr size_t size_of_a_queue = 2000;
    for (const TypeRow& row : types) {
        SCOPED_TRACE(row.type);
        event = untouched<EVENT_HANDLE>();
        forget();
        GC_ERROR code = GC_ERR_SUCCESS;
        bool struck = false;
        {
            const auto faults = FailingAllocations::of_at_least(size_of_a_queue);
            code = add(row.type);
            struck = faults.struck();
        }
        EXPECT_TRUE(struck);
        EXPECT_EQ(GC_ERR_NOT_AVAILABLE, code);
        EXPECT_EQ(nullptr, event);
        std::vector<ExpectedLine> lines{
            enter_line(ds, row.type),
            line(row.no_memory,
                 "GCRegisterEvent GC_ERR_NOT_AVAILABLE - wasn't able to set event for handle=TLDataStream")};
        if (row.has_exit_line)
            lines.push_back(FAILED_WITH(GC_ERR_NOT_AVAILABLE));
        EXPECT_TRUE(logged_exactly(lines));

        // What failed is skipped by every search through the stream's events.
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, EventFlush(ds));
        EXPECT_EQ(GC_ERR_SUCCESS, add(row.type));
        EXPECT_EQ(GC_ERR_SUCCESS, EventFlush(event));
    }
}

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

TEST_F(GCUnregisterEvent, TakesTheEventAway)
{
    add();
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, remove(ds));
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_LOG_LINES(enter_line(ds, 1),
                     {Priority::information, "Exit GCUnregisterEvent", "GCUnregisterEvent", "ZVGRLibGenTL"});
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, EventFlush(event));
}

TEST_F(GCUnregisterEvent, OfNothing)
{
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, remove(ds));
    EXPECT_LOG_LINES(enter_line(ds, 1));
}

TEST_F(GCUnregisterEvent, RefusesOtherTypesWithTheNameOfTheKind)
{
    add(EVENT_REMOTE_DEVICE);
    std::vector<Kind> kinds = other_kinds();
    kinds.push_back({ds, "TLDataStream"});
    std::vector<EVENT_TYPE> other_types(std::begin(types_that_do_not_exist),
                                        std::end(types_that_do_not_exist));
    other_types.push_back(EVENT_REMOTE_DEVICE);
    for (const Kind& kind : kinds) {
        for (const EVENT_TYPE type : other_types) {
            SCOPED_TRACE(std::string(kind.name) + " " + std::to_string(type));
            forget();
            EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, remove(kind.handle, type));
            EXPECT_LOG_LINES(enter_line(kind.handle, type),
                             {Priority::error, std::string("handle=") + kind.name, "GCUnregisterEvent"},
                             FAILED_WITH(GC_ERR_NOT_IMPLEMENTED));
        }
    }
    EXPECT_EQ(GC_ERR_SUCCESS, EventFlush(event)) << "the event of another type is gone";
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

TEST_F(GCUnregisterEvent, LooksForTheHandleBeforeItLooksAtTheType)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, remove(this, EVENT_REMOTE_DEVICE));
    EXPECT_LOG_LINES(enter_line(this, EVENT_REMOTE_DEVICE));
}

} // namespace

} // namespace zvtest
