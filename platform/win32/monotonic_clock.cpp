#include "platform/monotonic_clock.h"

#include <tuple>

#include <windows.h>

namespace platform {

uint64_t monotonic_milliseconds() noexcept
{
    LARGE_INTEGER frequency{};
    LARGE_INTEGER now{};
    // Neither fails on any system that this code runs on.
    std::ignore = QueryPerformanceFrequency(&frequency);
    std::ignore = QueryPerformanceCounter(&now);
    const auto per_second = static_cast<uint64_t>(frequency.QuadPart);
    const auto count = static_cast<uint64_t>(now.QuadPart);
    // Seconds apart from the rest: the whole count times 1000 would overflow after some years.
    return count / per_second * 1000 + count % per_second * 1000 / per_second;
}

} // namespace platform
