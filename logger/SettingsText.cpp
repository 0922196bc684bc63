#include "logger/SettingsText.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "logger/PropertyReader.h"

namespace zvlog {

namespace {

constexpr std::string_view file_header =
    "# Settings of the GenTL producer, one \"key = value\" per line. They "
    "can be edited while applications run.\n";

bool is_control(char letter) { return static_cast<unsigned char>(letter) < ' ' || letter == '\x7F'; }

// Each line of the description becomes a comment; control characters would end or garble it.
std::string as_comment(const std::string& description)
{
    std::string comment;
    std::size_t start = 0;
    while (start < description.size()) {
        const std::size_t end = std::min(description.find_first_of("\r\n", start), description.size());
        std::string line = description.substr(start, end - start);
        std::replace_if(line.begin(), line.end(), is_control, ' ');
        if (!line.empty())
            comment += "# " + line + "\n";
        start = end + 1;
    }
    return comment;
}

std::string with_windows_line_ends(const std::string& text)
{
    std::string result;
    for (const char letter : text)
        result += letter == '\n' ? std::string("\r\n") : std::string(1, letter);
    return result;
}

std::optional<std::uint32_t> parse_number(std::string_view text)
{
    int base = 10;
    if (text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X") {
        base = 16;
        text.remove_prefix(2);
    }
    std::uint32_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size())
        return std::nullopt;
    return number;
}

} // namespace

SettingEntry find_setting(std::string_view settings, std::string_view key)
{
    SettingEntry entry;
    if (settings.find(key) == std::string_view::npos) // so that a new key needs no walk through a long file
        return entry;
    PropertyReader reader(settings);
    while (reader.next()) {
        if (reader.key() == key && reader.has_separator()) {
            entry.is_present = true;
            entry.text = reader.value();
        }
    }
    if (entry.is_present)
        entry.number = parse_number(entry.text);
    return entry;
}

std::string with_setting_added(std::string_view settings, std::string_view key, std::uint32_t value,
                               const std::string& description)
{
    const std::string number = std::to_string(value);
    const std::string lines = "\n" + as_comment(description) + "# Default: " + number + "\n" +
                              std::string(key) + " = " + number + "\n";

    std::string text(settings.empty() ? file_header : settings);
    std::string added = text.back() == '\n' ? lines : "\n" + lines;
    if (text.find("\r\n") != std::string::npos)
        added = with_windows_line_ends(added);
    return text + added;
}

bool is_storable_key(std::string_view key)
{
    return !key.empty() && key == trimmed(key) && key.front() != '#' && key.front() != '!' &&
           std::none_of(key.begin(), key.end(),
                        [](char letter) { return letter == '=' || letter == ':' || is_control(letter); });
}

} // namespace zvlog
