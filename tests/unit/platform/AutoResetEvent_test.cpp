#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/AutoResetEvent.h"
#include "platform/process.h"
#include "support/FailingAllocations.h"

using platform::AutoResetEvent;
using platform::monotonic_milliseconds;
using platform::wait_forever;
using platform::WaitResult;

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
        std::thread waiter([&] { result = event.wait(limit); });
        event.set();
        waiter.join();
        EXPECT_EQ(WaitResult::signalled, result);
    }
}

// Each signal is answered before the next is given, so none can collapse: as many waits end as signals came.
TEST(AutoResetEvent, ReleasesOneWaiterPerSignal)
{
    constexpr int waiters = 4;
    constexpr int signals = 400;
    AutoResetEvent event;
    AutoResetEvent answer;
    std::atomic<int> woken{0};
    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    threads.reserve(waiters);
    for (int i = 0; i < waiters; ++i) {
        threads.emplace_back([&] {
            while (event.wait(wait_forever) == WaitResult::signalled && !done) {
                ++woken;
                answer.set();
            }
            answer.set();
        });
    }
    for (int i = 0; i < signals; ++i) {
        event.set();
        ASSERT_EQ(WaitResult::signalled, answer.wait(wait_forever));
        ASSERT_EQ(i + 1, woken.load());
    }
    done = true;
    for (int i = 0; i < waiters; ++i) {
        event.set();
        ASSERT_EQ(WaitResult::signalled, answer.wait(wait_forever));
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(signals, woken.load());
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
