#pragma once

#include <string>
#include <vector>

#include "genapi/NodeMap.h"
#include "zvgentl/PortOptions.h"

namespace zvgentl::tool {

/// A feature as a file keeps it: for these values of its selectors, the outermost first, it has this value.
struct SavedFeature {
    Assignments selectors;
    std::string name;
    std::string value;

    /// "TriggerMode[TriggerSelector=FrameStart]"; without the brackets for a feature without selectors.
    std::string title() const;
};

using SavedFeatures = std::vector<SavedFeature>;

/// The features that can be written, in the description's order, those that have selectors once for every
/// value of these. Where the description marks features as streamable, only those. The selectors are given
/// their own values back. `problems` receives a line for each feature that could not be read.
SavedFeatures read_features(const NodeMap& map, std::vector<std::string>& problems);

/// A line for each feature, with `comment` above them. A line end, a backslash and other control characters
/// in a value are written as \n, \\ and \xNN.
std::string to_text(const SavedFeatures& features, const std::string& comment);
/// The opposite; empty lines and those that begin with # are left out. Throws std::runtime_error that names
/// the line for a text that is not such a file.
SavedFeatures parse_features(const std::string& text);

enum class LoadResult { set, unchanged, failed };

struct LoadedFeature {
    SavedFeature feature;
    LoadResult result{LoadResult::failed};
    std::string problem; // why it failed
};

/// Sets the features. Because one may allow another, or change one that was set before, all are gone through
/// again until nothing changes any more. Selectors are set last. The result is in the order of the features.
std::vector<LoadedFeature> apply_features(const SavedFeatures& features, const NodeMap& map);

} // namespace zvgentl::tool
