#include "description/Description.h"

#include <charconv>
#include <system_error>

namespace zvgenapi {

namespace {

constexpr std::string_view blanks = " \t\r\n";

template <class Number, class... Base>
std::optional<Number> whole_text(std::string_view text, Base... base) noexcept
{
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number, base...);
    if (error != std::errc() || stopped != end)
        return std::nullopt;
    return number;
}

std::string_view without_plus(std::string_view text) noexcept
{
    return text.size() > 1 && text[0] == '+' && text[1] != '-' ? text.substr(1) : text;
}

NodeIndex look_up(const std::unordered_map<std::string_view, NodeIndex>& names,
                  std::string_view name) noexcept
{
    const auto found = names.find(name);
    return found == names.end() ? no_node : found->second;
}

bool takes_prefix(std::string_view& name, std::string_view prefix) noexcept
{
    if (name.substr(0, prefix.size()) != prefix)
        return false;
    name.remove_prefix(prefix.size());
    return true;
}

} // namespace

Elements Description::of(NodeIndex node) const noexcept
{
    const NodeText& text = nodes[node];
    return {elements.data() + text.first, elements.data() + text.last};
}

const Element* Description::find(NodeIndex node, Tag tag) const noexcept
{
    for (const Element& element : of(node))
        if (element.tag == tag)
            return &element;
    return nullptr;
}

void Description::refuse_cycle(NodeIndex node, Aspect aspect) const
{
    const std::size_t problem = cycles[node * aspect_count + static_cast<std::size_t>(aspect)];
    throw Error(ErrorKind::cycle,
                problem > problems.size() ? "it depends on itself" : problems[problem - 1].message(),
                std::string(nodes[node].name), static_cast<int>(nodes[node].line));
}

NodeIndex Description::find(std::string_view name) const noexcept
{
    if (takes_prefix(name, "Std::"))
        return look_up(standard_names, name);
    if (takes_prefix(name, "Cust::"))
        return look_up(custom_names, name);
    const NodeIndex standard = look_up(standard_names, name);
    return standard == no_node ? look_up(custom_names, name) : standard;
}

std::optional<std::int64_t> parse_integer(std::string_view text) noexcept
{
    text = trimmed(text);
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        const auto bits = whole_text<std::uint64_t>(text.substr(2), 16);
        return bits ? std::optional<std::int64_t>(static_cast<std::int64_t>(*bits)) : std::nullopt;
    }
    text = without_plus(text);
    const auto number = whole_text<std::int64_t>(text, 10);
    if (number)
        return number;
    const auto bits = whole_text<std::uint64_t>(text, 10); // some are written without a sign
    return bits ? std::optional<std::int64_t>(static_cast<std::int64_t>(*bits)) : std::nullopt;
}

std::optional<double> parse_float(std::string_view text) noexcept
{
    text = trimmed(text);
    if (text == "INF")
        return std::numeric_limits<double>::infinity();
    if (text == "-INF")
        return -std::numeric_limits<double>::infinity();
    if (text == "NaN")
        return std::numeric_limits<double>::quiet_NaN();
    const auto number = whole_text<double>(without_plus(text));
    if (number)
        return number;
    const auto integer = parse_integer(text);
    return integer ? std::optional<double>(static_cast<double>(*integer)) : std::nullopt;
}

std::optional<bool> parse_yes_no(std::string_view text) noexcept
{
    text = trimmed(text);
    if (text == "Yes" || text == "true" || text == "1")
        return true;
    if (text == "No" || text == "false" || text == "0")
        return false;
    return std::nullopt;
}

std::string_view trimmed(std::string_view text) noexcept
{
    const std::size_t start = text.find_first_not_of(blanks);
    return start == std::string_view::npos ? std::string_view()
                                           : text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

} // namespace zvgenapi
