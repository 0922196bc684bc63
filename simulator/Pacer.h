/// \file Pacer.h
/// When the frames of an acquisition happen.
#pragma once

#include <chrono>
#include <cstdint>

namespace zvsim {

using Clock = std::chrono::steady_clock;

/// The time as the cameras tell it.
uint64_t ticks_of_25_mhz(Clock::time_point time);

/// One frame that the camera exposed: its number since the start, and its time in ticks of 25 MHz.
struct Frame {
    uint64_t id;
    uint64_t timestamp;
};

/// Gives the frames of one acquisition their times and numbers. At a set rate frame n belongs to the time
/// start + n periods, however late its delivery is; a camera that falls behind by more than a second skips
/// the frames in between. Free-running, a frame happens when it is taken. Used by one thread.
class Pacer {
public:
    /// `frames_per_second` 0: free-running.
    Pacer(double frames_per_second, Clock::time_point first_frame);

    bool is_free_running() const { return m_period_ns == 0; }
    /// The time from which the next frame can be taken.
    Clock::time_point due() const;
    Frame take(Clock::time_point now);

private:
    Clock::time_point time_of(uint64_t frame) const;

    double m_period_ns;
    Clock::time_point m_first_frame;
    uint64_t m_next = 0;
};

} // namespace zvsim
