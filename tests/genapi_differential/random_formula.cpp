#include "genapi_differential/random_formula.h"

namespace zvgenapi::differential {

namespace {

using formula::Arithmetic;

constexpr const char* signs[] = {"-", "-", "+"};
constexpr const char* both_operators[] = {"+", "-", "*", "+", "-", "*", "=", "<>", "<", ">"};
constexpr const char* comparisons[] = {"=", "<>", "<", ">", "<=", ">="};
constexpr const char* conditions[] = {"&&", "||", " && "};
constexpr const char* bit_operators[] = {"&", "|", "^"};
constexpr const char* integer_literals[] = {"0",   "1",      "2",    "3",     "7",          "10",
                                            "255", "0x0F",   "0xff", "65536", "0x80000000", "1000000",
                                            "100", "0x7FFF", "12",   "64"};
constexpr const char* floating_literals[] = {"0.5", "1.25", "1e3", "2.5E-2", "3.",
                                             "0.1", "100",  "7",   "1",      "0"};
constexpr const char* functions[] = {"SGN", "NEG", "ABS",  "TRUNC", "FLOOR", "CEIL",
                                     "SIN", "COS", "ATAN", "Abs",   "floor", "EXP"};

class Writer {
public:
    Writer(Choices& choices, Arithmetic arithmetic, const std::vector<std::string>& variables)
        : m_choices(choices), m_arithmetic(arithmetic), m_variables(variables)
    {
    }

    std::string expression(int depth)
    {
        if (depth == 0)
            return leaf();
        switch (m_choices.below(10)) {
        case 0:
            return "(" + expression(depth - 1) + ")";
        case 1:
            return m_choices.one_of(signs) + primary(depth - 1);
        case 2:
            return condition(depth - 1);
        case 3:
            return expression(depth - 1) + " / " + divisor(depth - 1);
        case 4:
            return small(depth - 1);
        case 5:
            return is_integer() ? bits(depth - 1) : function(depth - 1);
        case 6:
            return leaf();
        case 7:
            return is_integer() ? expression(depth - 1) + m_choices.one_of(conditions) + expression(depth - 1)
                                : "(" + truth(depth - 1) + ")";
        default:
            return expression(depth - 1) + space() + m_choices.one_of(both_operators) + space() +
                   expression(depth - 1);
        }
    }

private:
    bool is_integer() const { return m_arithmetic == Arithmetic::integer; }
    std::string space() { return m_choices.percent(50) ? " " : ""; }

    std::string leaf()
    {
        if (!m_variables.empty() && m_choices.percent(60))
            return m_choices.one_of(m_variables);
        return is_integer() ? m_choices.one_of(integer_literals) : m_choices.one_of(floating_literals);
    }

    std::string primary(int depth) { return m_choices.percent(50) ? leaf() : "(" + expression(depth) + ")"; }

    /// What is 0 or 1: fractions would not count as true in the other library.
    std::string truth(int depth)
    {
        const std::string first = primary(depth) + m_choices.one_of(comparisons) + primary(depth);
        if (m_choices.percent(60))
            return first;
        return first + (m_choices.percent(50) ? " && " : " || ") + primary(depth) +
               m_choices.one_of(comparisons) + primary(depth);
    }

    std::string condition(int depth)
    {
        return "(" + truth(depth) + " ? " + expression(depth) + ":" + expression(depth) + ")";
    }

    /// Greater than 0.
    std::string divisor(int depth)
    {
        if (!is_integer() || m_choices.percent(50))
            return "(" + std::to_string(m_choices.below(30) + 1) + ")";
        return "((" + primary(depth) + " & 0xF) + 1)";
    }

    std::string bits(int depth)
    {
        return primary(depth) + space() + m_choices.one_of(bit_operators) + space() + primary(depth);
    }

    /// What needs small operands: shifts, powers and remainders. In brackets, so that they stay small.
    std::string small(int depth)
    {
        if (!is_integer())
            return "(" + primary(depth) + " ** " + std::to_string(m_choices.below(4)) + ")";
        switch (m_choices.below(4)) {
        case 0:
            return "(" + primary(depth) + " << " + std::to_string(m_choices.below(33)) + ")";
        case 1:
            return "(" + primary(depth) + " >> (" + primary(depth) + " & 31))";
        case 2:
            return "(" + primary(depth) + " % " + std::to_string(m_choices.below(30) + 1) + ")";
        default:
            return "((" + primary(depth) + " & 0xFF) ** " + std::to_string(m_choices.below(4)) + ")";
        }
    }

    std::string function(int depth)
    {
        if (m_choices.percent(15))
            return "SQRT(ABS(" + expression(depth) + "))";
        return m_choices.one_of(functions) + ("(" + expression(depth) + ")");
    }

    Choices& m_choices;
    Arithmetic m_arithmetic;
    const std::vector<std::string>& m_variables;
};

} // namespace

std::string random_formula(Choices& choices, Arithmetic arithmetic, const std::vector<std::string>& variables)
{
    return Writer(choices, arithmetic, variables).expression(static_cast<int>(choices.below(4)) + 1);
}

} // namespace zvgenapi::differential
