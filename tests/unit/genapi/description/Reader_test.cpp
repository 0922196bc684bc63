#include <string>
#include <vector>

#include "unit/genapi/support.h"

namespace zvgenapi::test {

namespace {

/// What loading a text fails with.
std::pair<std::string, std::string> refusal_of(const std::string& text, const Limits& limits = {})
{
    return error_of([&] { NodeMap::load(text, limits); });
}

std::string names_in(const NodeMap& map)
{
    std::string names;
    for (std::size_t i = 0; i < map.size(); ++i)
        names += (i == 0 ? "" : " ") + map.at(i).name();
    return names;
}

} // namespace

TEST(Description, SaysWhoseItIs)
{
    const NodeMap map = NodeMap::load(description_of(""));
    const DeviceInfo& info = map.info();
    EXPECT_EQ("Fake", info.model_name);
    EXPECT_EQ("Test", info.vendor_name);
    EXPECT_EQ("For tests", info.tool_tip);
    EXPECT_EQ("None", info.standard_name_space);
    EXPECT_EQ("P", info.product_guid);
    EXPECT_EQ("V", info.version_guid);
    EXPECT_THAT((std::vector<int>{info.schema_major, info.schema_minor, info.schema_subminor, info.major,
                                  info.minor, info.subminor}),
                ElementsAre(1, 1, 2, 3, 4, 5));
}

TEST(Description, MayComeInGroupsAndContainMoreThanIsKnown)
{
    const NodeMap map =
        NodeMap::load(description_of("<!-- a remark --><Group Comment=\"One\"><Group><Integer "
                                     "Name=\"A\"><Value>1</Value></Integer></Group></Group>"
                                     "<Wonder><Integer Name=\"Hidden\"/></Wonder>"
                                     "<Integer Name=\"B\"><Magic><Value>7</Value></Magic><Value><![CDATA[ 2 "
                                     "]]><Deep>9</Deep></Value></Integer>"
                                     "some text"));
    EXPECT_EQ("A B", names_in(map));
    EXPECT_EQ(2, map.get("B").as<Integer>().value());
    EXPECT_THAT(map.problems(), IsEmpty());
}

TEST(Description, KnowsEveryElementThatIsANode)
{
    const std::vector<const char*> elements{
        "Node",     "Category",   "Integer", "IntReg",         "MaskedIntReg", "Float",
        "FloatReg", "Boolean",    "Command", "String",         "StringReg",    "Enumeration",
        "Register", "SwissKnife", "Port",    "IntSwissKnife",  "Converter",    "IntConverter",
        "ConfRom",  "TextDesc",   "IntKey",  "AdvFeatureLock", "SmartFeature"};
    for (const char* const element : elements) {
        const NodeMap map = NodeMap::load(description_of(node(element, "A", "")));
        ASSERT_EQ(1U, map.size()) << element;
        EXPECT_STREQ(element, name_of(map.at(0).type()));
    }
}

TEST(Description, GivesEntriesOfStructuresWhatTheirStructureSays)
{
    const NodeMap map = NodeMap::load(
        description_of("<StructReg Comment=\"S\"><Address>0x10</Address><Length>4</Length><Sign>Signed</Sign>"
                       "<StructEntry Name=\"A\"><Bit>1</Bit></StructEntry>"
                       "<StructEntry Name=\"B\"><Bit>2</Bit><Sign>Unsigned</Sign></StructEntry>"
                       "<AccessMode>RW</AccessMode></StructReg>"));
    EXPECT_EQ("A B", names_in(map));
    EXPECT_EQ(NodeType::struct_entry, map.get("A").type());
    EXPECT_EQ("0x10", map.get("A").property("Address"));
    EXPECT_EQ("Signed", map.get("A").property("Sign"));
    EXPECT_EQ("Unsigned", map.get("B").property("Sign"));
    EXPECT_EQ("RW", map.get("B").property("AccessMode")) << "whatever comes first";
    EXPECT_THAT(map.get("B").properties("Sign"), ElementsAre("Unsigned"));
}

TEST(Description, NamesEntriesOfEnumerations)
{
    const NodeMap map = NodeMap::load(
        description_of("<Enumeration Name=\"E\"><EnumEntry Name=\"One\"><Value>1</Value></EnumEntry>"
                       "<EnumEntry Name=\"EnumEntry_E_Two\"><Value>2</Value></EnumEntry>"
                       "<EnumEntry "
                       "Name=\"Third\"><Value>3</Value><Symbolic>Three</Symbolic></EnumEntry><Value>1</"
                       "Value></Enumeration>"));
    EXPECT_EQ("E EnumEntry_E_One EnumEntry_E_Two EnumEntry_E_Third", names_in(map));
    std::vector<std::string> symbols;
    for (const EnumEntry& entry : map.get("E").as<Enumeration>().entries())
        symbols.push_back(entry.symbolic());
    EXPECT_THAT(symbols, ElementsAre("One", "Two", "Three"));
}

TEST(Description, KeepsExtensionsAsTheyAre)
{
    const NodeMap map = NodeMap::load(description_of(integer(
        "A", "<Extension><x:Tool kind=\"a&amp;b\">1 &lt; 2<Deep/></x:Tool></Extension><Value>1</Value>"
             "<Extension>plain</Extension>")));
    EXPECT_THAT(map.get("A").extensions(),
                ElementsAre("<Tool kind=\"a&amp;b\">1 &lt; 2<Deep></Deep></Tool>", "plain"));
}

TEST(Description, KeepsBlanksOfTextsOnly)
{
    const NodeMap map =
        NodeMap::load(description_of(node("String", "S", "<ToolTip>\n tip </ToolTip><Value> two </Value>") +
                                     integer("A", "<Value>\n 5\t</Value>")));
    EXPECT_EQ(" two ", map.get("S").as<String>().value());
    EXPECT_EQ("tip", map.get("S").tool_tip());
    EXPECT_EQ(5, map.get("A").as<Integer>().value());
}

TEST(Description, MayBeFilledUpWithZeros)
{
    EXPECT_EQ(1U, NodeMap::load(description_of(integer("A", "")) + std::string(100, '\0')).size());
}

TEST(Description, MayBeInEveryEncodingThatExtendsAscii)
{
    std::string text = description_of(integer("A", "<ToolTip>\xE4</ToolTip>"));
    text.replace(text.find("utf-8"), 5, "ISO-8859-1");
    EXPECT_EQ("\xC3\xA4", NodeMap::load(text).get("A").tool_tip());
    EXPECT_EQ(1U, NodeMap::load("\xEF\xBB\xBF" + description_of(integer("A", ""))).size());
    for (const char* const encoding : {"UTF-16", "UTF-7", "EBCDIC-US", "UCS-4"}) {
        text = description_of("");
        text.replace(text.find("utf-8"), 5, encoding);
        EXPECT_EQ("description", refusal_of(text).first) << encoding;
    }
    EXPECT_EQ("description", refusal_of(std::string("\xFF\xFE<\0", 4)).first);
    EXPECT_EQ("description", refusal_of(std::string("<\0?\0", 4)).first);
}

TEST(Description, IsRefusedUnlessItIsOne)
{
    const std::pair<std::string, const char*> cases[] = {
        {"", ""},
        {"hello", "line 1"},
        {std::string(1000, '\0'), ""},
        {"<html><body/></html>", "its root element is <html>"},
        {"<RegisterDescription>\n<Integer Name=\"A\">\n</RegisterDescription>", "line 3"},
        {"<RegisterDescription>&nothing;</RegisterDescription>", "nothing"},
        {"<RegisterDescription/><RegisterDescription/>", "line 1"},
    };
    for (const auto& [text, reason] : cases) {
        EXPECT_EQ("description", refusal_of(text).first) << text;
        EXPECT_THAT(refusal_of(text).second, HasSubstr(reason));
    }
}

TEST(Description, IsRefusedWhenItIsCutOff)
{
    const std::string text = description_of(integer("A", "<Value>1</Value>") + node("Category", "Root", ""));
    for (std::size_t size = 0; size + 24 < text.size(); size += 7)
        EXPECT_EQ("description", refusal_of(text.substr(0, size)).first) << size;
}

TEST(Description, IsRefusedWithADocumentType)
{
    std::string bomb = "<!DOCTYPE RegisterDescription [<!ENTITY a0 \"aaaaaaaaaa\">";
    for (int i = 1; i < 10; ++i) {
        bomb += "<!ENTITY a" + std::to_string(i) + " \"";
        for (int k = 0; k < 10; ++k)
            bomb += "&a" + std::to_string(i - 1) + ";";
        bomb += "\">";
    }
    const std::string texts[] = {
        bomb + "]><RegisterDescription ModelName=\"&a9;\">&a9;</RegisterDescription>",
        "<!DOCTYPE r SYSTEM \"file:///etc/hostname\"><RegisterDescription/>",
        "<!DOCTYPE r PUBLIC \"x\" \"http://127.0.0.1:1/x.dtd\"><RegisterDescription/>",
        "<!DOCTYPE RegisterDescription [<!ATTLIST RegisterDescription ModelName CDATA "
        "\"x\">]><RegisterDescription/>",
    };
    for (const std::string& text : texts)
        EXPECT_THAT(
            refusal_of(text),
            testing::Pair("description", HasSubstr("line 1: it contains a document type declaration")));
}

TEST(Description, IsRefusedBeyondItsLimits)
{
    std::string nested = "<RegisterDescription>";
    for (int i = 0; i < 100000; ++i)
        nested += "<Group>";
    EXPECT_THAT(refusal_of(nested), testing::Pair("limit", HasSubstr("nested more than 64 deep")));

    std::string attributes = "<RegisterDescription";
    for (int i = 0; i < 257; ++i)
        attributes += " a" + std::to_string(i) + "=\">\"";
    EXPECT_THAT(refusal_of(attributes + "/>"), testing::Pair("limit", HasSubstr("attributes")));

    const std::string text =
        description_of(integer("A", "<Value>1</Value><Min>0</Min>") + integer("B", "<Value>12345</Value>"));
    EXPECT_EQ("no error", refusal_of(text).first);
    Limits limits;
    limits.description_bytes = text.size() - 1;
    EXPECT_EQ("limit", refusal_of(text, limits).first);
    limits = {};
    limits.nodes = 1;
    EXPECT_EQ("limit", refusal_of(text, limits).first);
    limits = {};
    limits.elements = 2;
    EXPECT_EQ("limit", refusal_of(text, limits).first);
    limits = {};
    limits.element_text = 4;
    EXPECT_EQ("limit", refusal_of(text, limits).first);
    limits = {};
    limits.xml_depth = 2;
    EXPECT_EQ("limit", refusal_of(text, limits).first);
}

TEST(Description, CountsWhatStructuresShareForEachEntry)
{
    std::string structure = "<StructReg>";
    for (int i = 0; i < 100; ++i)
        structure += "<Address>0</Address>";
    for (int i = 0; i < 100; ++i)
        structure += "<StructEntry Name=\"A" + std::to_string(i) + "\"/>";
    Limits limits;
    limits.elements = 9000;
    EXPECT_EQ("limit", refusal_of(description_of(structure + "</StructReg>"), limits).first);
}

TEST(Description, CountsTheTextOfExtensions)
{
    Limits limits;
    limits.element_text = 30;
    EXPECT_EQ("limit",
              refusal_of(description_of(integer("A", "<Extension><Tool a=\"0123456789\" b=\"0123456789\"/>"
                                                     "</Extension>")),
                         limits)
                  .first);
}

TEST(Description, CannotBeLongerThanItSays)
{
    EXPECT_EQ(
        "no error",
        refusal_of("<RegisterDescription>" + std::string(12U << 20U, ' ') + "</RegisterDescription>").first);
}

} // namespace zvgenapi::test
