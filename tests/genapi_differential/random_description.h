#pragma once

#include <cstdint>
#include <string>

namespace zvgenapi::differential {

/// A register description of some 30 nodes of all kinds, which refer to one another, with a port called
/// "Device". The same seed gives the same description.
std::string random_description(std::uint32_t seed);

} // namespace zvgenapi::differential
