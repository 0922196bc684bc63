#include <atomic>
#include <memory>

#include <gtest/gtest.h>

#include "platform/AutoResetEvent.h"
#include "platform/process.h"
#include "support/FailingAllocations.h"
#include "support/process/SleepingThread.h"

using platform::AutoResetEvent;
using platform::monotonic_milliseconds;
using platform::wait_forever;
using platform::WaitResult;
using zvtest::SleepingThread;

TEST(AutoResetEvent, GivesOneWaitTheSignalsThatNobodyTook)
{
    AutoResetEvent event;
    EXPECT_EQ(WaitResult::timed_out, event.wait(0));
    for (const int signals : {1, 2}) {
        for (int i = 0; i < signals; ++i)
            event.set();
        EXPECT_EQ(WaitResult::signalled, event.wait(0));
        EXPECT_EQ(WaitResult::timed_out, event.wait(0));
    }
}

TEST(AutoResetEvent, ForgetsASignalWhenReset)
{
    AutoResetEvent event;
    event.set();
    event.reset();
    EXPECT_EQ(WaitResult::timed_out, event.wait(0));
    event.reset();
    event.set();
    EXPECT_EQ(WaitResult::signalled, event.wait(0));
}

TEST(AutoResetEvent, WaitsOutItsTimeout)
{
    AutoResetEvent event;
    const uint64_t start = monotonic_milliseconds();
    EXPECT_EQ(WaitResult::timed_out, event.wait(30));
    EXPECT_GE(monotonic_milliseconds() - start, 29U); // two clock readings round by up to one millisecond
}

TEST(AutoResetEvent, TakesALongFiniteTimeoutAsItIs)
{
    AutoResetEvent event;
    event.set();
    EXPECT_EQ(WaitResult::signalled, event.wait(wait_forever - 1));
}

TEST(AutoResetEvent, WakesAWaiterWithAndWithoutLimit)
{
    for (const uint32_t limit : {uint32_t{3600 * 1000}, wait_forever}) {
        AutoResetEvent event;
        WaitResult result = WaitResult::failed;
        SleepingThread waiter{[&] { result = event.wait(limit); }};
        event.set();
        waiter.join();
        EXPECT_EQ(WaitResult::signalled, result);
    }
}

TEST(AutoResetEvent, ReleasesOneWaiterPerSignalWhetherOrNotItHasRunYet)
{
    for (int round = 0; round < 200; ++round) {
        AutoResetEvent event;
        std::atomic<int> released{0};
        const auto wait = [&] { released += event.wait(wait_forever) == WaitResult::signalled ? 1 : 0; };
        SleepingThread first{wait};
        SleepingThread second{wait};
        SleepingThread third{wait};
        event.set();
        event.set();
        event.set();
        first.join();
        second.join();
        third.join();
        EXPECT_EQ(3, released);
        EXPECT_EQ(WaitResult::timed_out, event.wait(0)) << "no signal is left";
    }
}

TEST(AutoResetEvent, LeavesASignalWithTheWaiterThatItReleased)
{
    for (int round = 0; round < 200; ++round) {
        AutoResetEvent event;
        WaitResult result = WaitResult::failed;
        SleepingThread waiter{[&] { result = event.wait(wait_forever); }};
        event.set();
        event.reset();
        EXPECT_EQ(WaitResult::timed_out, event.wait(0)) << "a later wait does not take it either";
        waiter.join();
        EXPECT_EQ(WaitResult::signalled, result);
    }
}

TEST(AutoResetEvent, ForgetsAWaiterThatGaveUp)
{
    AutoResetEvent event;
    WaitResult result = WaitResult::failed;
    SleepingThread longer{[&] { result = event.wait(wait_forever); }};
    EXPECT_EQ(WaitResult::timed_out, event.wait(1));
    event.set();
    longer.join();
    EXPECT_EQ(WaitResult::signalled, result);
    EXPECT_EQ(WaitResult::timed_out, event.wait(1));
    event.set();
    EXPECT_EQ(WaitResult::signalled, event.wait(0));
}

TEST(AutoResetEvent, FailsEveryWaitWhenTheSystemRefusedIt)
{
    std::unique_ptr<AutoResetEvent> event;
    {
        const auto faults = zvtest::FailingAllocations::nth(2); // the object itself, then what it owns
        event = std::make_unique<AutoResetEvent>();
        ASSERT_TRUE(faults.struck());
    }
    event->set();
    EXPECT_EQ(WaitResult::failed, event->wait(0));
    event->reset();
    EXPECT_EQ(WaitResult::failed, event->wait(wait_forever));
}

TEST(WaitResult, HasTheNumbersOfTheSystemThatLogsWereWrittenForFirst)
{
    EXPECT_EQ(0U, static_cast<uint32_t>(WaitResult::signalled));
    EXPECT_EQ(0x102U, static_cast<uint32_t>(WaitResult::timed_out));
    EXPECT_EQ(0xFFFFFFFFU, static_cast<uint32_t>(WaitResult::failed));
}
