#pragma once

#include <fstream>
#include <iterator>
#include <regex>
#include <string>

#include <gtest/gtest.h>

// What the tests of both register descriptions share.

namespace zvtest {

/// A file of the repository, byte for byte.
inline std::string resource(const std::string& name)
{
    std::ifstream file(ZV_RESOURCES "/" + name, std::ios::binary);
    EXPECT_TRUE(file) << name;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The text without white space after its tags, and with one blank for any other white space.
inline std::string without_layout(const std::string& xml)
{
    return std::regex_replace(std::regex_replace(xml, std::regex("\\s+"), " "), std::regex("> (?=<|$)"), ">");
}

/// A description without layout, with a root of the GenApi schema around its nodes.
inline std::string described(const std::string& model, const std::string& tool_tip, const std::string& nodes)
{
    return R"(<?xml version="1.0" encoding="utf-8"?><RegisterDescription ModelName=")" + model +
           R"(" VendorName="ZEVA_Electronics" ToolTip=")" + tool_tip +
           R"(" StandardNameSpace="None" SchemaMajorVersion="1" SchemaMinorVersion="1")"
           R"( SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="1" SubMinorVersion="0")"
           R"( ProductGuid="AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE")"
           R"( VersionGuid="11111111-2222-3333-4444-555555555555")"
           R"( xmlns="http://www.genicam.org/GenApi/Version_1_1")"
           R"( xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance")"
           R"( xsi:schemaLocation="http://www.genicam.org/GenApi/Version_1_1)"
           R"( http://www.genicam.org/GenApi/GenApiSchema_Version_1_1.xsd">)" +
           nodes + "</RegisterDescription>";
}

} // namespace zvtest
