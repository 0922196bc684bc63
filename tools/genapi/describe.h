#pragma once

#include <stdexcept>
#include <string>

#include <arv.h>

#include "genapi/Feature.h"
#include "genapi/Nodes.h"

namespace zvgentl::tool {

/// An access that the port, or the parser, refused.
class PortFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws PortFailure if the call failed.
void check_port(const Failure& failure);

/// Everything about a feature; Feature::problem says what could not be read.
Feature describe_feature(const Nodes& nodes, const std::string& name);
/// What must be known before a feature is written: everything but its value. Throws if it cannot be read.
Feature describe_for_writing(const Nodes& nodes, const std::string& name);

Notation notation_of(ArvGcNode* node);
/// The present value of a feature that can be read.
Value read_value(ArvGcNode* node, const std::string& name, FeatureKind kind);

} // namespace zvgentl::tool
