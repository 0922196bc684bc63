#pragma once

#include <cstdio>

namespace platform {

/// Whether the stream shows on a terminal that follows control sequences.
bool is_terminal(std::FILE* stream) noexcept;

/// From here on, what is written to the stream arrives unchanged, whatever the system does with line ends.
void keep_bytes(std::FILE* stream) noexcept;

} // namespace platform
