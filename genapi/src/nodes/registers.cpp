#include "nodes/registers.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "nodes/Step.h"
#include "nodes/changes.h"
#include "nodes/values.h"

namespace zvgenapi {

namespace {

constexpr std::uint64_t longest_number = 8;

std::int64_t read_integer(Core& core, NodeIndex node, const Element& element)
{
    return whole_part(core, node, read_number(core, target_of(core, node, element)));
}

std::uint64_t unsigned_of(std::int64_t number) noexcept { return static_cast<std::uint64_t>(number); }

/// What a pIndex adds: its value, times the offset that the next element gives, or else the length.
std::uint64_t indexed_part(Core& core, NodeIndex node, const Element* index, const Element* end,
                           std::uint64_t length)
{
    const std::uint64_t position = unsigned_of(read_integer(core, node, *index));
    const Element* const next = index + 1;
    if (next != end && next->tag == Tag::index_offset)
        return position * unsigned_of(integer_in(core, node, *next));
    if (next != end && next->tag == Tag::p_index_offset)
        return position * unsigned_of(read_integer(core, node, *next));
    return position * length;
}

std::uint64_t address_of(Core& core, NodeIndex node, std::uint64_t length)
{
    std::uint64_t address = 0; // wraps, as offsets may be negative
    bool has_address = false;
    const Elements elements = core.description.of(node);
    for (const Element& element : elements) {
        switch (element.tag) {
        case Tag::address:
            address += unsigned_of(integer_in(core, node, element));
            break;
        case Tag::p_address:
        case Tag::int_swiss_knife:
            address += unsigned_of(read_integer(core, node, element));
            break;
        case Tag::p_index:
            address += indexed_part(core, node, &element, elements.end(), length);
            break;
        default:
            continue;
        }
        has_address = true;
    }
    if (!has_address)
        fail(core, node, ErrorKind::description, "a register has no address");
    return address;
}

NodeIndex port_of(const Core& core, NodeIndex node)
{
    const Element* const port = core.description.find(node, Tag::p_port);
    if (port == nullptr)
        fail(core, node, ErrorKind::description, "a register has no pPort");
    const NodeIndex target = target_of(core, node, *port);
    if (core.description.nodes[target].type != NodeType::port)
        fail(core, node, ErrorKind::description,
             std::string(core.description.nodes[target].name) + " is not a port", port);
    return target;
}

Port& connection(const Core& core, NodeIndex port)
{
    const auto found = core.ports.find(port);
    if (found == core.ports.end() || found->second == nullptr)
        fail(core, port, ErrorKind::port, "the port is not connected");
    return *found->second;
}

bool is_big_endian(const Core& core, NodeIndex node)
{
    const bool is_big = text_in(core, node, Tag::endianess) == "BigEndian";
    const Element* const swap = core.description.find(port_of(core, node), Tag::swap_endianess);
    return is_big != (swap != nullptr && parse_yes_no(swap->text).value_or(false));
}

bool is_signed(const Core& core, NodeIndex node) noexcept
{
    return text_in(core, node, Tag::sign) == "Signed";
}

/// The bytes as a number, the least significant first.
std::uint64_t joined(const Core& core, NodeIndex node, const std::string& bytes)
{
    const bool is_big = is_big_endian(core, node);
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[is_big ? i : bytes.size() - 1 - i]);
        number = number << 8U | byte;
    }
    return number;
}

