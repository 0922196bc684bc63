#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include <Poco/AutoPtr.h>
#include <Poco/Channel.h>

namespace zvlog {

/// Keeps the library's own warnings until the first line is written, since nothing may open a file while the
/// host loads the library, and then puts them into the default log. Any thread.
class Notices {
public:
    explicit Notices(Poco::AutoPtr<Poco::Channel> log);
    void post(const std::string& text);
    /// Writes what was posted since the last time.
    void deliver() noexcept;

private:
    Poco::AutoPtr<Poco::Channel> m_log;
    std::atomic<bool> m_is_waiting{false};
    std::mutex m_mutex;
    std::vector<std::string> m_texts;
};

} // namespace zvlog
