/// \file PropertyReader.h
/// Reads the lines of a properties text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zvlog {

/// One "key = value" or "key: value" line.
struct Property {
    std::string key;
    std::string value;
    bool has_separator = false; ///< false: the line is a lone word
};

/// Walks the properties of a text in the syntax of Poco's property files: comments begin with '#' or '!',
/// a backslash escapes (\\t, \\r, \\n, \\f, else the character itself) and at the end of a line continues it.
/// The text must outlive the reader.
class PropertyReader {
public:
    explicit PropertyReader(std::string_view text);
    /// Fills `property` with the next one; false at the end of the text.
    bool next(Property& property);

private:
    void skip_line();
    void read_value(std::string& value);
    void read_escaped(std::string& value);

    std::string_view m_text;
    std::size_t m_position = 0;
};

/// Without the blanks at both ends.
std::string_view trimmed(std::string_view text);

} // namespace zvlog
