#pragma once

#include <chrono>
#include <cstdint>

namespace zvsim {

using Clock = std::chrono::steady_clock;

/// The time in the unit of the cameras.
uint64_t ticks_of_25_mhz(Clock::time_point time);

/// One frame that the camera exposed: its number since the start, and its time in ticks of 25 MHz.
struct Frame {
    uint64_t id;
    uint64_t timestamp;
};

/// What makes frames happen.
struct Pace {
    /// 0: free-running.
    double frames_per_second{0};
    /// Frames wait for triggers, whatever the rate.
    bool is_triggered{false};

    bool operator==(const Pace& other) const
    {
        return frames_per_second == other.frames_per_second && is_triggered == other.is_triggered;
    }
};

/// Gives the frames of one acquisition their times and numbers. At a set rate frame n belongs to the time
/// start + n periods, however late its delivery is; a camera that falls behind by more than a second skips
/// the frames in between. Free-running or triggered, a frame happens when it is taken. Used by one thread.
///
/// The pace may change at any time. Numbers go on without a gap; the next frame is due a new period after the
/// last one, or at once if that has passed already, and the frames after it follow at the new rate.
class Pacer {
public:
    /// At a set rate frames come up to `jitter` late, with the times of punctual ones.
    Pacer(Pace pace, Clock::time_point first_frame, std::chrono::microseconds jitter = {});

    void set_pace(Pace pace, Clock::time_point now);
    bool is_free_running() const { return !m_pace.is_triggered && m_pace.frames_per_second <= 0; }
    /// The time from which the next frame can be taken.
    Clock::time_point due() const;
    Frame take(Clock::time_point now);

private:
    bool has_times() const { return !m_pace.is_triggered && !is_free_running(); }
    double period_ns() const { return 1e9 / m_pace.frames_per_second; }
    Clock::time_point time_of(uint64_t frame) const;
    Clock::duration lateness_of(uint64_t frame) const;

    Pace m_pace;
    const Clock::time_point m_first_frame;
    const std::chrono::microseconds m_jitter;
    uint64_t m_next{0};
    /// The time of the last frame.
    Clock::time_point m_last;
    // At a set rate times are counted from here on.
    Clock::time_point m_base;
    uint64_t m_base_frame{0};
};

} // namespace zvsim
