#include <chrono>
#include <cstdint>

#include <gtest/gtest.h>

#include "platform/process.h"

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

// A clock that can be set would be somewhere else: the reference cannot.
TEST(MonotonicClock, CountsTheMillisecondsOfTheSteadyClock)
{
    using namespace std::chrono;
    const auto reference = [] {
        return static_cast<uint64_t>(
            duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
    };
    const uint64_t start = reference();
    for (uint64_t before = start; before - start < 20; before = reference()) {
        const uint64_t now = monotonic_milliseconds();
        ASSERT_LE(before, now);
        ASSERT_GE(reference(), now);
    }
}
