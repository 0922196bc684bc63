#pragma once

#include <atomic>
#include <cstdint>

namespace platform {

/// How a wait ended. The numbers are those of the Windows wait functions, because one log line prints them.
enum class WaitResult : uint32_t {
    signalled = 0,
    timed_out = 0x102,
};

/// The time-out in milliseconds that never ends.
constexpr uint32_t wait_forever = 0xFFFFFFFF;

/// Where one thread sleeps until another releases it, once. It needs no memory and no handle of the system,
/// and usually lies on the stack of the thread that sleeps.
class Waiter {
public:
    Waiter() = default;
    Waiter(const Waiter&) = delete;
    Waiter& operator=(const Waiter&) = delete;

    /// Sleeps for at most `milliseconds`, without limit for `wait_forever`. May be called again after a
    /// time-out.
    WaitResult sleep(uint32_t milliseconds) noexcept;
    /// Ends the sleep, or makes the next one end at once. The waiter may be gone when this returns.
    void release() noexcept;

private:
    bool is_released() const noexcept { return m_is_released.load(std::memory_order_acquire) != 0; }

    std::atomic<uint32_t> m_is_released{0}; // the word that the system watches
};

} // namespace platform
