#pragma once

#include <atomic>
#include <string>

#include <Poco/AutoPtr.h>
#include <Poco/Channel.h>

#include "logger/Notices.h"

namespace zvlog {

/// Hands lines on and keeps every failure away from the application that logs: a channel that fails is
/// reported once, in the default log. `notices` must outlive the channel. Any thread.
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
