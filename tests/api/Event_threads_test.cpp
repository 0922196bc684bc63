#include <atomic>
#include <future>
#include <thread>
#include <vector>

#include "api/Event_fixtures.h"

// Events with consumers, frames and control calls on several threads. Every test ends in whatever order the
// threads run; a wake-up that gets lost shows as a test that does not end.

namespace zvtest {

namespace {

using Thread = std::future<GC_ERROR>;

template <class Condition>
void wait_until(Condition condition)
{
    while (!condition())
        std::this_thread::yield();
}

class EventThreads : public EventStream {};

TEST_F(EventThreads, NoFrameIsLostToAConsumerThatKeepsUp)
{
    constexpr uint64_t frames = 3000;
    log.set_level(Priority::warning);
    std::thread library([this] {
        for (uint64_t i = 0; i < frames; ++i)
            deliver(*buffers[i % 3]);
    });
    for (uint64_t i = 0; i < frames; ++i)
        EXPECT_EQ(GC_ERR_SUCCESS, take(GENTL_INFINITE).code);
    library.join();
    EXPECT_EQ(frames, fired());
    EXPECT_EQ(0U, in_queue());
}

// A waiter that is woken for a kill that another one saw comes back with a time-out and waits again.
TEST_F(EventThreads, AKillEndsOneOfSeveralWaiters)
{
    constexpr int waiters = 3;
    std::atomic<int> aborted{0};
    std::vector<std::thread> threads;
    threads.reserve(waiters);
    for (int i = 0; i < waiters; ++i) {
        threads.emplace_back([&] {
            while (take(GENTL_INFINITE).code != GC_ERR_ABORT) {
            }
            ++aborted;
        });
    }
    for (int kills = 1; kills <= waiters; ++kills) {
        kill();
        wait_until([&] { return aborted == kills; });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(GC_ERR_TIMEOUT, take().code); // no kill is left over
}

TEST_F(EventThreads, AnAbortMeetsAFrame)
{
    for (int round = 0; round < 50; ++round) {
        kill();
        std::thread library([this] { deliver(*buffers[0]); });
        EXPECT_EQ(GC_ERR_ABORT, take(GENTL_INFINITE).code);
        library.join();
        flush();
        take();
    }
}

// Who takes an entry resets the signal, and must not swallow that of the close for those who wait.
TEST_F(EventThreads, UnregisteringWakesWaitersAlthoughOthersResetTheSignal)
{
    log.set_level(Priority::warning);
    for (int round = 0; round < 100; ++round) {
        std::atomic<bool> stopped{false};
        std::atomic<int> calls{0};
        const auto take_until_the_end = [&](uint64_t timeout) {
            GC_ERROR code = GC_ERR_SUCCESS;
            for (; code == GC_ERR_SUCCESS || code == GC_ERR_TIMEOUT; ++calls)
                code = take(timeout).code;
            return code;
        };
        std::vector<Thread> consumers;
        consumers.reserve(4);
        for (int i = 0; i < 3; ++i)
            consumers.push_back(std::async(std::launch::async, take_until_the_end, GENTL_INFINITE));
        consumers.push_back(std::async(std::launch::async, take_until_the_end, 0));
        std::thread library([&] {
            while (!stopped)
                deliver(*buffers[0]);
        });
        wait_until([&] { return calls >= 20; });
        EXPECT_EQ(GC_ERR_SUCCESS, unregister());
        for (Thread& consumer : consumers) {
            const GC_ERROR code = consumer.get(); // the handle of a call made too late names nothing
            EXPECT_TRUE(code == GC_ERR_ABORT || code == GC_ERR_INVALID_HANDLE) << code;
        }
        stopped = true;
        library.join();
        register_event();
    }
}

class PollingEventThreads : public PollingEventStream {
protected:
    /// Starts EventGetData on a thread and returns once it is past its handle check.
    Thread take_on_a_thread(uint64_t timeout = GENTL_INFINITE)
    {
        const size_t entered = calls_entered();
        Thread thread = std::async(std::launch::async, [this, timeout] { return take(timeout).code; });
        wait_until([&] { return calls_entered() > entered; });
        return thread;
    }

private:
    /// How many calls of EventGetData logged their enter line.
    static size_t calls_entered()
    {
        size_t count = 0;
        for (const std::string& message : logged_messages())
            count += message.rfind("Enter EventGetData", 0) == 0 ? 1 : 0;
        return count;
    }
};

TEST_F(PollingEventThreads, SeeAFrameWithoutLimit)
{
    Thread poller = take_on_a_thread();
    EXPECT_EQ(std::future_status::timeout, poller.wait_for(std::chrono::milliseconds(20)));
    deliver(*buffers[0]);
    EXPECT_EQ(GC_ERR_SUCCESS, poller.get());
}

TEST_F(PollingEventThreads, SeeAKill)
{
    Thread poller = take_on_a_thread();
    kill();
    EXPECT_EQ(GC_ERR_ABORT, poller.get());
}

TEST_F(PollingEventThreads, DoNotSeeThatTheEventIsGone)
{
    Thread first = take_on_a_thread(50);
    EXPECT_EQ(GC_ERR_SUCCESS, unregister());
    EXPECT_EQ(GC_ERR_TIMEOUT, first.get());
    register_event();
    Thread second = take_on_a_thread(50);
    EXPECT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    EXPECT_EQ(GC_ERR_TIMEOUT, second.get());
}

} // namespace

} // namespace zvtest
