#include "unit/resources/Xml.h"

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

void add_children(xmlNode* parent, const std::string& indent, std::vector<std::string>& lines)
{
    for (xmlNode* node = parent->children; node != nullptr; node = node->next) {
        if (node->type != XML_ELEMENT_NODE && node->type != XML_COMMENT_NODE)
            continue;
        const bool is_element = node->type == XML_ELEMENT_NODE;
        std::string line = indent + (is_element ? reinterpret_cast<const char*>(node->name) : "#comment");
        for (const xmlAttr* attribute = is_element ? node->properties : nullptr; attribute != nullptr;
             attribute = attribute->next)
            line += std::string(" ") + reinterpret_cast<const char*>(attribute->name) + "=\"" +
                    taken(xmlNodeListGetString(node->doc, attribute->children, 1)) + "\"";
        if (!is_element || xmlChildElementCount(node) == 0)
            line += ": " + taken(xmlNodeGetContent(node));
        lines.push_back(line);
        if (is_element)
            add_children(node, indent + "  ", lines);
    }
}

} // namespace

std::vector<std::string> outline_of(const std::string& xml)
{
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr, XML_PARSE_NONET),
        &xmlFreeDoc);
    std::vector<std::string> lines;
    if (document)
        add_children(xmlDocGetRootElement(document.get()), "", lines);
    else
        ADD_FAILURE() << "not well-formed";
    return lines;
}

std::string head_of(const std::string& xml)
{
    const size_t root = xml.find("<RegisterDescription");
    const size_t end = root == std::string::npos ? root : xml.find('>', root);
    return std::regex_replace(xml.substr(0, end == std::string::npos ? 0 : end + 1), std::regex("\\s+"), " ");
}

std::string expected_head(const std::string& model, const std::string& tool_tip)
{
    return R"(<?xml version="1.0" encoding="utf-8"?> <RegisterDescription ModelName=")" + model +
           R"(" VendorName="ZEVA_Electronics" ToolTip=")" + tool_tip +
           R"(" StandardNameSpace="None" SchemaMajorVersion="1" SchemaMinorVersion="1")"
           R"( SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="1" SubMinorVersion="0")"
           R"( ProductGuid="AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE")"
           R"( VersionGuid="11111111-2222-3333-4444-555555555555")"
           R"( xmlns="http://www.genicam.org/GenApi/Version_1_1")"
           R"( xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance")"
           R"( xsi:schemaLocation="http://www.genicam.org/GenApi/Version_1_1)"
           R"( http://www.genicam.org/GenApi/GenApiSchema_Version_1_1.xsd">)";
}

std::string resource(const std::string& name)
{
    std::ifstream file(ZV_RESOURCES "/" + name, std::ios::binary);
    EXPECT_TRUE(file) << name;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace zvtest
