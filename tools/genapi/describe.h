#pragma once

#include <exception>
#include <string>

#include "genapi/Feature.h"
#include "zvgenapi/NodeMap.h"

namespace zvgentl::tool {

FeatureKind kind_of(const zvgenapi::Node& node);
Access access_of(const zvgenapi::Node& node);
Notation notation_of(const zvgenapi::Node& node);

/// Everything about a feature; Feature::problem says what could not be read.
Feature describe_feature(const zvgenapi::Node& node);
/// What must be known before a feature is written: everything but its value. Throws if it cannot be read.
Feature describe_for_writing(const zvgenapi::Node& node);

/// The present value of a feature that can be read. Throws std::runtime_error with the reason.
Value read_value(const zvgenapi::Node& node);

/// Why something about a node failed: what the port said, or the parser, which need not name the node again.
std::string reason_of(const zvgenapi::Node& node, const std::exception& error);

} // namespace zvgentl::tool
