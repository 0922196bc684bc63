#include "genapi/Nodes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <stdexcept>

#include "genapi/node_checks.h"

namespace zvgentl::tool {

namespace {

// Made by GObject, which zeroes the memory and calls no constructor.
struct PortDevice {
    ArvDevice parent;
    const Registers* registers;
};

struct PortDeviceClass {
    ArvDeviceClass parent;
};

const Registers& registers_of(ArvDevice* device) { return *reinterpret_cast<PortDevice*>(device)->registers; }

/// No exception may pass through the library, which is written in C.
template <class Action>
gboolean guarded(GError** error, const Action& action) noexcept
{
    try {
        action();
        return TRUE;
    } catch (const std::exception& reason) {
        g_set_error(error, ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_TRANSFER_ERROR, "%s", reason.what());
    } catch (...) {
        g_set_error(error, ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_UNKNOWN, "%s", "the port failed");
    }
    return FALSE;
}

gboolean read_memory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error)
{
    return guarded(error, [&] { registers_of(device).read(address, buffer, size); });
}

gboolean write_memory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error)
{
    return guarded(error, [&] { registers_of(device).write(address, buffer, size); });
}

// The library uses these two for the registers of old descriptions only, takes the number for one in the
// byte order of this machine, and stores it little-endian: our memory in its own order comes out.
gboolean read_register(ArvDevice* device, guint64 address, guint32* value, GError** error)
{
    std::array<unsigned char, 4> bytes{};
    if (!read_memory(device, address, bytes.size(), bytes.data(), error))
        return FALSE;
    *value = static_cast<guint32>(bytes[0]) | static_cast<guint32>(bytes[1]) << 8U |
             static_cast<guint32>(bytes[2]) << 16U | static_cast<guint32>(bytes[3]) << 24U;
    return TRUE;
}

gboolean write_register(ArvDevice* device, guint64 address, guint32 value, GError** error)
{
    std::array<unsigned char, 4> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<unsigned char>(value >> (8U * i));
    return write_memory(device, address, bytes.size(), bytes.data(), error);
}

void init_class(gpointer type_class, gpointer /*data*/)
{
    auto* const device_class = static_cast<ArvDeviceClass*>(type_class);
    device_class->read_memory = read_memory;
    device_class->write_memory = write_memory;
    device_class->read_register = read_register;
    device_class->write_register = write_register;
}

GType port_device_type()
{
    static const GType type =
        g_type_register_static_simple(ARV_TYPE_DEVICE, "ZvPortDevice", sizeof(PortDeviceClass), init_class,
                                      sizeof(PortDevice), nullptr, static_cast<GTypeFlags>(0));
    return type;
}

/// A device of the parser's library whose memory is a port. What the port throws becomes a GError with the
/// same text. The registers must outlive the result.
ArvDevice* new_port_device(const Registers& registers)
{
    auto* const device = static_cast<PortDevice*>(g_object_new(port_device_type(), nullptr));
    device->registers = &registers;
    return &device->parent;
}

constexpr std::int64_t longest_number = 8;
constexpr std::int64_t longest_register = std::int64_t{64} << 20U;

bool is_register(const std::string& element)
{
    return element == "IntReg" || element == "MaskedIntReg" || element == "FloatReg" ||
           element == "StringReg" || element == "Register" || element == "StructReg";
}

/// The mode that a register, or an entry of a structure, names for itself.
void restrict_to_mode(Access& access, const std::string& mode)
{
    access.is_readable = access.is_readable && mode != "WO";
    access.is_writable = access.is_writable && mode != "RO";
}

/// A whole number, even for values far outside their range and for NaN.
std::int64_t rounded(double number)
{
    constexpr double farthest = 9.2e18;
    return std::isnan(number) ? 0 : static_cast<std::int64_t>(std::clamp(number, -farthest, farthest));
}

/// The library prints what it finds wrong with a description; exceptions report it instead.
void silence_library()
{
    const auto ignore = [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {};
    for (const char* const domain : {static_cast<const char*>(nullptr), "XML", "Aravis", "GLib-GObject"})
        g_log_set_handler(domain, static_cast<GLogLevelFlags>(G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING),
                          ignore, nullptr);
}

} // namespace

