#pragma once

#include <string>

#include "gentl/Producer.h"

// What this product's logger library knows, for producers that log with it. Of others it knows nothing.

namespace zvgentl::tool {

/// What the libraries of the producer have to say at the moment: lines without an end of the last one. Empty
/// when all is well, and for other producers. Ask when the lists of interfaces and devices are up to date.
std::string report_of(const Producer& producer);

/// Remembers that the log of this producer may tell the cause of a later failure.
void remember_log_of(const Producer& producer);

/// A sentence that names the log, and the end of its line; empty unless a producer's log was remembered.
std::string log_hint();

} // namespace zvgentl::tool
