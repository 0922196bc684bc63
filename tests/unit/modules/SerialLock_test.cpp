#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "modules/SerialLock.h"

using zvgentl::SerialLock;

namespace {

/// Runs `work` on `count` threads at once and waits for all of them.
template <class Work>
void run_on_threads(int count, Work work)
{
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    threads.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&] {
            ++ready;
            while (ready < count)
                std::this_thread::yield();
            work();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace

TEST(SerialLock, CanBeTakenAgainAfterItsRelease)
{
    SerialLock lock(SerialLock::Serialise::yes);
    for (int i = 0; i < 3; ++i)
        const std::lock_guard guard(lock);
}

TEST(SerialLock, LetsOneThreadInAtATime)
{
    SerialLock lock(SerialLock::Serialise::yes);
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    int plain = 0; // no atomic: the lock alone orders its changes
    run_on_threads(8, [&] {
        for (int i = 0; i < 2000; ++i) {
            const std::lock_guard guard(lock);
            if (++inside > most)
                most = inside.load();
            ++plain;
            --inside;
        }
    });
    EXPECT_EQ(1, most);
    EXPECT_EQ(16000, plain);
}

TEST(SerialLock, MakesAnotherThreadWait)
{
    SerialLock lock(SerialLock::Serialise::yes);
    int written = 0;
    lock.lock();
    std::thread other([&] {
        const std::lock_guard guard(lock);
        EXPECT_EQ(1, written);
    });
    written = 1;
    lock.unlock();
    other.join();
}

// Each round ends only if every waiter is woken, one release at a time. A wake-up that gets lost hangs here.
TEST(SerialLock, WakesEveryWaiter)
{
    constexpr int rounds = 300;
    constexpr int waiters = 5;
    SerialLock lock(SerialLock::Serialise::yes);
    for (int round = 0; round < rounds; ++round) {
        std::atomic<int> started{0};
        int passed = 0;
        lock.lock();
        std::vector<std::thread> threads;
        threads.reserve(waiters);
        for (int i = 0; i < waiters; ++i) {
            threads.emplace_back([&] {
                ++started;
                const std::lock_guard guard(lock);
                ++passed;
            });
        }
        while (started < waiters)
            std::this_thread::yield();
        lock.unlock();
        for (std::thread& thread : threads)
            thread.join();
        ASSERT_EQ(waiters, passed);
    }
}

// Two threads that hand the lock to and fro are where a release and the start of a wait cross most often.
TEST(SerialLock, LosesNoWakeUpBetweenTwoThreads)
{
    SerialLock lock(SerialLock::Serialise::yes);
    int plain = 0;
    run_on_threads(2, [&] {
        for (int i = 0; i < 20000; ++i) {
            lock.lock();
            ++plain;
            lock.unlock();
        }
    });
    EXPECT_EQ(40000, plain);
}

TEST(UnserialisedSerialLock, HoldsNothing)
{
    SerialLock lock(SerialLock::Serialise::no);
    lock.lock();
    lock.lock(); // would never return if the lock were held
    lock.unlock();
    lock.lock();
    lock.unlock();
    lock.unlock();
}

TEST(UnserialisedSerialLock, LetsEveryThreadInAtOnce)
{
    constexpr int threads = 4;
    SerialLock lock(SerialLock::Serialise::no);
    std::atomic<int> inside{0};
    run_on_threads(threads, [&] {
        const std::lock_guard guard(lock);
        ++inside;
        while (inside < threads) // ends only when all are inside together
            std::this_thread::yield();
    });
    EXPECT_EQ(threads, inside);
}

TEST(UnserialisedSerialLock, NeverBlocksManyThreads)
{
    SerialLock lock(SerialLock::Serialise::no);
    std::atomic<int> passed{0};
    run_on_threads(8, [&] {
        for (int i = 0; i < 5000; ++i) {
            const std::lock_guard guard(lock);
            ++passed;
        }
    });
    EXPECT_EQ(40000, passed);
}
