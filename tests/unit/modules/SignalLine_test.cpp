#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "modules/ShortLock.h"
#include "modules/SignalLine.h"
#include "platform/process.h"
#include "support/process/SleepingThread.h"

using platform::monotonic_milliseconds;
using platform::wait_forever;
using platform::WaitResult;
using zvgentl::ShortLock;
using zvgentl::SignalLine;
using zvtest::SleepingThread;

namespace {

/// A line with its lock, as its owners use it.
class Signal {
public:
    void set()
    {
        release([this] { return m_line.set(); });
    }
    void close()
    {
        release([this] { return m_line.close(); });
    }
    void reset()
    {
        const ShortLock::Held held{m_lock};
        m_line.reset();
    }
    WaitResult wait(uint32_t milliseconds) { return m_line.wait(m_lock, milliseconds); }

private:
    template <class Set>
    void release(Set set)
    {
        auto released = [&] {
            const ShortLock::Held held{m_lock};
            return set();
        }();
        released.release();
    }

    ShortLock m_lock;
    SignalLine m_line;
};

} // namespace

TEST(SignalLineThreads, GivesOneWaitTheSignalsThatNobodyTook)
{
    Signal event;
    EXPECT_EQ(WaitResult::timed_out, event.wait(0));
    for (const int signals : {1, 2}) {
        for (int i = 0; i < signals; ++i)
            event.set();
        EXPECT_EQ(WaitResult::signalled, event.wait(0));
        EXPECT_EQ(WaitResult::timed_out, event.wait(0));
    }
}

TEST(SignalLineThreads, ForgetsASignalWhenReset)
{
    Signal event;
    event.set();
    event.reset();
    EXPECT_EQ(WaitResult::timed_out, event.wait(0));
    event.reset();
    event.set();
    EXPECT_EQ(WaitResult::signalled, event.wait(0));
}

TEST(SignalLineThreads, WaitsOutItsTimeout)
{
    Signal event;
    const uint64_t start = monotonic_milliseconds();
    EXPECT_EQ(WaitResult::timed_out, event.wait(30));
    EXPECT_GE(monotonic_milliseconds() - start, 29U); // two clock readings round by up to one millisecond
}

TEST(SignalLineThreads, TakesALongFiniteTimeoutAsItIs)
{
    Signal event;
    event.set();
    EXPECT_EQ(WaitResult::signalled, event.wait(wait_forever - 1));
}

TEST(SignalLineThreads, WakesAWaiterWithAndWithoutLimit)
{
    for (const uint32_t limit : {uint32_t{3600 * 1000}, wait_forever}) {
        Signal event;
        WaitResult result = WaitResult::timed_out;
        SleepingThread waiter{[&] { result = event.wait(limit); }};
        event.set();
        waiter.join();
        EXPECT_EQ(WaitResult::signalled, result);
    }
}

