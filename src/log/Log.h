#pragma once

#include <cstdarg>
#include <cstdint>

#include "zvlog/ZVLogger.h"

// Lets the compiler check the arguments of a format; the positions count a member function's `this` as 1.
#if defined(__clang__)
#define ZV_PRINTF(text, first) __attribute__((format(printf, text, first)))
#elif defined(__GNUC__)
#define ZV_PRINTF(text, first) __attribute__((format(gnu_printf, text, first)))
#else
#define ZV_PRINTF(text, first)
#endif

// For a function that checked functions pass their formats on to: GCC would miss the literal there.
#if defined(__clang__)
#define ZV_PRINTF_PASSED_ON(text, first) ZV_PRINTF(text, first)
#else
#define ZV_PRINTF_PASSED_ON(text, first)
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

/// True when the logger takes lines of the priority. Asked by every line; ask it for arguments that are
/// costly to form.
inline bool is_logged(const ZVPocoLogger* logger, Priority priority) noexcept
{
    return logger != nullptr && logger->getLevel() >= static_cast<int>(priority);
}

/// Forms a line that its caller found to be wanted, and hands it to the logger's channel. A channel that
/// fails loses the line, never the call that wrote it.
ZV_PRINTF_PASSED_ON(5, 6)
void write_line(ZVPocoLogger* logger, Priority priority, const char* function, At at, const char* format,
                ...) noexcept;
ZV_PRINTF(5, 0)
void write_line_list(ZVPocoLogger* logger, Priority priority, const char* function, At at, const char* format,
                     va_list arguments) noexcept;

// A variadic function whose guard is compiled into its caller: a line that nobody wants costs a comparison.
// Only GCC lets such a function pass its arguments on; elsewhere the guard comes after a call.
#if defined(__GNUC__) && !defined(__clang__)
#define ZV_GUARDED_LINE [[gnu::always_inline]] inline
#define ZV_WRITE_LINE(logger, priority, function, at, format)                                                \
    write_line(logger, priority, function, at, format, __builtin_va_arg_pack())
#else
#define ZV_GUARDED_LINE inline
#define ZV_WRITE_LINE(logger, priority, function, at, format)                                                \
    do {                                                                                                     \
        va_list arguments;                                                                                   \
        va_start(arguments, format);                                                                         \
        write_line_list(logger, priority, function, at, format, arguments);                                  \
        va_end(arguments);                                                                                   \
    } while (false)
#endif

/// The six formatting entry points, one per priority. A line reads
/// "thr<id>:<logger>::{<function>}[<number>]: <message>", is built in 4096 bytes on the caller's stack and
/// handed to the logger's channel as one message. Nothing is formatted when the logger is null, the format is
/// null or the logger's level excludes the priority. `function` may be null; then its braces are left out.
/// Any thread.
#define ZV_LOG_ENTRY_POINT(name, priority)                                                                   \
    ZV_PRINTF(4, 5)                                                                                          \
    ZV_GUARDED_LINE void name(ZVPocoLogger* logger, const char* function, At at, const char* format,         \
                              ...) noexcept                                                                  \
    {                                                                                                        \
        if (is_logged(logger, priority))                                                                     \
            ZV_WRITE_LINE(logger, priority, function, at, format);                                           \
    }
ZV_LOG_ENTRY_POINT(log_fatal, Priority::fatal)
ZV_LOG_ENTRY_POINT(log_error, Priority::error)
ZV_LOG_ENTRY_POINT(log_warning, Priority::warning)
ZV_LOG_ENTRY_POINT(log_information, Priority::information)
ZV_LOG_ENTRY_POINT(log_debug, Priority::debug)
ZV_LOG_ENTRY_POINT(log_trace, Priority::trace)
#undef ZV_LOG_ENTRY_POINT

/// A line without the bracketed number in front of its message; none unless the logger takes the priority.
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
