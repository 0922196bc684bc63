#include "genapi_differential/AravisMap.h"

#include <cfloat>
#include <limits>
#include <optional>
#include <stdexcept>

namespace zvgenapi::differential {

namespace {

// Made by GObject, which zeroes the memory and calls no constructor.
struct MemoryDevice {
    ArvDevice parent;
    Memory* memory;
};

struct MemoryDeviceClass {
    ArvDeviceClass parent;
};

Memory& memory_of(ArvDevice* device) { return *reinterpret_cast<MemoryDevice*>(device)->memory; }

gboolean read_memory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** /*error*/)
{
    memory_of(device).read(address, buffer, size);
    return TRUE;
}

gboolean write_memory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** /*error*/)
{
    memory_of(device).write(address, buffer, size);
    return TRUE;
}

void init_class(gpointer type_class, gpointer /*data*/)
{
    auto* const device_class = static_cast<ArvDeviceClass*>(type_class);
    device_class->read_memory = read_memory;
    device_class->write_memory = write_memory;
}

ArvDevice* new_memory_device(Memory& memory)
{
    static const GType type =
        g_type_register_static_simple(ARV_TYPE_DEVICE, "ZvMemoryDevice", sizeof(MemoryDeviceClass),
                                      init_class, sizeof(MemoryDevice), nullptr, static_cast<GTypeFlags>(0));
    auto* const device = static_cast<MemoryDevice*>(g_object_new(type, nullptr));
    device->memory = &memory;
    return &device->parent;
}

/// It prints what it finds wrong with a description; here the answers are compared.
void silence_library()
{
    const auto ignore = [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {};
    for (const char* const domain : {static_cast<const char*>(nullptr), "XML", "Aravis", "GLib-GObject"})
        g_log_set_handler(domain, static_cast<GLogLevelFlags>(G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING),
                          ignore, nullptr);
}

std::string string_or_empty(const char* text) { return text == nullptr ? "" : text; }

std::string bytes_text(ArvGcNode* node, GError** error)
{
    const guint64 length = arv_gc_register_get_length(ARV_GC_REGISTER(node), error);
    if (*error != nullptr || length > 1'000'000)
        return "";
    std::vector<unsigned char> bytes(length);
    arv_gc_register_get(ARV_GC_REGISTER(node), bytes.data(), length, error);
    return text_of(bytes);
}

std::string value_text(ArvGcNode* node, InterfaceType kind, GError** error)
{
    switch (kind) {
    case InterfaceType::integer:
        return text_of(arv_gc_integer_get_value(ARV_GC_INTEGER(node), error));
    case InterfaceType::float_:
        return text_of(arv_gc_float_get_value(ARV_GC_FLOAT(node), error));
    case InterfaceType::boolean:
        return arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), error) != 0 ? "true" : "false";
    case InterfaceType::enumeration:
        return text_of(arv_gc_enumeration_get_int_value(ARV_GC_ENUMERATION(node), error));
    case InterfaceType::string:
        return string_or_empty(arv_gc_string_get_value(ARV_GC_STRING(node), error));
    case InterfaceType::register_:
        return bytes_text(node, error);
    default:
        return "";
    }
}

/// The value, or the other one if the description has none.
template <class Value>
std::string limit_or(Value value, Value otherwise, GError** error)
{
    if (*error == nullptr || g_error_matches(*error, ARV_GC_ERROR, ARV_GC_ERROR_PROPERTY_NOT_DEFINED) == 0)
        return text_of(value);
    g_clear_error(error);
    return text_of(otherwise);
}

std::string integer_limit(ArvGcInteger* node, Question question, GError** error)
{
    using Limits = std::numeric_limits<std::int64_t>;
    if (question == Question::minimum)
        return limit_or<std::int64_t>(arv_gc_integer_get_min(node, error), Limits::min(), error);
    if (question == Question::maximum)
        return limit_or<std::int64_t>(arv_gc_integer_get_max(node, error), Limits::max(), error);
    return limit_or<std::int64_t>(arv_gc_integer_get_inc(node, error), 1, error);
}

std::string float_limit(ArvGcFloat* node, Question question, GError** error)
{
    if (question == Question::minimum)
        return limit_or(arv_gc_float_get_min(node, error), -DBL_MAX, error);
    if (question == Question::maximum)
        return limit_or(arv_gc_float_get_max(node, error), DBL_MAX, error);
    const double increment = arv_gc_float_get_inc(node, error);
    return limit_or(increment == DBL_MIN ? 0.0 : increment, 0.0, error); // its word for none
}

