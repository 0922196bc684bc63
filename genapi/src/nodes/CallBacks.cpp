#include "nodes/CallBacks.h"

#include <utility>

namespace zvgenapi {

namespace {

/// Whether a change of the element's target may be seen at the node that it belongs to.
bool shows_changes(const Element& element) noexcept
{
    switch (element.tag) {
    case Tag::p_alias:
    case Tag::p_cast_alias:
    case Tag::p_error:
    case Tag::p_feature:
    case Tag::p_selected:
    case Tag::p_block_polling:
    case Tag::p_value_copy:
        return false;
    default:
        return is_reference(element.tag);
    }
}

} // namespace

std::uint64_t CallBacks::add(NodeIndex node, Function function)
{
    m_entries.emplace(++m_last_id, Entry{node, std::move(function)});
    return m_last_id;
}

std::optional<CallBacks::Entry> CallBacks::find(std::uint64_t id) const
{
    const auto found = m_entries.find(id);
    return found == m_entries.end() ? std::nullopt : std::optional<Entry>(found->second);
}

std::vector<std::uint64_t> CallBacks::interested(const Description& description,
                                                 const std::vector<NodeIndex>& changed)
{
    if (!m_has_dependents)
        m_dependents = ReverseReferences(description, shows_changes);
    m_has_dependents = true;
    std::vector<bool> is_changed(description.nodes.size(), false);
    std::vector<NodeIndex> open;
    const auto add = [&](NodeIndex node) {
        if (!is_changed[node])
            open.push_back(node);
        is_changed[node] = true;
    };
    for (const NodeIndex node : changed)
        add(node);
    while (!open.empty()) {
        const NodeIndex node = open.back();
        open.pop_back();
        for (const NodeIndex dependent : m_dependents.of(node))
            add(dependent);
    }
    std::vector<std::uint64_t> ids;
    for (const auto& [id, entry] : m_entries)
        if (is_changed[entry.node])
            ids.push_back(id);
    return ids;
}

} // namespace zvgenapi
