#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "zvlog/ZVLogger.h"

#include "logger/ChannelSet.h"
#include "logger/Configuration.h"
#include "logger/Notices.h"

namespace zvlog {

/// Where to look for the configuration, and where logs go. A text is empty if there is no such place.
struct LoggerPlaces {
    /// Named by the environment.
    std::string chosen;
    std::string user;
    std::string system;
    std::string log_folder;
};

/// The places as the environment gives them now.
LoggerPlaces logger_places();

/// InitLogger takes this for the configured level.
constexpr std::uint32_t configured_level = 0xFFFFFFFF;

/// Reads the configuration once, makes the loggers that are asked for and owns them. Opens nothing for
/// writing before the first line. For any thread.
class LoggerRegistry {
public:
    explicit LoggerRegistry(const LoggerPlaces& places);
    ~LoggerRegistry();
    LoggerRegistry(const LoggerRegistry&) = delete;
    LoggerRegistry& operator=(const LoggerRegistry&) = delete;

    /// The logger of a name: always the same one, with the level and channel of the first call.
    ZVPocoLogger* logger(const std::string& name, std::uint32_t priority);

private:
    /// What the configuration says about a logger: nothing if the channel is null or the level negative.
    struct Rule {
        ChannelPtr channel;
        int level{-1};
    };

    static Configuration read_configuration(const LoggerPlaces& places, Problems& problems);
    void read_rules(const Configuration& configuration, ChannelSet& channels, Problems& problems);
    Rule rule_for(const std::string& name) const;

    ChannelPtr m_default_channel;
    Notices m_notices;
    std::map<std::string, Rule> m_rules;
    std::mutex m_mutex;
    std::map<std::string, Poco::AutoPtr<ZVPocoLogger>> m_loggers;
};

} // namespace zvlog
