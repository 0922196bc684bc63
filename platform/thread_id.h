#pragma once

#include <cstdint>

namespace platform {

/// The operating system's id of the calling thread, as log lines print it.
uint32_t thread_id() noexcept;

} // namespace platform