std::string limit_text(ArvGcNode* node, InterfaceType kind, Question question, GError** error)
{
    if (kind == InterfaceType::integer)
        return integer_limit(ARV_GC_INTEGER(node), question, error);
    return kind == InterfaceType::float_ ? float_limit(ARV_GC_FLOAT(node), question, error) : "";
}

std::string available_entries(ArvGcNode* node, GError** error)
{
    guint count = 0;
    const char** const entries =
        arv_gc_enumeration_dup_available_string_values(ARV_GC_ENUMERATION(node), &count, error);
    const std::vector<std::string> names(entries, entries + count);
    g_free(entries);
    return text_of(names);
}

std::string representation_name(ArvGcRepresentation representation)
{
    constexpr Representation ours[] = {Representation::linear,     Representation::logarithmic,
                                       Representation::boolean,    Representation::pure_number,
                                       Representation::hex_number, Representation::ipv4_address,
                                       Representation::mac_address};
    return representation < 0 ? name_of(Representation::pure_number) : name_of(ours[representation]);
}

std::string visibility_name(ArvGcVisibility visibility)
{
    constexpr Visibility ours[] = {Visibility::invisible, Visibility::guru, Visibility::expert,
                                   Visibility::beginner};
    return visibility < 0 ? name_of(Visibility::beginner) : name_of(ours[visibility]);
}

std::string notation_name(ArvGcDisplayNotation notation)
{
    constexpr DisplayNotation ours[] = {DisplayNotation::automatic, DisplayNotation::fixed,
                                        DisplayNotation::scientific};
    return notation < 0 ? name_of(DisplayNotation::automatic) : name_of(ours[notation]);
}

std::string number_property(ArvGcNode* node, InterfaceType kind, Question question)
{
    const bool is_integer = kind == InterfaceType::integer;
    if (!is_integer && kind != InterfaceType::float_)
        return "";
    switch (question) {
    case Question::representation:
        return representation_name(is_integer ? arv_gc_integer_get_representation(ARV_GC_INTEGER(node))
                                              : arv_gc_float_get_representation(ARV_GC_FLOAT(node)));
    case Question::unit:
        return string_or_empty(is_integer ? arv_gc_integer_get_unit(ARV_GC_INTEGER(node))
                                          : arv_gc_float_get_unit(ARV_GC_FLOAT(node)));
    case Question::notation:
        return is_integer ? "" : notation_name(arv_gc_float_get_display_notation(ARV_GC_FLOAT(node)));
    case Question::precision:
        return is_integer ? "" : text_of(arv_gc_float_get_display_precision(ARV_GC_FLOAT(node)));
    default:
        return "";
    }
}

/// The node that the first element of this name refers to.
ArvGcNode* linked_node(ArvGcNode* node, ArvGcPropertyNodeType type)
{
    for (ArvDomNode* child = arv_dom_node_get_first_child(ARV_DOM_NODE(node)); child != nullptr;
         child = arv_dom_node_get_next_sibling(child))
        if (ARV_IS_GC_PROPERTY_NODE(child) &&
            arv_gc_property_node_get_node_type(ARV_GC_PROPERTY_NODE(child)) == type)
            return arv_gc_property_node_get_linked_node(ARV_GC_PROPERTY_NODE(child));
    return nullptr;
}

Answer answer(std::string text, GError* error)
{
    if (error == nullptr)
        return {std::move(text), false, {}};
    Answer failure{error->message, true, {}};
    g_error_free(error);
    return failure;
}

} // namespace

AravisMap::AravisMap(const std::string& description, Memory& memory) : m_device(new_memory_device(memory))
{
    static const bool is_silent = (silence_library(), true);
    static_cast<void>(is_silent);
    m_map.reset(arv_gc_new(m_device.get(), description.data(), description.size()));
    if (!m_map)
        throw std::runtime_error("libaravis does not take the description");
    arv_gc_set_register_cache_policy(m_map.get(), ARV_REGISTER_CACHE_POLICY_DISABLE);
    arv_gc_set_range_check_policy(m_map.get(), ARV_RANGE_CHECK_POLICY_DISABLE);
    arv_gc_set_access_check_policy(m_map.get(), ARV_ACCESS_CHECK_POLICY_DISABLE);
}

ArvGcNode* AravisMap::find(const std::string& name) const
{
    return arv_gc_get_node(m_map.get(), name.c_str());
}

