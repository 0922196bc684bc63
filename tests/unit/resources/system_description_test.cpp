#include <sstream>

#include <gtest/gtest.h>

#include "resources/descriptions.h"
#include "unit/resources/Xml.h"

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

TEST(SystemDescription, HasARootOfTheGenApiSchema)
{
    EXPECT_EQ(expected_head("ZV_TLSystemGenTL", "ZEVA TLSystem GenTL"), head_of(text));
}

const std::string naming_convention = " version number of the GenTL Standard Features Naming Convention that "
                                      "was used to create the GenTL Producer`s XML.";

TEST(SystemDescription, HasConstantFeaturesInTwoCategoriesAndAPort)
{
    EXPECT_EQ((std::vector<std::string>{
                  "#comment:  Root categories ",
                  "Group Comment=\"RootCategory\"",
                  "  Category Name=\"Root\" NameSpace=\"Standard\"",
                  "    Visibility: Beginner",
                  "    ImposedAccessMode: RO",
                  "    pFeature: SystemInformation",
                  "  Category Name=\"SystemInformation\" NameSpace=\"Standard\"",
                  "    pFeature: TLVendorName",
                  "    pFeature: TLModelName",
                  "    pFeature: TLVersion",
                  "    pFeature: TLDisplayName",
                  "    pFeature: GenTLVersionMajor",
                  "    pFeature: GenTLVersionMinor",
                  "    pFeature: GenTLSFNCVersionMajor",
                  "    pFeature: GenTLSFNCVersionMinor",
                  "    pFeature: GenTLSFNCVersionSubMinor",
                  "Integer Name=\"GenTLVersionMajor\" NameSpace=\"Standard\"",
                  "  ToolTip: GenTL Major Version.",
                  "  Visibility: Beginner",
                  "  Value: 1",
                  "Integer Name=\"GenTLVersionMinor\" NameSpace=\"Standard\"",
                  "  ToolTip: GenTL Minor Version.",
                  "  Visibility: Beginner",
                  "  Value: 5",
                  "Integer Name=\"GenTLSFNCVersionMajor\" NameSpace=\"Standard\"",
                  "  ToolTip: Major" + naming_convention,
                  "  Visibility: Beginner",
                  "  Value: 2",
                  "Integer Name=\"GenTLSFNCVersionMinor\" NameSpace=\"Standard\"",
                  "  ToolTip: Minor" + naming_convention,
                  "  Visibility: Beginner",
                  "  Value: 0",
                  "Integer Name=\"GenTLSFNCVersionSubMinor\" NameSpace=\"Standard\"",
                  "  ToolTip: SubMinor" + naming_convention,
                  "  Visibility: Beginner",
                  "  Value: 0",
                  "String Name=\"TLVendorName\" NameSpace=\"Standard\"",
                  "  Visibility: Beginner",
                  "  Value: ZEVA Electronics",
                  "String Name=\"TLModelName\" NameSpace=\"Standard\"",
                  "  Visibility: Beginner",
                  "  Value: ZVGRLibGenTL",
                  "String Name=\"TLVersion\" NameSpace=\"Standard\"",
                  "  Visibility: Beginner",
                  "  Value: 1.5",
                  "String Name=\"TLDisplayName\" NameSpace=\"Standard\"",
                  "  Visibility: Expert",
                  "  Value: ZEVA Electronics GenTL Producer",
                  "Port Name=\"Device\"",
                  "  ToolTip: Port giving access to the device.",
                  "  Visibility: Invisible",
              }),
              outline_of(text));
}

} // namespace

} // namespace zvtest
