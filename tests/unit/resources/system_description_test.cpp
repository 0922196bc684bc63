#include <algorithm>
#include <sstream>

#include <gtest/gtest.h>

#include "resources/descriptions.h"
#include "unit/resources/Xml.h"

// The system port's register description, byte for byte and node for node.

namespace zvtest {

namespace {

using Attributes = std::map<std::string, std::string>;
using Values = std::vector<std::pair<std::string, std::string>>;

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

TEST(SystemDescription, HasTheSizeOfTheUrl) { EXPECT_EQ(3391U, text.size()); }

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

TEST(SystemDescription, IsIndentedWithTabsAlone)
{
    for (const std::string& line : lines_of(text)) {
        const size_t start = line.find_first_not_of('\t');
        EXPECT_TRUE(start == std::string::npos || line[start] != ' ') << line;
    }
}

TEST(SystemDescription, ListsTheAttributesOfItsRootInOrder)
{
    EXPECT_EQ(root_attribute_order(), names_in_root_tag(text));
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

class SystemDescriptionNodes : public testing::Test {
protected:
    const Document document{parse(text)};
    const Element& root{document.root};

    Element category(const std::string& name) const
    {
        return root.children.size() < 2 ? Element() : root.children[1].child(name);
    }
    static Attributes standard(const std::string& name)
    {
        return {{"Name", name}, {"NameSpace", "Standard"}};
    }
};

TEST_F(SystemDescriptionNodes, HaveARootOfTheGenApiSchema)
{
    EXPECT_EQ("1.0", document.version);
    EXPECT_EQ("utf-8", document.encoding);
    EXPECT_EQ("RegisterDescription", root.name);
    EXPECT_EQ("http://www.genicam.org/GenApi/Version_1_1", document.default_namespace);
    EXPECT_EQ(root_attributes("ZV_TLSystemGenTL", "ZEVA TLSystem GenTL"), root.attributes);
}

TEST_F(SystemDescriptionNodes, StandInOrder)
{
    std::vector<std::string> names;
    for (const Element& node : root.children) {
        const auto name = node.attributes.find("Name");
        names.push_back(node.name + (name == node.attributes.end() ? "" : " " + name->second));
    }
    EXPECT_EQ((std::vector<std::string>{"#comment", "Group", "Integer GenTLVersionMajor",
                                        "Integer GenTLVersionMinor", "Integer GenTLSFNCVersionMajor",
                                        "Integer GenTLSFNCVersionMinor", "Integer GenTLSFNCVersionSubMinor",
                                        "String TLVendorName", "String TLModelName", "String TLVersion",
                                        "String TLDisplayName", "Port Device"}),
              names);
}

TEST_F(SystemDescriptionNodes, AreRootedInTwoCategories)
{
    ASSERT_LE(2U, root.children.size());
    EXPECT_EQ(" Root categories ", root.children[0].text);
    const Element& group = root.children[1];
    EXPECT_EQ((Attributes{{"Comment", "RootCategory"}}), group.attributes);
    ASSERT_EQ(2U, group.children.size());
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ("Category", group.children[i].name);
        EXPECT_EQ(standard(i == 0 ? "Root" : "SystemInformation"), group.children[i].attributes);
    }
    EXPECT_EQ(
        (Values{{"Visibility", "Beginner"}, {"ImposedAccessMode", "RO"}, {"pFeature", "SystemInformation"}}),
        category("Root").values());
    EXPECT_EQ((Values{{"pFeature", "TLVendorName"},
                      {"pFeature", "TLModelName"},
                      {"pFeature", "TLVersion"},
                      {"pFeature", "TLDisplayName"},
                      {"pFeature", "GenTLVersionMajor"},
                      {"pFeature", "GenTLVersionMinor"},
                      {"pFeature", "GenTLSFNCVersionMajor"},
                      {"pFeature", "GenTLSFNCVersionMinor"},
                      {"pFeature", "GenTLSFNCVersionSubMinor"}}),
              category("SystemInformation").values());
}

TEST_F(SystemDescriptionNodes, NameFeaturesThatExist)
{
    for (const auto& [kind, feature] : category("SystemInformation").values())
        EXPECT_EQ(standard(feature), root.child(feature).attributes);
}

std::string sfnc_tool_tip(const std::string& part)
{
    return part + " version number of the GenTL Standard Features Naming Convention that was used to create "
                  "the GenTL Producer`s XML.";
}

TEST_F(SystemDescriptionNodes, HaveConstantNumbers)
{
    struct Row {
        const char* name;
        const char* value;
        std::string tool_tip;
    };
    for (const Row& row : {Row{"GenTLVersionMajor", "1", "GenTL Major Version."},
                           Row{"GenTLVersionMinor", "5", "GenTL Minor Version."},
                           Row{"GenTLSFNCVersionMajor", "2", sfnc_tool_tip("Major")},
                           Row{"GenTLSFNCVersionMinor", "0", sfnc_tool_tip("Minor")},
                           Row{"GenTLSFNCVersionSubMinor", "0", sfnc_tool_tip("SubMinor")}})
        EXPECT_EQ((Values{{"ToolTip", row.tool_tip}, {"Visibility", "Beginner"}, {"Value", row.value}}),
                  root.child(row.name).values());
}

TEST_F(SystemDescriptionNodes, HaveConstantTexts)
{
    struct Row {
        const char* name;
        const char* value;
        const char* visibility;
    };
    for (const Row& row :
         {Row{"TLVendorName", "ZEVA Electronics", "Beginner"}, Row{"TLModelName", "ZVGRLibGenTL", "Beginner"},
          Row{"TLVersion", "1.5", "Beginner"},
          Row{"TLDisplayName", "ZEVA Electronics GenTL Producer", "Expert"}})
        EXPECT_EQ((Values{{"Visibility", row.visibility}, {"Value", row.value}}),
                  root.child(row.name).values());
}

TEST_F(SystemDescriptionNodes, EndWithThePort) { EXPECT_TRUE(is_device_port(root.child("Device"))); }

} // namespace

} // namespace zvtest
