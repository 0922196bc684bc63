#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <string>

#include <gtest/gtest.h>

#include <windows.h>

#include "platform/Interrupt.h"

namespace zvgentl::test {

using platform::Interrupt;

namespace {

struct Event {
    const char* name;
    DWORD number;
    int exit_code;
};

/// What the console does when a key is pressed or its window closed: it starts a thread of the process in
/// this function of the system. Through the console itself an event would reach all programs that share it.
void send(DWORD event)
{
    auto* const routine =
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32"), "CtrlRoutine"));
    HANDLE const thread = CreateThread(nullptr, 0, reinterpret_cast<LPTHREAD_START_ROUTINE>(routine),
                                       reinterpret_cast<void*>(std::uintptr_t{event}), 0, nullptr);
    CloseHandle(thread);
}

[[noreturn]] void wait_to_be_ended()
{
    for (;;)
        std::promise<void>().get_future().wait();
}

/// The system lets nobody else handle these, or ends the process after them.
class InterruptDeathTest : public testing::TestWithParam<Event> {};

/// An orderly end: what runs when the window is closed, as the program does it.
[[noreturn]] void end_in_order_after(DWORD event)
{
    int code = 0;
    {
        Interrupt interrupt;
        std::promise<void> requested;
        const Interrupt::Action action(interrupt, [&requested] { requested.set_value(); });
        send(event);
        requested.get_future().get();
        code = interrupt.exit_code();
    }
    std::fputs("in order", stderr);
    std::exit(Interrupt().requested() ? 1 : code);
}

[[noreturn]] void press_twice()
{
    Interrupt interrupt;
    send(CTRL_BREAK_EVENT);
    send(CTRL_BREAK_EVENT);
    wait_to_be_ended();
}

/// Wine ends interrupted programs with 0.
bool is_code_of_the_system(int code) { return code == static_cast<int>(STATUS_CONTROL_C_EXIT) || code == 0; }

[[noreturn]] void press_afterwards()
{
    {
        const Interrupt interrupt;
    }
    send(CTRL_BREAK_EVENT);
    wait_to_be_ended();
}

class InterruptByKey : public testing::TestWithParam<Event> {};

std::string name_of(const testing::TestParamInfo<Event>& event) { return event.param.name; }

} // namespace

TEST(Interrupt, IsNotRequestedByItself) { EXPECT_FALSE(Interrupt().requested()); }

TEST_P(InterruptByKey, RunsTheAction)
{
    for (int object = 0; object < 2; ++object) {
        Interrupt interrupt;
        std::promise<bool> seen;
        const Interrupt::Action action(interrupt, [&] { seen.set_value(interrupt.requested()); });
        send(GetParam().number);
        EXPECT_TRUE(seen.get_future().get());
    }
}

TEST_P(InterruptByKey, RunsALateActionAtOnce)
{
    Interrupt interrupt;
    std::promise<void> requested;
    {
        const Interrupt::Action action(interrupt, [&] { requested.set_value(); });
        send(GetParam().number);
        requested.get_future().get();
    }
    bool ran = false;
    const Interrupt::Action late(interrupt, [&] { ran = true; });
    EXPECT_TRUE(ran);
}

INSTANTIATE_TEST_SUITE_P(Keys, InterruptByKey,
                         testing::Values(Event{"CtrlC", CTRL_C_EVENT, 130},
                                         Event{"CtrlBreak", CTRL_BREAK_EVENT, 130}),
                         name_of);

TEST_P(InterruptDeathTest, LeavesTimeForAnOrderlyEnd)
{
    EXPECT_EXIT(end_in_order_after(GetParam().number), testing::ExitedWithCode(GetParam().exit_code),
                "in order");
}

INSTANTIATE_TEST_SUITE_P(Ends, InterruptDeathTest,
                         testing::Values(Event{"Close", CTRL_CLOSE_EVENT, 129},
                                         Event{"LogOff", CTRL_LOGOFF_EVENT, 143},
                                         Event{"ShutDown", CTRL_SHUTDOWN_EVENT, 143}),
                         name_of);

TEST(InterruptTwiceDeathTest, EndsAtOnce)
{
    EXPECT_EXIT(press_twice(), testing::ExitedWithCode(platform::exit_interrupted), "");
}

TEST(InterruptEndedDeathTest, LeavesTheSystemToItsWays)
{
    EXPECT_EXIT(press_afterwards(), is_code_of_the_system, "");
}

} // namespace zvgentl::test
