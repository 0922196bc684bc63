#include <csignal>
#include <cstdlib>
#include <future>

#include <gtest/gtest.h>

#include "platform/Interrupt.h"

namespace zvgentl::test {

using platform::Interrupt;

TEST(Interrupt, RunsTheActionOnEachKindOfRequest)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        Interrupt interrupt;
        std::promise<bool> seen;
        const Interrupt::Action action(interrupt, [&] { seen.set_value(interrupt.requested()); });
        std::raise(signal);
        EXPECT_TRUE(seen.get_future().get()) << signal;
        EXPECT_EQ(128 + signal, interrupt.exit_code());
    }
}

TEST(Interrupt, RunsALateActionAtOnce)
{
    Interrupt interrupt;
    std::promise<void> requested;
    {
        const Interrupt::Action action(interrupt, [&] { requested.set_value(); });
        std::raise(SIGINT);
        requested.get_future().get();
    }
    bool ran = false;
    const Interrupt::Action late(interrupt, [&] { ran = true; });
    EXPECT_TRUE(ran);
}

TEST(Interrupt, LeavesASignalAloneThatIsIgnored)
{
    auto* const previous = std::signal(SIGHUP, SIG_IGN);
    {
        Interrupt interrupt;
        std::promise<void> requested;
        const Interrupt::Action action(interrupt, [&] { requested.set_value(); });
        std::raise(SIGHUP);
        EXPECT_FALSE(interrupt.requested());
        std::raise(SIGINT); // only this one gets through
        requested.get_future().get();
    }
    std::signal(SIGHUP, previous);
}

TEST(Interrupt, PutsTheHandlersBack)
{
    auto* const previous = std::signal(SIGTERM, SIG_DFL);
    {
        const Interrupt interrupt;
        EXPECT_FALSE(interrupt.requested()) << "by itself";
    }
    EXPECT_EQ(SIG_DFL, std::signal(SIGTERM, previous));
}

TEST(InterruptDeathTest, EndsAtTheSecondRequest)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            Interrupt interrupt;
            std::raise(SIGINT);
            std::raise(SIGTERM);
            for (;;)
                std::promise<void>().get_future().wait(); // only the watcher can end this
        },
        testing::ExitedWithCode(143), "");
}

} // namespace zvgentl::test
