#include <mutex>

#include <gtest/gtest.h>

#include "modules/ShortLock.h"
#include "support/on_threads.h"
#include "support/process/SleepingThread.h"

namespace zvtest {

namespace {

using zvgentl::ShortLock;

TEST(ShortLockThreads, LetsOneThreadInAtATime)
{
    ShortLock lock;
    int count = 0;
    on_threads([&](int) {
        for (int i = 0; i < 10000; ++i) {
            const ShortLock::Held held{lock};
            ++count;
        }
    });
    EXPECT_EQ(40000, count);
}

TEST(ShortLockThreads, PutsAThreadToSleepWhoseHolderIsAway)
{
    ShortLock lock;
    bool is_in = false;
    std::unique_lock held{lock};
    SleepingThread waiter{[&] {
        const ShortLock::Held own{lock};
        is_in = true;
    }};
    EXPECT_FALSE(is_in) << "it has been asleep by now, and spins no more";
    held.unlock();
    waiter.join();
    EXPECT_TRUE(is_in);
}

} // namespace

} // namespace zvtest
