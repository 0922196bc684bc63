#include "zvgentl/SettingsFile.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <system_error>

#include "platform/FileLock.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/paths.h"

namespace zvgentl::tool {

namespace {

constexpr int most_attempts = 10; // to replace a file that programs change without the lock

std::string trimmed(const std::string& text)
{
    const char* const blanks = " \t\r\n\f\v";
    const std::size_t start = text.find_first_not_of(blanks);
    return start == std::string::npos ? "" : text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

/// A line of the file as key and value; the key is empty for comments and other lines.
SettingLine parse_line(const std::string& line)
{
    const std::string content = trimmed(line);
    const std::size_t sign = content.find_first_of("=:");
    if (sign == std::string::npos || content[0] == '#' || content[0] == '!')
        return {};
    return {trimmed(content.substr(0, sign)), trimmed(content.substr(sign + 1))};
}

/// With their line ends.
std::vector<std::string> lines_of(const std::string& text)
{
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size() - 1) + 1;
        lines.push_back(text.substr(start, end - start));
        start = end;
    }
    return lines;
}

platform::FileContent read_existing(const FileKind& kind, const std::string& path)
{
    platform::FileContent content = platform::read_file(path);
    if (content.state == platform::FileState::unreadable)
        throw std::runtime_error(std::string("cannot read the ") + kind.title + " " + path + ": " +
                                 content.reason);
    return content;
}

} // namespace

const std::vector<SettingKey>& setting_keys()
{
    static const std::vector<SettingKey> keys{
        {"GenTL.Buffer.DeliveredImageHeight-Overwrite", std::nullopt, "a buffer is announced",
         "the delivered height to report; absent: the height of the image"},
        {"GenTL.Buffer.PixelFormatNameSpace", 1, "a buffer is announced",
         "not 0: pixel format codes of CoaXPress are translated to those of GenICam; 0: they are reported as "
         "they are"},
        {"GenTL.Buffer.PixelFormatNameSpace-Overwrite", std::nullopt, "a buffer is announced",
         "the name space of pixel formats to report; absent: 3 for codes below 0x10000, else 4"},
        {"GenTL.Buffer.SerializeBufferType", 1, "a buffer is announced",
         "not 0: the state of a buffer is protected by a lock of its own; 0: it is not"},
        {"GenTL.Event.SerializeStreamEvent", 1, "an event is registered",
         "not 0: the queue of new buffers is protected by a lock of its own; 0: it is not"},
        {"GenTL.Interface.ExposeDemoGrabber", 0, "the list of interfaces is updated",
         "0: the last of several grabbers, the demo grabber, is hidden; not 0: it is shown"},
        {"GenTL.Stream.BufferAllocMin", 4, "the device list is rebuilt",
         "the minimum number of buffers to announce"},
        {"GenTL.Stream.QueuedBufferMode-Overwrite", std::nullopt, "a stream is opened",
         "0: cyclic mode; not 0: queued mode; absent: queued mode if the grabber supports it"},
        {"GenTL.Stream.SignaledEventMode", 1, "the device list is rebuilt",
         "not 0: EventGetData sleeps until a buffer is signalled; 0: it polls, which uses a whole core"},
        {"GenTL.Stream.StreamPayloadSizeType", 2, "the device list is rebuilt",
         "1: the payload size is fixed when a stream is created; 2: it is computed at each request"},
    };
    return keys;
}

SettingsFile read_settings_file(const FileKind& kind)
{
    const std::string chosen = platform::environment(kind.variable);
    if (!chosen.empty() && !platform::is_absolute(chosen))
        throw std::runtime_error(std::string(kind.variable) + " must be an absolute path, but is " + chosen);
    const std::string user_folder = platform::user_configuration_folder().generic_u8string();
    const std::string user = user_folder.empty() ? "" : user_folder + kind.name;
    SettingsFile file;
    file.target = chosen.empty() ? user : chosen;
    for (const std::string& path :
         {chosen, user, platform::machine_configuration_folder().generic_u8string() + kind.name}) {
        const platform::FileContent content =
            path.empty() ? platform::FileContent() : read_existing(kind, path);
        if (content.state != platform::FileState::present)
            continue;
        file.source = path;
        file.text = content.text;
        break;
    }
    return file;
}

std::vector<SettingLine> settings_of(const std::string& text)
{
    std::vector<SettingLine> settings;
    for (const std::string& line : lines_of(text)) {
        const SettingLine setting = parse_line(line);
        if (setting.key.empty())
            continue;
        const auto known = std::find_if(settings.begin(), settings.end(),
                                        [&](const auto& earlier) { return earlier.key == setting.key; });
        if (known != settings.end())
            known->value = setting.value;
        else
            settings.push_back(setting);
    }
    return settings;
}

std::optional<std::uint32_t> parse_setting(const std::string& text)
{
    const bool is_hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] =
        std::from_chars(text.data() + (is_hexadecimal ? 2 : 0), end, number, is_hexadecimal ? 16 : 10);
    return error == std::errc() && stopped == end ? std::optional(number) : std::nullopt;
}

std::string with_setting_changed(const std::string& text, const std::string& key, const std::string& value)
{
    const std::string line_end = text.find("\r\n") == std::string::npos ? "\n" : "\r\n";
    const std::string changed = key + " = " + value + line_end;
    std::vector<std::string> lines = lines_of(text);
    for (auto line = lines.rbegin(); line != lines.rend(); ++line)
        if (parse_line(*line).key == key) {
            *line = changed;
            std::string result;
            for (const std::string& each : lines)
                result += each;
            return result;
        }
    const bool is_ended = text.empty() || text.back() == '\n';
    return text + (is_ended ? "" : line_end) + changed;
}

std::string with_setting_removed(const std::string& text, const std::string& key)
{
    std::string result;
    for (const std::string& line : lines_of(text))
        if (parse_line(line).key != key)
            result += line;
    return result;
}

void change_settings(const FileKind& kind,
                     std::string (*change)(const std::string& text, const SettingLine& line),
                     const std::vector<SettingLine>& lines)
{
    const std::string target = platform::resolve_links(read_settings_file(kind).target);
    if (target.empty())
        throw std::runtime_error(std::string("the user has no configuration folder; ") + kind.variable +
                                 " can name a file");
    if (platform::environment(kind.variable).empty())
        platform::make_folders(platform::folder_of(target));
    const platform::FileLock lock(target + ".lock");
    std::string reason = lock.reason();
    for (int attempt = 0; lock.is_held() && attempt < most_attempts; ++attempt) {
        const platform::FileContent seen = read_existing(kind, target);
        std::string text = read_settings_file(kind).text;
        for (const SettingLine& line : lines)
            text = change(text, line);
        const auto outcome = platform::replace_file(target, seen, text, platform::Flush::first, reason);
        if (outcome == platform::Replacement::done)
            return;
        if (outcome == platform::Replacement::outdated)
            reason = "other programs keep changing it";
        else
            break;
    }
    throw std::runtime_error(std::string("cannot write the ") + kind.title + " " + target + ": " + reason);
}

} // namespace zvgentl::tool
