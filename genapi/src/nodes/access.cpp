#include "nodes/access.h"

#include <string>

#include "nodes/Step.h"
#include "nodes/changes.h"
#include "nodes/registers.h"
#include "nodes/values.h"

namespace zvgenapi {

namespace {

bool is_on(Core& core, NodeIndex node, Tag condition, bool otherwise)
{
    const Element* const element = core.description.find(node, condition);
    return element == nullptr ? otherwise : read_number(core, target_of(core, node, *element)).is_true();
}

AccessMode mode_of_port(const Core& core, NodeIndex port)
{
    const auto found = core.ports.find(port);
    if (found == core.ports.end())
        return AccessMode::NI;
    return found->second == nullptr ? AccessMode::NA : AccessMode::RW;
}

AccessMode mode_below(Core& core, NodeIndex node)
{
    const Source source = source_of(core, node);
    AccessMode mode = source.literal == nullptr ? access_mode(core, source.target) : AccessMode::RW;
    // A value that cannot be copied to all of them is not written at all.
    for (const Element& element : core.description.of(node))
        if (element.tag == Tag::p_value_copy && is_writable(mode) &&
            !is_writable(access_mode(core, target_of(core, node, element))))
            mode = combine(mode, AccessMode::RO);
    return mode;
}

/// A formula has a value if all its variables have one.
AccessMode mode_of_variables(Core& core, NodeIndex node)
{
    for (const Element& element : core.description.of(node))
        if (element.tag == Tag::p_variable && !is_readable(access_mode(core, target_of(core, node, element))))
            return AccessMode::NA;
    return AccessMode::RW;
}

AccessMode own_mode(Core& core, NodeIndex node)
{
    const NodeType type = core.description.nodes[node].type;
    if (is_register(type)) {
        const Element* const port = core.description.find(node, Tag::p_port);
        return combine(mode_of_register(core, node), port == nullptr || port->target == no_node
                                                         ? AccessMode::RW // reading it says what is wrong
                                                         : access_mode(core, port->target));
    }
    switch (type) {
    case NodeType::integer:
    case NodeType::float_:
    case NodeType::boolean:
    case NodeType::command:
    case NodeType::enumeration:
    case NodeType::string:
        return mode_below(core, node);
    case NodeType::converter:
    case NodeType::int_converter:
        return combine(mode_below(core, node), mode_of_variables(core, node));
    case NodeType::swiss_knife:
    case NodeType::int_swiss_knife:
        return combine(AccessMode::RO, mode_of_variables(core, node));
    case NodeType::port:
        return mode_of_port(core, node);
    case NodeType::node:
    case NodeType::category:
    case NodeType::enum_entry:
        return AccessMode::RO;
    default:
        return AccessMode::NI; // known, but not supported
    }
}

AccessMode imposed_mode(const Core& core, NodeIndex node)
{
    const std::string_view mode = text_in(core, node, Tag::imposed_access_mode);
    for (const AccessMode candidate : {AccessMode::NI, AccessMode::NA, AccessMode::WO, AccessMode::RO})
        if (mode == name_of(candidate))
            return candidate;
    return AccessMode::RW;
}

AccessMode locked(AccessMode mode) noexcept
{
    if (mode == AccessMode::RW)
        return AccessMode::RO;
    return mode == AccessMode::WO ? AccessMode::NA : mode;
}

AccessMode find_out(Core& core, NodeIndex node)
{
    // The device need not have what the other conditions read.
    if (!is_on(core, node, Tag::p_is_implemented, true))
        return AccessMode::NI;
    if (!is_on(core, node, Tag::p_is_available, true))
        return AccessMode::NA;
    AccessMode mode = combine(own_mode(core, node), imposed_mode(core, node));
    if (is_writable(mode) && !core.query.ignores_locks && is_on(core, node, Tag::p_is_locked, false))
        mode = locked(mode);
    return mode;
}

/// While it exists, nothing is locked.
class WithoutLocks {
public:
    explicit WithoutLocks(Core& core) noexcept : m_core(core) { switch_to(true); }
    ~WithoutLocks() { switch_to(false); }
    WithoutLocks(const WithoutLocks&) = delete;
    WithoutLocks& operator=(const WithoutLocks&) = delete;

private:
    void switch_to(bool ignores_locks) noexcept
    {
        m_core.query.ignores_locks = ignores_locks;
        forget_known(m_core);
    }

    Core& m_core;
};

[[noreturn]] void refuse(Core& core, NodeIndex node, AccessMode mode, const char* otherwise)
{
    if (mode == AccessMode::NI)
        fail(core, node, ErrorKind::access, "this device does not have it");
    if (mode == AccessMode::NA)
        fail(core, node, ErrorKind::access, "it is not available at the moment");
    fail(core, node, ErrorKind::access, otherwise);
}

} // namespace

AccessMode access_mode(Core& core, NodeIndex node)
{
    if (core.known[node].access_query == core.query_number)
        return core.known[node].access;
    const Step step(core, node, Aspect::access);
    const AccessMode mode = find_out(core, node);
    core.known[node].access = mode;
    core.known[node].access_query = core.query_number;
    return mode;
}

bool is_locked(Core& core, NodeIndex node)
{
    if (is_writable(access_mode(core, node)))
        return false;
    const WithoutLocks without(core);
    return is_writable(access_mode(core, node));
}

void require_readable(Core& core, NodeIndex node)
{
    const AccessMode mode = access_mode(core, node);
    if (!is_readable(mode))
        refuse(core, node, mode, "it can only be written");
}

void require_writable(Core& core, NodeIndex node)
{
    const AccessMode mode = access_mode(core, node);
    if (is_writable(mode))
        return;
    if (is_locked(core, node))
        fail(core, node, ErrorKind::access, "it is locked at the moment");
    refuse(core, node, mode, "it can only be read");
}

} // namespace zvgenapi
