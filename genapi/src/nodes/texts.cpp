#include "nodes/texts.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include "nodes/Step.h"
#include "nodes/changes.h"
#include "nodes/registers.h"
#include "nodes/values.h"

namespace zvgenapi {

namespace {

/// The element of the node, or else of the node that stores its value.
std::string_view inherited_text(Core& core, NodeIndex node, Tag tag)
{
    const Step step(core, node, Aspect::value);
    if (const Element* const element = core.description.find(node, tag))
        return element->text;
    const Element* const below = core.description.find(node, Tag::p_value);
    return below == nullptr || below->target == no_node ? std::string_view()
                                                        : inherited_text(core, below->target, tag);
}

template <class Value>
Value named(std::string_view name, Value last, Value otherwise)
{
    for (int i = 0; i <= static_cast<int>(last); ++i)
        if (name == name_of(static_cast<Value>(i)))
            return static_cast<Value>(i);
    return otherwise;
}

constexpr const char* digits = "0123456789ABCDEF";

std::string hexadecimal(const std::string& bytes)
{
    std::string text;
    text.reserve(2 * bytes.size());
    for (const char letter : bytes) {
        const auto byte = static_cast<unsigned char>(letter);
        text += digits[byte >> 4U];
        text += digits[byte & 0xFU];
    }
    return text;
}

std::string hexadecimal(std::int64_t number)
{
    std::string text;
    for (auto rest = static_cast<std::uint64_t>(number); rest != 0 || text.empty(); rest >>= 4U)
        text.insert(text.begin(), digits[rest & 0xFU]);
    return "0x" + text;
}

enum class Base { ten, sixteen };

/// The lowest `count` bytes, the highest of them first.
std::string bytes_text(std::int64_t number, unsigned count, char separator, Base base)
{
    std::string text;
    for (unsigned i = count; i > 0; --i) {
        const auto byte =
            static_cast<unsigned char>(static_cast<std::uint64_t>(number) >> (8 * (i - 1)) & 0xFFU);
        text +=
            base == Base::ten ? std::to_string(byte) : hexadecimal(std::string(1, static_cast<char>(byte)));
        if (i > 1)
            text += separator;
    }
    return text;
}

std::string integer_text(Core& core, NodeIndex node)
{
    const std::int64_t number = read_number(core, node).to_integer();
    switch (representation_of(core, node)) {
    case Representation::hex_number:
        return hexadecimal(number);
    case Representation::ipv4_address:
        return bytes_text(number, 4, '.', Base::ten);
    case Representation::mac_address:
        return bytes_text(number, 6, ':', Base::sixteen);
    default:
        return std::to_string(number);
    }
}

/// The digits that the description asks for, or else the fewest that give the same number again.
std::string float_text(Core& core, NodeIndex node)
{
    const double number = read_number(core, node).to_floating();
    const DisplayNotation notation = notation_of(core, node);
    const auto precision = static_cast<int>(std::clamp<std::int64_t>(precision_of(core, node), 0, 100));
    std::array<char, 512> text{};
    char* const end = text.data() + text.size();
    if (notation == DisplayNotation::automatic && inherited_text(core, node, Tag::display_precision).empty())
        return {text.data(), std::to_chars(text.data(), end, number).ptr};
    const auto format = notation == DisplayNotation::fixed        ? std::chars_format::fixed
                        : notation == DisplayNotation::scientific ? std::chars_format::scientific
                                                                  : std::chars_format::general;
    return {text.data(), std::to_chars(text.data(), end, number, format, precision).ptr};
}

std::optional<std::uint64_t> parse_byte(std::string_view text, int base)
{
    std::uint8_t byte = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, byte, base);
    return error == std::errc() && stopped == end ? std::optional<std::uint64_t>(byte) : std::nullopt;
}

std::optional<std::int64_t> parse_address(std::string_view text, unsigned count, char separator, int base)
{
    std::uint64_t number = 0;
    for (unsigned i = 0; i < count; ++i) {
        const std::size_t end = i + 1 < count ? text.find(separator) : text.size();
        if (end == std::string_view::npos)
            return std::nullopt;
        const auto byte = parse_byte(text.substr(0, end), base);
        if (!byte)
            return std::nullopt;
        number = number << 8U | *byte;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return static_cast<std::int64_t>(number);
}

std::optional<std::int64_t> parse_represented(std::string_view text, Representation representation)
{
    if (representation == Representation::ipv4_address && text.find('.') != std::string_view::npos)
        return parse_address(text, 4, '.', 10);
    if (representation == Representation::mac_address && text.find(':') != std::string_view::npos)
        return parse_address(text, 6, ':', 16);
    return parse_integer(text);
}

std::optional<std::string> parse_bytes(std::string_view text)
{
    std::string bytes;
    while (!(text = trimmed(text)).empty()) {
        const auto byte = text.size() < 2 ? std::nullopt : parse_byte(text.substr(0, 2), 16);
        if (!byte)
            return std::nullopt;
        bytes += static_cast<char>(static_cast<unsigned char>(*byte));
        text.remove_prefix(2);
    }
    return bytes;
}

[[noreturn]] void refuse_text(const Core& core, NodeIndex node, const std::string& text, const char* wanted)
{
    fail(core, node, ErrorKind::value, "\"" + text.substr(0, 100) + "\" is not " + wanted);
}

template <class Value>
const Value& required(const Core& core, NodeIndex node, const std::optional<Value>& value,
                      const std::string& text, const char* wanted)
{
    if (!value)
        refuse_text(core, node, text, wanted);
    return *value;
}

} // namespace

Representation representation_of(Core& core, NodeIndex node)
{
    return named(inherited_text(core, node, Tag::representation), Representation::mac_address,
                 Representation::pure_number);
}

DisplayNotation notation_of(Core& core, NodeIndex node)
{
    return named(inherited_text(core, node, Tag::display_notation), DisplayNotation::scientific,
                 DisplayNotation::automatic);
}

std::int64_t precision_of(Core& core, NodeIndex node)
{
    return parse_integer(inherited_text(core, node, Tag::display_precision)).value_or(6);
}

std::string unit_of(Core& core, NodeIndex node) { return std::string(inherited_text(core, node, Tag::unit)); }

std::string value_text(Core& core, NodeIndex node)
{
    switch (interface_of(core.description.nodes[node].type)) {
    case InterfaceType::integer:
        return integer_text(core, node);
    case InterfaceType::float_:
        return float_text(core, node);
    case InterfaceType::boolean:
        return read_number(core, node).is_true() ? "true" : "false";
    case InterfaceType::enumeration: {
        const std::int64_t number = read_number(core, node).to_integer();
        const NodeIndex entry = find_entry(core, node, number);
        if (entry == no_node)
            fail(core, node, ErrorKind::value,
                 "the device's value " + std::to_string(number) + " is not one of its entries");
        return std::string(core.description.nodes[entry].symbolic);
    }
    case InterfaceType::enum_entry:
        return std::to_string(read_number(core, node).to_integer());
    case InterfaceType::string:
        return read_text(core, node);
    case InterfaceType::register_:
        return hexadecimal(read_bytes(core, node));
    default:
        fail(core, node, ErrorKind::wrong_type, "it has no value");
    }
}

void write_value_text(Core& core, NodeIndex node, const std::string& text, Verify verify)
{
    switch (interface_of(core.description.nodes[node].type)) {
    case InterfaceType::integer: {
        const auto number = parse_represented(trimmed(text), representation_of(core, node));
        write_number(core, node, Number::integer(required(core, node, number, text, "a whole number")),
                     verify);
        break;
    }
    case InterfaceType::float_:
        write_number(core, node, Number::floating(required(core, node, parse_float(text), text, "a number")),
                     verify);
        break;
    case InterfaceType::boolean: {
        const bool yes = required(core, node, parse_yes_no(text), text, "true or false");
        write_number(core, node, Number::integer(yes ? 1 : 0), verify);
        break;
    }
    case InterfaceType::enumeration: {
        const NodeIndex entry = find_entry(core, node, std::string_view(text));
        if (entry == no_node)
            refuse_text(core, node, text, "one of its entries");
        write_number(core, node, read_number(core, entry), verify);
        break;
    }
    case InterfaceType::string:
        write_text(core, node, text);
        break;
    case InterfaceType::register_:
        write_bytes(core, node, required(core, node, parse_bytes(text), text, "pairs of hexadecimal digits"));
        note_written(core, node);
        break;
    default:
        fail(core, node, ErrorKind::wrong_type, "it has no value");
    }
}

} // namespace zvgenapi
