#include "genapi/describe.h"

#include <limits>
#include <optional>
#include <vector>

#include "genapi/values.h"

namespace zvgentl::tool {

namespace {

constexpr guint64 most_bytes_shown = 256; // of a register without a type

using Limits = std::numeric_limits<std::int64_t>;

std::string text_or_empty(const char* text) { return text == nullptr ? std::string() : text; }

const char* visibility_name(ArvGcVisibility visibility) noexcept
{
    switch (visibility) {
    case ARV_GC_VISIBILITY_INVISIBLE:
        return "Invisible";
    case ARV_GC_VISIBILITY_GURU:
        return "Guru";
    case ARV_GC_VISIBILITY_EXPERT:
        return "Expert";
    default:
        return "Beginner"; // what GenApi takes where nothing is written
    }
}

template <class Type, class Get>
std::optional<Type> limit(const Get& get)
{
    Failure failure;
    const auto value = static_cast<Type>(get(failure));
    return failure.succeeded() ? std::optional<Type>(value) : std::nullopt;
}

// The ends of the type stand for "no limit" in the library.
void add_integer_limits(ArvGcNode* node, Feature& feature)
{
    ArvGcInteger* const integer = ARV_GC_INTEGER(node);
    const auto low = limit<std::int64_t>([=](GError** e) { return arv_gc_integer_get_min(integer, e); });
    const auto high = limit<std::int64_t>([=](GError** e) { return arv_gc_integer_get_max(integer, e); });
    const auto step = limit<std::int64_t>([=](GError** e) { return arv_gc_integer_get_inc(integer, e); });
    if (low && *low != Limits::min())
        feature.minimum = *low;
    if (high && *high != Limits::max())
        feature.maximum = *high;
    if (step && *step > 1)
        feature.increment = *step;
    feature.unit = text_or_empty(arv_gc_integer_get_unit(integer));
}

void add_float_limits(ArvGcNode* node, Feature& feature)
{
    ArvGcFloat* const number = ARV_GC_FLOAT(node);
    const auto low = limit<double>([=](GError** e) { return arv_gc_float_get_min(number, e); });
    const auto high = limit<double>([=](GError** e) { return arv_gc_float_get_max(number, e); });
    const auto step = limit<double>([=](GError** e) { return arv_gc_float_get_inc(number, e); });
    if (low && *low > std::numeric_limits<double>::lowest())
        feature.minimum = *low;
    if (high && *high < std::numeric_limits<double>::max())
        feature.maximum = *high;
    if (step && *step > std::numeric_limits<double>::min())
        feature.increment = *step;
    feature.unit = text_or_empty(arv_gc_float_get_unit(number));
}

void add_limits(const Nodes& nodes, ArvGcNode* node, Feature& feature)
{
    switch (feature.kind) {
    case FeatureKind::integer:
        add_integer_limits(node, feature);
        break;
    case FeatureKind::floating_point:
        add_float_limits(node, feature);
        break;
    case FeatureKind::enumeration:
        feature.entries = nodes.available_entries(feature.name);
        break;
    case FeatureKind::string: {
        const auto most = limit<std::int64_t>(
            [=](GError** e) { return arv_gc_string_get_max_length(ARV_GC_STRING(node), e); });
        if (most && *most != Limits::max())
            feature.maximum = *most;
        break;
    }
    default:
        break;
    }
}

/// What needs no access to the device.
Feature describe_text(const Nodes& nodes, const std::string& name, ArvGcNode* node)
{
    auto* const named = ARV_GC_FEATURE_NODE(node);
    Feature feature;
    feature.name = name;
    feature.kind = nodes.kind(name);
    feature.display_name = text_or_empty(arv_gc_feature_node_get_display_name(named));
    feature.description = text_or_empty(arv_gc_feature_node_get_description(named));
    if (feature.description.empty())
        feature.description = text_or_empty(arv_gc_feature_node_get_tooltip(named));
    feature.visibility = visibility_name(arv_gc_feature_node_get_visibility(named));
    feature.notation = notation_of(node);
    feature.selects = nodes.graph().find(name)->all("pSelected");
    return feature;
}

Value read_bytes(ArvGcNode* node, guint64 most)
{
    Failure failure;
    const guint64 length = arv_gc_register_get_length(ARV_GC_REGISTER(node), failure);
    check_port(failure);
    if (length > most)
        return {};
    std::vector<unsigned char> bytes(length);
    arv_gc_register_get(ARV_GC_REGISTER(node), bytes.data(), length, failure);
    check_port(failure);
    return bytes_text(bytes);
}

std::string read_entry(ArvGcNode* node)
{
    Failure failure;
    const std::int64_t number = arv_gc_enumeration_get_int_value(ARV_GC_ENUMERATION(node), failure);
    check_port(failure);
    Failure unknown; // the number was read: what fails now is the look-up of its name
    const char* const entry = arv_gc_enumeration_get_string_value(ARV_GC_ENUMERATION(node), unknown);
    if (entry == nullptr)
        throw PortFailure("the device's value " + std::to_string(number) + " is not one of its entries");
    return entry;
}

} // namespace

void check_port(const Failure& failure)
{
    try {
        failure.check();
    } catch (const std::runtime_error& reason) {
        throw PortFailure(reason.what());
    }
}

Notation notation_of(ArvGcNode* node)
{
    if (!ARV_IS_GC_INTEGER(node))
        return Notation::decimal;
    switch (arv_gc_integer_get_representation(ARV_GC_INTEGER(node))) {
    case ARV_GC_REPRESENTATION_HEX_NUMBER:
        return Notation::hexadecimal;
    case ARV_GC_REPRESENTATION_IPV4_ADDRESS:
        return Notation::ipv4_address;
    case ARV_GC_REPRESENTATION_MAC_ADDRESS:
        return Notation::mac_address;
    default:
        return Notation::decimal;
    }
}

Value read_value(ArvGcNode* node, const std::string& name, FeatureKind kind)
{
    Failure failure;
    Value value;
    switch (kind) {
    case FeatureKind::integer:
        value = std::int64_t{arv_gc_integer_get_value(ARV_GC_INTEGER(node), failure)};
        break;
    case FeatureKind::floating_point:
        value = arv_gc_float_get_value(ARV_GC_FLOAT(node), failure);
        break;
    case FeatureKind::boolean:
        value = arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), failure) != FALSE;
        break;
    case FeatureKind::string:
        value = text_or_empty(arv_gc_string_get_value(ARV_GC_STRING(node), failure));
        break;
    default:
        break;
    }
    try {
        check_port(failure);
        if (kind == FeatureKind::enumeration)
            value = read_entry(node);
        if (kind == FeatureKind::bytes)
            value = read_bytes(node, std::numeric_limits<guint64>::max());
    } catch (const PortFailure& reason) {
        throw PortFailure(name + " cannot be read: " + reason.what());
    }
    return value;
}

Feature describe_for_writing(const Nodes& nodes, const std::string& name)
{
    ArvGcNode* const node = nodes.usable(name);
    Feature feature = describe_text(nodes, name, node);
    feature.access = nodes.access(name);
    if (feature.access.is_writable)
        add_limits(nodes, node, feature);
    return feature;
}

Feature describe_feature(const Nodes& nodes, const std::string& name)
{
    Feature feature;
    feature.name = name;
    feature.access.is_available = false; // until more is known
    try {
        ArvGcNode* const node = nodes.usable(name);
        feature = describe_text(nodes, name, node);
        feature.access = nodes.access(name);
        if (feature.kind == FeatureKind::category || !feature.access.is_available ||
            !feature.access.is_implemented)
            return feature;
        add_limits(nodes, node, feature);
        if (!feature.access.is_readable)
            return feature;
        feature.value = feature.kind == FeatureKind::bytes ? read_bytes(node, most_bytes_shown)
                                                           : read_value(node, name, feature.kind);
    } catch (const std::exception& reason) {
        feature.problem = reason.what();
    }
    return feature;
}

} // namespace zvgentl::tool
