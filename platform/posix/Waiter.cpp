#include "platform/Waiter.h"

#include <cerrno>
#include <ctime>
#include <tuple>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

namespace {

static_assert(sizeof(std::atomic<uint32_t>) == 4 && std::atomic<uint32_t>::is_always_lock_free,
              "not a futex");

long futex(std::atomic<uint32_t>& word, int operation, uint32_t value, const timespec* deadline) noexcept
{
    return ::syscall(SYS_futex, &word, operation, value, deadline, nullptr, FUTEX_BITSET_MATCH_ANY);
}

/// The time of the monotonic clock that is `milliseconds` from now.
timespec time_in(uint32_t milliseconds) noexcept
{
    constexpr long second = 1'000'000'000;
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    time.tv_sec += milliseconds / 1000;
    time.tv_nsec += long{milliseconds % 1000} * 1'000'000;
    if (time.tv_nsec >= second) {
        time.tv_nsec -= second;
        ++time.tv_sec;
    }
    return time;
}

} // namespace

WaitResult Waiter::sleep(uint32_t milliseconds) noexcept
{
    const bool is_limited = milliseconds != wait_forever;
    const timespec deadline = is_limited ? time_in(milliseconds) : timespec{};
    while (!is_released()) {
        // Does not sleep if the word has changed. Ends early for signal handlers and for late wakes, see
        // below.
        if (futex(m_is_released, FUTEX_WAIT_BITSET_PRIVATE, 0, is_limited ? &deadline : nullptr) == -1 &&
            errno == ETIMEDOUT)
            return is_released() ? WaitResult::signalled : WaitResult::timed_out;
    }
    return WaitResult::signalled;
}

// From the store on, the thread may return and the waiter be gone. The kernel only compares the address with
// those that threads sleep on: at worst it wakes one that sleeps on something else in the same place, and
// such a sleep may end for nothing.
void Waiter::release() noexcept
{
    std::atomic<uint32_t>& word = m_is_released;
    word.store(1, std::memory_order_release);
    std::ignore = futex(word, FUTEX_WAKE_PRIVATE, 1, nullptr);
}

} // namespace platform
