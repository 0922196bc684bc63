#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace zvgenapi::formula {

/// What is wrong with a formula or its evaluation.
enum class Fault {
    syntax,       ///< the text is not a formula
    unknown_name, ///< no variable, constant, expression or function has this name
    cycle,        ///< an expression uses itself
    limit,        ///< too long, nested too deeply, or too many steps
    value         ///< no result: division by zero, a whole number that is none, ...
};

/// The only error of this folder, apart from std::bad_alloc and what a reader of variables throws, which is
/// passed on.
class FormulaError : public std::runtime_error {
public:
    /// @param position where in the text, counted from 0
    /// @param expression the name of the expression whose text it is; empty for the formula itself
    FormulaError(Fault fault, const std::string& what, std::size_t position = 0,
                 const std::string& expression = {});

    Fault fault() const noexcept { return m_fault; }
    std::size_t position() const noexcept { return m_position; }

private:
    Fault m_fault;
    std::size_t m_position;
};

} // namespace zvgenapi::formula
