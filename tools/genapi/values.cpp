#include "genapi/values.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <system_error>
#include <utility>

#include "gentl/texts.h"

namespace zvgentl::tool {

namespace {

template <class Number>
std::optional<Number> whole(const std::string& text, int base)
{
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number, base);
    if (error != std::errc() || stopped != end)
        return std::nullopt;
    return number;
}

std::optional<std::int64_t> address(const std::string& text, char separator, std::size_t count, int base)
{
    std::int64_t number = 0;
    std::size_t start = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t end = i + 1 < count ? text.find(separator, start) : text.size();
        if (end == std::string::npos)
            return std::nullopt;
        const auto byte = whole<std::uint8_t>(text.substr(start, end - start), base);
        if (!byte)
            return std::nullopt;
        number = number * 256 + *byte;
        start = end + 1;
    }
    return number;
}

constexpr std::size_t most_names = 3;
constexpr std::size_t longest_name = 100; // of those that are compared

} // namespace

std::optional<std::int64_t> parse_integer(const std::string& text, Notation notation)
{
    if (notation == Notation::ipv4_address && text.find('.') != std::string::npos)
        return address(text, '.', 4, 10);
    if (notation == Notation::mac_address && text.find(':') != std::string::npos)
        return address(text, ':', 6, 16);
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        const auto bits = whole<std::uint64_t>(text.substr(2), 16);
        return bits ? std::optional<std::int64_t>(static_cast<std::int64_t>(*bits)) : std::nullopt;
    }
    const bool has_plus = text.size() > 1 && text[0] == '+' && text[1] != '-';
    return whole<std::int64_t>(has_plus ? text.substr(1) : text, 10);
}

std::optional<double> parse_float(const std::string& text)
{
    double number = 0;
    const std::size_t start = text.size() > 1 && text[0] == '+' && text[1] != '-' ? 1 : 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data() + start, end, number);
    if (error != std::errc() || stopped != end || !std::isfinite(number))
        return std::nullopt;
    return number;
}

std::optional<bool> parse_boolean(const std::string& text)
{
    const std::string word = lower_case(text);
    if (word == "true" || word == "on" || word == "1")
        return true;
    if (word == "false" || word == "off" || word == "0")
        return false;
    return std::nullopt;
}

std::optional<std::vector<unsigned char>> parse_bytes(const std::string& text)
{
    std::vector<unsigned char> bytes;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == ' ') {
            ++at;
            continue;
        }
        const auto byte = at + 1 < text.size() ? whole<std::uint8_t>(text.substr(at, 2), 16) : std::nullopt;
        if (!byte)
            return std::nullopt;
        bytes.push_back(*byte);
        at += 2;
    }
    return bytes;
}

std::string bytes_text(const std::vector<unsigned char>& bytes)
{
    const char* const digits = "0123456789ABCDEF";
    std::string text;
    for (const unsigned char byte : bytes) {
        text += text.empty() ? "" : " ";
        text += digits[byte >> 4U];
        text += digits[byte & 0xFU];
    }
    return text;
}

std::string range_text(const Feature& feature)
{
    const std::string low = to_text(feature.minimum, feature.notation);
    const std::string high = to_text(feature.maximum, feature.notation);
    const std::string step = to_text(feature.increment, feature.notation);
    std::string text;
    if (!low.empty() && !high.empty())
        text = low + " to " + high;
    else if (!low.empty())
        text = "from " + low;
    else if (!high.empty())
        text = "up to " + high;
    if (!step.empty())
        text += (text.empty() ? "steps of " : " in steps of ") + step;
    return text;
}

bool is_allowed(const Feature& feature, std::int64_t number)
{
    const auto* const low = std::get_if<std::int64_t>(&feature.minimum);
    const auto* const high = std::get_if<std::int64_t>(&feature.maximum);
    const auto* const step = std::get_if<std::int64_t>(&feature.increment);
    if ((low != nullptr && number < *low) || (high != nullptr && number > *high))
        return false;
    if (step == nullptr || *step <= 1)
        return true;
    // Steps count from the minimum; without a sign, because the way from it may be longer than a signed
    // number.
    const std::uint64_t way = static_cast<std::uint64_t>(number) -
                              (low == nullptr ? std::uint64_t{0} : static_cast<std::uint64_t>(*low));
    return low == nullptr ? number % *step == 0 : way % static_cast<std::uint64_t>(*step) == 0;
}

bool is_allowed(const Feature& feature, double number)
{
    const auto* const low = std::get_if<double>(&feature.minimum);
    const auto* const high = std::get_if<double>(&feature.maximum);
    return (low == nullptr || number >= *low) && (high == nullptr || number <= *high);
}

std::size_t letter_distance(const std::string& from, const std::string& to)
{
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

std::vector<std::string> near_names(const std::string& wanted, const std::vector<std::string>& names)
{
    if (wanted.empty() || wanted.size() > longest_name)
        return {};
    const std::string written = lower_case(wanted);
    std::vector<std::pair<std::size_t, std::string>> near;
    for (const auto& name : names) {
        if (name.size() > longest_name)
            continue;
        const std::string candidate = lower_case(name);
        const bool is_part = written.size() > 2 && candidate.find(written) != std::string::npos;
        const std::size_t letters = letter_distance(written, candidate);
        if (letters <= std::max<std::size_t>(2, written.size() / 3))
            near.emplace_back(letters, name);
        else if (is_part)
            near.emplace_back(longest_name + letters, name);
    }
    std::sort(near.begin(), near.end());
    near.erase(std::unique(near.begin(), near.end()), near.end());
    std::vector<std::string> best;
    if (!near.empty() && near.front().first == 0)
        return {near.front().second}; // only capital letters are wrong
    for (std::size_t i = 0; i < std::min(near.size(), most_names); ++i)
        best.push_back(near[i].second);
    return best;
}

} // namespace zvgentl::tool
