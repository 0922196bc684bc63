#include "platform/AutoResetEvent.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <mutex>
#include <new>
#include <tuple>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

namespace {

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

/// A thread inside wait(). It lives on that thread's stack and is in the event's line until it is chosen or
/// gives up.
class Waiter {
public:
    Waiter* next{nullptr};
    bool is_in_line{false}; // as `next`, under the lock of the line

    /// False when it is `deadline` and nobody has released the waiter. No limit if null.
    bool sleep(const timespec* deadline) noexcept
    {
        while (m_is_released.load(std::memory_order_acquire) == 0) {
            // Does not sleep if the word has changed. Ends early for signal handlers, and for the late wakes
            // described below.
            if (futex(FUTEX_WAIT_BITSET_PRIVATE, 0, deadline) == -1 && errno == ETIMEDOUT)
                return m_is_released.load(std::memory_order_acquire) != 0;
        }
        return true;
    }

    /// From the store on, the thread may return: the waiter is gone, and the event may be. So the wake is the
    /// last that happens, and the kernel only compares its address with those that threads sleep on. At worst
    /// it wakes a thread that sleeps on something else in the same place, which is free to wake for nothing.
    void release() noexcept
    {
        m_is_released.store(1, std::memory_order_release);
        std::ignore = futex(FUTEX_WAKE_PRIVATE, 1, nullptr);
    }

private:
    long futex(int operation, uint32_t value, const timespec* deadline) noexcept
    {
        return ::syscall(SYS_futex, &m_is_released, operation, value, deadline, nullptr,
                         FUTEX_BITSET_MATCH_ANY);
    }

    std::atomic<uint32_t> m_is_released{0};
    static_assert(sizeof m_is_released == 4 && std::atomic<uint32_t>::is_always_lock_free, "not a futex");
};

enum class State : uint32_t { idle, signalled, waited_for };

} // namespace

/// A signal belongs to the thread that it releases from the moment it is given: the thread need not have run
/// by the time of the next signal, and no later wait and no reset can take it back.
///
/// While nobody waits, the state is all there is. It becomes `waited_for`, and something else again, only
/// under the lock of the line, and is `waited_for` exactly while somebody is in the line. All operations on
/// it are sequentially consistent: who gives a signal and finds one pending relies on that (see set()).
struct AutoResetEvent::Body {
    std::atomic<State> state{State::idle};
    std::mutex mutex;       // of the line, and only of it
    Waiter* first{nullptr}; // who waits longest
    Waiter** end{&first};

    bool take_signal() noexcept
    {
        State expected = State::signalled;
        return state.load() == expected && state.compare_exchange_strong(expected, State::idle);
    }

    /// False when there is a signal after all, which is taken.
    bool join(Waiter& waiter) noexcept
    {
        const std::lock_guard lock(mutex);
        if (state.exchange(State::waited_for) == State::signalled) {
            state.store(State::idle); // nobody is in the line of a signalled event
            return false;
        }
        *end = &waiter;
        end = &waiter.next;
        waiter.is_in_line = true;
        return true;
    }

    /// False when the waiter has been chosen: it is about to be released.
    bool leave(Waiter& waiter) noexcept
    {
        const std::lock_guard lock(mutex);
        if (!waiter.is_in_line)
            return false;
        Waiter** place = &first;
        while (*place != &waiter)
            place = &(*place)->next;
        remove(place);
        return true;
    }

    /// Takes the first waiter out of the line; null when all have left. Until it is released, the event
    /// exists for certain; afterwards it may be destroyed, so it must not be touched any more.
    Waiter* choose() noexcept
    {
        const std::lock_guard lock(mutex);
        Waiter* const chosen = first;
        if (chosen != nullptr)
            remove(&first);
        return chosen;
    }

private:
    void remove(Waiter** place) noexcept
    {
        Waiter& waiter = **place;
        waiter.is_in_line = false;
        *place = waiter.next;
        if (end == &waiter.next)
            end = place;
        if (first == nullptr)
            state.store(State::idle);
    }
};

AutoResetEvent::AutoResetEvent() : m_body(new (std::nothrow) Body) {}

AutoResetEvent::~AutoResetEvent() = default;

void AutoResetEvent::set() noexcept
{
    if (!m_body)
        return;
    State state = m_body->state.load();
    while (state != State::signalled) {
        if (state == State::idle) {
            if (m_body->state.compare_exchange_weak(state, State::signalled))
                return;
        } else if (Waiter* const chosen = m_body->choose()) {
            chosen->release();
            return;
        } else {
            state = m_body->state.load();
        }
    }
}

void AutoResetEvent::reset() noexcept
{
    if (m_body)
        std::ignore = m_body->take_signal(); // a signal of a waiter is not in the state any more
}

WaitResult AutoResetEvent::wait(uint32_t milliseconds) noexcept
{
    if (!m_body)
        return WaitResult::failed;
    if (m_body->take_signal())
        return WaitResult::signalled;
    if (milliseconds == 0)
        return WaitResult::timed_out;

    const bool is_limited = milliseconds != wait_forever;
    const timespec deadline = is_limited ? time_in(milliseconds) : timespec{};
    Waiter waiter;
    if (!m_body->join(waiter) || waiter.sleep(is_limited ? &deadline : nullptr))
        return WaitResult::signalled;
    if (m_body->leave(waiter))
        return WaitResult::timed_out;
    waiter.sleep(nullptr); // not for long: it was chosen at the last moment
    return WaitResult::signalled;
}

} // namespace platform
