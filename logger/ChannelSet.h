#pragma once

#include <map>
#include <set>
#include <string>

#include <Poco/AutoPtr.h>
#include <Poco/Channel.h>
#include <Poco/Formatter.h>

#include "logger/Configuration.h"
#include "logger/RotatingFileChannel.h"

namespace zvlog {

using ChannelPtr = Poco::AutoPtr<Poco::Channel>;
using FormatterPtr = Poco::AutoPtr<Poco::Formatter>;

/// Makes the channels and formatters of a configuration, without Poco's registry, which belongs to the
/// application. Only makes objects and opens nothing. What cannot be made is reported as a problem and left
/// out. For one thread.
class ChannelSet {
public:
    /// `log_folder` is where files without a folder of their own go; empty when there is no such place.
    ChannelSet(const Configuration& configuration, std::string log_folder, Problems& problems);

    /// The channel described by "logging.channels.`name`", the same one for the same name; null when there is
    /// none.
    ChannelPtr channel(const std::string& name);
    /// The channel that "`key`.channel" names, or that the keys below it describe; null when there is none.
    ChannelPtr channel_of(const std::string& key);

private:
    using Properties = std::map<std::string, std::string>;

    ChannelPtr make_channel(const std::string& key);
    std::size_t copies_of(const Poco::Channel& channel) const;
    FormatterPtr make_pattern(const std::string& key, const std::string& pattern);
    ChannelPtr make_bare_channel(const std::string& key, const std::string& class_name);
    ChannelPtr make_splitter(const std::string& key);
    ChannelPtr make_file_channel(const std::string& key);
    ChannelPtr make_simple_file_channel(const std::string& key);
    ChannelPtr make_poco_file_channel(const std::string& key, const FilePolicy& policy);
    FormatterPtr find_formatter(const std::string& key);
    FormatterPtr make_formatter(const std::string& key);
    bool choose_path(const std::string& key, FilePolicy& policy);
    bool choose_path(const std::string& key, FilePolicy& policy, const std::string& wanted);
    Properties properties(const std::string& key) const;
    Properties channel_properties(const std::string& key) const;
    void set_properties(Poco::Configurable& object, const std::string& key, const Properties& properties);
    void report(const std::string& key, const std::string& problem);

    const Configuration& m_configuration;
    const std::string m_log_folder;
    Problems& m_problems;
    std::map<std::string, ChannelPtr> m_channels;
    std::set<std::string> m_in_the_making;
    unsigned m_depth{0}; // how many channels the one in the making is behind
    std::map<const Poco::Channel*, std::size_t>
        m_copies; // that a channel makes of a line, if that is not one
};

} // namespace zvlog
