#pragma once

#include <cstdint>
#include <memory>

namespace platform {

/// How a wait ended. The numbers are those of the Windows wait functions, because one log line prints them.
enum class WaitResult : uint32_t {
    signalled = 0,
    timed_out = 0x102,
    failed = 0xFFFFFFFF,
};

/// The time-out in milliseconds that never ends.
constexpr uint32_t wait_forever = 0xFFFFFFFF;

/// An event object that releases one waiter per signal: a successful wait consumes the signal, and
/// a signal has no effect while another one is pending. Owned by an event module; set and waited for by any
/// thread. The thread that a signal released may destroy the event, even if set() has not returned yet.
class AutoResetEvent {
public:
    AutoResetEvent();
    ~AutoResetEvent();
    AutoResetEvent(const AutoResetEvent&) = delete;
    AutoResetEvent& operator=(const AutoResetEvent&) = delete;

    /// False when the system refused one, for want of memory for instance.
    bool exists() const noexcept { return m_body != nullptr; }
    /// Releases one waiter, or leaves a signal for the next wait. When a signal is pending already, nothing is
    /// written: what the signal announces must be behind a lock, or in a sequentially consistent atomic that
    /// waiters read after their wait.
    void set() noexcept;
    /// Takes back a signal that is pending. A waiter that a signal has released stays released.
    void reset() noexcept;
    /// Waits for a signal for at most `milliseconds`, without limit for `wait_forever`.
    WaitResult wait(uint32_t milliseconds) noexcept;

private:
    struct Body;
    std::unique_ptr<Body> m_body; // null when the system refused one: every wait then fails
};

} // namespace platform
