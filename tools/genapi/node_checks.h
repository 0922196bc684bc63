#pragma once

#include <map>
#include <string>

#include "genapi/NodeGraph.h"

namespace zvgentl::tool {

/// The nodes that must not be evaluated, each with the reason: a reference that leads nowhere or round in a
/// circle, chains too long or too wide to follow, a register of impossible length, a formula that the parser
/// does not understand. Nodes that need such a node are among them.
std::map<std::string, std::string> find_unusable_nodes(const NodeGraph& graph);

/// Whether evaluating a node may lead to the node that an element with this tag names.
bool is_reference(const std::string& tag) noexcept;

} // namespace zvgentl::tool
