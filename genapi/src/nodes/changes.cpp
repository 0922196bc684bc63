#include "nodes/changes.h"

#include <unordered_set>
#include <vector>

#include "description/cycles.h"
#include "nodes/Step.h"

namespace zvgenapi {

void for_each_below(const Core& core, std::vector<NodeIndex> nodes,
                    const std::function<void(NodeIndex)>& action)
{
    std::unordered_set<NodeIndex> seen(nodes.begin(), nodes.end());
    while (!nodes.empty()) {
        const NodeIndex next = nodes.back();
        nodes.pop_back();
        action(next);
        for_each_need(core.description, next, Aspect::value, [&](const Element& element, Aspect) {
            if (seen.insert(element.target).second)
                nodes.push_back(element.target);
        });
    }
}

void forget_registers(Core& core, const std::vector<NodeIndex>& nodes)
{
    forget_known(core);
    core.changed.insert(core.changed.end(), nodes.begin(), nodes.end());
    try {
        for_each_below(core, nodes, [&core](NodeIndex below) {
            take_steps(core, below, core.description.of(below).size());
            if (core.cache.forget(below))
                core.changed.push_back(below);
        });
    } catch (...) {
        core.cache.clear(); // nothing that is no longer true may stay
        throw;
    }
}

void forget_everything(Core& core)
{
    forget_known(core);
    core.cache.clear();
    if (core.call_backs.is_empty())
        return;
    for (NodeIndex node = 0; node < core.description.nodes.size(); ++node)
        if (is_register(core.description.nodes[node].type))
            core.changed.push_back(node);
}

void note_written(Core& core, NodeIndex node)
{
    forget_known(core);
    core.changed.push_back(node);
    const auto invalid = core.invalidated.of(node);
    std::vector<NodeIndex> nodes(invalid.begin(), invalid.end());
    for (const Element& element : core.description.of(node))
        if (element.tag == Tag::p_selected && element.target != no_node)
            nodes.push_back(element.target);
    if (!nodes.empty())
        forget_registers(core, nodes);
}

} // namespace zvgenapi
