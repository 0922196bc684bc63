#include "simulator/faults/PlugTimer.h"

#include <algorithm>
#include <utility>

namespace zvsim {

PlugTimer::PlugTimer(std::vector<Clock::time_point> times, std::function<void()> function)
    : m_times{std::move(times)}, m_function{std::move(function)}
{
    std::sort(m_times.begin(), m_times.end());
    m_thread = std::thread{&PlugTimer::work, this};
}

PlugTimer::~PlugTimer()
{
    {
        const std::lock_guard lock{m_mutex};
        m_is_ended = true;
    }
    m_ended.notify_all();
    m_thread.join();
}

void PlugTimer::work()
{
    for (const Clock::time_point time : m_times) {
        {
            std::unique_lock lock{m_mutex};
            if (m_ended.wait_until(lock, time, [this] { return m_is_ended; }))
                return;
        }
        m_function();
    }
}

} // namespace zvsim
