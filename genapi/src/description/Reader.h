#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "description/Description.h"
#include "description/Xml.h"
#include "zvgenapi/Limits.h"

namespace zvgenapi {

/// Builds a description out of its XML. References are not resolved yet, and names not looked at.
class Reader final : public XmlEvents {
public:
    Reader(Description& description, const Limits& limits) : m_description(description), m_limits(limits) {}

    void start(std::string_view element, const Attributes& attributes, int line) override;
    void text(std::string_view text) override;
    void end() override;

private:
    enum class Place { root, group, node, structure, element, extension, ignored };

    /// A node, or a structure, whose end has not been read.
    struct Open {
        NodeIndex node; // no_node: a structure
        std::vector<Element> elements;
        std::vector<NodeIndex> entries; // of a structure
    };

    void start_root(std::string_view element, const Attributes& attributes, int line);
    void start_node(std::string_view element, const Attributes& attributes, int line);
    bool start_part(std::string_view element, const Attributes& attributes, int line);
    void start_element(std::string_view element, const Attributes& attributes, int line);
    void open_node(NodeType type, const Attributes& attributes, int line, NodeIndex owner);
    void end_element();
    void end_node();
    void end_structure();
    void name_entry(NodeText& entry, std::string_view owner);
    void copy_markup(std::string_view element, const Attributes& attributes);
    void check_text() const;

    Description& m_description;
    const Limits& m_limits;
    std::vector<Place> m_places;
    std::vector<Open> m_open;
    Element m_element;                       // the one whose text is being read
    std::optional<Element> m_pending_offset; // the attribute of a pIndex
    std::string m_text;                      // its text
    std::vector<std::string> m_marks;        // elements within an Extension that are not closed yet
};

/// The description of these bytes, XML or a zip archive, with its references resolved and its cycles found.
/// Throws Error (description, limit).
Description read_description(std::string_view bytes, const Limits& limits);

} // namespace zvgenapi