std::string split(const Core& core, NodeIndex node, std::uint64_t number, std::uint64_t length)
{
    std::string bytes(static_cast<std::size_t>(length), '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(static_cast<unsigned char>(number & 0xFFU));
        number >>= 8U;
    }
    if (is_big_endian(core, node))
        std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

/// The bits of a register that belong to the node, counted from the least significant one.
struct Bits {
    unsigned first{0};
    unsigned count{64};

    std::uint64_t mask() const noexcept { return ~std::uint64_t{0} >> (64U - count); }
};

unsigned bit_number(const Core& core, NodeIndex node, const Element& element, unsigned count)
{
    const std::int64_t bit = integer_in(core, node, element);
    if (bit < 0 || bit >= static_cast<std::int64_t>(count))
        fail(core, node, ErrorKind::description,
             "there is no bit " + std::string(element.text) + " in " + std::to_string(count / 8) + " bytes",
             &element);
    // In a big-endian register the most significant bit has the number 0.
    const auto number = static_cast<unsigned>(bit);
    return text_in(core, node, Tag::endianess) == "BigEndian" ? count - 1 - number : number;
}

Bits bits_of(const Core& core, NodeIndex node, std::uint64_t length)
{
    const auto count = static_cast<unsigned>(length * 8);
    const NodeType type = core.description.nodes[node].type;
    if (type != NodeType::masked_int_reg && type != NodeType::struct_entry)
        return {0, count};
    if (const Element* const bit = core.description.find(node, Tag::bit))
        return {bit_number(core, node, *bit, count), 1};
    const Element* const lsb = core.description.find(node, Tag::lsb);
    const Element* const msb = core.description.find(node, Tag::msb);
    if (lsb == nullptr || msb == nullptr)
        fail(core, node, ErrorKind::description, "it has neither a Bit nor both LSB and MSB");
    const unsigned one = bit_number(core, node, *lsb, count);
    const unsigned other = bit_number(core, node, *msb, count);
    return {std::min(one, other), std::max(one, other) - std::min(one, other) + 1};
}

std::int64_t extended(std::uint64_t number, unsigned count, bool has_sign) noexcept
{
    const std::uint64_t sign = std::uint64_t{1} << (count - 1);
    if (has_sign && (number & sign) != 0)
        number |= ~(sign | (sign - 1));
    return static_cast<std::int64_t>(number);
}

template <class To, class From>
To same_bits(From from) noexcept
{
    static_assert(sizeof(To) == sizeof(From));
    To to;
    std::memcpy(&to, &from, sizeof to);
    return to;
}

void require_float_length(const Core& core, NodeIndex node, std::uint64_t length)
{
    if (length != 4 && length != 8)
        fail(core, node, ErrorKind::description,
             "a floating-point register cannot be " + std::to_string(length) + " bytes long");
}

std::string float_bytes(const Core& core, NodeIndex node, double value, std::uint64_t length)
{
    if (length == 8)
        return split(core, node, same_bits<std::uint64_t>(value), length);
    if (std::isfinite(value) && std::fabs(value) > double{std::numeric_limits<float>::max()})
        fail(core, node, ErrorKind::range, "the value does not fit into a register of 4 bytes");
    return split(core, node, same_bits<std::uint32_t>(static_cast<float>(value)), length);
}

NumberRange range_of_bits(unsigned count, bool has_sign) noexcept
{
    using Most = std::numeric_limits<std::int64_t>;
    if (count == 64)
        return {Number::integer(has_sign ? Most::min() : 0), Number::integer(Most::max())};
    const std::int64_t half = std::int64_t{1} << (count - 1);
    if (has_sign)
        return {Number::integer(-half), Number::integer(half - 1)};
    return {Number::integer(0), Number::integer(half - 1 + half)};
}

} // namespace

std::uint64_t length_of(Core& core, NodeIndex node)
{
    const Element* const literal = core.description.find(node, Tag::length);
    const Element* const reference = core.description.find(node, Tag::p_length);
    if (literal == nullptr && reference == nullptr)
        fail(core, node, ErrorKind::description, "a register has no length");
    const std::int64_t length =
        literal != nullptr ? integer_in(core, node, *literal) : read_integer(core, node, *reference);
    const bool is_number = is_number_register(core.description.nodes[node].type);
    const std::uint64_t most = is_number ? longest_number : core.limits.register_bytes;
    if (length >= 1 && unsigned_of(length) <= most)
        return unsigned_of(length);
    const ErrorKind kind = literal != nullptr ? ErrorKind::description : ErrorKind::value;
    fail(core, node, length >= 1 && !is_number ? ErrorKind::limit : kind,
         std::string(literal != nullptr ? "the description" : "the device") + " says that it is " +
             std::to_string(length) + " bytes long, which it cannot be");
}

Location locate(Core& core, NodeIndex node)
{
    Location location;
    location.length = length_of(core, node);
    location.address = address_of(core, node, location.length);
    location.port = port_of(core, node);
    if (location.address + (location.length - 1) < location.address)
        fail(core, node, ErrorKind::value, "the register reaches beyond the last address");
    return location;
}

AccessMode mode_of_register(const Core& core, NodeIndex node)
{
    const std::string_view mode = text_in(core, node, Tag::access_mode);
    if (mode == "RW")
        return AccessMode::RW;
    return mode == "WO" ? AccessMode::WO : AccessMode::RO;
}

Caching caching_of_register(const Core& core, NodeIndex node)
{
    const std::string_view mode = text_in(core, node, Tag::cachable);
    if (mode == "NoCache")
        return Caching::no_cache;
    return mode == "WriteAround" ? Caching::write_around : Caching::write_through;
}

void read_port(Core& core, NodeIndex port, std::uint64_t address, void* data, std::size_t size)
{
    Port& device = connection(core, port);
    if (size == 0)
        return;
    if (size > core.query.bytes_left)
        fail(core, port, ErrorKind::limit,
             "more than " + std::to_string(core.limits.query_bytes) + " bytes would have to be read");
    core.query.bytes_left -= size;
    device.read(address, data, size);
}

