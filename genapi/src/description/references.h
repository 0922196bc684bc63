#pragma once

#include <cstdint>
#include <vector>

#include "description/Description.h"

namespace zvgenapi {

/// Enters the names of all nodes and points every reference at its node. References that lead nowhere and
/// names that are given twice become problems; of two nodes of the same name, the one with the higher merge
/// priority counts, or the first.
void resolve_references(Description& description);

/// For every node, which other nodes refer to it by certain elements.
class ReverseReferences {
public:
    ReverseReferences() = default;
    /// `counts` says whether an element matters.
    template <class Counts>
    ReverseReferences(const Description& description, const Counts& counts)
        : m_starts(description.nodes.size() + 1, 0)
    {
        for_each(description, counts, [this](NodeIndex, NodeIndex target) { ++m_starts[target + 1]; });
        for (std::size_t i = 1; i < m_starts.size(); ++i)
            m_starts[i] += m_starts[i - 1];
        m_sources.resize(m_starts.back());
        std::vector<std::uint32_t> next(m_starts.begin(), m_starts.end());
        for_each(description, counts,
                 [&](NodeIndex source, NodeIndex target) { m_sources[next[target]++] = source; });
    }

    struct Range {
        const NodeIndex* first;
        const NodeIndex* last;
        const NodeIndex* begin() const noexcept { return first; }
        const NodeIndex* end() const noexcept { return last; }
    };
    /// The nodes that refer to this one, in the order of the description.
    Range of(NodeIndex node) const noexcept
    {
        return {m_sources.data() + m_starts[node], m_sources.data() + m_starts[node + 1]};
    }

private:
    template <class Counts, class Action>
    static void for_each(const Description& description, const Counts& counts, const Action& action)
    {
        for (NodeIndex node = 0; node < description.nodes.size(); ++node)
            for (const Element& element : description.of(node))
                if (element.target != no_node && counts(element))
                    action(node, element.target);
    }

    std::vector<std::uint32_t> m_starts;
    std::vector<NodeIndex> m_sources;
};

} // namespace zvgenapi
