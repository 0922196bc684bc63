#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include <Poco/AutoPtr.h>
#include <Poco/Channel.h>

namespace zvlog {

/// The library's own warnings. Nothing may open a file while an application loads the library, so they are
/// kept until the first line is written, and then go to the default log. For any thread.
class Notices {
public:
    explicit Notices(Poco::AutoPtr<Poco::Channel> log);
    void post(const std::string& text);
    /// Writes what was posted since the last call.
    void deliver() noexcept;

private:
    Poco::AutoPtr<Poco::Channel> m_log;
    std::atomic<bool> m_is_waiting{false};
    std::mutex m_mutex;
    std::vector<std::string> m_texts;
};

/// Passes lines on, and keeps every failure from the application that logs: a channel that fails is reported
/// once, as a notice. Control characters in a line become visible, so that a text in it can neither pretend
/// to be the next line nor command a terminal. `notices` must outlive the channel. For any thread.
class GuardedChannel final : public Poco::Channel {
public:
    GuardedChannel(std::string logger, Poco::AutoPtr<Poco::Channel> target, Notices& notices);
    void log(const Poco::Message& message) override;

private:
    void report(const std::string& reason) noexcept;

    const std::string m_logger;
    Poco::AutoPtr<Poco::Channel> m_target;
    Notices& m_notices;
    std::atomic<bool> m_is_reported{false};
};

} // namespace zvlog
