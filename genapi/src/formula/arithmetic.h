#pragma once

#include <cstdint>

#include "formula/Number.h"

namespace zvgenapi::formula {

/// Why a calculation has no result. The text is static; whoever calls knows the position in the formula.
struct NoResult {
    const char* reason;
};

/// What is left of a number when its fraction is cut off. Throws NoResult.
std::int64_t checked_integer(const Number& number);

// The operators: of whole numbers the result is whole and wraps around in two's complement, otherwise IEEE
// 754 holds. Bit operators and shifts cut off fractions. All of them throw NoResult.
Number add(const Number& a, const Number& b);
Number subtract(const Number& a, const Number& b);
Number multiply(const Number& a, const Number& b);
Number divide(const Number& a, const Number& b);
Number remainder(const Number& a, const Number& b);
Number power(const Number& a, const Number& b);
Number bit_and(const Number& a, const Number& b);
Number bit_or(const Number& a, const Number& b);
Number bit_xor(const Number& a, const Number& b);
Number bit_not(const Number& a);
Number shift_left(const Number& a, const Number& b);  ///< by 64 and more gives 0
Number shift_right(const Number& a, const Number& b); ///< keeps the sign
Number negate(const Number& a);

// Functions whose result is whole if the argument is.
Number sign(const Number& a);
Number absolute(const Number& a);
Number round(const Number& a, const Number& places); ///< halves away from 0; decimal places may be negative

} // namespace zvgenapi::formula
