#pragma once

#include <array>
#include <atomic>
#include <cstddef>

namespace zvgentl {

/// Whether a stream acquires.
enum class Acquisition { idle, running };

/// Keeps per-frame functions from logging every frame while a stream acquires: of each of them, one call is
/// logged per acquisition. Owned by the stream; any thread.
class LogThrottle {
public:
    /// Whether an answer of "log it" uses up the acquisition's one line.
    enum class Mark { no, yes };
    enum class Bypass { no, yes };

    enum class Function { event_get_data, ds_get_buffer_info, ds_queue_buffer };

    /// True when a line of the function is due. While nothing is acquired one is always due, and the function
    /// is reset. For a bypass, always true; nothing changes then.
    bool is_due(Function function, Acquisition acquisition, Mark mark, Bypass bypass = Bypass::no) noexcept
    {
        if (bypass == Bypass::yes)
            return true;
        std::atomic<bool>& is_logged = m_is_logged[static_cast<size_t>(function)];
        if (acquisition == Acquisition::idle) {
            is_logged.store(false, std::memory_order_relaxed);
            return true;
        }
        if (is_logged.load(std::memory_order_relaxed))
            return false;
        return mark == Mark::no || !is_logged.exchange(true, std::memory_order_relaxed);
    }

private:
    std::array<std::atomic<bool>, 3> m_is_logged{};
};

} // namespace zvgentl
