#pragma once

#include <cstdio>

namespace platform {

/// Whether the stream shows on a terminal that follows control sequences.
bool is_terminal(std::FILE* stream) noexcept;

/// From here on, what is written to the stream arrives unchanged, whatever the system does with line ends.
void keep_bytes(std::FILE* stream) noexcept;

/// Makes writes to standard output and error fail where they must: no file that is opened later takes the
/// place of one that is closed, and a pipe that nobody reads any more does not end the process.
void prepare_standard_streams() noexcept;

/// Whether a write to the stream that failed with this number (errno) has found nobody who reads.
bool is_broken_pipe(std::FILE* stream, int error) noexcept;

} // namespace platform