void Failure::check() const
{
    if (m_error != nullptr)
        throw std::runtime_error(m_error->message);
}

bool Failure::succeeded() const
{
    if (m_error != nullptr && g_error_matches(m_error, ARV_GC_ERROR, ARV_GC_ERROR_PROPERTY_NOT_DEFINED) != 0)
        return false;
    check();
    return true;
}

Nodes::Nodes(const std::string& description, const Registers& registers)
    : m_graph(description), m_unusable(find_unusable_nodes(m_graph)), m_device(new_port_device(registers))
{
    static const bool is_silent = (silence_library(), true);
    static_cast<void>(is_silent);
    for (const auto& node : m_graph.nodes())
        collect_references(node);
    m_map.reset(arv_gc_new(m_device.get(), description.data(), description.size()));
    if (!m_map)
        throw std::runtime_error("the port's description cannot be parsed");
    arv_gc_set_register_cache_policy(m_map.get(), ARV_REGISTER_CACHE_POLICY_DISABLE);
    arv_gc_set_range_check_policy(m_map.get(), ARV_RANGE_CHECK_POLICY_DISABLE);
    arv_gc_set_access_check_policy(m_map.get(), ARV_ACCESS_CHECK_POLICY_DISABLE);
}

void Nodes::collect_references(const GraphNode& node)
{
    for (const auto& property : node.properties)
        if (is_reference(property.tag))
            m_referred.insert(property.text);
    for (const auto& formula : node.formulas)
        collect_references(formula);
    m_has_variable_lengths = m_has_variable_lengths || node.find("pLength") != nullptr;
}

// A value that is written in the description could be changed in our copy of it, which no device ever sees.
// That makes sense only for one that chooses what other nodes mean.
bool Nodes::is_constant(const GraphNode& node) const
{
    return node.find("Value") != nullptr && node.find("pValue") == nullptr &&
           m_referred.count(node.name) == 0;
}

ArvGcNode* Nodes::find(const std::string& name) const
{
    ArvGcNode* const node =
        m_graph.find(name) == nullptr ? nullptr : arv_gc_get_node(m_map.get(), name.c_str());
    return node != nullptr && ARV_IS_GC_FEATURE_NODE(node) ? node : nullptr;
}

ArvGcNode* Nodes::usable(const std::string& name) const
{
    ArvGcNode* const node = find(name);
    if (node == nullptr)
        throw std::runtime_error("there is no feature " + name);
    const auto found = m_unusable.find(name);
    if (found != m_unusable.end())
        throw std::runtime_error(
            name + " cannot be used, because the port's description is faulty: " + found->second);
    if (m_has_variable_lengths) {
        std::set<const GraphNode*> seen;
        check_lengths(*m_graph.find(name), seen);
    }
    return node;
}

// The library takes as much memory as the device names for a register whose length is read from it.
void Nodes::check_lengths(const GraphNode& node, std::set<const GraphNode*>& seen) const
{
    if (!seen.insert(&node).second)
        return;
    for (const auto& property : node.properties)
        if (is_reference(property.tag))
            check_lengths(*m_graph.find(property.text), seen);
    const std::string* const source = node.find("pLength");
    if (source == nullptr)
        return;
    const bool is_number = node.element != "StringReg" && node.element != "Register";
    const std::int64_t length = whole_number(*source);
    if (length < 1 || length > (is_number ? longest_number : longest_register))
        throw std::runtime_error(node.name + " cannot be used: the device says that it is " +
                                 std::to_string(length) + " bytes long");
}

