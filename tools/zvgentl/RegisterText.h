#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zvgentl::tool {

/// What the bytes of a register are taken for.
enum class RegisterForm { bytes, unsigned_number, signed_number, floating_number, text };

enum class ByteOrder { little, big };

/// An address or a length, decimal or hexadecimal (0x); nothing for any other text.
std::optional<std::uint64_t> parse_address(const std::string& text);

/// Sixteen bytes on a line: address, pairs of hexadecimal digits, and what of it is printable ASCII.
std::string hex_dump(std::uint64_t address, const std::vector<unsigned char>& bytes);

/// The bytes as a number (at most eight of them; 4 or 8 for floating-point) or as a text, which ends before
/// the first zero byte; or as pairs of hexadecimal digits. Throws std::runtime_error if there are too many.
std::string text_of_bytes(const std::vector<unsigned char>& bytes, RegisterForm form, ByteOrder order);

/// The opposite: `length` bytes. Texts are filled up with zero bytes; bytes must be exactly as many, unless
/// `length` is 0. Throws std::runtime_error for what does not fit.
std::vector<unsigned char> bytes_of_text(const std::string& text, RegisterForm form, ByteOrder order,
                                         std::size_t length);

} // namespace zvgentl::tool
