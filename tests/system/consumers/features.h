/// \file features.h
/// Node maps as clients use them, on an independent parser.
#pragma once

#include <cstdint>
#include <string>

#include "genapi/NodeMap.h"

namespace zvclient {

/// Reads every feature below Root; the number of them. Each must be readable unless it is a command or
/// write-only.
int read_every_feature(const zvgentl::tool::NodeMap& nodes);

/// Writes every writable feature at its limits, every entry of every enumeration, and what it was before; the
/// number of them. Commands are executed.
int write_every_feature(const zvgentl::tool::NodeMap& nodes);

std::int64_t integer(const zvgentl::tool::NodeMap& nodes, const std::string& name);

} // namespace zvclient
