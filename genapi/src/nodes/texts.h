#pragma once

#include <string>

#include "nodes/Core.h"

namespace zvgenapi {

/// The value of a node as text, whatever its interface.
std::string value_text(Core& core, NodeIndex node);
/// Writes a value from its text. Throws value for a text that is none.
void write_value_text(Core& core, NodeIndex node, const std::string& text, Verify verify);

/// What the node says, or else the node that stores its value; otherwise PureNumber, Automatic, 6, nothing.
Representation representation_of(Core& core, NodeIndex node);
DisplayNotation notation_of(Core& core, NodeIndex node);
std::int64_t precision_of(Core& core, NodeIndex node);
std::string unit_of(Core& core, NodeIndex node);

} // namespace zvgenapi