FeatureKind Nodes::kind(const std::string& name) const
{
    ArvGcNode* const node = find(name);
    if (node == nullptr)
        return FeatureKind::other;
    if (ARV_IS_GC_CATEGORY(node))
        return FeatureKind::category;
    if (ARV_IS_GC_COMMAND(node))
        return FeatureKind::command;
    if (ARV_IS_GC_BOOLEAN(node))
        return FeatureKind::boolean;
    if (ARV_IS_GC_ENUMERATION(node))
        return FeatureKind::enumeration;
    if (ARV_IS_GC_STRING(node))
        return FeatureKind::string;
    // A converter can be asked for both; what it is depends on its element.
    const std::string& element = m_graph.find(name)->element;
    if (ARV_IS_GC_FLOAT(node) && element.compare(0, 3, "Int") != 0 && element.compare(0, 6, "Masked") != 0)
        return FeatureKind::floating_point;
    if (ARV_IS_GC_INTEGER(node))
        return FeatureKind::integer;
    return ARV_IS_GC_REGISTER(node) && element == "Register" ? FeatureKind::bytes : FeatureKind::other;
}

std::int64_t Nodes::whole_number(const std::string& name) const
{
    ArvGcNode* const node = find(name);
    Failure failure;
    std::int64_t number = 0;
    switch (node == nullptr ? FeatureKind::other : kind(name)) {
    case FeatureKind::integer:
        number = arv_gc_integer_get_value(ARV_GC_INTEGER(node), failure);
        break;
    case FeatureKind::boolean:
        number = arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), failure);
        break;
    case FeatureKind::enumeration:
        number = arv_gc_enumeration_get_int_value(ARV_GC_ENUMERATION(node), failure);
        break;
    case FeatureKind::floating_point:
        number = rounded(arv_gc_float_get_value(ARV_GC_FLOAT(node), failure));
        break;
    default:
        throw std::runtime_error(name + " is not a number");
    }
    failure.check();
    return number;
}

std::vector<std::string> Nodes::available_entries(const std::string& enumeration) const
{
    std::vector<std::string> names;
    for (const auto* const entry : m_graph.entries(enumeration))
        if (is_on(*entry, "pIsImplemented", true) && is_on(*entry, "pIsAvailable", true))
            names.push_back(entry->name);
    return names;
}

bool Nodes::is_on(const GraphNode& node, const char* tag, bool otherwise) const
{
    const std::string* const name = node.find(tag);
    return name == nullptr ? otherwise : whole_number(*name) != 0;
}

Access Nodes::access(const std::string& name) const
{
    Access access;
    const GraphNode* const feature = m_graph.find(name);
    // A value is stored by another node, which may have conditions of its own. The chain was checked for
    // ends.
    for (const GraphNode* node = feature; node != nullptr;) {
        restrict_to(access, *node);
        apply_conditions(access, *node);
        const std::string* const value = node->find("pValue");
        node = value == nullptr ? nullptr : m_graph.find(*value);
    }
    if (feature != nullptr && feature->element == "Command")
        access.is_readable = false;
    if (feature != nullptr && feature->element == "Category")
        restrict_to_mode(access, "RO");
    if (!access.is_implemented || !access.is_available)
        access.is_readable = access.is_writable = false;
    access.is_locked = access.is_locked && access.is_writable;
    access.is_writable = access.is_writable && !access.is_locked;
    return access;
}

void Nodes::restrict_to(Access& access, const GraphNode& node) const
{
    if (const std::string* const mode = node.find("ImposedAccessMode"))
        restrict_to_mode(access, *mode);
    const GraphNode* const owner = node.element == "StructEntry" && node.find("AccessMode") == nullptr
                                       ? m_graph.find(node.parent)
                                       : &node;
    if (is_register(node.element) || node.element == "StructEntry") {
        const std::string* const mode = owner == nullptr ? nullptr : owner->find("AccessMode");
        restrict_to_mode(access, mode == nullptr ? "RO" : *mode);
    } else if (node.element == "SwissKnife" || node.element == "IntSwissKnife" || is_constant(node)) {
        restrict_to_mode(access, "RO");
    }
}

void Nodes::apply_conditions(Access& access, const GraphNode& node) const
{
    if (!access.is_implemented)
        return; // the device need not have the registers of the other conditions
    access.is_implemented = is_on(node, "pIsImplemented", true);
    if (access.is_implemented && access.is_available)
        access.is_available = is_on(node, "pIsAvailable", true);
    if (access.is_implemented && access.is_available)
        access.is_locked = access.is_locked || is_on(node, "pIsLocked", false);
}

} // namespace zvgentl::tool
