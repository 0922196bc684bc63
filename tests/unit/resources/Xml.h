#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

// An XML document in plain types, so that a test can compare it as a whole.

namespace zvtest {

/// An element, or a comment, which is named "#comment". White space between elements is left out.
struct Element {
    std::string name;
    std::map<std::string, std::string> attributes; // names of the schema instance with "xsi:"
    std::string text;
    std::vector<Element> children;

    /// Name and text of the children, in order.
    std::vector<std::pair<std::string, std::string>> values() const;
    /// The child element with this value of the attribute Name; fails the test when there is none.
    Element child(const std::string& name_attribute) const;
};

struct Document {
    Element root;
    std::string default_namespace; // of the root
    std::string version;
    std::string encoding;
};

/// Fails the test when the text is not well-formed.
Document parse(const std::string& text);

/// A file of the repository, byte for byte.
std::string resource(const std::string& name);

/// The root of a description as both have it.
std::map<std::string, std::string> root_attributes(const std::string& model, const std::string& tool_tip);
/// Names of the attributes in the tag of the root as both descriptions have them, in order.
std::vector<std::string> root_attribute_order();
/// The same as a text has them.
std::vector<std::string> names_in_root_tag(const std::string& text);
/// The port node, the same in both.
bool is_device_port(const Element& node);

} // namespace zvtest
