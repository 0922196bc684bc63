#include <chrono>
#include <cstdint>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "platform/process.h"

using platform::monotonic_milliseconds;
using platform::thread_id;

TEST(ThreadId, IsTheSameWithinAThread) { EXPECT_EQ(thread_id(), thread_id()); }

TEST(ThreadId, DiffersBetweenThreads)
{
    uint32_t other = thread_id();
    std::thread([&] { other = thread_id(); }).join();
    EXPECT_NE(thread_id(), other);
    EXPECT_NE(0U, other);
}

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

// Linked into this program, the code was loaded from it.
TEST(ModulePath, IsTheFullPathOfTheFileThatHoldsTheCode)
{
    const auto path = platform::module_path();
    ASSERT_TRUE(path.has_value());
    EXPECT_TRUE(std::filesystem::path(*path).is_absolute());
    EXPECT_TRUE(std::filesystem::is_regular_file(*path));
    EXPECT_EQ("unit_producer", std::filesystem::path(*path).stem());
}

TEST(ModulePath, IsTheSameAtEveryQuestion) { EXPECT_EQ(platform::module_path(), platform::module_path()); }
