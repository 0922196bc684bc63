#include "simulator/Pacer.h"

#include <algorithm>

namespace zvsim {

namespace {

constexpr std::chrono::seconds longest_lag{1};

/// A number that looks random, the same one for the same frame in every run.
uint64_t scattered(uint64_t frame)
{
    uint64_t mixed = (frame + 1) * UINT64_C(0x9E3779B97F4A7C15);
    mixed = (mixed ^ mixed >> 30U) * UINT64_C(0xBF58476D1CE4E5B9);
    return mixed ^ mixed >> 31U;
}

Clock::duration nanoseconds(double count)
{
    return std::chrono::duration_cast<Clock::duration>(std::chrono::nanoseconds{static_cast<int64_t>(count)});
}

} // namespace

uint64_t ticks_of_25_mhz(Clock::time_point time)
{
    using Nanoseconds = std::chrono::nanoseconds;
    const auto ns = std::chrono::duration_cast<Nanoseconds>(time.time_since_epoch()).count();
    return static_cast<uint64_t>(ns) / 40;
}

Pacer::Pacer(Pace pace, Clock::time_point first_frame, std::chrono::microseconds jitter)
    : m_pace{pace}, m_first_frame{first_frame}, m_jitter{jitter}, m_last{first_frame}, m_base{first_frame}
{
}

void Pacer::set_pace(Pace pace, Clock::time_point now)
{
    if (pace == m_pace)
        return;
    m_pace = pace;
    if (!has_times())
        return;
    m_base_frame = m_next;
    m_base = std::max(m_next == 0 ? m_first_frame : m_last + nanoseconds(period_ns()), now);
}

Clock::time_point Pacer::due() const
{
    return has_times() ? time_of(m_next) + lateness_of(m_next) : m_first_frame;
}

Frame Pacer::take(Clock::time_point now)
{
    if (!has_times()) {
        m_last = now;
        return {m_next++, ticks_of_25_mhz(now)};
    }
    if (now - time_of(m_next) > longest_lag) {
        const auto elapsed = std::chrono::duration_cast<std::chrono::nanoseconds>(now - m_base);
        m_next = m_base_frame + static_cast<uint64_t>(static_cast<double>(elapsed.count()) / period_ns());
    }
    m_last = time_of(m_next);
    return {m_next++, ticks_of_25_mhz(m_last)};
}

Clock::time_point Pacer::time_of(uint64_t frame) const
{
    return m_base + nanoseconds(static_cast<double>(frame - m_base_frame) * period_ns());
}

Clock::duration Pacer::lateness_of(uint64_t frame) const
{
    const auto steps = static_cast<uint64_t>(m_jitter.count()) + 1;
    return std::chrono::microseconds{static_cast<int64_t>(scattered(frame) % steps)};
}

} // namespace zvsim
