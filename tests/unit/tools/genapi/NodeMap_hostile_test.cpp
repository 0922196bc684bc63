#include <cstdint>

#include <gmock/gmock.h>

#include "CameraMap.h"

namespace zvgentl::test {

using namespace tool;

namespace {

struct Described {
    explicit Described(const std::string& nodes) : map(description_of(nodes), registers) {}

    FakeRegisters registers;
    NodeMap map;
};

/// What describing a node of this description reports as its problem.
std::string problem_of(const std::string& name, const std::string& nodes)
{
    const Described described(nodes);
    const NodeMap& map = described.map;
    const Feature feature = map.describe(name);
    EXPECT_EQ(Value(), feature.value);
    EXPECT_NE("no error", error_of([&] { map.set(name, "1"); }));
    return feature.problem;
}

std::string refusal_of(const std::string& description)
{
    const FakeRegisters registers;
    return error_of([&] { const NodeMap map(description, registers); });
}

std::string integer(const std::string& name, const std::string& content)
{
    return "<Integer Name=\"" + name + "\">" + content + "</Integer>\n";
}

std::string formula(const std::string& name, const std::string& variables, const std::string& text)
{
    return "<IntSwissKnife Name=\"" + name + "\">" + variables + "<Formula>" + text +
           "</Formula></IntSwissKnife>\n";
}

} // namespace

TEST(HostileDescription, IsRefusedUnlessItIsComplete)
{
    const std::string description = camera_description();
    for (std::size_t size = 0; size + 24 < description.size(); size += 97)
        EXPECT_THAT(refusal_of(description.substr(0, size)), HasSubstr("description is damaged")) << size;
}

TEST(HostileDescription, IsRefusedWhenItIsSomethingElse)
{
    std::string nested = "<RegisterDescription>";
    for (int i = 0; i < 100000; ++i)
        nested += "<Group>";
    const std::pair<std::string, const char*> cases[] = {
        {"<html><body/></html>", "is not a register description: its root element is <html>"},
        {"PK\x03\x04", "description is damaged: the archive cannot be unpacked"},
        {std::string(1000, '\0'), "description is damaged"},
        {nested, "description is damaged"},
        {"<!DOCTYPE RegisterDescription [<!ENTITY a "
         "\"aaaa\">]><RegisterDescription>&a;</RegisterDescription>",
         "document type declaration"},
        {"<!DOCTYPE r SYSTEM \"file:///etc/hostname\"><RegisterDescription/>", "document type declaration"},
    };
    for (const auto& [description, reason] : cases)
        EXPECT_THAT(refusal_of(description), HasSubstr(reason));
}

TEST(HostileDescription, MayContainNoNodesAtAll)
{
    const FakeRegisters registers;
    const NodeMap map("<RegisterDescription/>", registers);
    EXPECT_EQ("there is no category Root", error_of([&] { map.tree(); }));
    EXPECT_THAT(error_of([&] { map.get("Width"); }), HasSubstr("no feature Width"));
}

TEST(HostileDescription, HasUnusableFeaturesWhereReferencesLeadNowhereOrGoRound)
{
    constexpr const char* nowhere = "refers to B, which the description does not contain";
    const std::pair<std::string, const char*> cases[] = {
        {integer("A", "<pValue>B</pValue>"), nowhere},
        {integer("A", "<Value>1</Value><pMin>B</pMin>"), nowhere},
        {integer("A", "<Value>1</Value><pMax>B</pMax>"), nowhere},
        {integer("A", "<Value>1</Value><pIsAvailable>B</pIsAvailable>"), nowhere},
        {integer("A", "<Value>1</Value><pIsLocked>B</pIsLocked>"), nowhere},
        {integer("A", "<pIndex>B</pIndex>"), nowhere},
        {integer("A", "<pValue></pValue>"),
         "description is faulty: pValue refers to , which the description does not contain"},
        {integer("A", "<pValue>C</pValue>") + formula("C", "<pVariable Name=\"X\">B</pVariable>", "X"),
         "C (line 4): pVariable refers to B"},
        {integer("A", "<pValue>A</pValue>"), "depends on itself"},
        {integer("A", "<pValue>B</pValue>") + integer("B", "<pValue>A</pValue>"), "depends on itself"},
        {integer("A", "<pValue>C</pValue>") + formula("C", "<pVariable Name=\"X\">A</pVariable>", "X"),
         "depends on itself"},
        {"<IntReg Name=\"A\"><IntSwissKnife Name=\"N\"><pVariable "
         "Name=\"X\">A</pVariable><Formula>X</Formula>"
         "</IntSwissKnife><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>",
         "depends on itself"},
    };
    for (const auto& [nodes, problem] : cases)
        EXPECT_THAT(problem_of("A", nodes), HasSubstr(problem));
}

TEST(HostileDescription, MayLockAFeatureByItsOwnValue)
{
    const Described described(integer("A", "<Value>1</Value><pIsLocked>A</pIsLocked>"));
    EXPECT_EQ("1", described.map.get_text("A"));
    EXPECT_THAT(error_of([&] { described.map.set("A", "2"); }), HasSubstr("it is locked at the moment"));
}

TEST(HostileDescription, KeepsTheFeaturesThatAreSound)
{
    const Described described(integer("A", "<pValue>A</pValue>") + integer("B", "<Value>3</Value>") +
                              formula("ZeroAtOne", "<pVariable Name=\"X\">B</pVariable>", "12 / (X - 1)"));
    EXPECT_EQ("3", described.map.get_text("B"));
    EXPECT_EQ("6", described.map.get_text("ZeroAtOne"));
}

TEST(HostileDescription, HasUnusableFeaturesAtTheEndOfLongChains)
{
    std::string nodes = integer("N0", "<Value>7</Value>");
    for (int i = 1; i <= 20000; ++i)
        nodes += integer("N" + std::to_string(i), "<pValue>N" + std::to_string(i - 1) + "</pValue>");
    EXPECT_THAT(problem_of("N20000", nodes), HasSubstr("too long a chain of nodes"));
    EXPECT_EQ("7", Described(nodes).map.get_text("N100"));
}

TEST(HostileDescription, MayAskForTheSameValueOverAndOver)
{
    std::string nodes = integer("N0", "<Value>1</Value>");
    for (int i = 1; i <= 60; ++i) {
        const std::string below = "N" + std::to_string(i - 1);
        nodes += formula("N" + std::to_string(i),
                         "<pVariable Name=\"X\">" + below + "</pVariable><pVariable Name=\"Y\">" + below +
                             "</pVariable>",
                         "X + Y");
    }
    EXPECT_EQ(std::to_string(std::int64_t{1} << 60U), Described(nodes).map.get_text("N60"));
}

TEST(HostileDescription, MayListCategoriesInCircles)
{
    const Described described(
        "<Category Name=\"Root\"><pFeature>A</pFeature><pFeature>Root</pFeature></Category>"
        "<Category Name=\"A\"><pFeature>B</pFeature><pFeature>B</pFeature></Category>"
        "<Category Name=\"B\"><pFeature>A</pFeature></Category>");
    EXPECT_THAT(described.map.tree(),
                testing::ElementsAre(testing::FieldsAre("A", 0, false), testing::FieldsAre("B", 1, false),
                                     testing::FieldsAre("A", 2, true), testing::FieldsAre("B", 1, true),
                                     testing::FieldsAre("Root", 0, true)));
}

TEST(HostileDescription, HasUnusableRegistersOfImpossibleLength)
{
    const auto problem = [](const std::string& kind, const std::string& length) {
        return problem_of("A", "<" + kind + " Name=\"A\"><Address>0</Address><Length>" + length +
                                   "</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></" + kind +
                                   ">\n");
    };
    for (const char* const length : {"0", "-4", "9", "40000000000", "0xFFFFFFFFFFFFFFFF", "four", ""})
        EXPECT_THAT(problem("IntReg", length),
                    testing::AnyOf(HasSubstr("cannot be"), HasSubstr("is not a number")))
            << length;
    EXPECT_THAT(problem("StringReg", "40000000000"), HasSubstr("bytes long"));
    EXPECT_THAT(problem("Register", "0"), HasSubstr("bytes long"));
}

TEST(HostileDescription, DoesNotTakeTheMemoryThatTheDeviceNames)
{
    Described described(register_of("LengthReg", 0) +
                        "<StringReg Name=\"A\"><Address>0x100</Address><pLength>LengthReg</pLength>"
                        "<AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>"
                        "<String Name=\"B\"><pValue>A</pValue></String>");
    described.registers.put<std::uint32_t>(0, 0xFFFFFFF0);
    EXPECT_THAT(described.map.describe("B").problem, HasSubstr("says that it is 4294967280 bytes long"));
    described.registers.put<std::uint32_t>(0, 8);
    described.registers.put<std::uint32_t>(0x100, 0x44434241);
    EXPECT_EQ("ABCD", described.map.get_text("B"));
}

TEST(HostileDescription, HasUnusableFormulas)
{
    const std::string variable = "<pVariable Name=\"X\">B</pVariable>";
    const std::string value = integer("B", "<Value>3</Value>");
    for (const char* const text : {"1 + (", "Y + 1", "", "((((", "FOO(X)", "1 2"})
        EXPECT_THAT(problem_of("A", formula("A", variable, text) + value), HasSubstr("cannot be evaluated"));
    EXPECT_THAT(problem_of("A", formula("A", "<Expression Name=\"E\">E + 1</Expression>", "E")),
                HasSubstr("cannot be evaluated"));
}

TEST(HostileDescription, MayNameTheSameNodeTwice)
{
    const Described described(integer("A", "<pValue>A</pValue>") + integer("A", "<Value>5</Value>"));
    EXPECT_NE("", described.map.describe("A").name); // whichever of them counts, it ends
}

TEST(HostileDescription, MayContainReferencesToNodesOfTheWrongKind)
{
    const Described described(
        integer("A", "<pValue>Text</pValue>") + integer("B", "<Value>1</Value><pIsLocked>Text</pIsLocked>") +
        integer("C", "<pValue>Root</pValue>") +
        "<Boolean Name=\"D\"><pValue>Device</pValue></Boolean>"
        "<Enumeration Name=\"E\"><pValue>Text</pValue></Enumeration>"
        "<Command Name=\"F\"><pValue>Text</pValue><CommandValue>1</CommandValue></Command>"
        "<String Name=\"Text\"><Value>hello</Value></String>"
        "<Category Name=\"Root\"/>");
    const NodeMap& map = described.map;
    for (const char* const name : {"A", "B", "C", "D", "E", "F"}) {
        map.describe(name);
        error_of([&] { map.set(name, "1"); });
        error_of([&] { map.execute(name, std::chrono::milliseconds(1)); });
    }
    EXPECT_THAT(map.describe("B").problem, HasSubstr("a String is not a number"));
}

TEST(HostileDescription, MayHavePortsWithoutAName)
{
    const Described described("<Port/><Integer Name=\"P\"><Value>3</Value></Integer><Port Name=\"P\"/>");
    EXPECT_EQ("3", described.map.get_text("P"));
}

TEST(HostileDescription, MayDivideWithoutAResult)
{
    Described described(
        "<IntReg Name=\"Smallest\"><Address>0</Address><Length>8</Length><AccessMode>RO</AccessMode>"
        "<pPort>Device</pPort><Sign>Signed</Sign><Endianess>BigEndian</Endianess></IntReg>" +
        formula("Quotient", "<pVariable Name=\"X\">Smallest</pVariable>", "X / (0 - 1)"));
    described.registers.put(0, std::int64_t{1} << 7U); // big-endian: the smallest number
    EXPECT_THAT(error_of([&] { described.map.get("Quotient"); }),
                HasSubstr("Quotient cannot be read: the formula \"X / (0 - 1)\" cannot be evaluated"));
}

TEST(HostileDescription, MayHaveLargeTextsThatAListDoesNotRead)
{
    const Described described("<StringReg Name=\"A\"><Address>0</Address><Length>60000000</Length>"
                              "<AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>");
    EXPECT_EQ("it may be 60000000 bytes long; `zvgentl get A` reads it", described.map.describe("A").problem);
    EXPECT_EQ(0, described.registers.reads);
}

} // namespace zvgentl::test
