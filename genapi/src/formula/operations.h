#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "formula/Number.h"

namespace zvgenapi::formula {

/// How an operation is written.
enum class Form : std::uint8_t { between, before, function };

/// An operator or a function. It throws NoResult.
struct Operation {
    std::string_view name;
    Form form;
    std::uint8_t precedence; ///< of an operator between two values: a higher one binds more tightly
    std::uint8_t least;      ///< arguments of a function
    std::uint8_t most;
    Number (*calculate)(const Number& first,
                        const Number& second); ///< the second one is 0 if it is not given
};

/// The highest precedence, the only one whose operators group from the right.
constexpr std::uint8_t power_precedence = 11;

/// && and || are operators, too, but not all of their operands are evaluated.
constexpr std::uint8_t or_precedence = 1;
constexpr std::uint8_t and_precedence = 2;

/// Where the operation is in the table, or no_operation. Case does not matter to functions.
std::size_t find_operation(Form form, std::string_view name);
constexpr std::size_t no_operation = static_cast<std::size_t>(-1);

const Operation& operation(std::size_t index) noexcept;

} // namespace zvgenapi::formula
