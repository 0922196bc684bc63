#pragma once

#include <string>

#include "nodes/Core.h"

namespace zvgenapi {

/// Where the value of an Integer, Float, Boolean, Enumeration, Command or String is: exactly one of both is
/// set.
struct Source {
    const Element* literal{nullptr}; // in the description; written over in this map only
    NodeIndex target{no_node};       // another node
};
Source source_of(Core& core, NodeIndex node);

/// The value of a node as a number: whole ones of Integer, Enumeration and Boolean, others of Float and their
/// like. Throws wrong_type for nodes whose value is not a number. Access modes are not asked for, but those
/// of registers.
Number read_number(Core& core, NodeIndex node);
/// Writes a number; with Verify::yes, if it is within the limits of this node and of those below it.
void write_number(Core& core, NodeIndex node, const Number& value, Verify verify);

/// The same for String and StringReg.
std::string read_text(Core& core, NodeIndex node);
void write_text(Core& core, NodeIndex node, const std::string& value);
std::int64_t longest_text(Core& core, NodeIndex node);

/// The OnValue or the OffValue of a Boolean.
std::int64_t number_of_boolean(const Core& core, NodeIndex node, Tag tag);
/// What a Command writes.
std::int64_t command_value(Core& core, NodeIndex node);
/// Whether the device has finished a command.
bool is_command_done(Core& core, NodeIndex node);

/// The entry with this number, or with this name; no_node if there is none.
NodeIndex find_entry(Core& core, NodeIndex enumeration, std::int64_t number);
NodeIndex find_entry(const Core& core, NodeIndex enumeration, std::string_view symbolic);

} // namespace zvgenapi
