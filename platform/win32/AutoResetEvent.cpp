#include "platform/AutoResetEvent.h"

#include <new>
#include <tuple>

#include <windows.h>

namespace platform {

// These numbers are printed, so the system's must be the same.
static_assert(static_cast<DWORD>(WaitResult::signalled) == WAIT_OBJECT_0);
static_assert(static_cast<DWORD>(WaitResult::timed_out) == WAIT_TIMEOUT);
static_assert(static_cast<DWORD>(WaitResult::failed) == WAIT_FAILED);
static_assert(wait_forever == INFINITE);

struct AutoResetEvent::Body {
    explicit Body(HANDLE system_event) noexcept : event(system_event) {}
    ~Body() { std::ignore = CloseHandle(event); } // nobody else closes it: nothing to fail
    Body(const Body&) = delete;
    Body& operator=(const Body&) = delete;

    const HANDLE event;
};

AutoResetEvent::AutoResetEvent()
{
    HANDLE const event = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    if (event == nullptr)
        return;
    m_body.reset(new (std::nothrow) Body(event));
    if (!m_body)
        std::ignore = CloseHandle(event); // as above
}

AutoResetEvent::~AutoResetEvent() = default;

void AutoResetEvent::set() noexcept
{
    if (m_body)
        std::ignore = SetEvent(m_body->event); // a valid event can be set
}

void AutoResetEvent::reset() noexcept
{
    if (m_body)
        std::ignore = ResetEvent(m_body->event); // a valid event can be reset
}

WaitResult AutoResetEvent::wait(uint32_t milliseconds) noexcept
{
    if (!m_body)
        return WaitResult::failed;
    return static_cast<WaitResult>(WaitForSingleObject(m_body->event, milliseconds));
}

} // namespace platform
