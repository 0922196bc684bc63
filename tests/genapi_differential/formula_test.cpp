#include <cmath>
#include <iomanip>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <arv.h>
#include <gtest/gtest.h>

#include "formula/Formula.h"
#include "genapi_differential/Choices.h"
#include "genapi_differential/random_formula.h"

namespace zvgenapi::differential {

namespace {

using formula::Arithmetic;
using formula::Formula;
using formula::FormulaError;
using formula::Number;

/// What came out of an evaluation: a number or the text of an error.
struct Result {
    std::optional<Number> number;
    std::string error;
};

struct Variable {
    std::string name;
    Number value;
};

Result ours(const std::string& text, Arithmetic arithmetic, const std::vector<Variable>& variables)
{
    formula::Names names;
    for (std::size_t i = 0; i < variables.size(); ++i)
        names.add_variable(variables[i].name, i);
    formula::StepBudget budget(1'000'000);
    const auto read = [&variables](std::size_t index) { return variables[index].value; };
    try {
        return {Formula::compile(text, arithmetic, names).evaluate(read, budget), {}};
    } catch (const FormulaError& error) {
        return {{}, error.what()};
    }
}

struct Release {
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};

Result theirs(const std::string& text, Arithmetic arithmetic, const std::vector<Variable>& variables)
{
    const std::unique_ptr<ArvEvaluator, Release> evaluator(arv_evaluator_new(text.c_str()));
    for (const auto& [name, value] : variables)
        if (value.is_integer())
            arv_evaluator_set_int64_variable(evaluator.get(), name.c_str(), value.to_integer());
        else
            arv_evaluator_set_double_variable(evaluator.get(), name.c_str(), value.to_floating());
    GError* error = nullptr;
    const Number number = arithmetic == Arithmetic::integer
                              ? Number::integer(arv_evaluator_evaluate_as_int64(evaluator.get(), &error))
                              : Number::floating(arv_evaluator_evaluate_as_double(evaluator.get(), &error));
    if (error == nullptr)
        return {number, {}};
    const std::string message = error->message;
    g_clear_error(&error);
    return {{}, message};
}

std::string digits_of(double value)
{
    std::ostringstream text;
    text << std::setprecision(17) << value;
    return text.str();
}

std::string shown(const Result& result)
{
    if (!result.number)
        return result.error;
    return result.number->is_integer() ? std::to_string(result.number->to_integer())
                                       : digits_of(result.number->to_floating());
}

bool contains(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

bool is_same(const Result& a, const Result& b)
{
    if (!a.number || !b.number)
        return !a.number && !b.number;
    if (a.number->is_integer())
        return b.number->is_integer() && a.number->to_integer() == b.number->to_integer();
    const double x = a.number->to_floating();
    const double y = b.number->to_floating();
    return x == y || (std::isnan(x) && std::isnan(y));
}

/// Why two results may differ.
struct KnownDifference {
    const char* reason;
    bool (*applies)(const std::string& text, Arithmetic arithmetic, const Result& ours, const Result& theirs);
};

constexpr KnownDifference known_differences[] = {
    {"the other library takes any value for a whole number, even where none fits",
     [](const std::string&, Arithmetic, const Result& ours, const Result&) {
         return contains(ours.error, "a whole number is needed");
     }},
};

const KnownDifference* known_difference(const std::string& text, Arithmetic arithmetic, const Result& our,
                                        const Result& their)
{
    for (const auto& row : known_differences)
        if (row.applies(text, arithmetic, our, their))
            return &row;
    return nullptr;
}

void compare(std::uint32_t seed, Arithmetic arithmetic, std::size_t& numbers)
{
    Choices choices(seed);
    std::vector<Variable> variables{
        {"A", Number::integer(choices.between(-20, 20))},
        {"B.Value", Number::integer(choices.between(-100'000, 100'000))},
        {"C_3", Number::integer(arithmetic == Arithmetic::integer ? static_cast<std::int64_t>(choices.bits())
                                                                  : choices.between(-5, 5))},
        {"D", Number::floating(static_cast<double>(choices.between(-999, 999)) / 8)}};
    std::vector<std::string> names;
    for (const auto& variable : variables)
        names.push_back(variable.name);
    const std::string text = random_formula(choices, arithmetic, names);
    const Result our = ours(text, arithmetic, variables);
    const Result their = theirs(text, arithmetic, variables);
    numbers += our.number ? 1 : 0;
    if (is_same(our, their) || known_difference(text, arithmetic, our, their) != nullptr)
        return;
    ADD_FAILURE() << "seed " << seed << ": " << text << "\n  A = " << shown({variables[0].value, {}})
                  << ", B.Value = " << shown({variables[1].value, {}})
                  << ", C_3 = " << shown({variables[2].value, {}})
                  << ", D = " << shown({variables[3].value, {}}) << "\n  ours:   " << shown(our)
                  << "\n  theirs: " << shown(their);
}

TEST(FormulaDifferential, WholeNumbers)
{
    std::size_t numbers = 0;
    for (std::uint32_t seed = 0; seed < 20'000 && !HasFailure(); ++seed)
        compare(seed, Arithmetic::integer, numbers);
    EXPECT_GT(numbers, 15'000u);
}

TEST(FormulaDifferential, FloatingNumbers)
{
    std::size_t numbers = 0;
    for (std::uint32_t seed = 0; seed < 20'000 && !HasFailure(); ++seed)
        compare(seed, Arithmetic::floating, numbers);
    EXPECT_GT(numbers, 15'000u);
}

/// Formulas that the random ones leave out, because the other library's results differ.
struct PinnedDifference {
    const char* text;
    Arithmetic arithmetic;
    const char* ours;
    const char* theirs;
    const char* reason;
};

constexpr PinnedDifference pinned_differences[] = {
    {"0.1 && 1", Arithmetic::floating, "1", "0", "only 0 is false"},
    {"0.1 ? 2 : 3", Arithmetic::floating, "2", "3", "only 0 is false"},
    {"7.5 % 2", Arithmetic::floating, "1.5", "1", "a floating remainder has a fraction"},
    {"1.5 * 2", Arithmetic::integer, "3", "2", "the fraction of a literal is there for a reason"},
    {"ABS(-3)", Arithmetic::integer, "3", "Parsing error (invalid double function)",
     "functions of whole numbers"},
    {"SQRT(16)", Arithmetic::integer, "4", "Parsing error (invalid double function)",
     "functions of whole numbers"},
    {"(7) < ROUND(2.567, 1)", Arithmetic::floating, "0", "Parsing error (remaining operands)",
     "two arguments"},
    {"((1 ? (2) : ROUND(3))) ** 2", Arithmetic::floating, "4", "Parsing error (missing arguments)",
     "one argument"},
    {"1 ? 0 ? 3 : 1 ? 3 : 4 : 5", Arithmetic::integer, "3", "0", "a choice between the signs of another one"},
    {"1 ? 5 : 1 / 0", Arithmetic::integer, "5", "Parsing error (division by zero)",
     "only the branch that is taken counts"},
    {"0 && 1 / 0", Arithmetic::integer, "0", "Parsing error (division by zero)",
     "only the branch that is taken counts"},
    {"1 / 0", Arithmetic::floating, "inf", "Parsing error (division by zero)",
     "IEEE 754 has a result for it"},
    {"1 << 64", Arithmetic::integer, "0", "1", "no bit is left"},
    {"1 >> 64", Arithmetic::integer, "0", "1", "no bit is left"},
    {"0xFFFFFFFFFFFFFFFF", Arithmetic::integer, "-1", "-9223372036854775808", "all 64 bits may be given"},
    {"1.7", Arithmetic::floating, "1.7", "1.7000000000000002", "the nearest double"},
    {"010", Arithmetic::integer, "10", "8", "numbers are decimal or hexadecimal"},
    {".5", Arithmetic::floating, "0.5", "Parsing error (unknown variable)",
     "a number may start with its point"},
    {"1 == 1", Arithmetic::integer, "1", "Parsing error (missing arguments)", "descriptions use it"},
    {"1 != 1", Arithmetic::integer, "0", "Parsing error (syntax error)", "descriptions use it"},
    {"!0", Arithmetic::integer, "1", "Parsing error (syntax error)", "descriptions use it"},
    {"E()", Arithmetic::floating, "character 1: no function is named E", "2.7182818284590451",
     "it is a constant"},
    {"1e19 & 1", Arithmetic::floating,
     "character 6: a whole number is needed, but this does not fit into 64 bits", "0",
     "no result is better than a wrong one"},
};

TEST(FormulaDifferential, PinnedDifferences)
{
    for (const auto& row : pinned_differences) {
        EXPECT_EQ(row.ours, shown(ours(row.text, row.arithmetic, {}))) << row.text << ": " << row.reason;
        EXPECT_EQ(row.theirs, shown(theirs(row.text, row.arithmetic, {}))) << row.text;
    }
}

} // namespace

} // namespace zvgenapi::differential
