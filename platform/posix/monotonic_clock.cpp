#include "platform/monotonic_clock.h"

#include <ctime>

namespace platform {

uint64_t monotonic_milliseconds() noexcept
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_nsec) / 1000000;
}

} // namespace platform
