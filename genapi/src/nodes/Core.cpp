#include "nodes/Core.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace zvgenapi {

namespace {

template <Tag tag>
bool has_tag(const Element& element) noexcept
{
    return element.tag == tag;
}

} // namespace

Core::Core(Description read, const Limits& allowed)
    : description(std::move(read)), limits(allowed), invalidated(description, has_tag<Tag::p_invalidator>),
      selecting(description, has_tag<Tag::p_selected>), query(limits),
      cache(description.nodes.size(), limits.cache_bytes), known(description.nodes.size())
{
    for (NodeIndex node = 0; node < description.nodes.size(); ++node)
        if (description.find(node, Tag::polling_time) != nullptr)
            polled.emplace(node, 0);
}

Core::Visit::Visit(Core& core, UseCache use_cache) : m_core(core), m_lock(core.m_mutex)
{
    if (m_core.m_visits++ > 0)
        return; // a port, or an observer of one, asks something while a question is being answered
    m_core.query = Query(m_core.limits);
    m_core.query.use_cache = use_cache;
    ++m_core.query_number;
}

std::vector<std::uint64_t> Core::Visit::finish()
{
    if (m_core.m_visits > 1 || m_core.changed.empty())
        return {};
    const std::vector<NodeIndex> nodes = std::exchange(m_core.changed, {});
    if (m_core.call_backs.is_empty())
        return {};
    return m_core.call_backs.interested(m_core.description, nodes);
}

void Core::call(const std::vector<std::uint64_t>& due)
{
    for (const std::uint64_t id : due) {
        std::optional<CallBacks::Entry> entry;
        {
            const std::lock_guard<std::recursive_mutex> lock(m_mutex);
            entry = call_backs.find(id);
        }
        if (entry)
            entry->function(Node(this, entry->node));
    }
}

} // namespace zvgenapi
