#include "genapi/Feature.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <system_error>

namespace zvgentl::tool {

namespace {

std::string hexadecimal(std::int64_t number)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "0x%llX", static_cast<unsigned long long>(number));
    return text.data();
}

enum class Base { ten, sixteen };

/// The lowest `count` bytes, the highest of them first.
std::string bytes_of(std::int64_t number, int count, char separator, Base base)
{
    std::string text;
    for (int i = count - 1; i >= 0; --i) {
        std::array<char, 8> byte{};
        const auto bits = static_cast<std::uint64_t>(number) >> (8U * static_cast<unsigned>(i));
        std::snprintf(byte.data(), byte.size(), base == Base::ten ? "%u" : "%02X",
                      static_cast<unsigned>(bits & 0xFFU));
        text += byte.data();
        if (i > 0)
            text += separator;
    }
    return text;
}

std::string whole_number(std::int64_t number, Notation notation)
{
    switch (notation) {
    case Notation::hexadecimal:
        return hexadecimal(number);
    case Notation::ipv4_address:
        return bytes_of(number, 4, '.', Base::ten);
    case Notation::mac_address:
        return bytes_of(number, 6, ':', Base::sixteen);
    case Notation::decimal:
        break;
    }
    return std::to_string(number);
}

/// The shortest text that gives the same number again; without an exponent where that can be read.
std::string floating_number(double number)
{
    const bool is_readable = number == 0 || (std::fabs(number) >= 1e-5 && std::fabs(number) < 1e15);
    std::array<char, 64> text{};
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), number,
                      is_readable ? std::chars_format::fixed : std::chars_format::general);
    return error == std::errc() ? std::string(text.data(), end) : std::string();
}

} // namespace

const char* kind_name(FeatureKind kind) noexcept
{
    switch (kind) {
    case FeatureKind::category:
        return "Category";
    case FeatureKind::integer:
        return "Integer";
    case FeatureKind::floating_point:
        return "Float";
    case FeatureKind::boolean:
        return "Boolean";
    case FeatureKind::enumeration:
        return "Enumeration";
    case FeatureKind::command:
        return "Command";
    case FeatureKind::string:
        return "String";
    case FeatureKind::bytes:
        return "Register";
    case FeatureKind::other:
        break;
    }
    return "Other";
}

std::string access_name(const Access& access)
{
    if (!access.is_implemented)
        return "NI";
    if (!access.is_available || (!access.is_readable && !access.is_writable && !access.is_locked))
        return "NA";
    if (access.is_locked)
        return access.is_readable ? "RO locked" : "locked";
    if (access.is_writable)
        return access.is_readable ? "RW" : "WO";
    return "RO";
}

std::string to_text(const Value& value, Notation notation)
{
    if (const auto* const boolean = std::get_if<bool>(&value))
        return *boolean ? "true" : "false";
    if (const auto* const number = std::get_if<std::int64_t>(&value))
        return whole_number(*number, notation);
    if (const auto* const number = std::get_if<double>(&value))
        return floating_number(*number);
    if (const auto* const text = std::get_if<std::string>(&value))
        return *text;
    return {};
}

} // namespace zvgentl::tool
