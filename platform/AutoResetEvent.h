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
/// thread.
class AutoResetEvent {
public:
    AutoResetEvent();
    ~AutoResetEvent();
    AutoResetEvent(const AutoResetEvent&) = delete;
    AutoResetEvent& operator=(const AutoResetEvent&) = delete;

    /// False when the system refused one, for want of memory for instance.
    bool exists() const noexcept { return m_body != nullptr; }
    void set() noexcept;
    void reset() noexcept;
    /// Waits for a signal for at most `milliseconds`, without limit for `wait_forever`.
    WaitResult wait(uint32_t milliseconds) noexcept;

private:
    struct Body;
    std::unique_ptr<Body> m_body; // null when the system refused one: every wait then fails
};

} // namespace platform
