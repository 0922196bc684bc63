#pragma once

#include <string>

#include "formula/Formula.h"

namespace zvgenapi::formula {

/// Compiles a text of any kind and evaluates it in both kinds of arithmetic. The first line is the formula;
/// any other line "NAME=text" is an expression. FormulaError is a good answer, everything else that is thrown
/// is not. Returns whether there was a result.
inline bool try_formula(const std::string& text, Arithmetic arithmetic)
{
    Names names;
    names.add_variable("A", 0);
    names.add_variable("B.Min", 1);
    names.add_constant("C", "-0x80");
    const std::string_view all = text;
    const std::size_t first_end = all.find('\n');
    for (std::size_t end = first_end; end != std::string_view::npos;) {
        const std::size_t next = all.find('\n', end + 1);
        const std::string_view line =
            all.substr(end + 1, next == std::string_view::npos ? next : next - end - 1);
        const std::size_t equals = line.find('=');
        if (equals != std::string_view::npos)
            names.add_expression(line.substr(0, equals), line.substr(equals + 1));
        end = next;
    }
    const auto read = [](std::size_t index) {
        return index == 0 ? Number::integer(-9223372036854775807 - 1) : Number::floating(0.1);
    };
    try {
        StepBudget budget(100'000);
        Formula::compile(all.substr(0, first_end), arithmetic, names).evaluate(read, budget);
        return true;
    } catch (const FormulaError&) {
        return false;
    }
}

} // namespace zvgenapi::formula
