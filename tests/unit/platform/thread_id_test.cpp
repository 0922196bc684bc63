#include <thread>

#include <gtest/gtest.h>

#include "platform/process.h"

using platform::thread_id;

TEST(ThreadId, IsTheSameWithinAThread) { EXPECT_EQ(thread_id(), thread_id()); }

TEST(ThreadId, DiffersBetweenThreads)
{
    uint32_t other = thread_id();
    std::thread([&] { other = thread_id(); }).join();
    EXPECT_NE(thread_id(), other);
    EXPECT_NE(0U, other);
}
