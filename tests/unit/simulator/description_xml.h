#pragma once

#include <map>
#include <string>
#include <vector>

// A register description, read with libxml2.

namespace zvsim_test {

/// The description, a node of it, an element of a node, or an element of an enumeration's entry.
struct Element {
    /// "Integer", "pFeature".
    std::string kind;
    /// Its attribute "Name", if it has one.
    std::string name;
    /// Without elements in it.
    std::string value;
    std::map<std::string, std::string> attributes;
    std::vector<Element> children;

    bool is_reference() const
    {
        return kind.size() > 1 && kind[0] == 'p' && kind[1] >= 'A' && kind[1] <= 'Z';
    }
    /// The first element of a kind; null when there is none.
    const Element* find(const std::string& of_kind) const;
    const Element* find_node(const std::string& of_name) const;
    /// The value of the first element of a kind, or nothing.
    std::string value_of(const std::string& of_kind) const;
};

/// Of no kind when the text is not well-formed.
Element read_description(const std::string& text);

/// Expects that a node has only elements that its kind knows, in the order of the GenApi 1.1 schema.
void expect_order(const Element& node);

} // namespace zvsim_test
