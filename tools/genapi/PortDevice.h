#pragma once

#include <arv.h>

#include "gentl/Registers.h"

namespace zvgentl::tool {

/// A device of the parser's library whose memory is a port. What the port throws becomes a GError with the
/// same text. Both arguments must outlive the result, which is released with g_object_unref.
ArvDevice* new_port_device(const Registers& registers);

} // namespace zvgentl::tool
