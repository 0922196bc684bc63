#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace zvtest {

/// Poco's numbers.
enum class Priority {
    fatal = 1,
    critical = 2,
    error = 3,
    warning = 4,
    notice = 5,
    information = 6,
    debug = 7,
    trace = 8
};

const char* name_of(Priority priority);

/// One captured line. A line that is not laid out as the producer lays out its lines has number -1 and its
/// whole text as the message.
struct LogLine {
    uint32_t thread{0};
    std::string logger;   // as the line names it, without extension
    std::string function; // what stood in braces; empty without braces
    bool has_function{false};
    int number{-1}; // the call site's, in brackets
    Priority priority{Priority::information};
    std::string message; // what follows "[number]: ", or for a timer line "[number] "
    std::string source;  // the message's source: the logger's own name
    std::string text;    // the whole line

    friend std::ostream& operator<<(std::ostream& out, const LogLine& line);
};

/// Takes apart "thr%08X:Logger::{function}[number]: message", with or without braces, and timer lines, which
/// have no colon after the number.
LogLine parse_log_line(const std::string& source, Priority priority, const std::string& text);

/// Whether `message` is what printf could write for `pattern`: `%d`, `%u`, `%X`, `%x`, `%lld`, `%zu`,
/// `%016llX` and the like stand for digits of their kind, `%s` for any text, `%%` for itself.
bool matches_format(const std::string& pattern, const std::string& message);

} // namespace zvtest
