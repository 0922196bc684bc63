#pragma once

#include "nodes/Core.h"

namespace zvgenapi {

/// What may be done with a node at the moment: by its conditions, those of the nodes that store its value,
/// the mode of the register, and the port.
AccessMode access_mode(Core& core, NodeIndex node);
/// Whether it could be written, if no pIsLocked of the node or of one that stores its value were true.
bool is_locked(Core& core, NodeIndex node);

/// Throws access, with the reason.
void require_readable(Core& core, NodeIndex node);
void require_writable(Core& core, NodeIndex node);

} // namespace zvgenapi
