#include <string>
#include <tuple>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "system/fixture.h"

// A process that ends while it acquires ends cleanly: no callback arrives in a library that is gone.

using namespace zvsystem;

namespace {

class ExitWhileAcquiring : public testing::TestWithParam<std::tuple<Mode, const char*>> {};

std::string name_of(const testing::TestParamInfo<std::tuple<Mode, const char*>>& info)
{
    return testing::PrintToString(std::get<0>(info.param)) + "_" + std::get<1>(info.param);
}

INSTANTIATE_TEST_SUITE_P(, ExitWhileAcquiring,
                         testing::Combine(both_modes,
                                          testing::Values("return", "exit", "exit_on_another_thread",
                                                          "quick_exit", "waiter")),
                         name_of);
#ifndef ZV_SANITIZED // a child lacks the threads that hold some of the memory, which then counts as lost
INSTANTIATE_TEST_SUITE_P(InAChild, ExitWhileAcquiring,
                         testing::Combine(both_modes, testing::Values("exit_of_a_child")), name_of);
#endif

TEST_P(ExitWhileAcquiring, IsClean)
{
    surroundings_in(std::get<0>(GetParam()));
    std::string program = ZV_EXIT_CHILD;
    std::string way = std::get<1>(GetParam());
    char* arguments[] = {program.data(), way.data(), nullptr};
    pid_t child = 0;
    ASSERT_EQ(0, posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ));
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0)); // one that hangs runs into the time limit of the whole test
    ASSERT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
    EXPECT_EQ(0, WEXITSTATUS(status));
}

} // namespace
