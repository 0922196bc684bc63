#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "benchmarks/threads.h"

namespace zvbench {

/// When a camera's thread sends frames: a number of them, at a rate or as fast as it can. It rests before and
/// after. The thread stays on one processor, so that no run differs from the next by where it was put.
class Pace {
public:
    using Clock = std::chrono::steady_clock;

    explicit Pace(int core) : m_core{core} {}

    /// Lets the camera send so many frames; a period of 0 means one right after the other.
    void allow(size_t frames, std::chrono::nanoseconds period)
    {
        {
            const std::lock_guard lock{m_mutex};
            m_period = period;
            m_next = Clock::now() + period;
            m_frames = frames;
        }
        m_changed.notify_one();
    }

    /// The camera's thread need not wait any more; it is about to end.
    void end()
    {
        {
            const std::lock_guard lock{m_mutex};
            m_is_over = true;
        }
        m_changed.notify_one();
    }
    bool is_over() const { return m_is_over; }

    /// On the camera's thread: returns when the next frame is due.
    void wait()
    {
        if (!m_is_pinned) {
            stay_on(m_core);
            m_is_pinned = true;
        }
        if (m_frames == 0) {
            std::unique_lock lock{m_mutex};
            m_changed.wait(lock, [this] { return m_frames != 0 || m_is_over; });
        }
        if (m_is_over)
            return;
        if (m_period.count() == 0) {
            std::this_thread::yield(); // there may be no buffer yet
            return;
        }
        std::this_thread::sleep_until(m_next);
        m_next += m_period;
    }

    /// On the camera's thread, when it begins to send a frame.
    void count_frame()
    {
        m_sent = Clock::now().time_since_epoch();
        --m_frames;
    }
    /// When the last frame began.
    Clock::time_point sent() const { return Clock::time_point{m_sent.load()}; }

private:
    int m_core;
    bool m_is_pinned{false}; // of the camera's thread
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::atomic<size_t> m_frames{0};
    std::atomic<bool> m_is_over{false};
    std::chrono::nanoseconds m_period{0}; // with m_next: written while the camera rests
    Clock::time_point m_next;
    std::atomic<Clock::duration> m_sent{Clock::duration::zero()};
};

} // namespace zvbench
