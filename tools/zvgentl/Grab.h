#pragma once

#include "platform/Interrupt.h"
#include "zvgentl/GrabResult.h"

namespace zvgentl::tool {

/// Loads the producer, grabs as the options say and shuts everything down again. Throws std::exception for
/// whatever keeps it from grabbing at all; a time-out and an interruption are outcomes.
GrabResult grab(const GrabOptions& options, platform::Interrupt& interrupt);

} // namespace zvgentl::tool
