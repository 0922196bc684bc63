#pragma once

#include <chrono>

#include "log/Log.h"

namespace zvgentl {

/// Logs how long a scope took, as "[1855] duration: 12 usec", on every way out of it. Make it the first
/// statement, so that its line is the call's last.
class ScopeTimer {
public:
    ScopeTimer(ZVPocoLogger* logger, const char* function, At tag, Priority priority);
    ~ScopeTimer();
    ScopeTimer(const ScopeTimer&) = delete;
    ScopeTimer& operator=(const ScopeTimer&) = delete;

private:
    ZVPocoLogger* m_logger;
    const char* m_function;
    At m_tag;
    Priority m_priority;
    std::chrono::steady_clock::time_point m_start;
};

} // namespace zvgentl
