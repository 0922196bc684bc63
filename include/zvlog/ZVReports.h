/// \file ZVReports.h
/// What the libraries of a producer have to say to the people who started the program, wherever the log goes
/// and whatever its level. No function throws. Any thread.
#pragma once

#include "zvlog/Export.h"

#include <cstdint>

/// Sets what `source`, the name of a library, reports now: lines of UTF-8, in place of its earlier report. An
/// empty text or null takes the report back.
extern "C" ZVLOG_API void ZVReport(const char* source, const char* text);

/// Writes the reports of all sources, each on lines of its own, and a terminating zero to `text`, cut off at
/// `size` bytes; null for none. Returns how many bytes there are, with the zero.
extern "C" ZVLOG_API uint64_t ZVReportedText(char* text, uint64_t size);
