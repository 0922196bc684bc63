#include "logger/LoggerRegistry.h"

#include <algorithm>
#include <array>
#include <utility>

#include <Poco/AutoPtr.h>
#include <Poco/Message.h>
#include <Poco/NullChannel.h>
#include <Poco/String.h>

#include "logger/RotatingFileChannel.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/paths.h"

// Poco 1.7 takes the channel as a bare pointer, later versions as a counted one: both accept this.
ZVPocoLogger::ZVPocoLogger(const std::string& name, Poco::Channel* channel, int level)
    : Poco::Logger(name, Poco::AutoPtr<Poco::Channel>(channel, true), level)
{
}

ZVPocoLogger::~ZVPocoLogger() = default;

namespace zvlog {

namespace {

constexpr const char* config_variable = "ZV_LOGGER_CONFIG";
constexpr const char* config_name = "/logger.properties";
constexpr const char* default_log_name = "/zvgentl.log";
constexpr std::uint64_t default_log_limit = std::uint64_t{2} * 1024 * 1024;
constexpr unsigned default_log_archives = 4;
constexpr int default_level = Poco::Message::PRIO_WARNING;
constexpr std::size_t longest_notice = 2000;

// Poco's numbering: the position is the level.
constexpr std::array<const char*, 9> level_names{"none",   "fatal",       "critical", "error", "warning",
                                                 "notice", "information", "debug",    "trace"};

// -1: not a level.
int parse_level(const std::string& text)
{
    for (std::size_t level = 0; level < level_names.size(); ++level) {
        if (text == std::to_string(level) || Poco::icompare(text, std::string(level_names[level])) == 0)
            return static_cast<int>(level);
    }
    return -1;
}

// The constructor of Poco's loggers is for derived classes only.
class OwnedLogger final : public ZVPocoLogger {
public:
    OwnedLogger(const std::string& name, Poco::Channel* channel, int level)
        : ZVPocoLogger(name, channel, level)
    {
    }

protected:
    ~OwnedLogger() override = default;
};

ChannelPtr make_default_channel(const std::string& folder)
{
    if (folder.empty())
        return ChannelPtr(new Poco::NullChannel);
    FilePolicy policy;
    policy.path = folder + default_log_name;
    policy.archive = numbered_archives(policy.path);
    policy.limit = default_log_limit;
    policy.archives = default_log_archives;
    policy.make_folder = true;
    policy.prefix_lines = true;
    return ChannelPtr(new RotatingFileChannel(std::move(policy)));
}

std::string joined(const Problems& problems)
{
    std::string text;
    for (const std::string& problem : problems)
        text += (text.empty() ? "" : "; ") + problem;
    if (text.size() > longest_notice)
        text = text.substr(0, longest_notice) + "...";
    return text;
}

} // namespace

LoggerPlaces logger_places()
{
    LoggerPlaces places;
    places.chosen = platform::environment(config_variable);
    const std::string user = platform::user_configuration_folder().generic_u8string();
    places.user = user.empty() ? "" : user + config_name;
    places.system = platform::machine_configuration_folder().generic_u8string() + config_name;
    places.log_folder = platform::user_state_folder().generic_u8string();
    return places;
}

LoggerRegistry::LoggerRegistry(const LoggerPlaces& places)
    : m_default_channel(make_default_channel(places.log_folder)), m_notices(m_default_channel)
{
    Problems problems;
    const Configuration configuration = read_configuration(places, problems);
    ChannelSet channels(configuration, places.log_folder, problems);
    read_rules(configuration, channels, problems);
    if (!problems.empty())
        m_notices.post("parts of the logging configuration cannot be used: " + joined(problems));
}

LoggerRegistry::~LoggerRegistry()
{
    m_notices.deliver(); // unless a line came first
}

Configuration LoggerRegistry::read_configuration(const LoggerPlaces& places, Problems& problems)
{
    for (const std::string& path : {places.chosen, places.user, places.system}) {
        if (path.empty())
            continue;
        if (!platform::is_absolute(path)) {
            problems.push_back(std::string(config_variable) + " is not an absolute path: " + path);
            continue;
        }
        const platform::FileContent file = platform::read_file(path);
        if (file.state == platform::FileState::present)
            return Configuration(file.text, problems);
        if (file.state == platform::FileState::unreadable)
            problems.push_back(path + " cannot be read: " + file.reason);
        else if (path == places.chosen)
            problems.push_back(std::string(config_variable) + " names a file that does not exist: " + path);
    }
    return {};
}

void LoggerRegistry::read_rules(const Configuration& configuration, ChannelSet& channels, Problems& problems)
{
    for (const std::string& section : configuration.children("logging.loggers")) {
        const std::string key = "logging.loggers." + section;
        Rule& rule = m_rules[configuration.value(key + ".name").value_or("")]; // without a name: the root
        if (ChannelPtr channel = channels.channel_of(key))
            rule.channel = channel;
        if (const auto level = configuration.value(key + ".level")) {
            rule.level = parse_level(*level);
            if (rule.level < 0)
                problems.push_back(key + " has the unknown level '" + *level + "'");
        }
    }
}

LoggerRegistry::Rule LoggerRegistry::rule_for(const std::string& name) const
{
    // As with Poco, "A.B" inherits what is not configured for it from "A", and that from the root. The
    // extension of a source file is treated the same way.
    Rule result;
    std::string current = name;
    for (;;) {
        const auto found = m_rules.find(current);
        if (found != m_rules.end()) {
            if (!result.channel)
                result.channel = found->second.channel;
            if (result.level < 0)
                result.level = found->second.level;
        }
        if (current.empty())
            break;
        const std::size_t dot = current.find_last_of('.');
        current.resize(dot == std::string::npos ? 0 : dot);
    }
    if (!result.channel)
        result.channel = m_default_channel;
    if (result.level < 0)
        result.level = default_level;
    return result;
}

ZVPocoLogger* LoggerRegistry::logger(const std::string& name, std::uint32_t priority)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_loggers.find(name);
    if (found != m_loggers.end())
        return found->second.get();

    const Rule rule = rule_for(name);
    const int level = priority == configured_level
                          ? rule.level
                          : static_cast<int>(std::min<std::uint32_t>(priority, Poco::Message::PRIO_TRACE));
    ChannelPtr channel(new GuardedChannel(name, rule.channel, m_notices));
    Poco::AutoPtr<ZVPocoLogger> made(new OwnedLogger(name, channel.get(), level));
    ZVPocoLogger* const logger = made.get();
    m_loggers.emplace(name, std::move(made));
    return logger;
}

} // namespace zvlog
