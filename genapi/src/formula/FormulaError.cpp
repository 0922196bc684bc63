#include "formula/FormulaError.h"

namespace zvgenapi::formula {

namespace {

std::string located(const std::string& what, std::size_t position, const std::string& expression)
{
    const std::string place = "character " + std::to_string(position + 1) + ": " + what;
    return expression.empty() ? place : "expression " + expression + ", " + place;
}

} // namespace

FormulaError::FormulaError(Fault fault, const std::string& what, std::size_t position,
                           const std::string& expression)
    : std::runtime_error(located(what, position, expression)), m_fault(fault), m_position(position)
{
}

} // namespace zvgenapi::formula
