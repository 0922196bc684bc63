#pragma once

#include <cstdint>
#include <vector>

#include "nodes/Core.h"

namespace zvgenapi {

enum class Limit : std::uint8_t { minimum, maximum, increment };

/// A limit of a number: its own, or else that of the node below it. Whole numbers for Integer and its like.
/// An increment that is not above 0 counts as 1, or as none for Float.
Number limit_of(Core& core, NodeIndex node, Limit limit);

/// The values of ValidValueSet, of the node or else of the one below it; empty if there is none.
std::vector<Number> valid_values(Core& core, NodeIndex node);

/// Throws range if the value must not be written.
void check_limits(Core& core, NodeIndex node, const Number& value);

} // namespace zvgenapi
