#pragma once

#include <atomic>
#include <mutex>

namespace zvgentl {

/// A lock for sections of a few instructions, such as a look-up, that run several times per frame: taking it
/// is one exchange and giving it back one store, a third of what a std::mutex costs. Never held over a call
/// of the grabber library, a log line or a copy. Not recursive; works with std::lock_guard. Any thread.
class ShortLock {
public:
    /// Shows that the caller of a function has taken the lock.
    using Held = std::lock_guard<ShortLock>;

    ShortLock() = default;
    ShortLock(const ShortLock&) = delete;
    ShortLock& operator=(const ShortLock&) = delete;

    void lock() noexcept
    {
        if (!try_lock())
            wait();
    }
    void unlock() noexcept { m_is_held.store(false, std::memory_order_release); }

private:
    bool try_lock() noexcept { return !m_is_held.exchange(true, std::memory_order_acquire); }
    void wait() noexcept;

    std::atomic<bool> m_is_held{false};
};

} // namespace zvgentl
