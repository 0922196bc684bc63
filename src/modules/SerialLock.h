#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace zvgentl {

/// A lock whose free path is one exchange and whose strength a setting chooses: made with `Serialise::no` it
/// holds nothing and never blocks, so what it guards must be safe without it. Works with std::lock_guard.
class SerialLock {
public:
    enum class Serialise : uint8_t { no = 0, yes = 1 };

    explicit SerialLock(Serialise serialise) : m_value(static_cast<uint8_t>(serialise)) {}

    void lock()
    {
        if (m_held.exchange(m_value) == 0)
            return;
        m_waiters.fetch_add(1);
        {
            std::unique_lock lock(m_mutex);
            m_released.wait(lock, [this] { return m_held.exchange(1) == 0; });
        }
        m_waiters.fetch_sub(1);
    }

    void unlock()
    {
        m_held.store(0);
        if (m_waiters.load() < 1)
            return;
        const std::lock_guard lock(m_mutex);
        m_released.notify_one();
    }

private:
    std::atomic<int32_t> m_waiters{0};
    std::mutex m_mutex;
    std::condition_variable m_released;
    std::atomic<uint8_t> m_held{0};
    const uint8_t m_value;
};

} // namespace zvgentl
