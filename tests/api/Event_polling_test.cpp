#include <chrono>

#include "api/Event_fixtures.h"

// EventGetData with the setting that makes it poll instead of waiting for a signal.

namespace zvtest {

namespace {

class PollingEventGetData : public PollingEventStream {
protected:
    const ExpectedLine too_late{
        Priority::debug,
        "EventGetData - GC_ERR_TIMEOUT, event was signaled but no data can be retreived after timeout",
        "EventGetData", "ZVGRLibGenTL"};
    const ExpectedLine aborted{Priority::debug, "EventGetData GC_ERR_ABORT", "EventGetData", "ZVGRLibGenTL"};
};

TEST_F(PollingEventGetData, TakesAnEntry)
{
    deliver_buffers(2);
    forget();
    const Taken taken = take(GENTL_INFINITE);
    EXPECT_EQ(GC_ERR_SUCCESS, taken.code);
    EXPECT_EQ(buffers[0]->handle, taken.data.BufferHandle);
    EXPECT_EQ(buffers[0]->user, taken.data.pUserPointer);
    EXPECT_EQ(16U, taken.size);
    EXPECT_LOG_LINES(enter_line(-1), exit_line(*buffers[0]));
    EXPECT_EQ(buffers[1]->handle, take(3600 * 1000).data.BufferHandle);
}

TEST_F(PollingEventGetData, LosesALateEntry)
{
    deliver(*buffers[0]);
    forget();
    EVENT_NEW_BUFFER_DATA data;
    size_t size = 100;
    EXPECT_EQ(GC_ERR_TIMEOUT, get_data(&data, &size, 0));
    EXPECT_EQ(buffers[0]->handle, data.BufferHandle);
    EXPECT_EQ(buffers[0]->user, data.pUserPointer);
    EXPECT_EQ(100U, size);
    EXPECT_LOG_LINES(enter_line(0, Priority::debug, 100), too_late);
    EXPECT_EQ(0U, in_queue());
    EXPECT_EQ(1U, awaiting());
}

TEST_F(PollingEventGetData, TimesOutOnAnEmptyQueue)
{
    for (int i = 0; i < 2; ++i) { // and logs it every time
        forget();
        const Taken taken = take();
        EXPECT_EQ(GC_ERR_TIMEOUT, taken.code);
        EXPECT_TRUE(is_untouched(taken.data));
        EXPECT_EQ(16U, taken.size);
        EXPECT_LOG_LINES(enter_line(0), too_late);
    }
}

TEST_F(PollingEventGetData, PollsUntilItsTimeoutDespiteASignalWithoutAnEntry)
{
    deliver(*buffers[0]);
    flush();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(GC_ERR_TIMEOUT, take(30).code);
    // The producer's readings of the clock are whole milliseconds.
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(29));
}

TEST_F(PollingEventGetData, TakesEntriesThatWereNotSignalled)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_INPUT_TO_OUTPUT));
    EXPECT_EQ(buffers[0]->handle, take(GENTL_INFINITE).data.BufferHandle);
}

TEST_F(PollingEventGetData, LooksForAKillFirstAndKeepsItsEntries)
{
    for (const uint64_t timeout : {uint64_t{GENTL_INFINITE}, uint64_t{0}}) {
        deliver(*buffers[0]);
        kill();
        forget();
        const Taken taken = take(timeout);
        EXPECT_EQ(GC_ERR_ABORT, taken.code);
        EXPECT_TRUE(is_untouched(taken.data));
        EXPECT_LOG_LINES(enter_line(static_cast<int>(timeout)), aborted);
        EXPECT_EQ(1U, in_queue());
        flush();
    }
}

} // namespace

} // namespace zvtest
