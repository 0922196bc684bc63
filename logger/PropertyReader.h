#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zvlog {

/// Walks the properties of a text in the syntax of Poco's property files: one "key = value" or "key: value"
/// per line; comments begin with '#' or '!', a backslash in a value escapes (\\t, \\r, \\n, \\f, else the
/// character itself) and at the end of a line continues it. The text must outlive the reader.
class PropertyReader {
public:
    explicit PropertyReader(std::string_view text);
    /// Moves to the next property; false at the end of the text.
    bool next();
    /// The key of the property.
    std::string_view key() const { return m_key; }
    /// False when the line is a lone word.
    bool has_separator() const { return m_has_separator; }
    /// The value of the property, unescaped only now: most callers need one of many.
    std::string value() const;

private:
    std::size_t end_of_line(std::size_t position) const;
    std::size_t end_of_value(std::size_t position) const;

    std::string_view m_text;
    bool m_has_returns;
    std::size_t m_position{0};
    std::string_view m_key;
    std::string_view m_raw_value;
    bool m_has_separator{false};
};

/// The text without the blanks at both ends.
std::string_view trimmed(std::string_view text);

} // namespace zvlog
