#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "formula/Formula.h"

namespace zvgenapi::formula {

/// Compiles and evaluates a formula with variables of these names and values.
inline Number evaluate(std::string_view text, Arithmetic arithmetic,
                       const std::map<std::string, Number>& variables = {})
{
    Names names;
    std::vector<Number> values;
    for (const auto& [name, value] : variables) {
        names.add_variable(name, values.size());
        values.push_back(value);
    }
    StepBudget budget(100'000);
    const auto read = [&values](std::size_t index) { return values.at(index); };
    return Formula::compile(text, arithmetic, names).evaluate(read, budget);
}

/// What a statement throws; a failure of the test if it throws nothing.
template <class Statement>
FormulaError error_of(const Statement& statement)
{
    try {
        statement();
    } catch (const FormulaError& error) {
        return error;
    }
    ADD_FAILURE() << "nothing was thrown";
    return FormulaError(Fault::syntax, "nothing was thrown");
}

} // namespace zvgenapi::formula
