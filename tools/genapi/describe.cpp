#include "genapi/describe.h"

#include <cfloat>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include "genapi/values.h"

namespace zvgentl::tool {

using namespace zvgenapi;

namespace {

constexpr std::int64_t most_bytes_shown = 256; // of a register without a type
constexpr std::int64_t longest_shown = 1 << 20;

using Whole = std::numeric_limits<std::int64_t>;

// The ends of the type stand for "no limit".
void add_integer_limits(const Integer& integer, Feature& feature)
{
    const std::int64_t low = integer.minimum();
    const std::int64_t high = integer.maximum();
    const std::int64_t step = integer.increment();
    if (low != Whole::min())
        feature.minimum = low;
    if (high != Whole::max())
        feature.maximum = high;
    if (step > 1)
        feature.increment = step;
    feature.unit = integer.unit();
}

void add_float_limits(const Float& number, Feature& feature)
{
    const double low = number.minimum();
    const double high = number.maximum();
    if (low > -double{FLT_MAX})
        feature.minimum = low;
    if (high < double{FLT_MAX})
        feature.maximum = high;
    if (number.has_increment())
        feature.increment = number.increment();
    feature.unit = number.unit();
}

void add_limits(const Node& node, Feature& feature)
{
    if (const auto integer = node.try_as<Integer>())
        add_integer_limits(integer, feature);
    else if (const auto number = node.try_as<Float>())
        add_float_limits(number, feature);
    else if (const auto enumeration = node.try_as<Enumeration>()) {
        for (const EnumEntry& entry : enumeration.available_entries())
            feature.entries.push_back(entry.symbolic());
    } else if (const auto text = node.try_as<String>()) {
        const std::int64_t most = text.max_length();
        if (most != Whole::max())
            feature.maximum = most;
    }
}

Feature describe_text(const Node& node)
{
    Feature feature;
    feature.name = node.name();
    feature.kind = kind_of(node);
    feature.display_name = node.display_name();
    feature.description = node.tool_tip();
    feature.visibility = name_of(node.visibility());
    feature.selects = node.properties("pSelected");
    feature.access.is_available = false; // until more is known
    return feature;
}

Value present_value(const Node& node)
{
    switch (kind_of(node)) {
    case FeatureKind::integer:
        return node.as<Integer>().value(UseCache::no);
    case FeatureKind::floating_point:
        return node.as<Float>().value(UseCache::no);
    case FeatureKind::boolean:
        return node.as<Boolean>().value(UseCache::no);
    case FeatureKind::enumeration:
        return node.as<Enumeration>().symbolic(UseCache::no);
    case FeatureKind::string:
        return node.as<String>().value(UseCache::no);
    case FeatureKind::bytes:
        return bytes_text(node.as<Register>().read(UseCache::no));
    default:
        return {};
    }
}

/// The value as a list shows it: not the contents of large registers.
Value shown_value(const Node& node, const Feature& feature)
{
    const auto bytes = node.try_as<Register>();
    if (feature.kind == FeatureKind::bytes && bytes.length() > most_bytes_shown)
        return {};
    const auto* const longest = std::get_if<std::int64_t>(&feature.maximum);
    if (feature.kind == FeatureKind::string && longest != nullptr && *longest > longest_shown)
        throw std::runtime_error("it may be " + std::to_string(*longest) + " bytes long; `zvgentl get " +
                                 feature.name + "` reads it");
    return read_value(node);
}

} // namespace

FeatureKind kind_of(const Node& node)
{
    switch (node.interface_type()) {
    case InterfaceType::category:
        return FeatureKind::category;
    case InterfaceType::integer:
        return FeatureKind::integer;
    case InterfaceType::float_:
        return FeatureKind::floating_point;
    case InterfaceType::boolean:
        return FeatureKind::boolean;
    case InterfaceType::enumeration:
        return FeatureKind::enumeration;
    case InterfaceType::command:
        return FeatureKind::command;
    case InterfaceType::string:
        return FeatureKind::string;
    case InterfaceType::register_:
        return FeatureKind::bytes;
    default:
        return FeatureKind::other;
    }
}

Access access_of(const Node& node)
{
    const AccessMode mode = node.access();
    Access access;
    access.is_implemented = mode != AccessMode::NI;
    access.is_locked = node.is_locked();
    access.is_available = mode != AccessMode::NA || access.is_locked;
    access.is_readable = is_readable(mode) && kind_of(node) != FeatureKind::command;
    access.is_writable = is_writable(mode);
    return access;
}

Notation notation_of(const Node& node)
{
    const auto integer = node.try_as<Integer>();
    if (!integer)
        return Notation::decimal;
    switch (integer.representation()) {
    case Representation::hex_number:
        return Notation::hexadecimal;
    case Representation::ipv4_address:
        return Notation::ipv4_address;
    case Representation::mac_address:
        return Notation::mac_address;
    default:
        return Notation::decimal;
    }
}

Value read_value(const Node& node)
{
    try {
        return present_value(node);
    } catch (const std::exception& error) {
        throw std::runtime_error(node.name() + " cannot be read: " + reason_of(node, error));
    }
}

Feature describe_for_writing(const Node& node)
{
    Feature feature = describe_text(node);
    feature.notation = notation_of(node);
    feature.access = access_of(node);
    if (feature.access.is_writable)
        add_limits(node, feature);
    return feature;
}

Feature describe_feature(const Node& node)
{
    Feature feature = describe_text(node);
    try {
        feature.notation = notation_of(node);
        feature.access = access_of(node);
        if (feature.kind == FeatureKind::category || !feature.access.is_available ||
            !feature.access.is_implemented)
            return feature;
        add_limits(node, feature);
        if (feature.access.is_readable)
            feature.value = shown_value(node, feature);
    } catch (const std::exception& error) {
        feature.problem = reason_of(node, error);
    }
    return feature;
}

std::string reason_of(const Node& node, const std::exception& error)
{
    const auto* const known = dynamic_cast<const Error*>(&error);
    if (known == nullptr)
        return error.what();
    std::string text = known->node() == node.name() ? known->message() : known->what();
    switch (known->kind()) {
    case ErrorKind::description:
    case ErrorKind::cycle:
    case ErrorKind::wrong_type:
        return "the port's description is faulty: " + text;
    default:
        return text;
    }
}

} // namespace zvgentl::tool
