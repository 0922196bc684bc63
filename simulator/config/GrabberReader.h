#pragma once

#include <string>
#include <vector>

#include "simulator/Model.h"
#include "simulator/config/YamlReader.h"

// The grabbers of the configuration file.

namespace zvsim {

/// The sections that a configuration file can have, for the comparison with the schema. The first one is the
/// file itself.
std::vector<YamlKeys> configuration_sections();
/// The keys at the top of the file.
YamlKeys file_keys();

/// The grabbers that the file's top section describes. What is wrong is reported into the section's errors;
/// pictures that cannot be read give a warning.
std::vector<GrabberModel> read_grabbers(const YamlMap& file, std::vector<std::string>& warnings);
/// Whether the file wants the demo grabber after all others. It does unless it says otherwise: the producer
/// hides the last grabber.
bool read_demo_grabber(const YamlMap& file);
GrabberModel demo_grabber();

} // namespace zvsim
