#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zvgentl::tool {

class NodeMap;

/// A feature and the value that it is to get, as the user wrote both.
struct Assignment {
    std::string name;
    std::string value;
};

using Assignments = std::vector<Assignment>;

/// NAME=VALUE; the value may be empty and may hold more equal signs. Nothing for any other text.
std::optional<Assignment> parse_assignment(const std::string& text);

/// The words of `zvgentl set`: each NAME=VALUE, or else just two, a name and a value. Nothing for others.
std::optional<Assignments> parse_assignments(const std::vector<std::string>& words);

/// Sets the features in the order in which they were written, because one may allow the next.
void set_all(const Assignments& assignments, const NodeMap& map);

} // namespace zvgentl::tool
