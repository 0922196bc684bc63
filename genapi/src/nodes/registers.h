#pragma once

#include <string>

#include "nodes/Core.h"

namespace zvgenapi {

/// Where the register of a node is: all its addresses, indexes and formulas added up.
Location locate(Core& core, NodeIndex node);
/// The length alone.
std::uint64_t length_of(Core& core, NodeIndex node);

/// The bytes of a register, from the device or, where that is allowed, from the cache. Throws access for one
/// that can only be written.
std::string read_bytes(Core& core, NodeIndex node);
/// Writes a register as a whole. Throws access for one that can only be read.
void write_bytes(Core& core, NodeIndex node, const std::string& bytes);

/// The number in an IntReg, MaskedIntReg, StructEntry or FloatReg.
Number read_register(Core& core, NodeIndex node);
/// Throws range if the number does not fit.
void write_register(Core& core, NodeIndex node, const Number& value);

/// The numbers that fit into the register.
struct NumberRange {
    Number minimum;
    Number maximum;
};
NumberRange range_of(Core& core, NodeIndex node);

/// The mode that the description gives the register itself.
AccessMode mode_of_register(const Core& core, NodeIndex node);
Caching caching_of_register(const Core& core, NodeIndex node);

/// Through a port, without a register.
void read_port(Core& core, NodeIndex port, std::uint64_t address, void* data, std::size_t size);
void write_port(Core& core, NodeIndex port, std::uint64_t address, const void* data, std::size_t size);

} // namespace zvgenapi
