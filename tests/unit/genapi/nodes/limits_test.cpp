#include <cfloat>
#include <limits>
#include <string>

#include "unit/genapi/support.h"

namespace zvgenapi::test {

namespace {

constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();

/// Nodes, one of which is called A, and its limits.
struct Row {
    std::string nodes;
    std::int64_t minimum;
    std::int64_t maximum;
    std::int64_t increment;
};

std::string converted(const std::string& from, const std::string& rest)
{
    return node("IntConverter", "A",
                "<FormulaTo>FROM</FormulaTo><FormulaFrom>" + from + "</FormulaFrom><pValue>B</pValue>" +
                    rest);
}

const std::string b = integer("B", "<Value>4</Value><Min>2</Min><Max>20</Max><Inc>3</Inc>");
const std::string half = node("Float", "Half", "<Value>2.5</Value>");

const Row rows[] = {
    {integer("A", "<Value>1</Value>"), lowest, highest, 1},
    {integer("A", "<Value>1</Value><Min>-5</Min><Max>0x10</Max><Inc>7</Inc>"), -5, 16, 7},
    {b + integer("A", "<Value>1</Value><pMin>B</pMin><pMax>B</pMax><pInc>B</pInc>"), 4, 4, 4},
    {b + integer("A", "<pValue>B</pValue>"), 2, 20, 3},
    {b + integer("A", "<pValue>B</pValue><Max>100</Max>"), 2, 100, 3},
    {half + integer("A", "<Value>1</Value><pMin>Half</pMin><pMax>Half</pMax><pInc>Half</pInc>"), 3, 2, 3},
    {node("Float", "F", "<Value>1</Value>") + integer("A", "<pValue>F</pValue>"), lowest, highest, 1},
    {integer("A", "<Value>1</Value><Inc>0</Inc>"), lowest, highest, 1},
    {integer("A", "<Value>1</Value><Inc>-4</Inc>"), lowest, highest, 1},
    {node("IntReg", "A", place("0", 1)), 0, 255, 1},
    {node("IntReg", "A", place("0", 1) + "<Sign>Signed</Sign>"), -128, 127, 1},
    {node("IntReg", "A", place("0", 4)), 0, 0xFFFFFFFF, 1},
    {node("IntReg", "A", place("0", 8)), 0, highest, 1},
    {node("IntReg", "A", place("0", 8) + "<Sign>Signed</Sign>"), lowest, highest, 1},
    {node("MaskedIntReg", "A", place("0", 4) + "<LSB>4</LSB><MSB>6</MSB>"), 0, 7, 1},
    {node("MaskedIntReg", "A", place("0", 4) + "<Bit>4</Bit><Sign>Signed</Sign>"), -1, 0, 1},
    {node("IntReg", "R", place("0", 2)) + integer("A", "<pValue>R</pValue><Min>1</Min>"), 1, 0xFFFF, 1},
    {node("Boolean", "F", "<Value>1</Value>") + integer("A", "<pValue>F</pValue>"), lowest, highest, 1},
    {formula("A", "", "5"), lowest, highest, 1},
    {b + converted("TO * 2", ""), 4, 40, 1},
    {b + converted("TO * 2", "<IsLinear>Yes</IsLinear>"), 4, 40, 6},
    {b + converted("100 - TO", ""), 80, 98, 1},
    {b + converted("100 - TO", "<Slope>Decreasing</Slope>"), 80, 98, 1},
    {b + converted("100 - TO", "<Slope>Increasing</Slope>"), 98, 80, 1},
    {b + converted("TO", "<Slope>Varying</Slope>"), lowest, highest, 1},
    {b + converted("1 / (TO - 2)", ""), lowest, highest, 1},
    {reg("B", "0") + converted("100 - TO", ""), 100 - 0xFFFFFFFFLL, 100, 1},
    {integer("B", "<Value>1</Value>") + converted("(TO - 17) * 3", ""), lowest, highest, 1},
    {integer("B", "<Value>1</Value><Min>5</Min>") + converted("TO * 2", ""), 10, highest, 1},
    {integer("B", "<Value>1</Value><Min>5</Min>") + converted("0 - TO", ""), lowest, -5, 1},
    {integer("B", "<Value>1</Value><Min>9223372036854775807</Min>") + converted("TO", ""), highest, highest,
     1},
    {integer("B", "<Value>1</Value><Max>-9223372036854775808</Max>") + converted("TO", ""), lowest, lowest,
     1},
    {integer("B", "<Value>1</Value><Max>5</Max>") + converted("0 - TO", ""), -5, highest, 1},
    {integer("B", "<Value>1</Value><Max>5</Max>") + converted("0 - TO", "<Slope>Decreasing</Slope>"), -5,
     highest, 1},
    {b + integer("A", "<pIndex>B</pIndex><ValueIndexed Index=\"0\">1</ValueIndexed>"
                      "<pValueIndexed Index=\"4\">B</pValueIndexed>"),
     2, 20, 3},
};

class IntegerLimits : public testing::TestWithParam<Row> {};

} // namespace

TEST_P(IntegerLimits, AreTheNodesOwnOrThoseBelow)
{
    const Device device(GetParam().nodes);
    const Integer a = device.integer("A");
    EXPECT_EQ(GetParam().minimum, a.minimum());
    EXPECT_EQ(GetParam().maximum, a.maximum());
    EXPECT_EQ(GetParam().increment, a.increment());
}

INSTANTIATE_TEST_SUITE_P(Rows, IntegerLimits, testing::ValuesIn(rows));

TEST(FloatLimits, AreTheNodesOwnOrThoseBelow)
{
    const Device device(
        b + node("Float", "Own", "<Value>1</Value><Min>-1.5</Min><pMax>B</pMax><Inc>0.25</Inc>") +
        node("Float", "Free", "<Value>1</Value>") + node("Float", "Below", "<pValue>B</pValue>") +
        node("FloatReg", "Single", place("0", 4)) + node("FloatReg", "Double", place("0", 8)) +
        node("Converter", "Conv",
             "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO / 4.0</FormulaFrom><pValue>B</pValue>") +
        node("SwissKnife", "Knife", "<Formula>1</Formula>"));
    const struct {
        const char* name;
        double minimum;
        double maximum;
        double increment;
    } cases[] = {{"Own", -1.5, 4, 0.25},
                 {"Free", -DBL_MAX, DBL_MAX, 0},
                 {"Below", 2, 20, 3},
                 {"Single", -double{FLT_MAX}, double{FLT_MAX}, 0},
                 {"Double", -DBL_MAX, DBL_MAX, 0},
                 {"Conv", 0.5, 5, 0},
                 {"Knife", -DBL_MAX, DBL_MAX, 0}};
    for (const auto& row : cases) {
        const Float a = device.floating(row.name);
        EXPECT_EQ(row.minimum, a.minimum()) << row.name;
        EXPECT_EQ(row.maximum, a.maximum()) << row.name;
        EXPECT_EQ(row.increment, a.increment()) << row.name;
        EXPECT_EQ(row.increment != 0, a.has_increment()) << row.name;
    }
}

TEST(Limits, AreCheckedBeforeAnythingIsWritten)
{
    Device device(reg("R", "0") + integer("A", "<pValue>R</pValue><Min>10</Min><Max>100</Max><Inc>5</Inc>") +
                  node("Float", "F", "<pValue>R</pValue><Min>0.5</Min><Max>9.5</Max>"));
    Integer a = device.integer("A");
    for (const std::int64_t value : {9LL, 101LL, 11LL, 0LL, -10LL, 9223372036854775807LL})
        EXPECT_EQ("range", kind_of_error([&] { a.set(value); })) << value;
    EXPECT_THAT(error_of([&] { a.set(9); }).second,
                HasSubstr("A (line 4): it cannot be 9: it must be within 10 and 100"));
    EXPECT_THAT(error_of([&] { a.set(11); }).second, HasSubstr("it changes in steps of 5 from 10"));
    for (const double value : {0.4, 9.6, -1e300})
        EXPECT_EQ("range", kind_of_error([&] { device.floating("F").set(value); })) << value;
    EXPECT_EQ(0, device.memory.writes);
    a.set(15);
    a.set(11, Verify::no);
    EXPECT_EQ(11, a.value());
}

TEST(Limits, AreCheckedWhenReadingOnRequest)
{
    Device device(reg("R", "0") + integer("A", "<pValue>R</pValue><Max>10</Max>") +
                  node("Float", "F", "<pValue>R</pValue><Max>10</Max>"));
    device.memory.put(0, {11});
    EXPECT_EQ(11, device.number("A"));
    EXPECT_EQ("range", kind_of_error([&] { device.integer("A").value(UseCache::yes, Verify::yes); }));
    EXPECT_EQ("range", kind_of_error([&] { device.floating("F").value(UseCache::yes, Verify::yes); }));
    device.memory.put(0, {10});
    EXPECT_EQ(10, device.integer("A").value(UseCache::yes, Verify::yes));
    EXPECT_EQ(10.0, device.floating("F").value(UseCache::yes, Verify::yes));
}

TEST(Limits, CountStepsOverTheWholeRange)
{
    Device device(integer("A", "<Value>0</Value><Min>-9223372036854775808</Min><Inc>5</Inc>"));
    EXPECT_EQ("no error", kind_of_error([&] { device.integer("A").set(highest); }));
    EXPECT_EQ("range", kind_of_error([&] { device.integer("A").set(highest - 1); }));
}

TEST(Limits, OfNodesBelowAreCheckedToo)
{
    Device device(b + integer("A", "<pValue>B</pValue><Min>0</Min><Max>1000</Max><Inc>1</Inc>"));
    EXPECT_EQ("range", kind_of_error([&] { device.integer("A").set(23); }));
    EXPECT_EQ("no error", kind_of_error([&] { device.integer("A").set(5); }));
}

TEST(Limits, MayBeASetOfValues)
{
    Device device(integer("A", "<Value>1</Value><ValidValueSet>1; 2;4;0x8</ValidValueSet>") +
                  integer("B", "<pValue>A</pValue>") +
                  node("Float", "F", "<Value>1</Value><ValidValueSet>0.5;1.5</ValidValueSet>") +
                  integer("Bad", "<Value>1</Value><ValidValueSet>1;two</ValidValueSet>"));
    EXPECT_THAT(device.integer("A").valid_values(), ElementsAre(1, 2, 4, 8));
    EXPECT_THAT(device.integer("B").valid_values(), ElementsAre(1, 2, 4, 8));
    EXPECT_THAT(device.floating("F").valid_values(), ElementsAre(0.5, 1.5));
    EXPECT_EQ("range", kind_of_error([&] { device.integer("B").set(3); }));
    EXPECT_EQ("no error", kind_of_error([&] { device.integer("B").set(8); }));
    EXPECT_EQ("range", kind_of_error([&] { device.floating("F").set(1.0); }));
    EXPECT_EQ("description", kind_of_error([&] { device.integer("Bad").set(1); }));
    EXPECT_THAT(Device(b).integer("B").valid_values(), IsEmpty());
}

TEST(Limits, CanBeNarrowedForOneMap)
{
    Device device(integer("A", "<Value>5</Value><Min>0</Min><Max>10</Max>") +
                  node("Float", "F", "<Value>5</Value><Min>0</Min><Max>10</Max>"));
    device.integer("A").impose_minimum(3);
    device.integer("A").impose_maximum(20);
    EXPECT_EQ(3, device.integer("A").minimum());
    EXPECT_EQ(10, device.integer("A").maximum());
    device.floating("F").impose_minimum(-1);
    device.floating("F").impose_maximum(7.5);
    EXPECT_EQ(0, device.floating("F").minimum());
    EXPECT_EQ(7.5, device.floating("F").maximum());
    EXPECT_EQ("range", kind_of_error([&] { device.integer("A").set(2); }));
    EXPECT_EQ("range", kind_of_error([&] { device.floating("F").set(8); }));
}

TEST(Limits, AreOnlyThoseOfNumbers)
{
    const Device device(integer("A", "<Value>1</Value><pMax>S</pMax>") +
                        node("String", "S", "<Value>x</Value>") +
                        formula("B", variable("X.Max", "S"), "X.Max"));
    EXPECT_EQ("wrong_type", kind_of_error([&] { device.integer("A").maximum(); }));
    EXPECT_EQ("wrong_type", kind_of_error([&] { device.number("B"); }));
}

} // namespace zvgenapi::test
