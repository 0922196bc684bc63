#include "modules/LogThrottle.h"

namespace zvgentl {

bool LogThrottle::is_due(std::string_view function, Acquisition acquisition, Mark mark, Bypass bypass)
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

} // namespace zvgentl
