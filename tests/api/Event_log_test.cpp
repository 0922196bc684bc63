#include "Event_fixtures.h"

// How loud EventGetData is: its enter and exit lines, and the lines that come once per process.

namespace zvtest {

namespace {

class EventGetDataLines : public EventStream {
protected:
    /// Delivers and takes one frame; what that logged is left in the record.
    void take_one()
    {
        deliver(*buffers[0]);
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, take().code);
    }

    testing::AssertionResult are(Priority enter, Priority exit)
    {
        return logged_exactly({enter_line(0, enter), exit_line(*buffers[0], exit)});
    }
};

TEST_F(EventGetDataLines, AreDebugOnceThenTraceInAnAcquisition)
{
    take_one();
    EXPECT_TRUE(are(Priority::debug, Priority::debug));
    for (int i = 0; i < 3; ++i) {
        take_one();
        EXPECT_TRUE(are(Priority::trace, Priority::trace));
    }
}

TEST_F(EventGetDataLines, StayDebugUntilAnExitLine)
{
    take();
    kill();
    take();
    discard();
    EVENT_NEW_BUFFER_DATA data;
    size_t size = 1;
    get_data(&data, &size);
    take_one();
    EXPECT_TRUE(are(Priority::debug, Priority::debug));
}

TEST_F(EventGetDataLines, HideTheEnterLinesOfFailingCallsToo)
{
    take_one();
    forget();
    take();
    EXPECT_LOG_LINES(enter_line(0, Priority::trace));
}

TEST_F(EventGetDataLines, KeepTheirLevelForWhatIsNotPerFrame)
{
    take_one();
    forget();
    discard();
    EXPECT_LOG_LINES(enter_line(0, Priority::trace),
                     {Priority::debug, "EventGetData, pBuffer is NULL, discard next event"});
    forget();
    EVENT_NEW_BUFFER_DATA data;
    size_t size = 1;
    get_data(&data, &size);
    EXPECT_LOGGED(Priority::debug, "EventGetData - GC_ERR_BUFFER_TOO_SMALL, wanted size=16");
}

TEST_F(EventGetDataLines, AreThrottledPerStreamNotPerEvent)
{
    take_one();
    unregister();
    register_event();
    take_one();
    EXPECT_TRUE(are(Priority::trace, Priority::trace));
}

/// Each of these tests runs in a process of its own.
class EventGetDataOncePerProcess : public QueuedStream {
protected:
    void SetUp() override
    {
        QueuedStream::SetUp();
        if (!HasFatalFailure())
            prepare();
    }

    void prepare()
    {
        queue(announce());
        register_event();
        start();
        forget();
    }

    ExpectedLine enter_line(int timeout) const
    {
        return {Priority::debug, "Enter EventGetData, handle=0x" + low_hex(event) +
                                     ", buffer size=16, timeout=" + std::to_string(timeout) + " ms"};
    }

    static ExpectedLine wait_timed_out(int timeout)
    {
        return {Priority::error, "Event wait timeout with error=0x102 for timeout=" + std::to_string(timeout),
                "EventModule::get_event_data", "EventModule"};
    }
    const ExpectedLine no_data{Priority::error, "Timeout has passed but no data has arrive during this time",
                               "EventGetData", "ZVGRLibGenTL"};
    const ExpectedLine aborted{Priority::error, "EventGetData GC_ERR_ABORT", "EventGetData", "ZVGRLibGenTL"};
};

TEST_F(EventGetDataOncePerProcess, LogsTheFirstTimeout)
{
    EXPECT_EQ(GC_ERR_TIMEOUT, take(3).code);
    EXPECT_LOG_LINES(enter_line(3), wait_timed_out(3), no_data);
    forget();
    EXPECT_EQ(GC_ERR_TIMEOUT, take(3).code);
    EXPECT_LOG_LINES(enter_line(3));
}

TEST_F(EventGetDataOncePerProcess, LogsTheFirstAbort)
{
    for (int i = 0; i < 2; ++i) {
        EventKill(event);
        forget();
        EXPECT_EQ(GC_ERR_ABORT, take().code);
        if (i == 0)
            EXPECT_LOG_LINES(enter_line(0), aborted);
        else
            EXPECT_LOG_LINES(enter_line(0));
    }
}

TEST_F(EventGetDataOncePerProcess, LogsTheFirstWakeUpWithoutDataApartFromTheFirstTimeout)
{
    deliver(*buffers[0]);
    EventFlush(event);
    forget();
    EXPECT_EQ(GC_ERR_TIMEOUT, take(GENTL_INFINITE).code);
    EXPECT_LOG_LINES(enter_line(-1), no_data);
    forget();
    EXPECT_EQ(GC_ERR_TIMEOUT, take(0).code);
    EXPECT_LOG_LINES(enter_line(0), wait_timed_out(0));
}

TEST_F(EventGetDataOncePerProcess, RemembersAcrossReopening)
{
    EXPECT_EQ(GC_ERR_TIMEOUT, take().code);
    EventKill(event);
    EXPECT_EQ(GC_ERR_ABORT, take().code);
    ASSERT_EQ(GC_ERR_SUCCESS, GCCloseLib());
    buffers.clear();
    SetUp();
    EXPECT_EQ(GC_ERR_TIMEOUT, take().code);
    EventKill(event);
    EXPECT_EQ(GC_ERR_ABORT, take().code);
    EXPECT_NOT_LOGGED(wait_timed_out(0).message);
    EXPECT_NOT_LOGGED(no_data.message);
    EXPECT_NOT_LOGGED(aborted.message);
}

} // namespace

} // namespace zvtest
