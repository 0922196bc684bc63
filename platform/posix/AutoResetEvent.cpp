#include "platform/AutoResetEvent.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <system_error>

namespace platform {

namespace {

/// A thread inside wait(). It lives on that thread's stack and is in the event's line until it is released
/// or gives up.
struct Waiter {
    std::condition_variable woken;
    bool is_released{false};
    Waiter* next{nullptr};
};

} // namespace

/// A signal belongs to the thread that it releases from the moment it is given: the thread need not have run
/// by the time of the next signal, and no later wait and no reset can take it back.
struct AutoResetEvent::Body {
    std::mutex mutex;
    bool signalled{false};
    Waiter* first{nullptr}; // who waits longest
    Waiter** end{&first};

    void join(Waiter& waiter) noexcept
    {
        *end = &waiter;
        end = &waiter.next;
    }
    void leave(const Waiter& waiter) noexcept
    {
        Waiter** place = &first;
        while (*place != &waiter)
            place = &(*place)->next;
        *place = waiter.next;
        if (end == &waiter.next)
            end = place;
    }
};

AutoResetEvent::AutoResetEvent() : m_body(new (std::nothrow) Body) {}

AutoResetEvent::~AutoResetEvent() = default;

void AutoResetEvent::set() noexcept
{
    if (!m_body)
        return;
    const std::lock_guard lock(m_body->mutex);
    Waiter* const released = m_body->first;
    if (released == nullptr) {
        m_body->signalled = true;
        return;
    }
    m_body->leave(*released);
    released->is_released = true;
    // Under the lock, because a waiter that returns may destroy itself and this object.
    released->woken.notify_one();
}

void AutoResetEvent::reset() noexcept
{
    if (!m_body)
        return;
    const std::lock_guard lock(m_body->mutex);
    m_body->signalled = false;
}

WaitResult AutoResetEvent::wait(uint32_t milliseconds) noexcept
{
    if (!m_body)
        return WaitResult::failed;
    try {
        std::unique_lock lock(m_body->mutex);
        if (m_body->signalled) {
            m_body->signalled = false;
            return WaitResult::signalled;
        }
        Waiter waiter;
        const auto is_released = [&waiter] { return waiter.is_released; };
        m_body->join(waiter);
        if (milliseconds == wait_forever) {
            waiter.woken.wait(lock, is_released);
        } else if (!waiter.woken.wait_for(lock, std::chrono::milliseconds(milliseconds), is_released)) {
            m_body->leave(waiter);
            return WaitResult::timed_out;
        }
        return WaitResult::signalled;
    } catch (const std::system_error&) {
        return WaitResult::failed;
    }
}

} // namespace platform
