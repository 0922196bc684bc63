#include "logger/ChannelSet.h"

#include <algorithm>
#include <iostream>
#include <limits>
#include <mutex>
#include <optional>
#include <utility>

#include <Poco/ConsoleChannel.h>
#include <Poco/Exception.h>
#include <Poco/FileChannel.h>
#include <Poco/FormattingChannel.h>
#include <Poco/NullChannel.h>
#include <Poco/PatternFormatter.h>
#include <Poco/SplitterChannel.h>
#include <Poco/StringTokenizer.h>

#include "logger/SystemChannel.h"
#include "platform/paths.h"

namespace zvlog {

namespace {

// What a configuration may make of one line: more is a mistake, or meant to stop the application.
constexpr unsigned deepest_channel = 8;
constexpr std::size_t most_copies = 16;
constexpr std::size_t longest_pattern = 500;
constexpr std::size_t longest_line = 65536;

// Patterns may repeat the text, one channel behind another.
class BoundedFormatter final : public Poco::PatternFormatter {
public:
    using Poco::PatternFormatter::PatternFormatter;

    void format(const Poco::Message& message, std::string& text) override
    {
        Poco::PatternFormatter::format(message, text);
        if (text.size() > longest_line)
            text.resize(longest_line);
    }
};

// Rotates by time. Poco's channel does that with the help of what it writes into the file.
class TimedFileChannel final : public Poco::FileChannel {
public:
    explicit TimedFileChannel(const FilePolicy& policy)
        : Poco::FileChannel(policy.path), m_folder(policy.make_folder ? platform::folder_of(policy.path) : "")
    {
    }

