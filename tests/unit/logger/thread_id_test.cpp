#include <gtest/gtest.h>

#include "platform/process.h"

#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>

TEST(ThreadId, IsThatOfTheNewProcessAfterAFork)
{
    const auto before = platform::thread_id();
    const pid_t child = fork();
    if (child == 0) // its only thread has the number of the process
        _exit(platform::thread_id() == static_cast<uint32_t>(getpid()) ? 0 : 1);
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_EQ(before, platform::thread_id());
}
#endif
