#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "genapi/Feature.h"

namespace zvgentl::tool {

/// A feature, or a category, and its place in the tree.
struct FeatureLine {
    TreeEntry entry;
    Feature feature;
};

/// One line per feature, indented like the tree, in columns.
std::string to_text(const std::vector<FeatureLine>& lines);

nlohmann::ordered_json to_json(const Value& value);
nlohmann::ordered_json to_json(const std::vector<FeatureLine>& lines);

} // namespace zvgentl::tool
