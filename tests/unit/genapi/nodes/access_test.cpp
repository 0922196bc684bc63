#include <string>

#include "unit/genapi/support.h"

namespace zvgenapi::test {

namespace {

const std::string switches = integer("On", "<Value>1</Value>") + integer("Off", "<Value>0</Value>") +
                             node("Float", "Half", "<Value>0.5</Value>");

/// Nodes, one of which is called A, and the access mode of that.
struct Row {
    std::string nodes;
    const char* mode;
};

std::string registered(const std::string& mode, const std::string& conditions)
{
    return node("IntReg", "R", place("0", 4, mode)) + integer("A", "<pValue>R</pValue>" + conditions);
}

constexpr const char* absent = "<pIsImplemented>Off</pIsImplemented>";
constexpr const char* gone = "<pIsAvailable>Off</pIsAvailable>";
constexpr const char* held = "<pIsLocked>On</pIsLocked>";

std::string imposed(const std::string& mode) { return "<ImposedAccessMode>" + mode + "</ImposedAccessMode>"; }

const Row rows[] = {
    // the register's mode, and what a feature above it makes of it
    {registered("RW", ""), "RW"},
    {registered("RO", ""), "RO"},
    {registered("WO", ""), "WO"},
    {node("IntReg", "A", "<Address>0</Address><Length>4</Length><pPort>Device</pPort>"), "RO"},
    {registered("RW", held), "RO"},
    {registered("RO", held), "RO"},
    {registered("WO", held), "NA"},
    {registered("RW", gone), "NA"},
    {registered("RW", absent), "NI"},
    {registered("RW", std::string(gone) + absent), "NI"},
    {registered("RW", imposed("RO")), "RO"},
    {registered("RW", imposed("WO")), "WO"},
    {registered("RO", imposed("RW")), "RO"},
    {registered("RO", imposed("WO")), "NA"},
    {registered("RW", imposed("NA")), "NA"},
    {registered("RW", imposed("NI")), "NI"},
    {registered("RW", "<pIsImplemented>Half</pIsImplemented><pIsAvailable>On</pIsAvailable>"
                      "<pIsLocked>Off</pIsLocked>"),
     "RW"},
    // conditions below count, too
    {node("IntReg", "R", place("0", 4) + held) + integer("A", "<pValue>R</pValue>"), "RO"},
    {node("IntReg", "R", place("0", 4) + gone) + integer("A", "<pValue>R</pValue>"), "NA"},
    {node("IntReg", "R", place("0", 4) + absent) + integer("A", "<pValue>R</pValue>"), "NI"},
    // nodes that the description stores
    {integer("A", "<Value>1</Value>"), "RW"},
    {node("Float", "A", "<Value>1</Value>"), "RW"},
    {node("String", "A", "<Value>1</Value>"), "RW"},
    {node("Boolean", "A", "<Value>1</Value>"), "RW"},
    {node("Enumeration", "A", "<Value>1</Value>"), "RW"},
    {node("String", "A", "<Value>1</Value>" + imposed("RO")), "RO"},
    // nodes of other kinds
    {node("Category", "A", ""), "RO"},
    {node("Category", "A", gone), "NA"},
    {node("Node", "A", ""), "RO"},
    {node("SmartFeature", "A", ""), "NI"},
    {node("Command", "A", "<pValue>R</pValue>") + node("IntReg", "R", place("0", 4, "WO")), "WO"},
    {node("Command", "A", "<pValue>R</pValue>") + node("IntReg", "R", place("0", 4, "RO")), "RO"},
    {formula("A", variable("X", "On"), "X"), "RO"},
    {formula("A", variable("X", "B"), "X") + integer("B", std::string("<Value>1</Value>") + gone), "NA"},
    {formula("A", variable("X", "R"), "X") + node("IntReg", "R", place("0", 4, "WO")), "NA"},
    {node("IntConverter", "A", "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>On</pValue>"),
     "RW"},
    {node("Converter", "A", "<pValue>R</pValue>") + node("IntReg", "R", place("0", 4, "RO")), "RO"},
    {node("Converter", "A", "<pValue>On</pValue>" + variable("X", "R")) +
         node("IntReg", "R", place("0", 4, "WO")),
     "NA"},
    {integer("A", "<pIndex>On</pIndex><pValueIndexed Index=\"1\">R</pValueIndexed>") +
         node("IntReg", "R", place("0", 4, "RO")),
     "RO"},
    // ports
    {"<Port Name=\"Other\"/>" +
         node("IntReg", "A",
              "<Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Other</pPort>"),
     "NI"},
    {"<Port Name=\"A\"/>", "NI"},
};

class AccessModes : public testing::TestWithParam<Row> {};

} // namespace

TEST_P(AccessModes, AreCombined)
{
    const Device device(switches + GetParam().nodes);
    const std::string mode = device.access("A");
    EXPECT_EQ(GetParam().mode, mode);
    const Node a = device.map.get("A");
    EXPECT_EQ(mode != "NI", a.is_implemented());
    EXPECT_EQ(mode != "NI" && mode != "NA", a.is_available());
    EXPECT_EQ(mode == "RO" || mode == "RW", a.is_readable());
    EXPECT_EQ(mode == "WO" || mode == "RW", a.is_writable());
}

INSTANTIATE_TEST_SUITE_P(Rows, AccessModes, testing::ValuesIn(rows));

TEST(AccessModes, CombineAsATable)
{
    const AccessMode modes[] = {AccessMode::NI, AccessMode::NA, AccessMode::WO, AccessMode::RO,
                                AccessMode::RW};
    const char* const table[] = {"NI NI NI NI NI", "NI NA NA NA NA", "NI NA WO NA WO", "NI NA NA RO RO",
                                 "NI NA WO RO RW"};
    for (std::size_t i = 0; i < std::size(modes); ++i) {
        std::string row;
        for (const AccessMode other : modes)
            row += (row.empty() ? "" : " ") + std::string(name_of(combine(modes[i], other)));
        EXPECT_EQ(table[i], row);
    }
}

TEST(Access, IsRefusedWithTheReason)
{
    const Device device(
        switches + node("IntReg", "Absent", place("0", 4) + absent) +
        node("IntReg", "Gone", place("0", 4) + gone) + node("IntReg", "Held", place("0", 4) + held) +
        node("IntReg", "Fixed", place("0", 4, "RO")) + node("IntReg", "Blind", place("0", 4, "WO")) +
        integer("HeldBelow", "<pValue>Held</pValue>"));
    const std::pair<const char*, const char*> reads[] = {{"Absent", "this device does not have it"},
                                                         {"Gone", "it is not available at the moment"},
                                                         {"Blind", "it can only be written"}};
    const std::pair<const char*, const char*> writes[] = {{"Absent", "this device does not have it"},
                                                          {"Gone", "it is not available at the moment"},
                                                          {"Fixed", "it can only be read"},
                                                          {"Held", "it is locked at the moment"},
                                                          {"HeldBelow", "it is locked at the moment"}};
    for (const auto& [name, reason] : reads)
        EXPECT_THAT(error_of([&, name = name] { device.number(name); }),
                    testing::Pair("access", HasSubstr(reason)));
    for (const auto& [name, reason] : writes)
        EXPECT_THAT(error_of([&, name = name] { device.integer(name).set(1); }),
                    testing::Pair("access", HasSubstr(reason)));
    EXPECT_EQ(0, device.memory.writes);
    EXPECT_TRUE(device.map.get("HeldBelow").is_locked());
    EXPECT_FALSE(device.map.get("Fixed").is_locked());
    EXPECT_TRUE(device.map.get("Fixed").is_readable());
    EXPECT_FALSE(device.map.get("Fixed").is_writable());
}

TEST(Access, IsCheckedForEveryInterface)
{
    const Device device(
        switches + node("String", "S", std::string("<Value>x</Value>") + gone) +
        node("StringReg", "T", place("0", 4, "RO")) + node("Register", "R", place("0", 4, "RO")) +
        node("Command", "C", std::string("<pValue>On</pValue><CommandValue>1</CommandValue>") + gone) +
        node("Boolean", "B", std::string("<Value>1</Value>") + gone) +
        node("Enumeration", "E",
             std::string("<EnumEntry Name=\"X\"><Value>1</Value></EnumEntry><Value>1</Value>") + held));
    const NodeMap& map = device.map;
    EXPECT_EQ("access", kind_of_error([&] { map.get("S").as<String>().value(); }));
    EXPECT_EQ("access", kind_of_error([&] { map.get("T").as<String>().set("x"); }));
    EXPECT_EQ("access", kind_of_error([&] { map.get("R").as<Register>().write({1, 2, 3, 4}); }));
    EXPECT_EQ("access", kind_of_error([&] { map.get("R").from_string("01020304"); }));
    EXPECT_EQ("access", kind_of_error([&] { map.get("C").as<Command>().execute(); }));
    EXPECT_EQ("access", kind_of_error([&] { map.get("B").as<Boolean>().value(); }));
    EXPECT_EQ("access", kind_of_error([&] { map.get("B").to_string(); }));
    EXPECT_EQ("access", kind_of_error([&] { map.get("E").as<Enumeration>().set("X"); }));
    EXPECT_EQ("access", kind_of_error([&] { map.get("E").as<Enumeration>().set(1); }));
}

TEST(Access, NeedsNothingOfADeviceThatDoesNotHaveIt)
{
    const Device device(
        switches +
        node("IntReg", "A",
             place("0x10000", 4) + absent + "<pIsAvailable>Far</pIsAvailable><pIsLocked>Far</pIsLocked>") +
        node("IntReg", "Far", place("0x10000", 4)));
    EXPECT_EQ("NI", device.access("A"));
    EXPECT_EQ(0, device.memory.reads);
}

TEST(Access, PassesOnFaultsOfItsConditions)
{
    const Device device(integer("A", "<Value>1</Value><pIsLocked>Text</pIsLocked>") +
                        node("String", "Text", "<Value>hello</Value>"));
    EXPECT_THAT(error_of([&] { device.access("A"); }),
                testing::Pair("wrong_type", StartsWith("Text (line 4): a String is not a number")));
}

} // namespace zvgenapi::test
