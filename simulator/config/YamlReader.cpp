#include "simulator/config/YamlReader.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cmath>
#include <numeric>
#include <system_error>

namespace zvsim {

namespace {

struct Unit {
    std::string_view name;
    double nanoseconds;
};

constexpr std::array units{Unit{"ns", 1}, Unit{"us", 1e3}, Unit{"ms", 1e6}, Unit{"s", 1e9},
                           Unit{"min", 60e9}};

/// The whole text as a number, or nothing.
template <class Number, class... Format>
std::optional<Number> number_from(std::string_view text, Format... format)
{
    Number number{};
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number, format...);
    if (error != std::errc{} || stop != text.data() + text.size())
        return std::nullopt;
    return number;
}

std::optional<int64_t> integer_from(std::string_view text)
{
    if (text.substr(0, 2) != "0x")
        return number_from<int64_t>(text);
    const auto digits = text.substr(2);
    return digits.empty() || digits.front() == '-' ? std::nullopt : number_from<int64_t>(digits, 16);
}

/// As people write a number: without needless zeros, and without an exponent.
std::string shown_number(double number)
{
    std::array<char, 400> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    return {text.data(), end.ptr};
}

std::string shown_duration(std::chrono::nanoseconds duration)
{
    const auto count = static_cast<double>(duration.count());
    const Unit* best = units.data();
    for (const Unit& unit : units) {
        if (unit.name != "min" && std::abs(count) >= unit.nanoseconds)
            best = &unit;
    }
    return count == 0 ? "0 s" : shown_number(count / best->nanoseconds) + " " + std::string{best->name};
}

bool is_printable(char character) { return character >= 0x20 && character < 0x7F; }

/// How many characters must be inserted, removed or replaced to turn one word into the other.
size_t distance(std::string_view from, std::string_view to)
{
    std::vector<size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < from.size(); ++i) {
        size_t diagonal = row[0]++;
        for (size_t j = 0; j < to.size(); ++j) {
            const size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

std::string nearest(std::string_view word, const std::vector<std::string_view>& words)
{
    constexpr size_t longest = 40;
    if (words.empty() || word.size() > longest)
        return {};
    const auto found = std::min_element(words.begin(), words.end(), [word](auto left, auto right) {
        return distance(word, left) < distance(word, right);
    });
    return distance(word, *found) <= std::max<size_t>(2, word.size() / 3) ? std::string{*found} : "";
}

std::string did_you_mean(const std::string& word)
{
    return word.empty() ? "" : "; did you mean " + word + "?";
}

} // namespace

std::string joined(const std::vector<std::string_view>& words)
{
    std::string text;
    for (const std::string_view word : words)
        text.append(text.empty() ? "" : ", ").append(word);
    return text;
}

void YamlValue::report(const std::string& wrong, const std::string& allowed) const
{
    m_errors->add(line(), wrong, allowed);
}

void YamlValue::wrong(const std::string& allowed) const { report(m_name + " is " + shown(), allowed); }

std::string YamlValue::shown() const
{
    switch (m_node->kind) {
    case YamlNode::Kind::nothing:
        return "empty";
    case YamlNode::Kind::list:
        return "a list";
    case YamlNode::Kind::map:
        return "a section with keys";
    case YamlNode::Kind::scalar:
        break;
    }
    return m_node->is_quoted ? "the text " + in_quotes(raw()) : in_quotes(raw());
}

void YamlValue::wrong_choice(const std::vector<std::string_view>& words) const
{
    const std::string hint = is_scalar() ? nearest(raw(), words) : "";
    report(m_name + " is " + shown() + did_you_mean(hint), joined(words));
}

std::optional<std::string> YamlValue::text(size_t longest, size_t shortest) const
{
    if (is_scalar() && raw().size() >= shortest && raw().size() <= longest &&
        std::all_of(raw().begin(), raw().end(), is_printable))
        return raw();
    wrong(std::to_string(shortest) + " to " + std::to_string(longest) + " printable ASCII characters");
    return std::nullopt;
}

std::optional<std::filesystem::path> YamlValue::path(const char* what, size_t longest) const
{
    const auto is_line_end = [](char character) { return character == '\n' || character == '\r'; };
    if (!is_scalar() || raw().empty() || raw().size() > longest ||
        std::any_of(raw().begin(), raw().end(), is_line_end)) {
        wrong("a path of up to " + std::to_string(longest) + " bytes");
        return std::nullopt;
    }
    try {
        auto path = std::filesystem::u8path(raw());
        if (path.is_absolute())
            return path;
    } catch (const std::system_error&) {
        // bytes that are not valid text, on a system whose file names are text
    }
    wrong(std::string{"the absolute path of "} + what);
    return std::nullopt;
}

std::optional<int64_t> YamlValue::integer(int64_t least, int64_t most) const
{
    const auto number = is_scalar() && !m_node->is_quoted ? integer_from(raw()) : std::nullopt;
    if (number && *number >= least && *number <= most)
        return number;
    wrong("a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    return std::nullopt;
}

std::optional<double> YamlValue::number(double least, double most, const char* otherwise) const
{
    const auto number = is_scalar() && !m_node->is_quoted
                            ? number_from<double>(raw(), std::chars_format::general)
                            : std::nullopt;
    if (number && *number >= least && *number <= most)
        return number;
    wrong(std::string{otherwise} + "a number from " + shown_number(least) + " to " + shown_number(most));
    return std::nullopt;
}

std::optional<bool> YamlValue::flag() const
{
    if (!m_node->is_quoted && raw() == "true")
        return true;
    if (!m_node->is_quoted && raw() == "false")
        return false;
    wrong("true, false");
    return std::nullopt;
}

std::optional<std::chrono::nanoseconds> YamlValue::duration(std::chrono::nanoseconds least,
                                                            std::chrono::nanoseconds most) const
{
    const std::string_view text = raw();
    const size_t end_of_number = std::min(text.find_first_not_of("-.0123456789"), text.size());
    const size_t start_of_unit = std::min(text.find_first_not_of(' ', end_of_number), text.size());
    const auto number = number_from<double>(text.substr(0, end_of_number), std::chars_format::fixed);
    const auto unit = std::find_if(units.begin(), units.end(), [&](const Unit& candidate) {
        return candidate.name == text.substr(start_of_unit);
    });
    if (number && unit != units.end()) {
        const double nanoseconds = std::round(*number * unit->nanoseconds);
        if (nanoseconds >= static_cast<double>(least.count()) &&
            nanoseconds <= static_cast<double>(most.count()))
            return std::chrono::nanoseconds{static_cast<int64_t>(nanoseconds)};
    }
    wrong(shown_duration(least) + " to " + shown_duration(most) +
          ", with one of the units ns, us, ms, s, min");
    return std::nullopt;
}

std::vector<YamlValue> YamlValue::list(size_t most, size_t least) const
{
    std::vector<YamlValue> values;
    if (!is_list() || m_node->items.size() < least || m_node->items.size() > most) {
        const std::string count =
            is_list() ? " with " + std::to_string(m_node->items.size()) + " entries" : "";
        report(m_name + " is " + shown() + count,
               "a list with " + std::to_string(least) + " to " + std::to_string(most) + " entries");
        return values;
    }
    for (const YamlNode* const item : m_node->items)
        values.emplace_back(*item, "entry " + std::to_string(values.size() + 1) + " of " + m_name, *m_errors);
    return values;
}

YamlMap YamlValue::map(const YamlKeys& keys) const { return {*this, keys}; }

YamlMap::YamlMap(const YamlValue& value, const YamlKeys& keys) : m_value{value}
{
    static const YamlNode no_keys{};
    if (!value.is_map()) {
        value.wrong(std::string{"a section with "} + keys.section + " keys: " + joined(keys.keys));
        m_value.m_node = &no_keys;
        return;
    }
    for (const auto& [key, ignored] : value.m_node->entries) {
        if (std::find(keys.keys.begin(), keys.keys.end(), key->text) != keys.keys.end())
            continue;
        const std::string hint = nearest(key->text, keys.keys);
        value.m_errors->add(key->line,
                            std::string{"unknown "} + keys.section + " key " + in_quotes(key->text) +
                                did_you_mean(hint),
                            joined(keys.keys));
    }
}

std::optional<YamlValue> YamlMap::find(std::string_view key) const
{
    for (const auto& [name, node] : m_value.m_node->entries) {
        if (name->text == key)
            return YamlValue{*node, std::string{key}, *m_value.m_errors};
    }
    return std::nullopt;
}

bool YamlMap::text(std::string_view key, std::string& target, size_t longest, size_t shortest) const
{
    return read(key, target, [=](const YamlValue& value) { return value.text(longest, shortest); });
}

bool YamlMap::flag(std::string_view key, bool& target) const
{
    return read(key, target, [](const YamlValue& value) { return value.flag(); });
}

bool YamlMap::number(std::string_view key, double& target, double least, double most) const
{
    return read(key, target, [=](const YamlValue& value) { return value.number(least, most); });
}

std::vector<YamlValue> YamlMap::list(std::string_view key, size_t most, size_t least) const
{
    const auto found = find(key);
    return found ? found->list(most, least) : std::vector<YamlValue>{};
}

void YamlMap::report(const std::string& wrong, const std::string& allowed) const
{
    m_value.report(wrong, allowed);
}

} // namespace zvsim
