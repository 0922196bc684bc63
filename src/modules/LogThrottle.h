#pragma once

#include <array>
#include <atomic>
#include <string_view>

namespace zvgentl {

/// Whether a stream acquires.
enum class Acquisition { idle, running };

/// Keeps per-frame functions from logging every frame while a stream acquires: of each function that it
/// knows, one call is logged per acquisition. Owned by the stream; any thread.
class LogThrottle {
public:
    /// Whether an answer of "log it" uses up the acquisition's one line.
    enum class Mark { no, yes };
    enum class Bypass { no, yes };

    /// True when a line of the function is due. While nothing is acquired one is always due, and the function
    /// is reset. For a function that is not throttled, and for a bypass, always true; nothing changes then.
    bool is_due(std::string_view function, Acquisition acquisition, Mark mark, Bypass bypass = Bypass::no)
    {
        if (bypass == Bypass::yes)
            return true;
        for (Flag& flag : m_flags) {
            if (flag.function != function)
                continue;
            if (acquisition == Acquisition::idle) {
                flag.is_logged.store(false, std::memory_order_relaxed);
                return true;
            }
            if (mark == Mark::yes)
                return !flag.is_logged.exchange(true, std::memory_order_relaxed);
            return !flag.is_logged.load(std::memory_order_relaxed);
        }
        return true;
    }

private:
    struct Flag {
        std::string_view function;
        std::atomic<bool> is_logged{false};
    };
    std::array<Flag, 3> m_flags{{{"EventGetData"}, {"DSGetBufferInfo"}, {"DSQueueBuffer"}}};
};

} // namespace zvgentl
