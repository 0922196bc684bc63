#include "api/Event_fixtures.h"

// How loud EventGetData is: its enter and exit lines, and the lines that come once per process.

namespace zvtest {

namespace {

class EventGetDataLines : public EventStream {
protected:
    /// Delivers and takes one frame and expects the lines of the call.
    void expect_lines(Priority priority)
    {
        deliver(*buffers[0]);
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, take().code);
        EXPECT_LOG_LINES(enter_line(0, priority), exit_line(*buffers[0], priority));
        forget();
    }

    void ask_for_a_too_small_record()
    {
        EVENT_NEW_BUFFER_DATA data;
        size_t size = 1;
        get_data(&data, &size);
    }
};

TEST_F(EventGetDataLines, AreDebugOnceThenTraceInEachAcquisition)
{
    for (int acquisition = 0; acquisition < 2; ++acquisition) {
        expect_lines(Priority::debug);
        expect_lines(Priority::trace);
        expect_lines(Priority::trace);
        stop();
        forget();
        take();
        EXPECT_LOG_LINES(enter_line(0));
        start();
    }
}

TEST_F(EventGetDataLines, StayDebugUntilAnExitLine)
{
    take();
    kill();
    take();
    discard();
    ask_for_a_too_small_record();
    expect_lines(Priority::debug);
}

TEST_F(EventGetDataLines, KeepTheirLevelOnlyForWhatIsNotPerFrame)
{
    expect_lines(Priority::debug);
    take();
    discard();
    EXPECT_LOG_LINES(enter_line(0, Priority::trace), enter_line(0, Priority::trace), discarded);
    ask_for_a_too_small_record();
    EXPECT_TRUE(logged(too_small));
}

TEST_F(EventGetDataLines, AreThrottledPerStreamNotPerEvent)
{
    expect_lines(Priority::debug);
    unregister();
    register_event();
    expect_lines(Priority::trace);
}

/// Each of these tests runs in a process of its own.
class EventGetDataOncePerProcess : public QueuedStream {
protected:
    void SetUp() override
    {
        QueuedStream::SetUp();
        if (HasFatalFailure())
            return;
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

TEST_F(EventGetDataOncePerProcess, LogsTheFirstTimeoutAndTheFirstAbort)
{
    EXPECT_EQ(GC_ERR_TIMEOUT, take(3).code);
    EXPECT_LOG_LINES(enter_line(3), wait_timed_out(3), no_data);
    EventKill(event);
    forget();
    EXPECT_EQ(GC_ERR_ABORT, take().code);
    EXPECT_LOG_LINES(enter_line(0), aborted);

    ASSERT_EQ(GC_ERR_SUCCESS, GCCloseLib());
    buffers.clear();
    SetUp();
    EXPECT_EQ(GC_ERR_TIMEOUT, take().code);
    EXPECT_LOG_LINES(enter_line(0));
    EventKill(event);
    forget();
    EXPECT_EQ(GC_ERR_ABORT, take().code);
    EXPECT_LOG_LINES(enter_line(0));
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

} // namespace

} // namespace zvtest
