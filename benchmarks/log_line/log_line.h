#pragma once

#include <cstddef>

// The producer's log lines on their own, compiled as in the producer.

#pragma GCC visibility push(default)
extern "C" {

/// A line that the logger's level excludes, so many times.
void log_line_disabled(size_t count);
/// A load, a comparison and a branch, so many times: the least that a line can cost.
void log_line_compare(size_t count);
/// A line that is written, with one argument.
void log_line_written(size_t count);
}
#pragma GCC visibility pop
