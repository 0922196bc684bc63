#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "unit/genapi/formula/evaluate.h"

namespace zvgenapi::formula {

namespace {

constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double no_number = std::numeric_limits<double>::quiet_NaN();

const std::map<std::string, Number> variables = {
    {"SEVEN", Number::integer(7)},     {"TWO", Number::integer(2)},         {"ZERO", Number::integer(0)},
    {"MINUS", Number::integer(-9)},    {"LEAST", Number::integer(least)},   {"MOST", Number::integer(most)},
    {"HALF", Number::floating(0.5)},   {"ALMOST", Number::floating(7.9)},   {"VAR.Min", Number::integer(3)},
    {"E_1.x2", Number::integer(1000)}, {"NAN", Number::floating(no_number)}};

struct IntegerRow {
    const char* text;
    std::int64_t expected;
};

class IntegerArithmetic : public testing::TestWithParam<IntegerRow> {};

TEST_P(IntegerArithmetic, HasThisResult)
{
    const Number result = evaluate(GetParam().text, Arithmetic::integer, variables);
    EXPECT_TRUE(result.is_integer());
    EXPECT_EQ(GetParam().expected, result.to_integer()) << GetParam().text;
}

constexpr IntegerRow literals[] = {
    {"0", 0},
    {"12", 12},
    {" \t\r\n12 \n", 12},
    {"010", 10},
    {"0x1F", 31},
    {"0Xff", 255},
    {"0x7FFFFFFFFFFFFFFF", most},
    {"0x8000000000000000", least},
    {"0xFFFFFFFFFFFFFFFF", -1},
    {"9223372036854775807", most},
    {"-9223372036854775808", least},
    {"18446744073709551615", -1},
    {"7.9", 7},
    {"-7.9", -7},
    {"1e3", 1000},
    {"1.5E+1", 15},
    {"25e-1", 2},
    {".5 * 4", 2},
    {"2.", 2},
    {"PI", 3},
    {"E", 2},
    {"SEVEN", 7},
    {"ALMOST", 7},
    {"ALMOST * 10", 70},
    {"VAR.Min", 3},
    {"E_1.x2", 1000},
};
INSTANTIATE_TEST_SUITE_P(Literals, IntegerArithmetic, testing::ValuesIn(literals));

constexpr IntegerRow operators[] = {
    {"1 + 2 - 4", -1},
    {"3 * 5", 15},
    {"7 / 2", 3},
    {"-7 / 2", -3},
    {"7 / -2", -3},
    {"7 % 4", 3},
    {"-7 % 4", -3},
    {"7 % -4", 3},
    {"2 ** 10", 1024},
    {"(-3) ** 3", -27},
    {"5 ** 0", 1},
    {"0 ** 0", 1},
    {"2 ** -1", 0},
    {"1 ** -5", 1},
    {"(-1) ** -5", -1},
    {"(-1) ** -4", 1},
    {"2 ** 63", least},
    {"2 ** 64", 0},
    {"3 ** 41", -420491770248316829},
    {"12 & 10", 8},
    {"12 | 10", 14},
    {"12 ^ 10", 6},
    {"~0", -1},
    {"~5", -6},
    {"-5", -5},
    {"+5", 5},
    {"--5", 5},
    {"!0", 1},
    {"!7", 0},
    {"!0.5", 0},
    {"1 << 4", 16},
    {"-1 << 4", -16},
    {"256 >> 4", 16},
    {"-256 >> 4", -16},
    {"1 = 1", 1},
    {"1 == 2", 0},
    {"1 <> 2", 1},
    {"1 != 1", 0},
    {"1 < 2", 1},
    {"2 < 1", 0},
    {"2 > 1", 1},
    {"1 > 1", 0},
    {"1 <= 1", 1},
    {"2 <= 1", 0},
    {"1 >= 1", 1},
    {"1 >= 2", 0},
    {"1 && 2", 1},
    {"1 && 0", 0},
    {"0 && 1", 0},
    {"0 || 0", 0},
    {"0 || 4", 1},
    {"3 || 0", 1},
    {"1 ? 2 : 3", 2},
    {"0 ? 2 : 3", 3},
    {"3 * 1.5", 4},
    {"3 * 1.5 * 2", 9},
    {"7 / 2.0 * 2", 7},
    {"1.9 & 3", 1},
    {"9007199254740993 = 9007199254740992", 0},
};
INSTANTIATE_TEST_SUITE_P(Operators, IntegerArithmetic, testing::ValuesIn(operators));

constexpr IntegerRow precedences[] = {
    {"1 + 2 * 3", 7},       {"(1 + 2) * 3", 9},       {"10 - 4 - 3", 3},        {"100 / 5 / 2", 10},
    {"2 * 3 % 4", 2},       {"2 % 3 * 4", 8},         {"2 ** 3 ** 2", 512},     {"2 * 3 ** 2", 18},
    {"-2 ** 2", 4},         {"2 ** -1 + 1", 1},       {"~1 + 1", -1},           {"2 - -3", 5},
    {"2*-3", -6},           {"1 << 2 + 1", 8},        {"1 + 1 << 2", 8},        {"1 < 2 << 1", 1},
    {"3 > 2 > 1", 0},       {"1 = 2 < 3", 1},         {"1 & 2 = 2", 1},         {"6 ^ 3 & 1", 7},
    {"4 | 6 ^ 2", 4},       {"1 | 0 = 0", 1},         {"2 && 1 | 0", 1},        {"1 || 0 && 0", 1},
    {"0 || 1 ? 5 : 6", 5},  {"0 ? 1 : 0 ? 2 : 3", 3}, {"0 ? 1 : 1 ? 2 : 3", 2}, {"1 ? 0 ? 4 : 5 : 6", 5},
    {"(1 ? 2 : 3) + 1", 3}, {"1 ? 2 : 3 + 1", 2},     {"-SEVEN ** TWO", 49},
};
INSTANTIATE_TEST_SUITE_P(Precedences, IntegerArithmetic, testing::ValuesIn(precedences));

constexpr IntegerRow limits[] = {
    {"MOST + 1", least},
    {"LEAST - 1", most},
    {"MOST * 2", -2},
    {"LEAST * -1", least},
    {"-LEAST", least},
    {"NEG(LEAST)", least},
    {"ABS(LEAST)", least},
    {"LEAST % -1", 0},
    {"LEAST / 1", least},
    {"1 << 63", least},
    {"1 << 64", 0},
    {"1 << MOST", 0},
    {"1 >> 63", 0},
    {"1 >> 64", 0},
    {"-1 >> 0", -1},
    {"-1 >> 63", -1},
    {"-1 >> 64", -1},
    {"MINUS >> MOST", -1},
    {"9223372036854774784.0", 9223372036854774784},
    {"-9223372036854775808.0", least},
};
INSTANTIATE_TEST_SUITE_P(Limits, IntegerArithmetic, testing::ValuesIn(limits));

constexpr IntegerRow functions[] = {
    {"SGN(-3)", -1},
    {"SGN(0)", 0},
    {"SGN(8)", 1},
    {"NEG(3)", -3},
    {"ABS(-3)", 3},
    {"ABS(3)", 3},
    {"abs(-3)", 3},
    {"Abs (-3)", 3},
    {"SQRT(16)", 4},
    {"SQRT(17)", 4},
    {"TRUNC(2.9)", 2},
    {"FLOOR(-2.1)", -3},
    {"CEIL(2.1)", 3},
    {"ROUND(2.5)", 3},
    {"ROUND(-2.5)", -3},
    {"ROUND(25, -1)", 30},
    {"ROUND(MOST)", most},
    {"ROUND(MOST, 3)", most},
    {"FLOOR(MOST)", most},
    {"CEIL(MOST)", most},
    {"TRUNC(LEAST)", least},
    {"LG(1000)", 3},
    {"ROUND(ALMOST * 1.5)", 11},
};
INSTANTIATE_TEST_SUITE_P(Functions, IntegerArithmetic, testing::ValuesIn(functions));

struct FloatingRow {
    const char* text;
    double expected;
};

class FloatingArithmetic : public testing::TestWithParam<FloatingRow> {};

TEST_P(FloatingArithmetic, HasThisResult)
{
    const Number result = evaluate(GetParam().text, Arithmetic::floating, variables);
    EXPECT_FALSE(result.is_integer());
    if (std::isnan(GetParam().expected))
        EXPECT_TRUE(std::isnan(result.to_floating())) << GetParam().text;
    else
        EXPECT_DOUBLE_EQ(GetParam().expected, result.to_floating()) << GetParam().text;
}

const FloatingRow floating_rows[] = {
    {"1", 1},
    {"1 / 2", 0.5},
    {"SEVEN / TWO", 3.5},
    {"HALF + ALMOST", 8.4},
    {"7.5 % 2", 1.5},
    {"-7.5 % 2", -1.5},
    {"2 ** -1", 0.5},
    {"2 ** 0.5", std::sqrt(2.0)},
    {"9223372036854775807 + 1", 9223372036854775808.0},
    {"18446744073709551616", 18446744073709551616.0},
    {"0xFFFFFFFF", 4294967295.0},
    {"0xFFFFFFFFFFFFFFFF & 5", 5},
    {"2.9 & 3", 2},
    {"1.5 | 4", 5},
    {"3 ^ 1", 2},
    {"~2.9", -3},
    {"1 << 3.9", 8},
    {"-8 >> 1", -4},
    {"1.5 = 1.5", 1},
    {"1.5 <> 1.5", 0},
    {"1.5 < 2", 1},
    {"0.5 && 0.25", 1},
    {"0.0 || 0", 0},
    {"!0.5", 0},
    {"HALF ? 1.25 : 2", 1.25},
    {"PI", 3.14159265358979323846},
    {"E", 2.71828182845904523536},
    {"SGN(-0.5)", -1},
    {"NEG(0.5)", -0.5},
    {"ABS(-0.5)", 0.5},
    {"SQRT(2)", std::sqrt(2.0)},
    {"TRUNC(-2.5)", -2},
    {"FLOOR(-2.5)", -3},
    {"CEIL(-2.5)", -2},
    {"ROUND(2.5)", 3},
    {"ROUND(-0.4)", -0.0},
    {"ROUND(2.567, 1)", 2.6},
    {"ROUND(1234.5, -2)", 1200},
    {"ROUND(0.1, 400)", 0.1},
    {"ROUND(0.1, -400)", 0},
    {"SIN(1)", std::sin(1.0)},
    {"COS(1)", std::cos(1.0)},
    {"TAN(1)", std::tan(1.0)},
    {"ASIN(0.5)", std::asin(0.5)},
    {"ACOS(0.5)", std::acos(0.5)},
    {"ATAN(0.5)", std::atan(0.5)},
    {"EXP(2)", std::exp(2.0)},
    {"LN(10)", std::log(10.0)},
    {"LG(0.001)", -3},
    {"atan(0.5)", std::atan(0.5)},
    {"1 / ZERO", infinite},
    {"-1 / ZERO", -infinite},
    {"0 / ZERO", no_number},
    {"5 % ZERO", no_number},
    {"SQRT(-1)", no_number},
    {"LN(0)", -infinite},
    {"SGN(NAN)", no_number},
    {"NAN = NAN", 0},
    {"NAN <> NAN", 1},
    {"NAN < 1", 0},
    {"NAN ? 1 : 2", 1},
    {"ROUND(1 / ZERO, 2)", infinite},
    {"ROUND(1 / ZERO, -400)", infinite},
    {"1e308 * 10", infinite},
};
INSTANTIATE_TEST_SUITE_P(All, FloatingArithmetic, testing::ValuesIn(floating_rows));

struct ValueFaultRow {
    const char* text;
    Arithmetic arithmetic;
    std::size_t position;
    const char* what;
};

class WithoutResult : public testing::TestWithParam<ValueFaultRow> {};

TEST_P(WithoutResult, IsAnError)
{
    const ValueFaultRow& row = GetParam();
    const FormulaError error = error_of([&row] { evaluate(row.text, row.arithmetic, variables); });
    EXPECT_EQ(Fault::value, error.fault());
    EXPECT_EQ(row.position, error.position());
    EXPECT_STREQ(row.what, error.what());
}

constexpr char not_a_number[] = "a whole number is needed, but this is not a number";

const ValueFaultRow value_faults[] = {
    {"1 / 0", Arithmetic::integer, 2, "character 3: division by 0"},
    {"1 + SEVEN % ZERO", Arithmetic::integer, 10, "character 11: remainder of a division by 0"},
    {"LEAST / -1", Arithmetic::integer, 6, "character 7: division whose result does not fit into 64 bits"},
    {"0 ** -1", Arithmetic::integer, 2, "character 3: 0 to a negative power"},
    {"1 << -1", Arithmetic::integer, 2, "character 3: shift by a negative count"},
    {"1 >> -1", Arithmetic::integer, 2, "character 3: shift by a negative count"},
    {"1 << LEAST", Arithmetic::floating, 2, "character 3: shift by a negative count"},
    {"NAN", Arithmetic::integer, 0, "character 1: a whole number is needed, but this is not a number"},
    {"NAN & 1", Arithmetic::floating, 4, "character 5: a whole number is needed, but this is not a number"},
    {"SQRT(-1)", Arithmetic::integer, 0, "character 1: a whole number is needed, but this is not a number"},
    {"9223372036854775808.0", Arithmetic::integer, 0,
     "character 1: a whole number is needed, but this does not fit into 64 bits"},
    {"1 | 1e19", Arithmetic::floating, 2,
     "character 3: a whole number is needed, but this does not fit into 64 bits"},
    {"ROUND(1, 1e300)", Arithmetic::floating, 0,
     "character 1: a whole number is needed, but this does not fit into 64 bits"},
};
INSTANTIATE_TEST_SUITE_P(All, WithoutResult, testing::ValuesIn(value_faults));

TEST(Number, BecomesAWholeOneOnlyIfItFits)
{
    EXPECT_EQ(-3, Number::floating(-3.99).to_integer());
    EXPECT_EQ(most, Number::integer(most).to_integer());
    EXPECT_STREQ(("character 1: " + std::string(not_a_number)).c_str(),
                 error_of([] { Number::floating(no_number).to_integer(); }).what());
    EXPECT_EQ(Fault::value, error_of([] { Number::floating(infinite).to_integer(); }).fault());
    EXPECT_EQ(Fault::value, error_of([] { Number::floating(-1e19).to_integer(); }).fault());
}

} // namespace

} // namespace zvgenapi::formula
