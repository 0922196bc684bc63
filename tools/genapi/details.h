#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "genapi/Feature.h"

namespace zvgenapi {
class Node;
class NodeMap;
} // namespace zvgenapi

namespace zvgentl::tool {

/// A register that the value of a feature is read from.
struct RegisterPlace {
    std::string name; // of its node
    std::string port;
    std::string access; // RO, WO, RW, NA, NI
    std::string caching;
    std::uint64_t address{0};
    std::int64_t length{0}; // in bytes
    std::string problem;    // why the address is not known
};

/// A feature with what only a description of it alone shows.
struct FeatureDetails {
    Feature feature;
    std::string element;                // of the description, such as IntSwissKnife
    std::string long_description;       // empty if there is none
    std::string docu_url;               // empty if there is none
    std::vector<std::string> selectors; // whose values choose what this feature means
    bool is_streamable{false};          // belongs to the settings that are stored in files
    bool is_deprecated{false};
    std::vector<RegisterPlace> registers;
};

/// Everything of FeatureDetails but the feature itself. Reads the device only for addresses.
FeatureDetails details_of(const zvgenapi::NodeMap& map, const zvgenapi::Node& node);

/// The nodes whose values choose what a feature means, and those that choose what these mean, the outermost
/// first.
std::vector<std::string> selectors_of(const zvgenapi::Node& node);

} // namespace zvgentl::tool
