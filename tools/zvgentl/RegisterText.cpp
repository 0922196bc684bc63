#include "zvgentl/RegisterText.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <stdexcept>
#include <system_error>

#include <fmt/core.h>

#include "genapi/Feature.h"
#include "genapi/values.h"

namespace zvgentl::tool {

namespace {

constexpr std::size_t bytes_of_line = 16;

std::uint64_t bits_of(const std::vector<unsigned char>& bytes, ByteOrder order)
{
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bits = bits << 8U | bytes[order == ByteOrder::big ? i : bytes.size() - 1 - i];
    return bits;
}

std::vector<unsigned char> bytes_of(std::uint64_t bits, ByteOrder order, std::size_t length)
{
    std::vector<unsigned char> bytes(length);
    for (std::size_t i = 0; i < length; ++i)
        bytes[order == ByteOrder::little ? i : length - 1 - i] =
            static_cast<unsigned char>(bits >> 8U * i & 0xFFU);
    return bytes;
}

/// The highest bit counts as the sign.
std::int64_t with_sign(std::uint64_t bits, std::size_t length)
{
    const std::size_t unused = 64 - 8 * length;
    return static_cast<std::int64_t>(bits << unused) >> unused;
}

double floating(std::uint64_t bits, std::size_t length)
{
    if (length == sizeof(double)) {
        double number = 0;
        std::memcpy(&number, &bits, sizeof number);
        return number;
    }
    const auto half = static_cast<std::uint32_t>(bits);
    float number = 0;
    std::memcpy(&number, &half, sizeof number);
    return double{number};
}

void check_length(RegisterForm form, std::size_t length)
{
    if (form == RegisterForm::floating_number && length != sizeof(float) && length != sizeof(double))
        throw std::runtime_error("a floating-point number has 4 or 8 bytes; see --length");
    const bool is_whole = form == RegisterForm::unsigned_number || form == RegisterForm::signed_number;
    if (is_whole && (length == 0 || length > sizeof(std::uint64_t)))
        throw std::runtime_error("a whole number has 1 to 8 bytes; see --length");
}

std::uint64_t unsigned_bits(const std::string& text, std::size_t length)
{
    const auto number = parse_address(text);
    if (!number || (length < 8 && *number >> 8U * length != 0))
        throw std::runtime_error(
            fmt::format("\"{}\" is not a whole number of {} bytes without a sign", text, length));
    return *number;
}

std::uint64_t signed_bits(const std::string& text, std::size_t length)
{
    const auto number = parse_integer(text, Notation::decimal);
    if (!number || with_sign(static_cast<std::uint64_t>(*number), length) != *number)
        throw std::runtime_error(fmt::format("\"{}\" is not a whole number of {} bytes", text, length));
    return static_cast<std::uint64_t>(*number);
}

std::uint64_t floating_bits(const std::string& text, std::size_t length)
{
    const auto number = parse_float(text);
    if (!number)
        throw std::runtime_error("\"" + text + "\" is not a number");
    std::uint64_t bits = 0;
    if (length == sizeof(double)) {
        std::memcpy(&bits, &*number, sizeof bits);
        return bits;
    }
    const auto half = static_cast<float>(*number);
    std::uint32_t half_bits = 0;
    std::memcpy(&half_bits, &half, sizeof half_bits);
    return half_bits;
}

} // namespace

std::optional<std::uint64_t> parse_address(const std::string& text)
{
    const bool is_hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] =
        std::from_chars(text.data() + (is_hexadecimal ? 2 : 0), end, number, is_hexadecimal ? 16 : 10);
    return error == std::errc() && stopped == end ? std::optional(number) : std::nullopt;
}

std::string hex_dump(std::uint64_t address, const std::vector<unsigned char>& bytes)
{
    std::string text;
    for (std::size_t start = 0; start < bytes.size(); start += bytes_of_line) {
        std::string digits;
        std::string letters;
        for (std::size_t i = start; i < std::min(start + bytes_of_line, bytes.size()); ++i) {
            digits += fmt::format("{:02X} ", bytes[i]);
            letters += bytes[i] >= ' ' && bytes[i] < 0x7F ? static_cast<char>(bytes[i]) : '.';
        }
        text += fmt::format("{:08X}  {:<{}} |{}|\n", address + start, digits, 3 * bytes_of_line, letters);
    }
    return text;
}

std::string text_of_bytes(const std::vector<unsigned char>& bytes, RegisterForm form, ByteOrder order)
{
    check_length(form, bytes.size());
    switch (form) {
    case RegisterForm::unsigned_number:
        return std::to_string(bits_of(bytes, order));
    case RegisterForm::signed_number:
        return std::to_string(with_sign(bits_of(bytes, order), bytes.size()));
    case RegisterForm::floating_number:
        return to_text(Value(floating(bits_of(bytes, order), bytes.size())));
    case RegisterForm::text:
        return {bytes.begin(), std::find(bytes.begin(), bytes.end(), 0)};
    case RegisterForm::bytes:
        break;
    }
    return bytes_text(bytes);
}

std::vector<unsigned char> bytes_of_text(const std::string& text, RegisterForm form, ByteOrder order,
                                         std::size_t length)
{
    switch (form) {
    case RegisterForm::unsigned_number:
        check_length(form, length);
        return bytes_of(unsigned_bits(text, length), order, length);
    case RegisterForm::signed_number:
        check_length(form, length);
        return bytes_of(signed_bits(text, length), order, length);
    case RegisterForm::floating_number:
        check_length(form, length);
        return bytes_of(floating_bits(text, length), order, length);
    default:
        break;
    }
    std::vector<unsigned char> bytes(text.begin(), text.end());
    if (form == RegisterForm::bytes) {
        const auto parsed = parse_bytes(text);
        if (!parsed || parsed->empty())
            throw std::runtime_error("\"" + text + "\" is not bytes, each of two hexadecimal digits; --as " +
                                     "chooses another form");
        bytes = *parsed;
    }
    if (length == 0)
        return bytes;
    if (bytes.size() > length || (form == RegisterForm::bytes && bytes.size() != length))
        throw std::runtime_error(fmt::format("{} bytes do not fit: --length says {}", bytes.size(), length));
    bytes.resize(length, 0);
    return bytes;
}

} // namespace zvgentl::tool
