#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "modules/SerialLock.h"
#include "support/on_threads.h"

using zvgentl::SerialLock;
using zvtest::on_threads;

TEST(SerialLock, LetsOneThreadInAtATime)
{
    SerialLock lock(SerialLock::Serialise::yes);
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    int plain = 0; // not atomic: only the lock orders its changes
    on_threads([&](int) {
        for (int i = 0; i < 10000; ++i) {
            const std::lock_guard guard(lock);
            if (++inside > most)
                most = inside.load();
            ++plain;
            --inside;
        }
    });
    EXPECT_EQ(1, most);
    EXPECT_EQ(40000, plain);
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

// With two threads that hand the lock back and forth, a release and the start of a wait cross most often.
TEST(SerialLock, LosesNoWakeUpBetweenTwoThreads)
{
    SerialLock lock(SerialLock::Serialise::yes);
    int plain = 0;
    const auto hand_over = [&] {
        for (int i = 0; i < 20000; ++i) {
            const std::lock_guard guard(lock);
            ++plain;
        }
    };
    std::thread other(hand_over);
    hand_over();
    other.join();
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
    SerialLock lock(SerialLock::Serialise::no);
    std::atomic<int> inside{0};
    on_threads([&](int) {
        const std::lock_guard guard(lock);
        ++inside;
        while (inside < 4) // ends only when all are inside together
            std::this_thread::yield();
    });
    EXPECT_EQ(4, inside);
}
