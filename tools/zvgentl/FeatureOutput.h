#pragma once

#include <string>
#include <vector>

#include "genapi/Feature.h"
#include "genapi/details.h"

namespace zvgentl::tool {

/// A feature, or a category, and its place in the tree.
struct FeatureLine {
    TreeEntry entry;
    Feature feature;
};

/// What `zvgentl features` shows.
struct FeatureTable {
    std::string port;
    std::string category;
    std::vector<FeatureLine> lines;
};

/// A heading, then one line per feature, indented like the tree, in columns.
std::string to_text(const FeatureTable& table);

/// Everything about one feature, a line for each fact.
std::string to_text(const std::string& port, const FeatureDetails& details);

} // namespace zvgentl::tool
