#include <sstream>
#include <vector>

#include <gtest/gtest.h>

#include "resources/descriptions.h"
#include "unit/resources/register_description.h"

// The system port's register description, byte for byte and node for node.

namespace zvtest {

namespace {

const std::string text(reinterpret_cast<const char*>(zvgentl::system_description),
                       zvgentl::system_description_size);

std::vector<std::string> lines_of(const std::string& lines)
{
    std::vector<std::string> found;
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);)
        found.push_back(line);
    return found;
}

TEST(SystemDescription, BeginsWithItsDeclarationAndEndsWithItsRoot)
{
    EXPECT_EQ(0U, text.find("<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<RegisterDescription"));
    const std::string end = "\r\n</RegisterDescription>";
    EXPECT_EQ(end, text.substr(text.size() - end.size()));
}

TEST(SystemDescription, IsAsciiWithWholeLineEnds)
{
    for (size_t i = 0; i < text.size(); ++i) {
        const bool is_line_end = text[i] == '\r' || text[i] == '\n';
        ASSERT_TRUE(is_line_end || text[i] == '\t' || (text[i] >= ' ' && text[i] <= '~')) << i;
        ASSERT_TRUE(text[i] != '\n' || text[i - 1] == '\r') << i;
        ASSERT_TRUE(text[i] != '\r' || text[i + 1] == '\n') << i;
    }
}

TEST(SystemDescription, IsIndentedOnlyWithTabs)
{
    for (const std::string& line : lines_of(text)) {
        const size_t start = line.find_first_not_of('\t');
        EXPECT_TRUE(start == std::string::npos || line[start] != ' ') << line;
    }
}

// Tabs in one line of white space make up the size; everything else is the file's.
TEST(SystemDescription, IsTheFileOfTheRepository)
{
    const std::vector<std::string> served = lines_of(text);
    const std::vector<std::string> source = lines_of(resource("ZV_SystemGenTL.xml"));
    ASSERT_EQ(source.size(), served.size());
    size_t filled = 0;
    for (size_t i = 0; i < source.size(); ++i) {
        std::string line = served[i];
        if (i + 1 < served.size()) {
            ASSERT_EQ('\r', line.back());
            line.pop_back();
        }
        if (line == source[i])
            continue;
        ++filled;
        EXPECT_EQ(source[i] + std::string(line.size() - source[i].size(), '\t'), line);
    }
    EXPECT_EQ(1U, filled);
}

const std::string naming_convention = " version number of the GenTL Standard Features Naming Convention that "
                                      "was used to create the GenTL Producer`s XML.";

std::string integer(const std::string& name, const std::string& tool_tip, const std::string& value)
{
    return "<Integer Name=\"" + name + "\" NameSpace=\"Standard\"><ToolTip>" + tool_tip +
           "</ToolTip><Visibility>Beginner</Visibility><Value>" + value + "</Value></Integer>";
}

std::string string(const std::string& name, const std::string& visibility, const std::string& value)
{
    return "<String Name=\"" + name + "\" NameSpace=\"Standard\"><Visibility>" + visibility +
           "</Visibility><Value>" + value + "</Value></String>";
}

TEST(SystemDescription, HasConstantFeaturesInTwoCategoriesAndAPort)
{
    const std::string categories =
        R"(<!-- Root categories --><Group Comment="RootCategory"><Category Name="Root" NameSpace="Standard">)"
        R"(<Visibility>Beginner</Visibility><ImposedAccessMode>RO</ImposedAccessMode>)"
        R"(<pFeature>SystemInformation</pFeature></Category>)"
        R"(<Category Name="SystemInformation" NameSpace="Standard"><pFeature>TLVendorName</pFeature>)"
        R"(<pFeature>TLModelName</pFeature><pFeature>TLVersion</pFeature><pFeature>TLDisplayName</pFeature>)"
        R"(<pFeature>GenTLVersionMajor</pFeature><pFeature>GenTLVersionMinor</pFeature>)"
        R"(<pFeature>GenTLSFNCVersionMajor</pFeature><pFeature>GenTLSFNCVersionMinor</pFeature>)"
        R"(<pFeature>GenTLSFNCVersionSubMinor</pFeature></Category></Group>)";
    const std::string port = R"(<Port Name="Device"><ToolTip>Port giving access to the device.</ToolTip>)"
                             R"(<Visibility>Invisible</Visibility></Port>)";
    EXPECT_EQ(described("ZV_TLSystemGenTL", "ZEVA TLSystem GenTL",
                        categories + integer("GenTLVersionMajor", "GenTL Major Version.", "1") +
                            integer("GenTLVersionMinor", "GenTL Minor Version.", "5") +
                            integer("GenTLSFNCVersionMajor", "Major" + naming_convention, "2") +
                            integer("GenTLSFNCVersionMinor", "Minor" + naming_convention, "0") +
                            integer("GenTLSFNCVersionSubMinor", "SubMinor" + naming_convention, "0") +
                            string("TLVendorName", "Beginner", "ZEVA Electronics") +
                            string("TLModelName", "Beginner", "ZVGRLibGenTL") +
                            string("TLVersion", "Beginner", "1.5") +
                            string("TLDisplayName", "Expert", "ZEVA Electronics GenTL Producer") + port),
              without_layout(text));
}

} // namespace

} // namespace zvtest