    void log(const Poco::Message& message) override
    {
        const std::lock_guard lock(m_mutex);
        if (m_is_broken)
            throw Poco::OpenFileException(path());
        if (!m_has_logged && !m_folder.empty())
            platform::make_folders(m_folder);
        try {
            Poco::FileChannel::log(message);
            m_has_logged = true;
        } catch (const Poco::WriteFileException&) {
            throw;
        } catch (...) {
            // A rotation that fails leaves Poco's channel with a deleted file: from then on it may neither be
            // used nor destroyed.
            m_is_broken = m_has_logged;
            if (m_is_broken)
                duplicate();
            throw;
        }
    }

private:
    const std::string m_folder;
    std::mutex m_mutex;
    bool m_has_logged{false};
    bool m_is_broken{false};
};

std::optional<std::uint64_t> parse_number(const std::string& text)
{
    std::uint64_t number = 0;
    for (const char digit : text) {
        if (digit < '0' || digit > '9' || number > std::numeric_limits<std::uint32_t>::max())
            return std::nullopt;
        number = number * 10 + static_cast<std::uint64_t>(digit - '0');
    }
    return text.empty() ? std::nullopt : std::optional(number);
}

// "100", "5 K", "2 M" or "never" (0); nothing for a rotation by time.
std::optional<std::uint64_t> parse_size(const std::string& rotation)
{
    if (rotation.empty() || rotation == "never")
        return 0;
    const std::size_t end = std::min(rotation.find_first_not_of("0123456789"), rotation.size());
    const std::size_t unit = std::min(rotation.find_first_not_of(" \t", end), rotation.size());
    const auto number = parse_number(rotation.substr(0, end));
    if (!number || *number == 0)
        return std::nullopt;
    const std::string suffix = rotation.substr(unit);
    if (suffix.empty())
        return number;
    if (suffix == "K")
        return *number * 1024;
    if (suffix == "M")
        return *number * 1024 * 1024;
    return std::nullopt;
}

bool is_true(const std::string& text) { return text == "true" || text == "True" || text == "TRUE"; }

std::string take(std::map<std::string, std::string>& properties, const std::string& name)
{
    const auto found = properties.find(name);
    if (found == properties.end())
        return {};
    std::string value = std::move(found->second);
    properties.erase(found);
    return value;
}

} // namespace

ChannelSet::ChannelSet(const Configuration& configuration, std::string log_folder, Problems& problems)
    : m_configuration(configuration), m_log_folder(std::move(log_folder)), m_problems(problems)
{
    for (const std::string& name : m_configuration.children("logging.channels"))
        channel(name);
}

ChannelPtr ChannelSet::channel(const std::string& name)
{
    const auto found = m_channels.find(name);
    if (found != m_channels.end())
        return found->second;

    const std::string key = "logging.channels." + name;
    if (!m_in_the_making.insert(name).second) {
        report(key, "refers to itself");
        return {};
    }
    ChannelPtr made;
    if (m_configuration.children(key).empty())
        report(key, "does not exist");
    else
        made = make_channel(key);
    m_in_the_making.erase(name);
    m_channels.emplace(name, made);
    return made;
}

ChannelPtr ChannelSet::channel_of(const std::string& key)
{
    if (m_configuration.value(key + ".channel.class"))
        return make_channel(key + ".channel");
    const auto name = m_configuration.value(key + ".channel");
    return name ? channel(*name) : ChannelPtr();
}

ChannelPtr ChannelSet::make_channel(const std::string& key)
{
    if (m_depth == deepest_channel) {
        report(key, "is behind more than " + std::to_string(deepest_channel) + " other channels");
        return {};
    }
    const std::string class_name = m_configuration.value(key + ".class").value_or("");
    ++m_depth;
    ChannelPtr bare = make_bare_channel(key, class_name);
    --m_depth;
    if (!bare)
        return {};
    FormatterPtr formatter = find_formatter(key);
    if (!formatter)
        return bare;
    ChannelPtr formatting(new Poco::FormattingChannel(formatter, bare));
    m_copies[formatting.get()] = copies_of(*bare);
    return formatting;
}

std::size_t ChannelSet::copies_of(const Poco::Channel& channel) const
{
    const auto found = m_copies.find(&channel);
    return found == m_copies.end() ? 1 : found->second;
}

ChannelPtr ChannelSet::make_bare_channel(const std::string& key, const std::string& class_name)
{
    if (class_name == "FileChannel")
        return make_file_channel(key);
    if (class_name == "SimpleFileChannel")
        return make_simple_file_channel(key);
    if (class_name == "SplitterChannel")
        return make_splitter(key);
    if (class_name == "FormattingChannel") {
        ChannelPtr inner = channel_of(key);
        if (!inner)
            report(key, "has no channel");
        return inner;
    }

    ChannelPtr made;
    if (class_name == "ConsoleChannel") // never the standard output, which is the application's
        made = new Poco::ConsoleChannel(std::clog);
    else if (class_name == "ColorConsoleChannel")
        made = new Poco::ColorConsoleChannel(std::clog);
    else if (class_name == "NullChannel")
        return ChannelPtr(new Poco::NullChannel); // takes any property
    else
        made = make_system_channel(class_name);

    if (made)
        set_properties(*made, key, channel_properties(key));
    else if (class_name == "AsyncChannel")
        report(key, "is an AsyncChannel, whose thread would outlive the library");
    else
        report(key, "has the unknown class '" + class_name + "'");
    return made;
}

ChannelPtr ChannelSet::make_splitter(const std::string& key)
{
    Poco::AutoPtr<Poco::SplitterChannel> splitter(new Poco::SplitterChannel);
    std::size_t copies = 0;
    for (const auto& [name, value] : channel_properties(key)) {
        if (name.compare(0, 7, "channel") != 0) {
            report(key, "has the unknown property '" + name + "'");
            continue;
        }
        const Poco::StringTokenizer names(
            value, ",;", Poco::StringTokenizer::TOK_IGNORE_EMPTY | Poco::StringTokenizer::TOK_TRIM);
        for (const std::string& part : names) {
            ChannelPtr target = channel(part);
            if (!target)
                continue;
            copies += copies_of(*target);
            if (copies > most_copies) {
                report(key, "writes each line more than " + std::to_string(most_copies) + " times");
                return {};
            }
            splitter->addChannel(target);
        }
    }
    m_copies[splitter.get()] = copies;
    if (splitter->count() > 0)
        return splitter;
    report(key, "has no channels");
    return {};
}

ChannelPtr ChannelSet::make_file_channel(const std::string& key)
{
    FilePolicy policy;
    if (!choose_path(key, policy))
        return {};
    Properties rest = channel_properties(key);
    const std::string archive = take(rest, "archive");
    const auto limit = parse_size(rest["rotation"]);
    if (!limit || (!archive.empty() && archive != "number") || rest.count("purgeAge") != 0)
        return make_poco_file_channel(key, policy);

    policy.limit = *limit;
    policy.archive_first = is_true(take(rest, "rotateOnOpen"));
    const std::string kept = take(rest, "purgeCount");
    const auto count = parse_number(kept);
    if (count && *count > 0)
        policy.archives = static_cast<unsigned>(std::min<std::uint64_t>(*count, 1000000));
    else if (!kept.empty() && kept != "none")
        report(key, "has the invalid purgeCount '" + kept + "'");
    if (is_true(take(rest, "compress")))
        report(key, "is not compressed, because that would need a thread");
    for (const char* const known : {"path", "rotation", "times", "flush"}) // each line is flushed in any case
        take(rest, known);
    for (const auto& [name, value] : rest)
        report(key, "has the unknown property '" + name + "'");
    return ChannelPtr(new RotatingFileChannel(std::move(policy)));
}

ChannelPtr ChannelSet::make_simple_file_channel(const std::string& key)
{
    FilePolicy policy;
    if (!choose_path(key, policy))
        return {};
    Properties rest = channel_properties(key);
    const std::string rotation = take(rest, "rotation");
    const auto limit = parse_size(rotation);
    if (!limit)
        report(key, "has the invalid rotation '" + rotation + "'");
    policy.limit = limit.value_or(0);
    policy.archives = 1;
    if (rest.count("secondaryPath") != 0) {
        FilePolicy second;
        if (!choose_path(key, second, take(rest, "secondaryPath")))
            return {};
        policy.archive = [path = second.path](unsigned) { return path; };
    }
    for (const char* const known : {"path", "flush"})
        take(rest, known);
    for (const auto& [name, value] : rest)
        report(key, "has the unknown property '" + name + "'");
    return ChannelPtr(new RotatingFileChannel(std::move(policy)));
}

ChannelPtr ChannelSet::make_poco_file_channel(const std::string& key, const FilePolicy& policy)
{
    Poco::AutoPtr<TimedFileChannel> made(new TimedFileChannel(policy));
    Properties rest = channel_properties(key);
    take(rest, "path");
    if (is_true(take(rest, "compress")))
        report(key, "is not compressed, because that would need a thread");
    set_properties(*made, key, rest);
    return made;
}

FormatterPtr ChannelSet::find_formatter(const std::string& key)
{
    if (const auto pattern = m_configuration.value(key + ".pattern"))
        return make_pattern(key, *pattern);
    if (m_configuration.value(key + ".formatter.class"))
        return make_formatter(key + ".formatter");
    if (const auto name = m_configuration.value(key + ".formatter"))
        return make_formatter("logging.formatters." + *name);
    return {};
}

FormatterPtr ChannelSet::make_formatter(const std::string& key)
{
    const auto class_name = m_configuration.value(key + ".class");
    if (!class_name) {
        report(key, "does not exist");
        return {};
    }
    if (*class_name != "PatternFormatter") {
        report(key, "has the unknown class '" + *class_name + "'");
        return {};
    }
    Properties rest = properties(key);
    FormatterPtr made = make_pattern(key, take(rest, "pattern"));
    if (made)
        set_properties(*made, key, rest);
    return made;
}

FormatterPtr ChannelSet::make_pattern(const std::string& key, const std::string& pattern)
{
    if (pattern.size() <= longest_pattern)
        return FormatterPtr(new BoundedFormatter(pattern));
    report(key, "has a pattern of more than " + std::to_string(longest_pattern) + " characters");
    return {};
}

bool ChannelSet::choose_path(const std::string& key, FilePolicy& policy)
{
    return choose_path(key, policy, m_configuration.value(key + ".path").value_or(""));
}

bool ChannelSet::choose_path(const std::string& key, FilePolicy& policy, const std::string& wanted)
{
    policy.path = platform::expand_home(wanted);
    if (!policy.path.empty() && !platform::is_absolute(policy.path)) {
        policy.make_folder = true;
        policy.path = m_log_folder.empty() ? "" : m_log_folder + "/" + policy.path;
    }
    policy.archive = numbered_archives(policy.path);
    if (policy.path.empty())
        report(key, wanted.empty() ? "has no path" : "is in a folder that does not exist");
    return !policy.path.empty();
}

ChannelSet::Properties ChannelSet::properties(const std::string& key) const
{
    const std::string prefix = key + ".";
    Properties found;
    for (const std::string& name : m_configuration.children(key)) {
        const auto value = m_configuration.value(prefix + name);
        if (value && name != "class")
            found.emplace(name, *value);
    }
    return found;
}

ChannelSet::Properties ChannelSet::channel_properties(const std::string& key) const
{
    Properties found = properties(key);
    found.erase("formatter"); // these two are the formatter's
    found.erase("pattern");
    return found;
}

void ChannelSet::set_properties(Poco::Configurable& object, const std::string& key,
                                const Properties& properties)
{
    for (const auto& [name, value] : properties) {
        try {
            object.setProperty(name, value);
        } catch (const Poco::Exception& failure) {
            report(key, "cannot use the property '" + name + "': " + failure.displayText());
        }
    }
}

void ChannelSet::report(const std::string& key, const std::string& problem)
{
    m_problems.push_back(key + " " + problem);
}

} // namespace zvlog
