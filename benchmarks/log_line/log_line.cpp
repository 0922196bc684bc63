#include "benchmarks/log_line/log_line.h"

#include "log/Log.h"

using namespace zvgentl;

namespace {

volatile int level = static_cast<int>(Priority::warning);
volatile size_t written = 0;

} // namespace

extern "C" {

void log_line_disabled(size_t count)
{
    for (; count > 0; --count)
        log_debug(stream_module_logger, "log_line_disabled", At{1}, "a number: %zu", count);
}

void log_line_compare(size_t count)
{
    for (; count > 0; --count)
        if (level >= static_cast<int>(Priority::debug))
            written = count;
}

void log_line_written(size_t count)
{
    for (; count > 0; --count)
        log_error(stream_module_logger, "log_line_written", At{2}, "a number: %zu", count);
}
}
