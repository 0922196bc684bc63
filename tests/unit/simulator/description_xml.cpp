#include "unit/simulator/description_xml.h"

#include <algorithm>

#include <libxml/parser.h>

namespace zvsim_test {

namespace {

std::string text_of(const xmlChar* text)
{
    return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

std::map<std::string, std::string> attributes_of(const xmlNode& element)
{
    std::map<std::string, std::string> attributes;
    for (const xmlAttr* at = element.properties; at != nullptr; at = at->next)
        attributes[text_of(at->name)] = at->children != nullptr ? text_of(at->children->content) : "";
    return attributes;
}

template <class Visit>
void for_each_child(const xmlNode& element, const Visit& visit)
{
    for (const xmlNode* child = element.children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE)
            visit(*child);
    }
}

DescribedProperty property_of(const xmlNode& element)
{
    DescribedProperty property{text_of(element.name), "", attributes_of(element), {}};
    for_each_child(element, [&](const xmlNode& child) { property.children.push_back(property_of(child)); });
    if (property.children.empty() && element.children != nullptr)
        property.value = text_of(element.children->content);
    return property;
}

} // namespace

const DescribedProperty* DescribedNode::find(const std::string& property) const
{
    const auto found = std::find_if(properties.begin(), properties.end(),
                                    [&](const DescribedProperty& one) { return one.name == property; });
    return found != properties.end() ? &*found : nullptr;
}

std::string DescribedNode::value_of(const std::string& property) const
{
    const DescribedProperty* const found = find(property);
    return found != nullptr ? found->value : "";
}

DescriptionXml::DescriptionXml(const std::string& text)
    : m_document{xmlReadMemory(text.data(), static_cast<int>(text.size()), "description.xml", nullptr,
                               XML_PARSE_NONET)}
{
    const xmlNode* const root = m_document != nullptr ? xmlDocGetRootElement(m_document.get()) : nullptr;
    if (root == nullptr)
        return;
    m_root = text_of(root->name);
    m_attributes = attributes_of(*root);
    for_each_child(*root, [this](const xmlNode& element) {
        DescribedNode node{text_of(element.name), attributes_of(element)["Name"], {}};
        for_each_child(element, [&](const xmlNode& child) { node.properties.push_back(property_of(child)); });
        m_nodes.push_back(std::move(node));
    });
}

const DescribedNode* DescriptionXml::find(const std::string& name) const
{
    const auto found = std::find_if(m_nodes.begin(), m_nodes.end(),
                                    [&](const DescribedNode& node) { return node.name == name; });
    return found != m_nodes.end() ? &*found : nullptr;
}

} // namespace zvsim_test
