#pragma once

#include <cstdint>

namespace zvgenapi::formula {

/// A value of a formula: a whole number of 64 bits or a floating-point number.
class Number {
public:
    constexpr Number() noexcept : m_integer(0), m_is_integer(true) {}

    static constexpr Number integer(std::int64_t value) noexcept { return Number(value); }
    static constexpr Number floating(double value) noexcept { return Number(value); }

    constexpr bool is_integer() const noexcept { return m_is_integer; }

    /// The whole number; a floating one is cut off at its point. Throws FormulaError (Fault::value) if that
    /// is not a number or does not fit.
    std::int64_t to_integer() const;

    /// The floating-point number; a whole one of more than 53 bits is rounded.
    constexpr double to_floating() const noexcept
    {
        return m_is_integer ? static_cast<double>(m_integer) : m_floating;
    }

    /// Whether it counts as true: anything but 0, so not-a-number does.
    constexpr bool is_true() const noexcept { return m_is_integer ? m_integer != 0 : m_floating != 0; }

private:
    explicit constexpr Number(std::int64_t value) noexcept : m_integer(value), m_is_integer(true) {}
    explicit constexpr Number(double value) noexcept : m_floating(value), m_is_integer(false) {}

    union {
        std::int64_t m_integer;
        double m_floating;
    };
    bool m_is_integer;
};

} // namespace zvgenapi::formula
