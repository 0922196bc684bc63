#pragma once

#include <cstdint>

namespace platform {

/// Whole milliseconds of a clock that never goes back. Only differences mean something.
uint64_t monotonic_milliseconds() noexcept;

} // namespace platform
