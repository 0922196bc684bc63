#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace zvgentl::tool {

/// One element of a node in a description: its tag, its Name attribute and its text.
struct NodeProperty {
    std::string tag;
    std::string name;
    std::string text;
};

/// A node of a description as it is written there.
struct GraphNode {
    std::string element; // such as IntReg
    std::string name;
    std::string parent; // the name of the node that it is written in; empty for most
    std::vector<NodeProperty> properties;
    std::vector<GraphNode> formulas; // nameless formulas that compute a register's address

    /// The text of the first element with this tag, or null.
    const std::string* find(const std::string& tag) const noexcept;
    /// The texts of all elements with this tag.
    std::vector<std::string> all(const std::string& tag) const;
};

/// The nodes of a register description by name, as written: nothing is evaluated. The parser of node maps
/// answers 0 where a reference leads nowhere, and runs out of stack where references go round. Therefore we
/// look at the references first.
class NodeGraph {
public:
    /// Throws std::runtime_error when the text is not a complete register description.
    explicit NodeGraph(const std::string& description);

    const GraphNode* find(const std::string& name) const noexcept;
    const std::vector<GraphNode>& nodes() const noexcept { return m_nodes; }
    /// The entries of an enumeration.
    std::vector<const GraphNode*> entries(const std::string& enumeration) const;

private:
    std::vector<GraphNode> m_nodes;
    std::map<std::string, std::size_t> m_by_name;
    std::multimap<std::string, std::size_t> m_entries;
};

/// A whole number as descriptions write them, decimal or hexadecimal (0x); false for any other text.
bool parse_literal(const std::string& text, long long& value) noexcept;

} // namespace zvgentl::tool
