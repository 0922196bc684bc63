#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "unit/genapi/Mutator.h"
#include "unit/genapi/formula/try_formula.h"

namespace zvgenapi::formula {

namespace {

const std::vector<std::string_view> pieces = {"A",
                                              "B.Min",
                                              "C",
                                              "X",
                                              "Y",
                                              "PI",
                                              "E",
                                              "\nX=",
                                              "\nY=",
                                              "(",
                                              ")",
                                              ",",
                                              "?",
                                              ":",
                                              "**",
                                              "<<",
                                              ">>",
                                              "<=",
                                              ">=",
                                              "<>",
                                              "==",
                                              "!=",
                                              "&&",
                                              "||",
                                              "+",
                                              "-",
                                              "*",
                                              "/",
                                              "%",
                                              "&",
                                              "|",
                                              "^",
                                              "~",
                                              "!",
                                              "<",
                                              ">",
                                              "=",
                                              "0",
                                              "1",
                                              "-1",
                                              "63",
                                              "64",
                                              ".5",
                                              "1e308",
                                              "1e-9",
                                              "0x",
                                              "0xFF",
                                              "SGN(",
                                              "NEG(",
                                              "ABS(",
                                              "LN(",
                                              "LG(",
                                              "TAN",
                                              "SIN(",
                                              "COS(",
                                              "EXP(",
                                              "SQRT(",
                                              "CEIL",
                                              "ROUND(",
                                              "TRUNC(",
                                              "FLOOR(",
                                              "ASIN(",
                                              "ACOS(",
                                              "ATAN(",
                                              "0x8000000000000000",
                                              "9223372036854775807",
                                              "18446744073709551615"};

const std::vector<std::string> formulas = {
    "(A & 0xFF) << 8 | (A >> 8) & 0xFF",
    "A > 0 ? 10 * LG(A) : -1e3",
    "ROUND(X * 1.5, 2)\nX=Y + 1\nY=A ** 2",
    "(B.Min = 0) ? 1 : (B.Min = 1) ? 2 : (B.Min <> 3) ? SQRT(A) : TRUNC(B.Min / 2.0)",
    "((A && X) || !(B.Min ^ 3)) + ~C - NEG(E) * PI % 7\nX=A - B.Min",
    "A / C + A % C",
    "FLOOR(ATAN(A) * 57.2957795) >= CEIL(B.Min) && ABS(A) <= 9223372036854775807",
};

TEST(FormulaFuzz, EveryTextHasAResultOrAFormulaError)
{
    Mutator mutator(2024, pieces);
    std::vector<std::string> texts = formulas;
    texts.resize(500, "A");
    std::size_t results = 0;
    for (int i = 0; i < 40'000; ++i) {
        const std::string text = mutator.mutate(mutator.one_of(texts), mutator.one_of(texts));
        const bool is_integer_formula = try_formula(text, Arithmetic::integer);
        if (!try_formula(text, Arithmetic::floating) && !is_integer_formula)
            continue;
        ++results;
        if (text.size() < 2000)
            texts[formulas.size() + mutator.below(texts.size() - formulas.size())] = text;
    }
    EXPECT_GT(results, 1000u) << "most texts are not formulas, but many must be";
}

} // namespace

} // namespace zvgenapi::formula
