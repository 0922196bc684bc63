#include "unit/resources/Xml.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>
#include <regex>

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

namespace zvtest {

namespace {

std::string taken(xmlChar* text)
{
    const std::unique_ptr<xmlChar, decltype(xmlFree)> owned(text, xmlFree);
    return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

std::string text_of(const xmlChar* text)
{
    return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

Element element_of(xmlNode* node)
{
    Element element;
    element.name = node->type == XML_COMMENT_NODE ? "#comment" : text_of(node->name);
    if (node->type == XML_COMMENT_NODE) {
        element.text = taken(xmlNodeGetContent(node));
        return element;
    }
    for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
        const std::string prefix = attribute->ns == nullptr ? "" : text_of(attribute->ns->prefix) + ":";
        element.attributes[prefix + text_of(attribute->name)] =
            taken(xmlNodeListGetString(node->doc, attribute->children, 1));
    }
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE || child->type == XML_COMMENT_NODE)
            element.children.push_back(element_of(child));
    }
    if (element.children.empty())
        element.text = taken(xmlNodeGetContent(node));
    return element;
}

} // namespace

std::vector<std::pair<std::string, std::string>> Element::values() const
{
    std::vector<std::pair<std::string, std::string>> found;
    for (const Element& element : children)
        found.emplace_back(element.name, element.text);
    return found;
}

Element Element::child(const std::string& name_attribute) const
{
    const auto found = std::find_if(children.begin(), children.end(), [&](const Element& element) {
        const auto named = element.attributes.find("Name");
        return named != element.attributes.end() && named->second == name_attribute;
    });
    if (found != children.end())
        return *found;
    ADD_FAILURE() << "there is no node " << name_attribute;
    return {};
}

Document parse(const std::string& text)
{
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> parsed(
        xmlReadMemory(text.data(), static_cast<int>(text.size()), "description.xml", nullptr,
                      XML_PARSE_NONET),
        &xmlFreeDoc);
    Document document;
    if (!parsed) {
        ADD_FAILURE() << "not well-formed: " << text;
        return document;
    }
    xmlNode* const root = xmlDocGetRootElement(parsed.get());
    document.root = element_of(root);
    document.default_namespace = root->ns == nullptr ? "" : text_of(root->ns->href);
    document.version = text_of(parsed->version);
    document.encoding = text_of(parsed->encoding);
    return document;
}

std::string resource(const std::string& name)
{
    std::ifstream file(std::string(ZV_RESOURCES "/") + name, std::ios::binary);
    EXPECT_TRUE(file) << name;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::map<std::string, std::string> root_attributes(const std::string& model, const std::string& tool_tip)
{
    return {
        {"ModelName", model},
        {"VendorName", "ZEVA_Electronics"},
        {"ToolTip", tool_tip},
        {"StandardNameSpace", "None"},
        {"SchemaMajorVersion", "1"},
        {"SchemaMinorVersion", "1"},
        {"SchemaSubMinorVersion", "0"},
        {"MajorVersion", "1"},
        {"MinorVersion", "1"},
        {"SubMinorVersion", "0"},
        {"ProductGuid", "AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE"},
        {"VersionGuid", "11111111-2222-3333-4444-555555555555"},
        {"xsi:schemaLocation", "http://www.genicam.org/GenApi/Version_1_1 "
                               "http://www.genicam.org/GenApi/GenApiSchema_Version_1_1.xsd"},
    };
}

std::vector<std::string> root_attribute_order()
{
    return {"ModelName",
            "VendorName",
            "ToolTip",
            "StandardNameSpace",
            "SchemaMajorVersion",
            "SchemaMinorVersion",
            "SchemaSubMinorVersion",
            "MajorVersion",
            "MinorVersion",
            "SubMinorVersion",
            "ProductGuid",
            "VersionGuid",
            "xmlns",
            "xmlns:xsi",
            "xsi:schemaLocation"};
}

std::vector<std::string> names_in_root_tag(const std::string& text)
{
    const size_t start = text.find("<RegisterDescription");
    const std::string tag =
        start == std::string::npos ? "" : text.substr(start, text.find('>', start) - start);
    const std::regex attribute("\\s([A-Za-z:]+)=\"[^\"]*\"");
    std::vector<std::string> names;
    for (std::sregex_iterator found(tag.begin(), tag.end(), attribute), end; found != end; ++found)
        names.push_back((*found)[1]);
    return names;
}

bool is_device_port(const Element& node)
{
    using Values = std::vector<std::pair<std::string, std::string>>;
    return node.name == "Port" && node.attributes == std::map<std::string, std::string>{{"Name", "Device"}} &&
           node.values() ==
               Values{{"ToolTip", "Port giving access to the device."}, {"Visibility", "Invisible"}};
}

} // namespace zvtest
