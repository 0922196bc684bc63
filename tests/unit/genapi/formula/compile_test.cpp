#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "unit/genapi/formula/evaluate.h"

namespace zvgenapi::formula {

namespace {

std::string repeated(const std::string& text, std::size_t times)
{
    std::string all;
    for (std::size_t i = 0; i < times; ++i)
        all += text;
    return all;
}

struct FaultRow {
    const char* text;
    Fault fault;
    std::size_t position;
    const char* what;
};

class MalformedFormula : public testing::TestWithParam<FaultRow> {};

TEST_P(MalformedFormula, IsRejectedWithThePlace)
{
    const FaultRow& row = GetParam();
    const FormulaError error = error_of([&row] { evaluate(row.text, Arithmetic::integer); });
    EXPECT_EQ(row.fault, error.fault());
    EXPECT_EQ(row.position, error.position());
    EXPECT_STREQ(row.what, error.what());
}

const FaultRow faults[] = {
    {"", Fault::syntax, 0, "character 1: a value is expected at the end"},
    {"  ", Fault::syntax, 2, "character 3: a value is expected at the end"},
    {"1 +", Fault::syntax, 3, "character 4: a value is expected at the end"},
    {"1 + * 2", Fault::syntax, 4, "character 5: a value is expected, not \"*\""},
    {"1 2", Fault::syntax, 2, "character 3: an operator is expected, not \"2\""},
    {"(1", Fault::syntax, 2, "character 3: \")\" is expected at the end"},
    {"1)", Fault::syntax, 1, "character 2: an operator is expected, not \")\""},
    {"1 ? 2", Fault::syntax, 5, "character 6: \":\" is expected at the end"},
    {"1 : 2", Fault::syntax, 2, "character 3: an operator is expected, not \":\""},
    {"()", Fault::syntax, 1, "character 2: a value is expected, not \")\""},
    {"1 # 2", Fault::syntax, 2, "character 3: a character that has no meaning in formulas"},
    {".", Fault::syntax, 0, "character 1: a character that has no meaning in formulas"},
    {"12a", Fault::syntax, 2, "character 3: a number that goes on with a letter, a digit or a point"},
    {"1.2.3", Fault::syntax, 3, "character 4: a number that goes on with a letter, a digit or a point"},
    {"1e", Fault::syntax, 1, "character 2: a number that goes on with a letter, a digit or a point"},
    {"0x", Fault::syntax, 1, "character 2: a number that goes on with a letter, a digit or a point"},
    {"0x1G", Fault::syntax, 3, "character 4: a number that goes on with a letter, a digit or a point"},
    {"0x10000000000000000", Fault::value, 0, "character 1: a number of more than 64 bits"},
    {"18446744073709551616", Fault::value, 0, "character 1: a number of more than 64 bits"},
    {"1e999", Fault::value, 0, "character 1: a number that is too large or too small"},
    {"1 + FOO", Fault::unknown_name, 4, "character 5: nothing is named FOO"},
    {"pi", Fault::unknown_name, 0, "character 1: nothing is named pi"},
    {"FOO(1)", Fault::unknown_name, 0, "character 1: no function is named FOO"},
    {"SIN", Fault::unknown_name, 0, "character 1: nothing is named SIN"},
    {"SIN()", Fault::syntax, 4, "character 5: a value is expected, not \")\""},
    {"SIN(1, 2)", Fault::syntax, 5, "character 6: SIN takes one argument, not \",\""},
    {"ROUND(1, 2, 3)", Fault::syntax, 10, "character 11: ROUND takes one or two arguments, not \",\""},
    {"SIN(1", Fault::syntax, 5, "character 6: \")\" is expected at the end"},
    {"1, 2", Fault::syntax, 1, "character 2: an operator is expected, not \",\""},
    {"1 ~ 2", Fault::syntax, 2, "character 3: an operator is expected, not \"~\""},
};
INSTANTIATE_TEST_SUITE_P(All, MalformedFormula, testing::ValuesIn(faults));

/// Two variables and what was read of them.
class FormulaNames : public testing::Test {
protected:
    void SetUp() override
    {
        names.add_variable("A", 10);
        names.add_variable("B", 11);
    }

