#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "description/Description.h"

namespace zvgenapi {

/// Which part of a node a variable of a formula stands for, by the ending of its name.
enum class VariablePart : std::uint8_t {
    value,     ///< none, or .Value
    minimum,   ///< .Min
    maximum,   ///< .Max
    increment, ///< .Inc
    entry      ///< .Entry.Name or .Enum.Name: the number of an entry of an enumeration
};
struct Variable {
    VariablePart part{VariablePart::value};
    std::string_view entry;
};
Variable parse_variable(std::string_view name) noexcept;

/// Calls `action` with the element and the aspect of its target for everything that must be known to answer a
/// question about a node.
void for_each_need(const Description& description, NodeIndex node, Aspect aspect,
                   const std::function<void(const Element&, Aspect)>& action);

/// Finds the questions that can never be answered, because they lead back to themselves. They become problems
/// and are entered in the description's `cycles`. Takes time in proportion to the number of references.
void find_cycles(Description& description);

} // namespace zvgenapi
