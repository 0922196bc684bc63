#include "modules/ShortLock.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace zvgentl {

/// The holder is usually done after a few turns. If it has lost its processor, perhaps to this very thread,
/// only sleeping lets it go on: ever longer, because some systems take a moment for no time at all.
void ShortLock::wait() noexcept
{
    constexpr int spins = 100;
    constexpr int yields = 10;
    constexpr std::chrono::microseconds longest_moment{1000};
    std::chrono::microseconds moment{50};
    for (int turn = 0;; ++turn) {
        if (!m_is_held.load(std::memory_order_relaxed) && try_lock())
            return;
        if (turn < spins)
            continue;
        if (turn < spins + yields) {
            std::this_thread::yield();
            continue;
        }
        std::this_thread::sleep_for(moment);
        moment = std::min(2 * moment, longest_moment);
    }
}

} // namespace zvgentl
