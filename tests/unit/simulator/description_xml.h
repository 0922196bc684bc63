#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <libxml/tree.h>

// A register description as its nodes, read with libxml2.

namespace zvsim_test {

/// An element below a node.
struct DescribedProperty {
    std::string name;
    std::string value;
    std::map<std::string, std::string> attributes;
    /// Of an enumeration entry.
    std::vector<DescribedProperty> children;

    /// Names another node.
    bool is_reference() const
    {
        return name.size() > 1 && name[0] == 'p' && name[1] >= 'A' && name[1] <= 'Z';
    }
};

struct DescribedNode {
    std::string kind;
    std::string name;
    std::vector<DescribedProperty> properties;

    /// Empty when there is none.
    std::string value_of(const std::string& property) const;
    const DescribedProperty* find(const std::string& property) const;
};

class DescriptionXml {
public:
    /// Without a root when the text is not well-formed.
    explicit DescriptionXml(const std::string& text);

    bool is_well_formed() const { return m_document != nullptr; }
    const std::string& root() const { return m_root; }
    const std::map<std::string, std::string>& attributes() const { return m_attributes; }
    const std::vector<DescribedNode>& nodes() const { return m_nodes; }
    const DescribedNode* find(const std::string& name) const;

private:
    struct Free {
        void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
    };
    std::unique_ptr<xmlDoc, Free> m_document;
    std::string m_root;
    std::map<std::string, std::string> m_attributes;
    std::vector<DescribedNode> m_nodes;
};

} // namespace zvsim_test
