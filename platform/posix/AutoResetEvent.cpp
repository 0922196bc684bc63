#include "platform/AutoResetEvent.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <system_error>

namespace platform {

struct AutoResetEvent::Body {
    std::mutex mutex;
    std::condition_variable changed;
    bool signalled{false};
};

AutoResetEvent::AutoResetEvent() : m_body(new (std::nothrow) Body) {}

AutoResetEvent::~AutoResetEvent() = default;

void AutoResetEvent::set() noexcept
{
    if (!m_body)
        return;
    const std::lock_guard lock(m_body->mutex);
    m_body->signalled = true;
    // Under the lock, because a waiter that returns may destroy this object.
    m_body->changed.notify_one();
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
        const auto is_signalled = [this] { return m_body->signalled; };
        if (milliseconds == wait_forever)
            m_body->changed.wait(lock, is_signalled);
        else if (!m_body->changed.wait_for(lock, std::chrono::milliseconds(milliseconds), is_signalled))
            return WaitResult::timed_out;
        m_body->signalled = false;
        return WaitResult::signalled;
    } catch (const std::system_error&) {
        return WaitResult::failed;
    }
}

} // namespace platform
