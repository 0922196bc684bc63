#include "Event_fixtures.h"

namespace zvtest {

namespace {

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
    EXPECT_EQ(buffers[1]->handle, take().data.BufferHandle);
}

TEST_F(EventKill, LeavesTheDroppedBufferInTheOutputQueue)
{
    deliver(*buffers[0]);
    kill();
    take();
    EXPECT_EQ(1U, awaiting());
}

TEST_F(EventKill, AbortsOneCall)
{
    kill();
    EXPECT_EQ(GC_ERR_ABORT, take(GENTL_INFINITE).code);
    EXPECT_EQ(GC_ERR_TIMEOUT, take().code);
}

TEST_F(EventKill, AbortsOneCallForSeveralKills)
{
    kill();
    kill();
    EXPECT_EQ(GC_ERR_ABORT, take().code);
    EXPECT_EQ(GC_ERR_TIMEOUT, take().code);
}

TEST_F(EventKill, LeavesNoSignalOnceItWasSeen)
{
    kill();
    take();
    EXPECT_GE(milliseconds_of([&] { EXPECT_EQ(GC_ERR_TIMEOUT, take(30).code); }), 30);
}

TEST_F(EventKill, IsSeenAfterAFlush)
{
    deliver(*buffers[0]);
    kill();
    flush();
    EXPECT_EQ(GC_ERR_ABORT, take().code);
}

TEST_F(EventKill, IsSilentInTheAbortedCall)
{
    kill();
    forget();
    take();
    EXPECT_LOG_LINES(enter_line(0));
}

TEST_F(EventKill, LogsItsHandle)
{
    kill();
    EXPECT_LOG_LINES({Priority::information, "Enter EventKill, event handle=0x" + hex16(event), "EventKill",
                      "ZVGRLibGenTL"},
                     {Priority::information, "Exit EventKill", "EventKill", "ZVGRLibGenTL"});
    EXPECT_TRUE(fake.calls().empty());
}

class EventFlush : public EventStream {};

TEST_F(EventFlush, DropsEveryEntry)
{
    deliver_buffers(3);
    EXPECT_EQ(GC_ERR_SUCCESS, flush());
    EXPECT_EQ(0U, in_queue());
    EXPECT_EQ(3U, fired());
}

TEST_F(EventFlush, SucceedsOnAnEmptyQueue) { EXPECT_EQ(GC_ERR_SUCCESS, flush()); }

TEST_F(EventFlush, LeavesTheSignal)
{
    deliver(*buffers[0]);
    flush();
    EXPECT_EQ(GC_ERR_TIMEOUT, take(GENTL_INFINITE).code);
    // That call used the signal up.
    EXPECT_GE(milliseconds_of([&] { EXPECT_EQ(GC_ERR_TIMEOUT, take(30).code); }), 30);
}

TEST_F(EventFlush, LeavesBuffersInTheOutputQueue)
{
    deliver_buffers(2);
    flush();
    EXPECT_EQ(2U, awaiting());
}

TEST_F(EventFlush, LetsLaterFramesThrough)
{
    deliver(*buffers[0]);
    flush();
    deliver(*buffers[1]);
    EXPECT_EQ(buffers[1]->handle, take().data.BufferHandle);
}

TEST_F(EventFlush, LogsEnterAndExit)
{
    flush();
    EXPECT_LOG_LINES({Priority::information, "Enter EventFlush", "EventFlush", "ZVGRLibGenTL"},
                     {Priority::information, "Exit EventFlush", "EventFlush", "ZVGRLibGenTL"});
    EXPECT_TRUE(fake.calls().empty());
}

} // namespace

} // namespace zvtest
