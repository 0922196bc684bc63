#include "formula/operations.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <iterator>

#include "formula/arithmetic.h"

namespace zvgenapi::formula {

namespace {

Number truth(bool value) { return Number::integer(value ? 1 : 0); }

/// Two whole numbers are compared with all their bits.
template <template <class> class Comparison>
Number compare(const Number& a, const Number& b)
{
    if (a.is_integer() && b.is_integer())
        return truth(Comparison<std::int64_t>()(a.to_integer(), b.to_integer()));
    return truth(Comparison<double>()(a.to_floating(), b.to_floating()));
}

using Function = double (*)(double);

template <Function function>
Number of_real(const Number& a, const Number&)
{
    return Number::floating(function(a.to_floating()));
}

/// What is whole already stays as it is.
template <Function function>
Number to_whole(const Number& a, const Number&)
{
    return a.is_integer() ? a : Number::floating(function(a.to_floating()));
}

template <Number (*calculation)(const Number&)>
Number of_one(const Number& a, const Number&)
{
    return calculation(a);
}

Number unchanged(const Number& a, const Number&) { return a; }

Number logical_not(const Number& a, const Number&) { return truth(!a.is_true()); }

constexpr Operation operations[] = {
    {"|", Form::between, 3, 2, 2, bit_or},
    {"^", Form::between, 4, 2, 2, bit_xor},
    {"&", Form::between, 5, 2, 2, bit_and},
    {"=", Form::between, 6, 2, 2, compare<std::equal_to>},
    {"==", Form::between, 6, 2, 2, compare<std::equal_to>},
    {"<>", Form::between, 6, 2, 2, compare<std::not_equal_to>},
    {"!=", Form::between, 6, 2, 2, compare<std::not_equal_to>},
    {"<", Form::between, 7, 2, 2, compare<std::less>},
    {">", Form::between, 7, 2, 2, compare<std::greater>},
    {"<=", Form::between, 7, 2, 2, compare<std::less_equal>},
    {">=", Form::between, 7, 2, 2, compare<std::greater_equal>},
    {"<<", Form::between, 8, 2, 2, shift_left},
    {">>", Form::between, 8, 2, 2, shift_right},
    {"+", Form::between, 9, 2, 2, add},
    {"-", Form::between, 9, 2, 2, subtract},
    {"*", Form::between, 10, 2, 2, multiply},
    {"/", Form::between, 10, 2, 2, divide},
    {"%", Form::between, 10, 2, 2, remainder},
    {"**", Form::between, power_precedence, 2, 2, power},

    {"+", Form::before, 0, 1, 1, unchanged},
    {"-", Form::before, 0, 1, 1, of_one<negate>},
    {"~", Form::before, 0, 1, 1, of_one<bit_not>},
    {"!", Form::before, 0, 1, 1, logical_not},

    {"SGN", Form::function, 0, 1, 1, of_one<sign>},
    {"NEG", Form::function, 0, 1, 1, of_one<negate>},
    {"ABS", Form::function, 0, 1, 1, of_one<absolute>},
    {"SQRT", Form::function, 0, 1, 1, of_real<std::sqrt>},
    {"TRUNC", Form::function, 0, 1, 1, to_whole<std::trunc>},
    {"FLOOR", Form::function, 0, 1, 1, to_whole<std::floor>},
    {"CEIL", Form::function, 0, 1, 1, to_whole<std::ceil>},
    {"ROUND", Form::function, 0, 1, 2, round},
    {"SIN", Form::function, 0, 1, 1, of_real<std::sin>},
    {"COS", Form::function, 0, 1, 1, of_real<std::cos>},
    {"TAN", Form::function, 0, 1, 1, of_real<std::tan>},
    {"ASIN", Form::function, 0, 1, 1, of_real<std::asin>},
    {"ACOS", Form::function, 0, 1, 1, of_real<std::acos>},
    {"ATAN", Form::function, 0, 1, 1, of_real<std::atan>},
    {"EXP", Form::function, 0, 1, 1, of_real<std::exp>},
    {"LN", Form::function, 0, 1, 1, of_real<std::log>},
    {"LG", Form::function, 0, 1, 1, of_real<std::log10>},
};

/// Without regard to the locale.
char to_upper(char letter)
{
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

bool is_same_in_capitals(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return to_upper(x) == to_upper(y); });
}

} // namespace

std::size_t find_operation(Form form, std::string_view name)
{
    const auto* const row =
        std::find_if(std::begin(operations), std::end(operations), [form, name](const Operation& candidate) {
            return candidate.form == form && is_same_in_capitals(candidate.name, name);
        });
    return row == std::end(operations) ? no_operation
                                       : static_cast<std::size_t>(row - std::begin(operations));
}

const Operation& operation(std::size_t index) noexcept { return operations[index]; }

} // namespace zvgenapi::formula
