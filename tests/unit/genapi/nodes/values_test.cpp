#include <chrono>
#include <limits>
#include <string>
#include <vector>

#include "unit/genapi/support.h"

namespace zvgenapi::test {

namespace {

constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

std::string converter(const std::string& element, const std::string& from, const std::string& to,
                      const std::string& rest)
{
    return node(element, "A",
                "<FormulaTo>" + to + "</FormulaTo><FormulaFrom>" + from + "</FormulaFrom>" + rest);
}

} // namespace

TEST(Integers, AreWrittenInTheDescription)
{
    const std::pair<const char*, std::int64_t> cases[] = {
        {"5", 5},
        {"-5", -5},
        {"+5", 5},
        {"0x1F", 31},
        {"0Xff", 255},
        {"0xFFFFFFFFFFFFFFFF", -1},
        {"18446744073709551615", -1},
        {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()}};
    for (const auto& [text, number] : cases)
        EXPECT_EQ(number, Device(integer("A", "<Value>" + std::string(text) + "</Value>")).number("A"))
            << text;
    for (const char* const text :
         {"", "five", "1.5", "0x", "0x10000000000000000", "18446744073709551616", "--5", "+-5"})
        EXPECT_EQ("description", kind_of_error([&, text = text] {
                      Device(integer("A", "<Value>" + std::string(text) + "</Value>")).number("A");
                  }))
            << text;
    EXPECT_EQ("description", kind_of_error([] { Device(integer("A", "")).number("A"); }));
}

TEST(Integers, InTheDescriptionCanBeWrittenInTheMap)
{
    Device device(integer("A", "<Value>5</Value>") + integer("B", "<pValue>A</pValue>"));
    device.integer("B").set(7);
    EXPECT_EQ(7, device.number("A"));
    EXPECT_EQ(0, device.memory.writes);
}

TEST(Integers, AreStoredByOtherNodesOfEveryKind)
{
    Device device(
        reg("R", "0") + node("FloatReg", "F", place("4", 4)) + integer("OfReg", "<pValue>R</pValue>") +
        integer("OfFloat", "<pValue>F</pValue>") +
        node("Boolean", "Bool", "<pValue>R</pValue><OnValue>9</OnValue><OffValue>8</OffValue>") +
        integer("OfBool", "<pValue>Bool</pValue>") +
        node("Enumeration", "Enum", "<EnumEntry Name=\"X\"><Value>9</Value></EnumEntry><pValue>R</pValue>") +
        integer("OfEnum", "<pValue>Enum</pValue>") + node("String", "Text", "<Value>x</Value>") +
        integer("OfText", "<pValue>Text</pValue>"));
    device.integer("OfReg").set(9);
    EXPECT_EQ(1, device.number("OfBool"));
    EXPECT_EQ(9, device.number("OfEnum"));
    device.integer("OfBool").set(0);
    EXPECT_EQ(8, device.number("OfReg"));
    EXPECT_EQ("range", kind_of_error([&] { device.integer("OfEnum").set(7); }));
    device.floating("F").set(2.75);
    EXPECT_EQ(2, device.number("OfFloat"));
    device.integer("OfFloat").set(3);
    EXPECT_EQ(3.0, device.floating("F").value());
    EXPECT_EQ("wrong_type", kind_of_error([&] { device.number("OfText"); }));
    EXPECT_EQ("wrong_type", kind_of_error([&] { device.integer("OfText").set(1); }));
}

TEST(Integers, AreNoNumbersThatDoNotFit)
{
    Device device(node("Float", "Big", "<Value>1e19</Value>") + node("Float", "Nan", "<Value>NaN</Value>") +
                  integer("A", "<pValue>Big</pValue>") + integer("B", "<pValue>Nan</pValue>"));
    EXPECT_EQ("value", kind_of_error([&] { device.number("A"); }));
    EXPECT_EQ("value", kind_of_error([&] { device.number("B"); }));
}

TEST(Integers, AreCopiedToOtherNodes)
{
    Device device(
        reg("One", "0") + reg("Two", "4") + reg("Three", "8") +
        integer("A", "<pValueCopy>Two</pValueCopy><pValue>One</pValue><pValueCopy>Three</pValueCopy>"));
    device.integer("A").set(5);
    EXPECT_THAT(device.memory.at(0, 12), ElementsAre(5, 0, 0, 0, 5, 0, 0, 0, 5, 0, 0, 0));
    device.memory.put(4, {6});
    EXPECT_EQ(5, device.number("A")) << "the copies are only written";
}

TEST(Integers, AreNotWrittenIfACopyRefusesThem)
{
    Device device(reg("One", "0") + reg("Fixed", "4", "RO") +
                  integer("Tight", "<Value>1</Value><Max>5</Max>") +
                  integer("A", "<pValue>One</pValue><pValueCopy>Fixed</pValueCopy>") +
                  integer("B", "<Value>1</Value><pValueCopy>Tight</pValueCopy>") +
                  integer("C", "<Value>1</Value><pValueCopy>C</pValueCopy>"));
    EXPECT_EQ("access", kind_of_error([&] { device.integer("A").set(5); }));
    EXPECT_EQ("RO", device.access("A"));
    EXPECT_EQ("range", kind_of_error([&] { device.integer("B").set(6); }));
    EXPECT_EQ(1, device.number("B"));
    EXPECT_EQ("cycle", kind_of_error([&] { device.integer("C").set(6); }));
    EXPECT_EQ(0, device.memory.writes);
}

TEST(Integers, AreChosenByAnIndex)
{
    Device device(reg("One", "0") + integer("Index", "<Value>1</Value>") +
                  integer("A",
                          "<pIndex>Index</pIndex><ValueIndexed Index=\"0\">10</ValueIndexed>"
                          "<pValueIndexed Index=\"0x1\">One</pValueIndexed><ValueDefault>99</ValueDefault>") +
                  integer("B", "<pIndex>Index</pIndex><ValueIndexed Index=\"0\">1</ValueIndexed>"
                               "<pValueDefault>One</pValueDefault>") +
                  integer("C", "<pIndex>Index</pIndex><ValueIndexed Index=\"0\">1</ValueIndexed>") +
                  node("Float", "D", "<pIndex>Index</pIndex><ValueIndexed Index=\"1\">2.5</ValueIndexed>"));
    device.memory.put(0, {7});
    EXPECT_EQ(7, device.number("A"));
    EXPECT_EQ(7, device.number("B"));
    EXPECT_EQ(2.5, device.floating("D").value());
    EXPECT_EQ("value", kind_of_error([&] { device.number("C"); }));
    device.integer("A").set(8);
    EXPECT_THAT(device.memory.at(0, 1), ElementsAre(8));
    device.integer("Index").set(0);
    EXPECT_EQ(10, device.number("A"));
    device.integer("A").set(11);
    EXPECT_EQ(11, device.number("A"));
    device.integer("Index").set(5);
    EXPECT_EQ(99, device.number("A"));
}

TEST(Floats, AreWrittenInTheDescriptionOrStoredByOtherNodes)
{
    Device device(node("Float", "A", "<Value>2.5e-3</Value>") +
                  node("Float", "Whole", "<Value>0x10</Value>") + reg("R", "0") +
                  node("Float", "OfReg", "<pValue>R</pValue>") + node("Float", "Inf", "<Value>INF</Value>") +
                  node("Float", "Bad", "<Value>1,5</Value>"));
    EXPECT_EQ(0.0025, device.floating("A").value());
    EXPECT_EQ(16.0, device.floating("Whole").value());
    EXPECT_EQ(std::numeric_limits<double>::infinity(), device.floating("Inf").value());
    EXPECT_EQ("description", kind_of_error([&] { device.floating("Bad").value(); }));
    device.floating("OfReg").set(6.6);
    EXPECT_EQ(7.0, device.floating("OfReg").value()) << "rounded to the nearest whole number";
    EXPECT_EQ("range", kind_of_error([&] { device.floating("OfReg").set(not_a_number); }));
    EXPECT_EQ("value", kind_of_error([&] { device.floating("OfReg").set(not_a_number, Verify::no); }));
    device.floating("A").set(4.5);
    EXPECT_EQ(4.5, device.floating("A").value());
}

TEST(Booleans, CompareWithTheirOnValue)
{
    Device device(reg("R", "0") + node("Boolean", "A", "<pValue>R</pValue>") +
                  node("Boolean", "B", "<pValue>R</pValue><OnValue>5</OnValue><OffValue>6</OffValue>") +
                  node("Boolean", "C", "<Value>true</Value>") + node("Boolean", "D", "<Value>0</Value>"));
    const auto boolean = [&](const char* name) { return device.map.get(name).as<Boolean>(); };
    boolean("A").set(true);
    EXPECT_TRUE(boolean("A").value());
    EXPECT_FALSE(boolean("B").value());
    boolean("B").set(true);
    EXPECT_THAT(device.memory.at(0, 1), ElementsAre(5));
    EXPECT_TRUE(boolean("B").value());
    boolean("B").set(false);
    EXPECT_THAT(device.memory.at(0, 1), ElementsAre(6));
    EXPECT_TRUE(boolean("C").value());
    EXPECT_FALSE(boolean("D").value());
    boolean("D").set(true);
    EXPECT_TRUE(boolean("D").value());
}

TEST(Commands, WriteTheirValueAndAreDoneWhenTheDeviceTakesItBack)
{
    Device device(reg("R", "0") + reg("Blind", "4", "WO") + integer("Seven", "<Value>7</Value>") +
                  node("Command", "A", "<pValue>R</pValue><CommandValue>3</CommandValue>") +
                  node("Command", "B", "<pValue>Blind</pValue><pCommandValue>Seven</pCommandValue>") +
                  node("Command", "C", "<pValue>Seven</pValue><CommandValue>7</CommandValue>") +
                  node("Command", "D", "<pValue>R</pValue>"));
    const auto command = [&](const char* name) { return device.map.get(name).as<Command>(); };
    command("A").execute();
    EXPECT_THAT(device.memory.at(0, 1), ElementsAre(3));
    EXPECT_FALSE(command("A").is_done());
    device.memory.put(0, {0});
    EXPECT_TRUE(command("A").is_done());
    command("B").execute();
    EXPECT_THAT(device.memory.at(4, 1), ElementsAre(7));
    EXPECT_TRUE(command("B").is_done()) << "the device does not say";
    command("C").execute();
    EXPECT_TRUE(command("C").is_done()) << "no device is asked";
    EXPECT_EQ("description", kind_of_error([&] { command("D").execute(); }));
}

TEST(Commands, CanBeWaitedFor)
{
    Device device(reg("R", "0") + node("Command", "A", "<pValue>R</pValue><CommandValue>1</CommandValue>"));
    auto command = device.map.get("A").as<Command>();
    command.execute();
    EXPECT_THAT(error_of([&] { command.wait(std::chrono::milliseconds(0)); }),
                testing::Pair("time_out", HasSubstr("has not finished it after 0 ms")));
    device.memory.on_write = [&] { device.memory.put(0, {0}); };
    command.execute();
    command.wait(std::chrono::milliseconds(60000));
    EXPECT_TRUE(command.is_done());
}

TEST(Commands, AskTheDeviceEvenAboutRegistersThatAreKept)
{
    Device device(node("IntReg", "R", place("0", 4)) +
                  node("Command", "A", "<pValue>R</pValue><CommandValue>1</CommandValue>"));
    auto command = device.map.get("A").as<Command>();
    command.execute();
    EXPECT_FALSE(command.is_done());
    device.memory.put(0, {0});
    EXPECT_TRUE(command.is_done());
}

TEST(Enumerations, HaveEntries)
{
    Device device(
        reg("R", "0") + integer("Zero", "<Value>0</Value>") +
        node("Enumeration", "E",
             "<EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry>"
             "<EnumEntry Name=\"On\"><Value>0x1</Value><NumericValue>1.5</NumericValue>"
             "<IsSelfClearing>Yes</IsSelfClearing></EnumEntry>"
             "<EnumEntry Name=\"Gone\"><pIsAvailable>Zero</pIsAvailable><Value>2</Value></EnumEntry>"
             "<pValue>R</pValue>"));
    auto e = device.map.get("E").as<Enumeration>();
    EXPECT_EQ(3U, e.entries().size());
    EXPECT_EQ(2U, e.available_entries().size());
    EXPECT_EQ("Off", e.symbolic());
    EXPECT_EQ(0, e.value());
    e.set("On");
    EXPECT_EQ(1, e.value());
    EXPECT_EQ("On", e.current().symbolic());
    EXPECT_EQ(1.5, e.current().numeric_value());
    EXPECT_TRUE(e.current().is_self_clearing());
    EXPECT_EQ(0.0, e.entry("Off").numeric_value());
    EXPECT_FALSE(e.entry("Off").is_self_clearing());
    EXPECT_EQ("Gone", e.entry(2).symbolic());
    EXPECT_FALSE(e.entry("on"));
    EXPECT_FALSE(e.entry(7));
    e.set(0);
    EXPECT_EQ("Off", e.symbolic());
    EXPECT_EQ("range", kind_of_error([&] { e.set("Never"); }));
    EXPECT_EQ("range", kind_of_error([&] { e.set(7); }));
    EXPECT_EQ("access", kind_of_error([&] { e.set("Gone"); }));
    EXPECT_EQ("access", kind_of_error([&] { e.set(2); }));
    e.set(2, Verify::no);
    EXPECT_EQ("Gone", e.symbolic()) << "a value that the device has can be read";
    device.memory.put(0, {9});
    EXPECT_EQ("value", kind_of_error([&] { e.symbolic(); }));
    EXPECT_FALSE(e.current());
    EXPECT_EQ(9, e.value());
}

TEST(Strings, AreWrittenInTheDescriptionOrStoredByOtherNodes)
{
    Device device(node("StringReg", "R", place("0", 4)) + node("String", "A", "<pValue>R</pValue>") +
                  node("String", "B", "<Value>text</Value>") + node("String", "C", "<pValue>N</pValue>") +
                  integer("N", "<Value>1</Value>") + node("String", "D", ""));
    const auto string = [&](const char* name) { return device.map.get(name).as<String>(); };
    string("A").set("abc");
    EXPECT_EQ("abc", string("R").value());
    EXPECT_EQ(4, string("A").max_length());
    EXPECT_EQ("text", string("B").value());
    string("B").set("another");
    EXPECT_EQ("another", string("B").value());
    EXPECT_EQ(std::numeric_limits<std::int64_t>::max(), string("B").max_length());
    EXPECT_EQ("range", kind_of_error([&] { string("A").set("abcde"); }));
    EXPECT_EQ("wrong_type", kind_of_error([&] { string("C").value(); }));
    EXPECT_EQ("wrong_type", kind_of_error([&] { string("C").set("x"); }));
    EXPECT_EQ("description", kind_of_error([&] { string("D").value(); }));
}

TEST(Formulas, UseVariablesConstantsAndExpressions)
{
    Device device(reg("R", "0") +
                  node("SwissKnife", "A",
                       variable("X", "R") + "<Constant Name=\"HALF\">0.5</Constant>"
                                            "<Expression Name=\"TWICE\">X * 2</Expression>"
                                            "<Formula>TWICE + HALF</Formula>") +
                  formula("B", variable("X", "A"), "X * 2") + formula("C", "", "7 / 2"));
    device.memory.put(0, {3});
    EXPECT_EQ(6.5, device.floating("A").value());
    EXPECT_EQ(12, device.number("B")) << "whole numbers only";
    EXPECT_EQ(3, device.number("C"));
    EXPECT_EQ("access", kind_of_error([&] { device.integer("B").set(1); }));
}

TEST(Formulas, UseMoreThanTheValueOfANode)
{
    Device device(
        integer("N", "<Value>4</Value><Min>2</Min><Max>20</Max><Inc>2</Inc>") +
        node("Enumeration", "E", "<EnumEntry Name=\"X\"><Value>7</Value></EnumEntry><Value>7</Value>") +
        formula("Named",
                variable("A.Min", "N") + variable("A.Max", "N") + variable("A.Inc", "N") +
                    variable("A.Value", "N") + variable("E.Entry.X", "E"),
                "A.Min * 1000000 + A.Max * 10000 + A.Inc * 1000 + A.Value * 10 + E.Entry.X") +
        formula("Asked", variable("A", "N"), "A.Min + A.Max + A.Inc + A.Value + A") +
        formula("Other", variable("E.Enum.Y", "E"), "E.Enum.Y"));
    EXPECT_EQ(2202047, device.number("Named"));
    EXPECT_EQ(2 + 20 + 2 + 4 + 4, device.number("Asked"));
    EXPECT_EQ("description", kind_of_error([&] { device.number("Other"); }));
}

TEST(Formulas, AreRefusedWithTheReason)
{
    for (const char* const text : {"1 + (", "Y + 1", "", "((((", "FOO(X)", "1 2"})
        EXPECT_EQ(
            "formula", kind_of_error([&, text = text] {
                Device(formula("A", variable("X", "B"), text) + integer("B", "<Value>1</Value>")).number("A");
            }))
            << text;
    const Device device(formula("A", variable("X", "B"), "\n\n12 / (X - 1)") +
                        integer("B", "<Value>1</Value>") + node("SwissKnife", "None", ""));
    EXPECT_THAT(
        error_of([&] { device.number("A"); }),
        testing::Pair("formula", StartsWith("A (line 3): the formula \"12 / (X - 1)\" cannot be evaluated")));
    EXPECT_THAT(error_of([&] { device.floating("None").value(); }),
                testing::Pair("description", HasSubstr("it has no Formula")));
}

TEST(Formulas, DoNotNeedWhatTheyDoNotUse)
{
    const Device device(formula("A", variable("X", "Far") + variable("Y", "One"), "Y = 1 ? 5 : X") +
                        reg("Far", "0x10000") + integer("One", "<Value>1</Value>"));
    EXPECT_EQ(5, device.number("A"));
}

TEST(Converters, CountInBothDirections)
{
    Device device(
        reg("R", "0") + integer("Factor", "<Value>10</Value>") +
        converter("Converter", "TO / F", "FROM * F", variable("F", "Factor") + "<pValue>R</pValue>"));
    device.floating("A").set(250.3);
    EXPECT_THAT(device.memory.at(0, 2), ElementsAre(0xC7, 0x09)) << "2503, rounded to the nearest";
    EXPECT_EQ(250.3, device.floating("A").value());

    Device whole(reg("R", "0") + converter("IntConverter", "TO * 2", "FROM / 2", "<pValue>R</pValue>"));
    whole.integer("A").set(43);
    EXPECT_EQ(42, whole.number("A"));
    EXPECT_THAT(whole.memory.at(0, 1), ElementsAre(21));
}

TEST(Converters, AreRefusedWithoutWhatTheyNeed)
{
    EXPECT_EQ("description", kind_of_error([] {
                  Device(reg("R", "0") + node("Converter", "A", "<pValue>R</pValue>")).floating("A").value();
              }));
    EXPECT_EQ("formula", kind_of_error([] {
                  Device(reg("R", "0") +
                         converter("IntConverter", "1 / TO", "1 / FROM", "<pValue>R</pValue>"))
                      .number("A");
              }));
    EXPECT_EQ("formula", kind_of_error([] {
                  Device(reg("R", "0") + converter("Converter", "FROM", "FROM", "<pValue>R</pValue>"))
                      .floating("A")
                      .value();
              }))
        << "FROM is what is written";
}

TEST(Values, AreTextsToo)
{
    Device device(
        integer("Dec", "<Value>-5</Value>") +
        integer("Hex", "<Value>-1</Value><Representation>HexNumber</Representation>") +
        integer("Ip", "<Value>0xC0A80001</Value><Representation>IPV4Address</Representation>") +
        integer("Mac", "<Value>0x1B1900002A</Value><Representation>MACAddress</Representation>") +
        node("Float", "Real", "<Value>0.1</Value>") +
        node("Float", "Fixed",
             "<Value>0.126</Value><DisplayNotation>Fixed</DisplayNotation>"
             "<DisplayPrecision>2</DisplayPrecision>") +
        node("Float", "Sci",
             "<Value>1234.5</Value><DisplayNotation>Scientific</DisplayNotation>"
             "<DisplayPrecision>2</DisplayPrecision>") +
        node("Float", "Short", "<Value>1.23456</Value><DisplayPrecision>3</DisplayPrecision>") +
        node("Boolean", "Yes", "<Value>1</Value>") +
        node("Enumeration", "E", "<EnumEntry Name=\"X\"><Value>7</Value></EnumEntry><Value>7</Value>") +
        node("String", "S", "<Value>hello</Value>") + node("Register", "R", place("0", 3)) +
        node("Command", "C", "<pValue>Dec</pValue>") + node("Category", "Cat", ""));
    device.memory.put(0, {0xA1, 2, 0xFF});
    const std::pair<const char*, const char*> cases[] = {{"Dec", "-5"},         {"Hex", "0xFFFFFFFFFFFFFFFF"},
                                                         {"Ip", "192.168.0.1"}, {"Mac", "00:1B:19:00:00:2A"},
                                                         {"Real", "0.1"},       {"Fixed", "0.13"},
                                                         {"Sci", "1.23e+03"},   {"Short", "1.23"},
                                                         {"Yes", "true"},       {"E", "X"},
                                                         {"S", "hello"},        {"R", "A102FF"},
                                                         {"EnumEntry_E_X", "7"}};
    for (const auto& [name, text] : cases)
        EXPECT_EQ(text, device.text(name)) << name;
    EXPECT_EQ("wrong_type", kind_of_error([&] { device.text("C"); }));
    EXPECT_EQ("wrong_type", kind_of_error([&] { device.text("Cat"); }));
}

TEST(Values, CanBeWrittenAsTexts)
{
    Device device(
        integer("Dec", "<Value>0</Value>") +
        integer("Ip", "<Value>0</Value><Representation>IPV4Address</Representation>") +
        integer("Mac", "<Value>0</Value><Representation>MACAddress</Representation>") +
        node("Float", "Real", "<Value>0</Value>") + node("Boolean", "Yes", "<Value>0</Value>") +
        node("Enumeration", "E", "<EnumEntry Name=\"X\"><Value>7</Value></EnumEntry><Value>0</Value>") +
        node("String", "S", "<Value/>") + node("Register", "R", place("0", 3)) +
        node("Command", "C", "<pValue>Dec</pValue>"));
    const struct {
        const char* name;
        std::vector<const char*> good;
        std::vector<const char*> bad;
    } cases[] = {
        {"Dec", {"12", "-7", " 5 ", "0x1F"}, {"", "x", "1.5", "1.2.3.4"}},
        {"Ip", {"10.0.0.1", "5"}, {"10.0.0", "10.0.0.256", "1.2.3.4.5", "1..2.3"}},
        {"Mac", {"00:1B:19:00:00:2A"}, {"00:1B:19:00:00", "00:1B:19:00:00:2G"}},
        {"Real", {"1.5", "-2e3", "0x10"}, {"", "long", "1,5"}},
        {"Yes", {"true", "false", "1", "0"}, {"", "2", "TRUE"}},
        {"E", {"X"}, {"", "x", "7"}},
        {"S", {"hello", ""}, {}},
        {"R", {"01 02 03", "a1B2c3"}, {"", "0102", "0102030", "01020x"}},
    };
    for (const auto& row : cases) {
        Node one = device.map.get(row.name);
        for (const char* const text : row.good)
            EXPECT_EQ("no error", kind_of_error([&] { one.from_string(text); })) << row.name << " " << text;
        for (const char* const text : row.bad)
            EXPECT_EQ("value", kind_of_error([&] { one.from_string(text); })) << row.name << " " << text;
    }
    EXPECT_EQ("0.0.0.5", device.text("Ip"));
    EXPECT_EQ("A1B2C3", device.text("R"));
    EXPECT_EQ("16", device.text("Real"));
    EXPECT_EQ("X", device.text("E"));
    EXPECT_EQ("wrong_type", kind_of_error([&] { device.map.get("C").from_string("1"); }));
}

} // namespace zvgenapi::test
