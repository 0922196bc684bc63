#pragma once

#include <string>
#include <vector>

namespace zvgentl::tool {

/// Rows of texts in columns that line up, two blanks apart, behind `indent`, with control characters made
/// visible.
std::string table_text(const std::vector<std::vector<std::string>>& rows, const std::string& indent = "");

} // namespace zvgentl::tool
