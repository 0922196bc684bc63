#pragma once

#include <string>
#include <string_view>

// Texts from outside (names and values of devices, messages of libraries, names of files, the environment)
// may hold characters that a terminal takes for commands and a reader of lines for the end of one.

namespace platform {

/// Whether a text has no control characters: neither those of ASCII, nor those that ISO 8859 and Unicode call
/// C1, as bytes of their own or in UTF-8. Line ends and tabs are control characters, too.
bool is_plain(std::string_view text) noexcept;

/// The text with control characters as a reader can see them: "\n", "\r", "\t", or "\x1B". All others stay as
/// they are.
std::string visible(std::string_view text);

/// The same for a text of several lines: its line ends and tabs stay.
std::string visible_lines(std::string_view text);

} // namespace platform
