#pragma once

#include <string>

#include "genapi/NodeGraph.h"

namespace zvgentl::tool {

/// Why the parser cannot evaluate the formulas of this node, which would then be 0 without an error; empty
/// when it can, or the node has none.
std::string formula_objection(const GraphNode& node);

} // namespace zvgentl::tool
