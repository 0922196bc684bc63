#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "formula/Formula.h"
#include "formula/Number.h"

namespace zvgenapi::formula {

/// What an instruction does with the stack, and what its operand means.
enum class Action : std::uint8_t {
    finish,     ///< the value on top is the result
    literal,    ///< pushes that literal
    variable,   ///< pushes the value of that variable
    expression, ///< pushes the value of that expression, which is evaluated if that has not happened yet
    end_of_expression,
    calculate_one, ///< replaces the value on top: a row of the table of operations
    calculate_two, ///< replaces the two values on top
    to_truth,      ///< makes the value on top 0 or 1
    jump,          ///< goes on that many instructions later
    jump_if_false, ///< takes a value off and jumps, or does not
    skip_if_false, ///< &&: makes the value on top 0 and jumps, or takes it off
    skip_if_true   ///< ||: makes the value on top 1 and jumps, or takes it off
};

struct Instruction {
    Action action;
    std::uint32_t text; ///< from which text it comes: 0 for the formula, else an expression, counted from 1
    std::uint32_t position;
    std::uint32_t operand;
};

/// Of a formula that is compiled. Jumps only lead forwards and every expression is evaluated once, so no
/// evaluation takes more steps than there are instructions.
struct Program {
    struct Expression {
        std::string name;
        std::size_t start; ///< its first instruction
    };

    Arithmetic arithmetic{Arithmetic::integer};
    std::vector<Instruction> code;
    std::vector<Number> literals;
    std::vector<std::size_t> variables;
    std::vector<Expression> expressions;
    std::size_t stack{0}; ///< values at a time

    /// For an evaluation: one for each variable and each expression, one before the stack, the stack.
    std::size_t cells() const noexcept { return variables.size() + expressions.size() + 1 + stack; }
};

} // namespace zvgenapi::formula
