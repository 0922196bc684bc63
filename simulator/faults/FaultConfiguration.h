#pragma once

#include <string_view>
#include <vector>

#include "simulator/config/YamlReader.h"
#include "simulator/faults/FaultPlan.h"

// The fault plan of a configuration file.

namespace zvsim {

/// The keys at the top of the file that belong to the fault plan.
std::vector<std::string_view> fault_keys();
/// The sections below them, for the comparison with the schema.
std::vector<YamlKeys> fault_sections();
/// What the file's top section says about faults; what is wrong is reported into the section's errors.
FaultPlan read_fault_plan(const YamlMap& file);

} // namespace zvsim
