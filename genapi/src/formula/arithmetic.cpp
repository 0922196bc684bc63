#include "formula/arithmetic.h"

#include <cmath>
#include <limits>

namespace zvgenapi::formula {

namespace {

constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
constexpr double two_to_63 = 9223372036854775808.0;

bool are_integers(const Number& a, const Number& b) { return a.is_integer() && b.is_integer(); }

/// Unsigned numbers wrap around, which signed ones must not.
std::uint64_t bits(std::int64_t value) { return static_cast<std::uint64_t>(value); }

Number from_bits(std::uint64_t value) { return Number::integer(static_cast<std::int64_t>(value)); }

std::int64_t shift_count(const Number& count)
{
    const std::int64_t places = checked_integer(count);
    if (places < 0)
        throw NoResult{"shift by a negative count"};
    return places;
}

Number integer_power(std::int64_t base, std::int64_t exponent)
{
    if (exponent < 0) {
        if (base == 0)
            throw NoResult{"0 to a negative power"};
        const bool is_one = base == 1 || (base == -1 && exponent % 2 == 0);
        return Number::integer(is_one ? 1 : base == -1 ? -1 : 0);
    }
    std::uint64_t result = 1;
    std::uint64_t square = bits(base);
    for (std::uint64_t rest = bits(exponent); rest != 0; rest >>= 1U) {
        if ((rest & 1U) != 0)
            result *= square;
        square *= square;
    }
    return from_bits(result);
}

} // namespace

std::int64_t checked_integer(const Number& number)
{
    if (number.is_integer())
        return number.to_integer();
    const double value = number.to_floating();
    if (std::isnan(value))
        throw NoResult{"a whole number is needed, but this is not a number"};
    if (value < -two_to_63 || value >= two_to_63)
        throw NoResult{"a whole number is needed, but this does not fit into 64 bits"};
    return static_cast<std::int64_t>(value);
}

Number add(const Number& a, const Number& b)
{
    if (are_integers(a, b))
        return from_bits(bits(a.to_integer()) + bits(b.to_integer()));
    return Number::floating(a.to_floating() + b.to_floating());
}

Number subtract(const Number& a, const Number& b)
{
    if (are_integers(a, b))
        return from_bits(bits(a.to_integer()) - bits(b.to_integer()));
    return Number::floating(a.to_floating() - b.to_floating());
}

Number multiply(const Number& a, const Number& b)
{
    if (are_integers(a, b))
        return from_bits(bits(a.to_integer()) * bits(b.to_integer()));
    return Number::floating(a.to_floating() * b.to_floating());
}

Number divide(const Number& a, const Number& b)
{
    if (!are_integers(a, b))
        return Number::floating(a.to_floating() / b.to_floating());
    if (b.to_integer() == 0)
        throw NoResult{"division by 0"};
    if (a.to_integer() == smallest && b.to_integer() == -1)
        throw NoResult{"division whose result does not fit into 64 bits"};
    return Number::integer(a.to_integer() / b.to_integer());
}

Number remainder(const Number& a, const Number& b)
{
    if (!are_integers(a, b))
        return Number::floating(std::fmod(a.to_floating(), b.to_floating()));
    if (b.to_integer() == 0)
        throw NoResult{"remainder of a division by 0"};
    if (b.to_integer() == -1)
        return Number::integer(0); // also of the smallest number, where the division itself has no result
    return Number::integer(a.to_integer() % b.to_integer());
}

Number power(const Number& a, const Number& b)
{
    if (are_integers(a, b))
        return integer_power(a.to_integer(), b.to_integer());
    return Number::floating(std::pow(a.to_floating(), b.to_floating()));
}

Number bit_and(const Number& a, const Number& b)
{
    return from_bits(bits(checked_integer(a)) & bits(checked_integer(b)));
}

Number bit_or(const Number& a, const Number& b)
{
    return from_bits(bits(checked_integer(a)) | bits(checked_integer(b)));
}

Number bit_xor(const Number& a, const Number& b)
{
    return from_bits(bits(checked_integer(a)) ^ bits(checked_integer(b)));
}

Number shift_left(const Number& a, const Number& b)
{
    const std::uint64_t value = bits(checked_integer(a));
    const std::int64_t places = shift_count(b);
    return from_bits(places < 64 ? value << places : 0);
}

Number shift_right(const Number& a, const Number& b)
{
    const std::int64_t value = checked_integer(a);
    const std::int64_t places = shift_count(b);
    const std::uint64_t sign_bits = value < 0 ? ~std::uint64_t{0} : 0;
    if (places == 0)
        return Number::integer(value);
    if (places > 63)
        return from_bits(sign_bits);
    return from_bits((bits(value) >> places) | (sign_bits << (64 - places)));
}

Number negate(const Number& a)
{
    return a.is_integer() ? from_bits(0 - bits(a.to_integer())) : Number::floating(-a.to_floating());
}

Number bit_not(const Number& a) { return from_bits(~bits(checked_integer(a))); }

Number sign(const Number& a)
{
    const double value = a.to_floating();
    return std::isnan(value) ? a : Number::integer(value > 0 ? 1 : value < 0 ? -1 : 0);
}

Number absolute(const Number& a)
{
    if (!a.is_integer())
        return Number::floating(std::fabs(a.to_floating()));
    return a.to_integer() < 0 ? negate(a) : a;
}

Number round(const Number& a, const Number& places)
{
    const std::int64_t digits = checked_integer(places);
    if (a.is_integer() && digits >= 0)
        return a;
    const double value = a.to_floating();
    const double scale = std::pow(10.0, static_cast<double>(digits));
    const double scaled = value * scale;
    if (scale == 0)
        return Number::floating(std::isfinite(value) ? std::copysign(0.0, value) : value);
    return Number::floating(std::isfinite(scaled) ? std::round(scaled) / scale : value);
}

} // namespace zvgenapi::formula
