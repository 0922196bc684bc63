#include "simulator/Pacer.h"

namespace zvsim {

namespace {

constexpr std::chrono::seconds longest_lag{1};

} // namespace

uint64_t ticks_of_25_mhz(Clock::time_point time)
{
    using Nanoseconds = std::chrono::nanoseconds;
    const auto ns = std::chrono::duration_cast<Nanoseconds>(time.time_since_epoch()).count();
    return static_cast<uint64_t>(ns) / 40;
}

Pacer::Pacer(double frames_per_second, Clock::time_point first_frame)
    : m_period_ns{frames_per_second > 0 ? 1e9 / frames_per_second : 0}, m_first_frame{first_frame}
{
}

Clock::time_point Pacer::due() const { return is_free_running() ? m_first_frame : time_of(m_next); }

Frame Pacer::take(Clock::time_point now)
{
    if (is_free_running())
        return {m_next++, ticks_of_25_mhz(now)};
    if (now - time_of(m_next) > longest_lag) {
        const auto elapsed = std::chrono::duration_cast<std::chrono::nanoseconds>(now - m_first_frame);
        m_next = static_cast<uint64_t>(static_cast<double>(elapsed.count()) / m_period_ns);
    }
    const Frame frame{m_next, ticks_of_25_mhz(time_of(m_next))};
    ++m_next;
    return frame;
}

Clock::time_point Pacer::time_of(uint64_t frame) const
{
    const auto ns = static_cast<int64_t>(static_cast<double>(frame) * m_period_ns);
    return m_first_frame + std::chrono::duration_cast<Clock::duration>(std::chrono::nanoseconds{ns});
}

} // namespace zvsim
