#include <chrono>

#include <gtest/gtest.h>

#include "platform/monotonic_clock.h"

using platform::monotonic_milliseconds;

TEST(MonotonicClock, NeverGoesBack)
{
    uint64_t last = monotonic_milliseconds();
    for (int i = 0; i < 100000; ++i) {
        const uint64_t now = monotonic_milliseconds();
        ASSERT_GE(now, last);
        last = now;
    }
}

// The clock's readings lie between two readings of the reference, each rounded down to a millisecond.
TEST(MonotonicClock, CountsMilliseconds)
{
    using namespace std::chrono;
    const uint64_t start = monotonic_milliseconds();
    const auto inner_start = steady_clock::now();
    while (steady_clock::now() - inner_start < milliseconds(20)) {
    }
    const uint64_t end = monotonic_milliseconds();
    EXPECT_GE(end - start, 19U);
}