    std::int64_t value(std::string_view text)
    {
        reads.clear();
        const auto read = [this](std::size_t index) {
            reads.push_back(index);
            return Number::integer(static_cast<std::int64_t>(index));
        };
        return Formula::compile(text, Arithmetic::integer, names).evaluate(read, budget).to_integer();
    }

    Names names;
    StepBudget budget{1'000'000};
    std::vector<std::size_t> reads;
};

TEST_F(FormulaNames, AreThoseOfVariablesConstantsAndExpressions)
{
    names.add_constant("C", " -0x10 ");
    names.add_constant("HALF", "0.5");
    names.add_expression("SUM", "A + B + C");
    names.add_expression("DOUBLE", "SUM * 2");
    EXPECT_EQ(-16, value("C"));
    EXPECT_EQ(5, value("A * HALF"));
    EXPECT_EQ(5, value("SUM"));
    EXPECT_EQ(1 + 10 + 5, value("1 + DOUBLE + SUM"));
}

TEST_F(FormulaNames, PrecedePiAndE)
{
    names.add_constant("PI", "4");
    names.add_constant("E", "5");
    EXPECT_EQ(9, value("PI + E"));
}

TEST_F(FormulaNames, MayBeThoseOfFunctions)
{
    names.add_constant("ABS", "-4");
    EXPECT_EQ(4, value("ABS(ABS)"));
}

TEST_F(FormulaNames, KeepTheirFirstMeaning)
{
    EXPECT_FALSE(names.add_constant("A", "1"));
    EXPECT_FALSE(names.add_expression("A", "1"));
    EXPECT_FALSE(names.add_variable("A", 1));
    EXPECT_TRUE(names.add_variable("a", 1));
    EXPECT_EQ(11, value("A + a"));
}

TEST_F(FormulaNames, EachVariableIsReadOnce)
{
    names.add_expression("TWICE", "A + A");
    EXPECT_EQ(10 * 7, value("A + TWICE + A + TWICE + A"));
    EXPECT_EQ(std::vector<std::size_t>{10}, reads);
}

struct BranchRow {
    const char* text;
    std::vector<std::size_t> reads;
};

TEST_F(FormulaNames, OnlyTheBranchThatIsTakenIsRead)
{
    names.add_expression("READ_A", "A");
    const BranchRow rows[] = {
        {"1 ? A : B", {10}},
        {"0 ? A : B", {11}},
        {"0 && A", {}},
        {"1 && A", {10}},
        {"1 || A", {}},
        {"0 || A", {10}},
        {"1 ? B : READ_A", {11}},
        {"0 ? B : READ_A", {10}},
        {"0 ? A : 0 ? B : 1", {}},
        {"0 && READ_A || B", {11}},
        {"1 || A && B", {}},
        {"(1 ? B : A) + (0 ? A : 2)", {11}},
        {"1 ? 5 : A / 0", {}},
        {"A = 10 || B", {10}},
        {"(0 ? READ_A : B) + READ_A", {11, 10}},
        {"1 ? 2 : 1 ? A : B", {}},
        {"0 ? A : 1 ? B : A", {11}},
    };
    for (const auto& row : rows) {
        value(row.text);
        EXPECT_EQ(row.reads, reads) << row.text;
    }
}

TEST_F(FormulaNames, ThoseThatAreUsedAreListed)
{
    names.add_expression("READ_B", "B");
    const auto used = [this](std::string_view text) {
        return Formula::compile(text, Arithmetic::floating, names).variables();
    };
    EXPECT_EQ(std::vector<std::size_t>(), used("1"));
    EXPECT_EQ((std::vector<std::size_t>{11, 10}), used("READ_B + A * A"));
    EXPECT_EQ((std::vector<std::size_t>{10}), used("0 ? A : 1"));
}

TEST_F(FormulaNames, AFaultOfAnExpressionNamesIt)
{
    names.add_expression("BAD", "1 +");
    names.add_expression("USES_BAD", "2 * BAD");
    names.add_expression("ZERO", "1 + 1 / (A - 10)");
    EXPECT_STREQ("expression BAD, character 4: a value is expected at the end",
                 error_of([this] { value("1 + USES_BAD"); }).what());
    EXPECT_STREQ("expression ZERO, character 7: division by 0",
                 error_of([this] { value("B * ZERO"); }).what());
}

TEST_F(FormulaNames, AConstantMustBeANumber)
{
    for (const char* const text : {"", "A", "1 + 1", "--1", "-"}) {
        Names constants;
        constants.add_constant("C", text);
        const FormulaError error =
            error_of([&constants] { Formula::compile("1 + C", Arithmetic::integer, constants); });
        EXPECT_EQ(Fault::syntax, error.fault()) << text;
        EXPECT_EQ(4u, error.position()) << text;
    }
    names.add_constant("HUGE", "0x10000000000000000");
    EXPECT_STREQ("character 1: HUGE is a number of more than 64 bits",
                 error_of([this] { value("HUGE"); }).what());
}

TEST_F(FormulaNames, AnExpressionThatUsesItselfIsACycle)
{
    names.add_expression("X", "1 + Y");
    names.add_expression("Y", "A ? Z : 1");
    names.add_expression("Z", "2 * Y");
    names.add_expression("SELF", "SELF");
    const FormulaError error = error_of([this] { value("X"); });
    EXPECT_EQ(Fault::cycle, error.fault());
    EXPECT_STREQ("expression Z, character 5: an expression uses itself: Y -> Z -> Y", error.what());
    EXPECT_EQ(Fault::cycle, error_of([this] { value("SELF"); }).fault());
    EXPECT_EQ(10, value("A")) << "cycles that are not used do not matter";
}

TEST_F(FormulaNames, ExpressionsThatUseOneAnotherTwiceAreEvaluatedOnce)
{
    // Inserted into one another, they would be 2 to the power of 60 instructions.
    std::vector<std::string> texts;
    for (int i = 0; i < 60; ++i)
        texts.push_back("X" + std::to_string(i));
    std::vector<std::string> sums;
    for (const auto& text : texts)
        sums.push_back(text + " + " + text);
    names.add_constant("X0", "1");
    for (std::size_t i = 1; i < texts.size(); ++i)
        names.add_expression(texts[i], sums[i - 1]);
    EXPECT_EQ(std::int64_t{1} << 59U, value("X59"));
    EXPECT_GT(1'000'000u - budget.left(), 59u);
    EXPECT_LT(1'000'000u - budget.left(), 1000u);
}

TEST_F(FormulaNames, WhatTheReaderThrowsIsPassedOn)
{
    const Formula formula = Formula::compile("1 + A", Arithmetic::integer, names);
    const auto read = [](std::size_t) -> Number { throw std::out_of_range("not there"); };
    EXPECT_THROW(formula.evaluate(read, budget), std::out_of_range);
}

TEST_F(FormulaNames, StepsAreTakenFromTheBudget)
{
    const Formula formula = Formula::compile("A + B", Arithmetic::integer, names);
    const auto read = [](std::size_t) { return Number::integer(1); };
    StepBudget enough(3);
    formula.evaluate(read, enough);
    EXPECT_EQ(0u, enough.left());
    StepBudget small(2);
    EXPECT_EQ(Fault::limit, error_of([&] { formula.evaluate(read, small); }).fault());
    EXPECT_EQ(0u, small.left());
}

TEST(FormulaLimits, TextAndInstructionsAreCounted)
{
    Names names;
    names.add_expression("X", "1 + 1 + 1 + 1");
    FormulaLimits limits;
    limits.text = 14;
    EXPECT_NO_THROW(Formula::compile("X", Arithmetic::integer, names, limits));
    EXPECT_EQ(Fault::limit,
              error_of([&] { Formula::compile("X+1", Arithmetic::integer, names, limits); }).fault());
    limits = {};
    limits.instructions = 10;
    EXPECT_NO_THROW(Formula::compile("X", Arithmetic::integer, names, limits));
    EXPECT_EQ(Fault::limit,
              error_of([&] { Formula::compile("-X", Arithmetic::integer, names, limits); }).fault());
}

TEST(FormulaLimits, EveryKindOfNestingIsCounted)
{
    struct {
        const char* open;
        const char* close;
        std::size_t levels; // of each repetition
    } const rows[] = {{"(", ")", 1},   {"-", "", 1},    {"ABS(", ")", 1},  {"1 ? ", ": 0", 1},
                      {"2 **", "", 1}, {"1+(", ")", 2}, {"0 || (", ")", 2}};
    FormulaLimits limits;
    limits.nesting = 101; // the formula itself is a level, too
    for (const auto& row : rows) {
        const auto compile = [&](std::size_t times) {
            const std::string text = repeated(row.open, times) + "1" + repeated(row.close, times);
            Formula::compile(text, Arithmetic::integer, {}, limits);
        };
        EXPECT_NO_THROW(compile(100 / row.levels)) << row.open;
        EXPECT_EQ(Fault::limit, error_of([&] { compile(100 / row.levels + 1); }).fault()) << row.open;
        EXPECT_EQ(Fault::limit, error_of([&] { compile(10'000); }).fault()) << row.open;
    }
}

TEST(FormulaLimits, ExpressionsAreNestedInWhatUsesThem)
{
    Names names;
    names.add_expression("X", "((1))");
    FormulaLimits limits;
    limits.nesting = 4;
    EXPECT_NO_THROW(Formula::compile("X", Arithmetic::integer, names, limits));
    limits.nesting = 3;
    EXPECT_EQ(Fault::limit,
              error_of([&] { Formula::compile("X", Arithmetic::integer, names, limits); }).fault());
}

TEST(FormulaLimits, ExpressionsWithinOneAnotherAreCounted)
{
    Names names;
    names.add_expression("X", "Y");
    names.add_expression("Y", "Z");
    names.add_expression("Z", "1");
    FormulaLimits limits;
    limits.expressions = 3;
    EXPECT_NO_THROW(Formula::compile("X", Arithmetic::integer, names, limits));
    limits.expressions = 2;
    EXPECT_EQ(Fault::limit,
              error_of([&] { Formula::compile("X", Arithmetic::integer, names, limits); }).fault());
    EXPECT_NO_THROW(Formula::compile("Y", Arithmetic::integer, names, limits));
}

TEST(FormulaLimits, ChainsAreNotNested)
{
    EXPECT_EQ(10'001, evaluate(repeated("1 + ", 10'000) + "1", Arithmetic::integer).to_integer());
    EXPECT_EQ(3, evaluate(repeated("0 ? 1 : ", 5'000) + "3", Arithmetic::integer).to_integer());
    EXPECT_EQ(1, evaluate(repeated("0 || ", 5'000) + "3", Arithmetic::integer).to_integer());
}

TEST(FormulaLimits, ChoicesInBracketsMayBeAsManyAsDescriptionsHave)
{
    std::string text = "A = 0 ? 1000";
    for (int i = 1; i < 400; ++i)
        text += " : ((A = " + std::to_string(i) + ") ? " + std::to_string(1000 + i);
    text += " : 0" + repeated(")", 399);
    EXPECT_EQ(1399, evaluate(text, Arithmetic::integer, {{"A", Number::integer(399)}}).to_integer());
}

TEST(FormulaLimits, ValuesMayWaitInGreatNumber)
{
    EXPECT_EQ(201,
              evaluate(repeated("1 + (", 200) + "1" + repeated(")", 200), Arithmetic::integer).to_integer());
}

} // namespace

} // namespace zvgenapi::formula