// The library leaves it to its user to take the conditions together, also those of the node that has the
// value.
AccessMode AravisMap::access(ArvGcNode* node, GError** error) const
{
    ArvGcFeatureNode* const feature = ARV_GC_FEATURE_NODE(node);
    if (arv_gc_feature_node_is_implemented(feature, error) == 0)
        return AccessMode::NI;
    if (*error == nullptr && arv_gc_feature_node_is_available(feature, error) == 0)
        return AccessMode::NA;
    ArvGcNode* const below = linked_node(node, ARV_GC_PROPERTY_NODE_TYPE_P_VALUE);
    const AccessMode mode_below =
        below == nullptr || *error != nullptr ? AccessMode::RW : access(below, error);
    constexpr AccessMode modes[] = {AccessMode::RO, AccessMode::WO, AccessMode::RW};
    const ArvGcAccessMode own = arv_gc_feature_node_get_actual_access_mode(feature);
    const AccessMode mode = combine(mode_below, own < 0 ? AccessMode::RW : modes[own]);
    if (arv_gc_feature_node_is_locked(feature, error) == 0)
        return mode;
    return combine(mode, AccessMode::RO);
}

Answer AravisMap::ask(const std::string& name, InterfaceType kind, Question question)
{
    ArvGcNode* const node = find(name);
    if (node == nullptr || !ARV_IS_GC_FEATURE_NODE(node))
        return {"there is no such node", true, {}};
    GError* error = nullptr;
    switch (question) {
    case Question::value:
        return answer(value_text(node, kind, &error), error);
    case Question::minimum:
    case Question::maximum:
    case Question::increment: {
        const std::string text = limit_text(node, kind, question, &error);
        return answer(text, error);
    }
    case Question::access: {
        const AccessMode mode = access(node, &error);
        return answer(name_of(mode), error);
    }
    case Question::entries: {
        const std::string text = kind == InterfaceType::enumeration ? available_entries(node, &error) : "";
        return answer(text, error);
    }
    case Question::length:
    case Question::address: {
        if (!ARV_IS_GC_REGISTER(node))
            return {};
        const guint64 number = question == Question::length
                                   ? arv_gc_register_get_length(ARV_GC_REGISTER(node), &error)
                                   : arv_gc_register_get_address(ARV_GC_REGISTER(node), &error);
        return answer(text_of(static_cast<std::int64_t>(number)), error);
    }
    case Question::visibility:
        return {visibility_name(arv_gc_feature_node_get_visibility(ARV_GC_FEATURE_NODE(node))), false, {}};
    case Question::display_name:
        return {string_or_empty(arv_gc_feature_node_get_display_name(ARV_GC_FEATURE_NODE(node))), false, {}};
    case Question::tool_tip:
        return {string_or_empty(arv_gc_feature_node_get_tooltip(ARV_GC_FEATURE_NODE(node))), false, {}};
    case Question::description:
        return {string_or_empty(arv_gc_feature_node_get_description(ARV_GC_FEATURE_NODE(node))), false, {}};
    default:
        return {number_property(node, kind, question), false, {}};
    }
}

Answer AravisMap::set(const std::string& name, InterfaceType kind, const Setting& setting)
{
    ArvGcNode* const node = find(name);
    GError* error = nullptr;
    switch (kind) {
    case InterfaceType::integer:
        arv_gc_integer_set_value(ARV_GC_INTEGER(node), setting.integer, &error);
        break;
    case InterfaceType::float_:
        arv_gc_float_set_value(ARV_GC_FLOAT(node), setting.floating, &error);
        break;
    case InterfaceType::boolean:
        arv_gc_boolean_set_value(ARV_GC_BOOLEAN(node), setting.integer != 0 ? TRUE : FALSE, &error);
        break;
    case InterfaceType::enumeration:
        arv_gc_enumeration_set_string_value(ARV_GC_ENUMERATION(node), setting.text.c_str(), &error);
        break;
    case InterfaceType::string:
        arv_gc_string_set_value(ARV_GC_STRING(node), setting.text.c_str(), &error);
        break;
    case InterfaceType::register_:
        arv_gc_register_set(ARV_GC_REGISTER(node), setting.bytes.data(), setting.bytes.size(), &error);
        break;
    case InterfaceType::command:
        arv_gc_command_execute(ARV_GC_COMMAND(node), &error);
        break;
    default:
        break;
    }
    return answer("", error);
}

} // namespace zvgenapi::differential
