#include "genapi/NodeGraph.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <stdexcept>

#include <libxml/parser.h>
#include <libxml/tree.h>

namespace zvgentl::tool {

namespace {

struct FreeContext {
    void operator()(xmlParserCtxt* context) const noexcept { xmlFreeParserCtxt(context); }
};
struct FreeDocument {
    void operator()(xmlDoc* document) const noexcept { xmlFreeDoc(document); }
};
using Document = std::unique_ptr<xmlDoc, FreeDocument>;

std::string text_of(const xmlChar* text)
{
    return text == nullptr ? std::string() : reinterpret_cast<const char*>(text);
}

std::string trimmed(const std::string& text)
{
    const char* const blank = " \t\r\n";
    const std::size_t start = text.find_first_not_of(blank);
    return start == std::string::npos ? std::string()
                                      : text.substr(start, text.find_last_not_of(blank) - start + 1);
}

std::string content_of(const xmlNode* element)
{
    std::unique_ptr<xmlChar, decltype(xmlFree)> text(xmlNodeGetContent(element), xmlFree);
    return trimmed(text_of(text.get()));
}

std::string attribute_of(const xmlNode* element, const char* name)
{
    std::unique_ptr<xmlChar, decltype(xmlFree)> text(
        xmlGetNoNsProp(element, reinterpret_cast<const xmlChar*>(name)), xmlFree);
    return text_of(text.get());
}

Document parse(const std::string& description)
{
    if (description.size() > INT_MAX)
        throw std::runtime_error("the port's description is too large");
    const std::unique_ptr<xmlParserCtxt, FreeContext> context(xmlNewParserCtxt());
    if (!context)
        throw std::bad_alloc();
    Document document(xmlCtxtReadMemory(context.get(), description.data(),
                                        static_cast<int>(description.size()), "description", nullptr,
                                        XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    if (!document)
        throw std::runtime_error("the port's description is damaged: line " +
                                 std::to_string(context->lastError.line) + ": " +
                                 trimmed(context->lastError.message == nullptr ? "it cannot be parsed"
                                                                               : context->lastError.message));
    // No description needs one, and what it defines can make a small file huge.
    if (document->intSubset != nullptr || document->extSubset != nullptr)
        throw std::runtime_error("the port's description contains a document type declaration, which no "
                                 "register description needs");
    return document;
}

GraphNode read_node(const xmlNode* element, const std::string& name, const std::string& parent)
{
    GraphNode node;
    node.element = text_of(element->name);
    node.name = name;
    node.parent = parent;
    for (const xmlNode* child = element->children; child != nullptr; child = child->next) {
        if (child->type != XML_ELEMENT_NODE)
            continue;
        const std::string tag = text_of(child->name);
        if (tag == "IntSwissKnife")
            node.formulas.push_back(read_node(child, node.name, parent));
        else if (tag != "EnumEntry" && tag != "StructEntry" && tag != "Extension")
            node.properties.push_back({tag, attribute_of(child, "Name"), content_of(child)});
        if (tag == "pIndex" && !attribute_of(child, "pOffset").empty())
            node.properties.push_back({"pOffset", "", attribute_of(child, "pOffset")});
    }
    return node;
}

/// The nodes below an element, in the order in which they are written.
void read_nodes(const xmlNode* parent, const std::string& parent_name, std::vector<GraphNode>& nodes)
{
    for (const xmlNode* child = parent->children; child != nullptr; child = child->next) {
        if (child->type != XML_ELEMENT_NODE)
            continue;
        const std::string element = text_of(child->name);
        std::string name = attribute_of(child, "Name");
        if (element == "StructReg" && name.empty()) // its entries have names, and look at it
            name = "StructReg " + std::to_string(nodes.size());
        const bool is_part = element == "EnumEntry" || element == "StructEntry";
        if (!name.empty() && element != "Group" && is_part == !parent_name.empty())
            nodes.push_back(read_node(child, name, parent_name));
        if (element == "Group")
            read_nodes(child, "", nodes);
        else if ((element == "StructReg" || element == "Enumeration") && parent_name.empty() && !name.empty())
            read_nodes(child, name, nodes);
    }
}

} // namespace

const std::string* GraphNode::find(const std::string& tag) const noexcept
{
    const auto found = std::find_if(properties.begin(), properties.end(),
                                    [&tag](const NodeProperty& property) { return property.tag == tag; });
    return found == properties.end() ? nullptr : &found->text;
}

std::vector<std::string> GraphNode::all(const std::string& tag) const
{
    std::vector<std::string> texts;
    for (const auto& property : properties)
        if (property.tag == tag)
            texts.push_back(property.text);
    return texts;
}

NodeGraph::NodeGraph(const std::string& description)
{
    const Document document = parse(description);
    const xmlNode* const root = xmlDocGetRootElement(document.get());
    const std::string element = root == nullptr ? "" : text_of(root->name);
    if (element != "RegisterDescription")
        throw std::runtime_error(
            "the port's description is not a register description: its root element is <" + element + ">");
    read_nodes(root, "", m_nodes);
    for (std::size_t i = 0; i < m_nodes.size(); ++i)
        if (m_nodes[i].element == "EnumEntry")
            m_entries.emplace(m_nodes[i].parent, i);
        else
            m_by_name[m_nodes[i].name] = i; // of nodes with the same name the last one counts
}

const GraphNode* NodeGraph::find(const std::string& name) const noexcept
{
    const auto found = m_by_name.find(name);
    return found == m_by_name.end() ? nullptr : &m_nodes[found->second];
}

std::vector<const GraphNode*> NodeGraph::entries(const std::string& enumeration) const
{
    std::vector<const GraphNode*> entries;
    const auto [first, last] = m_entries.equal_range(enumeration);
    for (auto entry = first; entry != last; ++entry)
        entries.push_back(&m_nodes[entry->second]);
    return entries;
}

bool parse_literal(const std::string& text, long long& value) noexcept
{
    const bool is_hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    char* end = nullptr;
    errno = 0;
    // Hexadecimal numbers fill 64 bits; a set sign bit makes them negative.
    value = is_hexadecimal ? static_cast<long long>(std::strtoull(text.c_str(), &end, 16))
                           : std::strtoll(text.c_str(), &end, 10);
    return !text.empty() && errno == 0 && *end == '\0' &&
           text.find_first_of(" \t\r\n\v\f") == std::string::npos;
}

} // namespace zvgentl::tool