void write_port(Core& core, NodeIndex port, std::uint64_t address, const void* data, std::size_t size)
{
    Port& device = connection(core, port);
    if (size == 0)
        return;
    core.cache.forget_overlapping({port, address, size}, core.changed);
    forget_known(core);
    device.write(address, data, size);
}

namespace {

std::string fresh_bytes(Core& core, const Location& location)
{
    if (location.length > core.query.bytes_left) // before memory is taken
        fail(core, location.port, ErrorKind::limit,
             "more than " + std::to_string(core.limits.query_bytes) + " bytes would have to be read");
    connection(core, location.port);
    std::string bytes(static_cast<std::size_t>(location.length), '\0');
    read_port(core, location.port, location.address, bytes.data(), bytes.size());
    return bytes;
}

} // namespace

std::string read_bytes(Core& core, NodeIndex node)
{
    if (mode_of_register(core, node) == AccessMode::WO)
        fail(core, node, ErrorKind::access, "the register can only be written");
    const Location location = locate(core, node);
    const bool is_cached = caching_of_register(core, node) != Caching::no_cache;
    if (is_cached && core.query.use_cache == UseCache::yes)
        if (const std::string* const bytes = core.cache.find(node, location))
            return *bytes;
    std::string bytes = fresh_bytes(core, location);
    if (is_cached)
        core.cache.put(node, location, bytes);
    return bytes;
}

void write_bytes(Core& core, NodeIndex node, const std::string& bytes)
{
    if (mode_of_register(core, node) == AccessMode::RO)
        fail(core, node, ErrorKind::access, "the register can only be read");
    const Location location = locate(core, node);
    if (bytes.size() != location.length)
        fail(core, node, ErrorKind::value,
             "the register is " + std::to_string(location.length) + " bytes long, not " +
                 std::to_string(bytes.size()));
    write_port(core, location.port, location.address, bytes.data(), bytes.size());
    if (caching_of_register(core, node) == Caching::write_through &&
        mode_of_register(core, node) == AccessMode::RW)
        core.cache.put(node, location, bytes);
}

Number read_register(Core& core, NodeIndex node)
{
    const std::string bytes = read_bytes(core, node);
    const std::uint64_t number = joined(core, node, bytes);
    if (core.description.nodes[node].type == NodeType::float_reg) {
        require_float_length(core, node, bytes.size());
        return Number::floating(bytes.size() == 8
                                    ? same_bits<double>(number)
                                    : double{same_bits<float>(static_cast<std::uint32_t>(number))});
    }
    const Bits bits = bits_of(core, node, bytes.size());
    return Number::integer(extended(number >> bits.first & bits.mask(), bits.count, is_signed(core, node)));
}

void write_register(Core& core, NodeIndex node, const Number& value)
{
    const std::uint64_t length = length_of(core, node);
    if (core.description.nodes[node].type == NodeType::float_reg) {
        require_float_length(core, node, length);
        write_bytes(core, node, float_bytes(core, node, value.to_floating(), length));
        return;
    }
    const Bits bits = bits_of(core, node, length);
    const NumberRange range = range_of_bits(bits.count, is_signed(core, node));
    const std::int64_t number = nearest_integer(core, node, value);
    if (bits.count < 64 && (number < range.minimum.to_integer() || number > range.maximum.to_integer()))
        fail(core, node, ErrorKind::range,
             std::to_string(number) + " does not fit into " + std::to_string(bits.count) + " bits");
    std::uint64_t whole = static_cast<std::uint64_t>(number) & bits.mask();
    if (bits.count < length * 8) {
        // The other bits stay as the device has them now, whatever the cache says.
        const bool can_read = mode_of_register(core, node) == AccessMode::RW;
        const std::uint64_t old = can_read ? joined(core, node, fresh_bytes(core, locate(core, node))) : 0;
        whole = (old & ~(bits.mask() << bits.first)) | whole << bits.first;
    }
    write_bytes(core, node, split(core, node, whole, length));
}

NumberRange range_of(Core& core, NodeIndex node)
{
    const std::uint64_t length = length_of(core, node);
    if (core.description.nodes[node].type == NodeType::float_reg) {
        require_float_length(core, node, length);
        const double most =
            length == 8 ? std::numeric_limits<double>::max() : double{std::numeric_limits<float>::max()};
        return {Number::floating(-most), Number::floating(most)};
    }
    return range_of_bits(bits_of(core, node, length).count, is_signed(core, node));
}

} // namespace zvgenapi
