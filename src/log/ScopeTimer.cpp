#include "log/ScopeTimer.h"

#include "zvlog/ZVLogger.h"

namespace zvgentl {

ScopeTimer::ScopeTimer(ZVPocoLogger* logger, const char* function, At tag, Priority priority)
    : m_logger(logger), m_function(function), m_tag(tag), m_priority(priority),
      m_start(std::chrono::steady_clock::now())
{
}

ScopeTimer::~ScopeTimer()
{
    const int64_t elapsed = ZVTimeElapsedUs(m_start);
    write_bare_line(m_logger, m_priority, m_function, "[%d] duration: %lld usec", m_tag.number,
                    static_cast<long long>(elapsed));
}

} // namespace zvgentl
