#pragma once

#include <cstdarg>
#include <cstdint>

class ZVPocoLogger;

// Lets the compiler check the arguments of a format; the positions count a member function's `this` as 1.
#if defined(__clang__)
#define ZV_PRINTF(text, first) __attribute__((format(printf, text, first)))
#elif defined(__GNUC__)
#define ZV_PRINTF(text, first) __attribute__((format(gnu_printf, text, first)))
#else
#define ZV_PRINTF(text, first)
#endif

namespace zvgentl {

/// Where a log line is written from: the number in brackets that opens its message. Chosen by hand and unique
/// within a logger's unit, so that a number in a customer's log finds one line in every version; never the
/// source line.
struct At {
    int number;
};

/// The priorities in use, with Poco's numbers.
enum class Priority {
    fatal = 1,
    error = 3,
    warning = 4,
    information = 6,
    debug = 7,
    trace = 8,
};

/// The six formatting entry points, one per priority. A line reads
/// "thr<id>:<logger>::{<function>}[<number>]: <message>", is built in 4096 bytes on the caller's stack and
/// handed to the logger's channel as one message. Nothing is formatted when the logger is null, the format is
/// null or the logger's level excludes the priority. `function` may be null; then its braces are left out.
/// Any thread.
ZV_PRINTF(4, 5) void log_fatal(ZVPocoLogger* logger, const char* function, At at, const char* format, ...);
ZV_PRINTF(4, 5) void log_error(ZVPocoLogger* logger, const char* function, At at, const char* format, ...);
ZV_PRINTF(4, 5) void log_warning(ZVPocoLogger* logger, const char* function, At at, const char* format, ...);
ZV_PRINTF(4, 5)
void log_information(ZVPocoLogger* logger, const char* function, At at, const char* format, ...);
ZV_PRINTF(4, 5) void log_debug(ZVPocoLogger* logger, const char* function, At at, const char* format, ...);
ZV_PRINTF(4, 5) void log_trace(ZVPocoLogger* logger, const char* function, At at, const char* format, ...);

/// True when the logger takes lines of the priority: for arguments that are costly to form.
bool is_logged(const ZVPocoLogger* logger, Priority priority) noexcept;

/// The common body of the entry points, for callers that chose the priority themselves. A channel that fails
/// loses the line, never the call that wrote it.
ZV_PRINTF(5, 0)
void write_line(ZVPocoLogger* logger, Priority priority, const char* function, At at, const char* format,
                va_list arguments) noexcept;

/// The same without the bracketed number in front of the message.
ZV_PRINTF(4, 5)
void write_bare_line(ZVPocoLogger* logger, Priority priority, const char* function, const char* format,
                     ...) noexcept;

/// One logger per source unit, made while the library is loaded and never released by us. Each may be null,
/// when the logger library could not make it; every log entry point then does nothing.
extern ZVPocoLogger* const api_logger; // the exported functions, with the interface and device modules
extern ZVPocoLogger* const system_module_logger;
extern ZVPocoLogger* const buffer_module_logger;
extern ZVPocoLogger* const camera_module_logger;
extern ZVPocoLogger* const event_module_logger;
extern ZVPocoLogger* const stream_module_logger;

/// A pointer as the number that "0x%016llX" prints: 16 digits on every system, where "%p" differs between
/// them.
inline unsigned long long address(const void* pointer) noexcept
{
    return reinterpret_cast<uintptr_t>(pointer);
}

/// The low 32 bits of a handle or pointer, for lines that print them with "%X".
inline unsigned low32(const void* pointer) noexcept
{
    return static_cast<unsigned>(reinterpret_cast<uintptr_t>(pointer));
}

/// The low 32 bits of a size or count, for lines that print them with "%d".
inline int low32_signed(uint64_t value) noexcept { return static_cast<int>(static_cast<uint32_t>(value)); }

} // namespace zvgentl
