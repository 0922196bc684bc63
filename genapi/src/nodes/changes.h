#pragma once

#include <functional>
#include <vector>

#include "nodes/Core.h"

namespace zvgenapi {

/// Drops what was found out within the present query.
inline void forget_known(Core& core) noexcept { ++core.query_number; }

/// Notes that a node was written: what it invalidates or selects is read again, and observers are told.
void note_written(Core& core, NodeIndex node);
/// Forgets the registers of nodes and of everything that their values depend on.
void forget_registers(Core& core, const std::vector<NodeIndex>& nodes);
/// Forgets all registers.
void forget_everything(Core& core);

/// Calls `action` for the nodes and for every node that their values depend on, each once.
void for_each_below(const Core& core, std::vector<NodeIndex> nodes,
                    const std::function<void(NodeIndex)>& action);

} // namespace zvgenapi
