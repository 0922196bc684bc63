#pragma once

#include "unit/simulator/description_xml.h"

// The order in which the GenApi 1.1 schema wants the elements of a node.

namespace zvsim_test {

/// Expects that a node has only elements that its kind knows, in their order.
void expect_order(const std::string& kind, const std::string& name,
                  const std::vector<DescribedProperty>& properties);

} // namespace zvsim_test
