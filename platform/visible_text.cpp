#include "platform/visible_text.h"

#include <cstdint>
#include <cstring>

namespace platform {

namespace {

constexpr std::uint64_t in_each_byte = 0x0101010101010101;

unsigned char_code(char letter) { return static_cast<unsigned char>(letter); }

bool is_ascii_control(unsigned code) { return code < 0x20 || code == 0x7F; }

// Of the lower half of ASCII only what is printed; by eight bytes at a time, because every line of the log is
// looked at.
bool has_only_ascii_print(std::uint64_t bytes)
{
    const std::uint64_t below_blank = (bytes - in_each_byte * 0x20) & ~bytes;
    const std::uint64_t from_delete = bytes ^ (in_each_byte * 0x7F);
    const std::uint64_t is_delete = (from_delete - in_each_byte) & ~from_delete;
    return ((bytes | below_blank | is_delete) & (in_each_byte * 0x80)) == 0;
}

/// The bytes of the UTF-8 character at the beginning of the text; 1 for what is none.
std::size_t character_length(std::string_view text)
{
    const unsigned first = char_code(text[0]);
    const std::size_t length = first >= 0xC2 && first < 0xE0   ? 2
                               : first >= 0xE0 && first < 0xF0 ? 3
                               : first >= 0xF0 && first < 0xF5 ? 4
                                                               : 1;
    if (length > text.size())
        return 1;
    for (std::size_t i = 1; i < length; ++i)
        if ((char_code(text[i]) & 0xC0U) != 0x80)
            return 1;
    // What could have been written with fewer bytes.
    const bool is_overlong =
        (first == 0xE0 && char_code(text[1]) < 0xA0) || (first == 0xF0 && char_code(text[1]) < 0x90);
    return length > 1 && is_overlong ? 1 : length;
}

/// The code of the control character at the beginning of the text; 0x100 for any other.
unsigned control_code(std::string_view text, std::size_t length)
{
    constexpr unsigned none = 0x100;
    const unsigned first = char_code(text[0]);
    if (length == 1)
        return is_ascii_control(first) || (first >= 0x80 && first < 0xA0) ? first : none;
    const unsigned second = char_code(text[1]);
    return first == 0xC2 && second < 0xA0 ? second : none;
}

void append_visible(std::string& target, unsigned code)
{
    const char* const digits = "0123456789ABCDEF";
    switch (code) {
    case '\n':
        target += "\\n";
        return;
    case '\r':
        target += "\\r";
        return;
    case '\t':
        target += "\\t";
        return;
    default:
        target += {'\\', 'x', digits[code >> 4U], digits[code & 0xFU]};
    }
}

std::string visible_but(std::string_view text, std::string_view kept)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = character_length(text);
        const unsigned code = control_code(text, length);
        if (code > 0xFF || kept.find(static_cast<char>(code)) != std::string_view::npos)
            result += text.substr(0, length);
        else
            append_visible(result, code);
        text.remove_prefix(length);
    }
    return result;
}

} // namespace

bool is_plain(std::string_view text) noexcept
{
    std::uint64_t bytes = 0;
    while (text.size() >= sizeof bytes) {
        std::memcpy(&bytes, text.data(), sizeof bytes);
        if (!has_only_ascii_print(bytes))
            break;
        text.remove_prefix(sizeof bytes);
    }
    while (!text.empty()) {
        const std::size_t length = character_length(text);
        if (control_code(text, length) <= 0xFF)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

std::string visible(std::string_view text) { return visible_but(text, {}); }

std::string visible_lines(std::string_view text) { return visible_but(text, "\n\t"); }

} // namespace platform
