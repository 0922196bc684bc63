#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "zvlog/ZVLogger.h"

#include "support/LogLine.h"

namespace zvtest {

/// A call of InitLogger; null texts are empty optionals.
struct InitLoggerCall {
    std::optional<std::string> text;
    std::optional<std::string> name;
    uint32_t priority{0};
};

/// One per process. Every line of a producer's logger must fit the table of lines (LogLineTable); one that
/// does not fails the test at once. Thread-safe.
class FakeLoggerLibrary {
public:
    static FakeLoggerLibrary& instance();

    /// Every InitLogger call since the process started.
    std::vector<InitLoggerCall> init_calls() const;
    /// From now on InitLogger answers null, or loggers again.
    void refuse_loggers(bool refuse);
    /// The logger of a name as the producer asked for it ("StreamModule.cpp"); made if it does not exist.
    ZVPocoLogger* logger(const std::string& name);

    /// Loggers take lines of this priority and of more urgent ones. Trace by default. Not while other threads
    /// log.
    void set_level(Priority priority);
    void set_level(const std::string& name, Priority priority);
    void set_channel(const std::string& name, bool present);

    std::vector<LogLine> lines() const;
    void clear_lines();
    /// Stops keeping lines (they are still compared with the table), for tests that log millions.
    void keep_lines(bool keep);

    /// How often ZVTimeElapsedUs was called, and what it answers: 12 by default.
    size_t elapsed_calls() const;
    void answer_elapsed(int64_t microseconds);

    /// Levels, channels and answers as at the start; no lines, no counts.
    void reset();

    // For the functions of the library. Not for tests.
    ZVPocoLogger* init_logger(const InitLoggerCall& call);
    int64_t elapsed();
    void capture(const LogLine& line);

private:
    FakeLoggerLibrary();
    ZVPocoLogger* find_or_make(const std::string& name);

    mutable std::mutex m_lock;
    Poco::Channel::Ptr m_channel;
    std::map<std::string, ZVPocoLogger*> m_loggers; // never destroyed
    std::vector<InitLoggerCall> m_init_calls;
    bool m_refuse{false};
    std::vector<LogLine> m_lines;
    bool m_keep{true};
    size_t m_elapsed_calls{0};
    int64_t m_elapsed{12};
};

} // namespace zvtest
