#include "platform/Waiter.h"

#include <windows.h>

namespace platform {

// These numbers are printed, so the system's must be the same.
static_assert(static_cast<DWORD>(WaitResult::signalled) == WAIT_OBJECT_0);
static_assert(static_cast<DWORD>(WaitResult::timed_out) == WAIT_TIMEOUT);
static_assert(wait_forever == INFINITE);

WaitResult Waiter::sleep(uint32_t milliseconds) noexcept
{
    const ULONGLONG start = GetTickCount64();
    DWORD left = milliseconds;
    while (!is_released()) {
        uint32_t not_released = 0;
        // Does not sleep if the word has changed, and may end for nothing.
        if (WaitOnAddress(&m_is_released, &not_released, sizeof not_released, left) || left == INFINITE)
            continue;
        const ULONGLONG passed = GetTickCount64() - start;
        if (passed >= milliseconds)
            return is_released() ? WaitResult::signalled : WaitResult::timed_out;
        left = static_cast<DWORD>(milliseconds - passed);
    }
    return WaitResult::signalled;
}

// From the store on, the thread may return and the waiter be gone. The system only compares the address.
void Waiter::release() noexcept
{
    void* const word = &m_is_released;
    m_is_released.store(1, std::memory_order_release);
    WakeByAddressSingle(word);
}

} // namespace platform
