#pragma once

#include <string>
#include <vector>

namespace zvgentl::tool {

/// Those of the names that somebody who wrote `wanted` may have meant, the nearest first; at most three.
std::vector<std::string> near_names(const std::string& wanted, const std::vector<std::string>& names);

} // namespace zvgentl::tool
