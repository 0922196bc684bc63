#pragma once

#include <cstddef>
#include <string>

namespace zvbench {

/// A register description such as those of large cameras, of about so many bytes: groups of features of all
/// kinds over registers with computed addresses, with limits, converters, formulas, selectors and texts for
/// users. The names of the features of group N end in N: "Width0", "Gain0", ...
std::string camera_description(std::size_t bytes);

} // namespace zvbench
