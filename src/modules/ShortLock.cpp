#include "modules/ShortLock.h"

#include <chrono>
#include <thread>

namespace zvgentl {

/// The holder is usually done after a few turns. If it has lost its processor, perhaps to this very thread,
/// only sleeping lets it go on.
void ShortLock::wait() noexcept
{
    constexpr int spins = 100;
    constexpr int yields = 10;
    for (int turn = 0;; ++turn) {
        if (!m_is_held.load(std::memory_order_relaxed) && try_lock())
            return;
        if (turn >= spins + yields)
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        else if (turn >= spins)
            std::this_thread::yield();
    }
}

} // namespace zvgentl
