#include "nodes/RegisterCache.h"

#include <utility>

namespace zvgenapi {

const std::string* RegisterCache::find(NodeIndex node, const Location& location) const noexcept
{
    const std::uint32_t slot = m_slots[node];
    if (slot == 0 || !(m_entries[slot - 1].location == location))
        return nullptr;
    return &m_entries[slot - 1].bytes;
}

void RegisterCache::put(NodeIndex node, const Location& location, const std::string& bytes)
{
    forget(node);
    if (bytes.size() > m_bytes_left)
        return;
    m_entries.push_back({node, location, bytes});
    m_slots[node] = static_cast<std::uint32_t>(m_entries.size());
    m_bytes_left -= bytes.size();
}

bool RegisterCache::forget(NodeIndex node) noexcept
{
    const std::uint32_t slot = m_slots[node];
    if (slot == 0)
        return false;
    Entry& entry = m_entries[slot - 1];
    m_bytes_left += entry.bytes.size();
    m_slots[node] = 0;
    if (slot != m_entries.size()) {
        entry = std::move(m_entries.back());
        m_slots[entry.node] = slot;
    }
    m_entries.pop_back();
    return true;
}

void RegisterCache::forget_overlapping(const Location& location, std::vector<NodeIndex>& forgotten)
{
    for (std::size_t i = m_entries.size(); i > 0; --i) {
        if (!m_entries[i - 1].location.overlaps(location))
            continue;
        forgotten.push_back(m_entries[i - 1].node);
        forget(m_entries[i - 1].node); // moves an entry here that was looked at before
    }
}

void RegisterCache::clear() noexcept
{
    while (!m_entries.empty())
        forget(m_entries.back().node);
}

std::vector<NodeIndex> RegisterCache::nodes() const
{
    std::vector<NodeIndex> nodes;
    for (const Entry& entry : m_entries)
        nodes.push_back(entry.node);
    return nodes;
}

} // namespace zvgenapi