TEST(SignalLineThreads, ReleasesOneWaiterPerSignalWhetherOrNotItHasRunYet)
{
    for (int round = 0; round < 200; ++round) {
        Signal event;
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

TEST(SignalLineThreads, LeavesASignalWithTheWaiterThatItReleased)
{
    for (int round = 0; round < 200; ++round) {
        Signal event;
        WaitResult result = WaitResult::timed_out;
        SleepingThread waiter{[&] { result = event.wait(wait_forever); }};
        event.set();
        event.reset();
        EXPECT_EQ(WaitResult::timed_out, event.wait(0)) << "a later wait does not take it either";
        waiter.join();
        EXPECT_EQ(WaitResult::signalled, result);
    }
}

TEST(SignalLineThreads, ForgetsAWaiterThatGaveUp)
{
    Signal event;
    WaitResult result = WaitResult::timed_out;
    SleepingThread longer{[&] { result = event.wait(wait_forever); }};
    EXPECT_EQ(WaitResult::timed_out, event.wait(1));
    event.set();
    longer.join();
    EXPECT_EQ(WaitResult::signalled, result);
    EXPECT_EQ(WaitResult::timed_out, event.wait(1));
    event.set();
    EXPECT_EQ(WaitResult::signalled, event.wait(0));
}

TEST(SignalLineThreads, ReleasesTheOneThatWaitsLongest)
{
    Signal event;
    const auto wait = [&] { event.wait(wait_forever); };
    SleepingThread first{wait};
    SleepingThread second{wait};
    SleepingThread third{wait};
    for (SleepingThread* const next : {&first, &second, &third}) {
        event.set();
        next->join();
    }
    EXPECT_EQ(WaitResult::timed_out, event.wait(0));
}

TEST(SignalLineThreads, KeepsTheOrderOfTheOthersWhenOneGivesUp)
{
    for (const bool is_last : {false, true}) {
        Signal event;
        const auto wait = [&] { event.wait(wait_forever); };
        SleepingThread first{wait};
        std::thread impatient{[&] { EXPECT_EQ(WaitResult::timed_out, event.wait(1)); }};
        if (is_last)
            impatient.join();
        SleepingThread second{wait};
        if (!is_last)
            impatient.join();
        event.set();
        first.join();
        event.set();
        second.join();
        EXPECT_EQ(WaitResult::timed_out, event.wait(0));
    }
}

// Whoever wins, the signal is there once: with the waiter, or for the next.
TEST(SignalLineThreads, GivesASignalAtTheTimeoutToTheWaiterOrToTheNext)
{
    for (int round = 0; round < 500; ++round) {
        Signal event;
        std::atomic<bool> is_started{false};
        WaitResult result = WaitResult::timed_out;
        std::thread waiter{[&] {
            is_started = true;
            result = event.wait(1);
        }};
        while (!is_started)
            std::this_thread::yield();
        const uint64_t start = monotonic_milliseconds();
        while (monotonic_milliseconds() - start < 1)
            std::this_thread::yield();
        event.set();
        waiter.join();
        const WaitResult left = event.wait(0);
        if (result == WaitResult::signalled)
            ASSERT_EQ(WaitResult::timed_out, left) << "one signal, two waits";
        else
            ASSERT_EQ(WaitResult::signalled, left) << "the signal went to a wait that timed out";
    }
}

namespace {

/// Things to do, announced by signals. Who finds more than one passes the signal on, because signals that
/// nobody has taken are one.
class Work {
public:
    void add()
    {
        m_open.fetch_add(1);
        signal();
    }
    void finish()
    {
        m_is_finished = true;
        signal();
    }
    /// Until finish(): some waits are limited, some are not.
    void run(bool is_limited)
    {
        while (true) {
            if (m_event.wait(is_limited ? 1 : wait_forever) == WaitResult::signalled)
                ++m_released;
            else if (!is_limited)
                return;
            int open = m_open.load();
            while (open != 0 && !m_open.compare_exchange_weak(open, open - 1)) {
            }
            if (open != 0)
                ++m_done;
            if (open > 1 || m_is_finished)
                signal();
            if (open == 0 && m_is_finished)
                return;
        }
    }

    int done() const { return m_done; }
    int released() const { return m_released; }
    int signals() const { return m_signals; }

private:
    void signal()
    {
        ++m_signals;
        m_event.set();
    }

    Signal m_event;
    std::atomic<int> m_open{0};
    std::atomic<bool> m_is_finished{false};
    std::atomic<int> m_done{0};
    std::atomic<int> m_released{0};
    std::atomic<int> m_signals{0};
};

} // namespace

TEST(SignalLineThreads, LosesNoSignalAndMakesNoneUpAmongManyThreads)
{
    constexpr int each = 5000;
    Work work;
    std::vector<std::thread> waiters;
    for (const bool is_limited : {false, true, false, true})
        waiters.emplace_back([&work, is_limited] { work.run(is_limited); });
    std::vector<std::thread> givers;
    for (int i = 0; i < 2; ++i) {
        givers.emplace_back([&work] {
            for (int j = 0; j < each; ++j) {
                work.add();
                if (j % 3 == 0)
                    std::this_thread::yield();
            }
        });
    }
    for (std::thread& giver : givers)
        giver.join();
    work.finish();
    for (std::thread& waiter : waiters)
        waiter.join();
    EXPECT_EQ(2 * each, work.done());
    EXPECT_LE(work.released(), work.signals());
}

// The one that a signal releases may be the last that uses the event.
TEST(SignalLineThreads, MayBeDestroyedByTheWaiterThatItReleased)
{
    for (int round = 0; round < 1000; ++round) {
        auto event = std::make_unique<Signal>();
        Signal& given = *event;
        std::thread waiter{[owned = std::move(event)]() mutable {
            owned->wait(wait_forever);
            owned.reset();
        }};
        if (round % 2 == 0)
            std::this_thread::yield();
        given.set();
        waiter.join();
    }
}

TEST(SignalLineThreads, ReleasesEveryoneNowAndLaterWhenItIsClosed)
{
    Signal event;
    std::atomic<int> released{0};
    const auto wait = [&] { released += event.wait(wait_forever) == WaitResult::signalled ? 1 : 0; };
    SleepingThread first{wait};
    SleepingThread second{wait};
    event.close();
    first.join();
    second.join();
    EXPECT_EQ(2, released);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(WaitResult::signalled, event.wait(wait_forever));
    event.reset();
    EXPECT_EQ(WaitResult::signalled, event.wait(0));
}

TEST(WaitResult, HasTheNumbersOfTheSystemThatLogsWereWrittenForFirst)
{
    EXPECT_EQ(0U, static_cast<uint32_t>(WaitResult::signalled));
    EXPECT_EQ(0x102U, static_cast<uint32_t>(WaitResult::timed_out));
}
