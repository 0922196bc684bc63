#include "logger/PropertyReader.h"

#include <algorithm>

namespace zvlog {

namespace {

constexpr std::string_view blanks = " \t\r\n\f\v";
constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

bool is_blank(char letter) { return letter == ' ' || (letter >= '\t' && letter <= '\r'); }

bool ends_key(char letter) { return letter == '=' || letter == ':' || letter == '\r' || letter == '\n'; }

// `position` is behind the backslash, and afterwards at the last character that belongs to it.
void append_escaped(std::string& value, std::string_view text, std::size_t& position)
{
    if (position >= text.size())
        return;
    switch (text[position]) {
    case 't':
        value += '\t';
        break;
    case 'r':
        value += '\r';
        break;
    case 'n':
        value += '\n';
        break;
    case 'f':
        value += '\f';
        break;
    case '\r':
        if (position + 1 < text.size() && text[position + 1] == '\n')
            ++position;
        break;
    case '\n':
        break;
    default:
        value += text[position];
    }
}

} // namespace

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

PropertyReader::PropertyReader(std::string_view text)
    : m_text(text), m_has_returns(text.find('\r') != std::string_view::npos)
{
    if (m_text.substr(0, byte_order_mark.size()) == byte_order_mark)
        m_position = byte_order_mark.size();
}

bool PropertyReader::next()
{
    for (;;) {
        while (m_position < m_text.size() && is_blank(m_text[m_position]))
            ++m_position;
        if (m_position == m_text.size())
            return false;
        if (m_text[m_position] != '#' && m_text[m_position] != '!')
            break;
        m_position = end_of_line(m_position);
    }

    std::size_t end = m_position;
    while (end < m_text.size() && !ends_key(m_text[end]))
        ++end;
    m_key = trimmed(m_text.substr(m_position, end - m_position));
    m_has_separator = end < m_text.size() && (m_text[end] == '=' || m_text[end] == ':');
    m_position = m_has_separator ? end_of_value(end + 1) : end;
    m_raw_value = m_has_separator ? m_text.substr(end + 1, m_position - end - 1) : std::string_view();
    return true;
}

std::string PropertyReader::value() const
{
    std::string value;
    for (std::size_t position = 0; position < m_raw_value.size(); ++position) {
        if (m_raw_value[position] == '\\')
            append_escaped(value, m_raw_value, ++position);
        else
            value += m_raw_value[position];
    }
    return std::string(trimmed(value));
}

std::size_t PropertyReader::end_of_line(std::size_t position) const
{
    // Text without carriage returns is the usual case, and a search for one character is fast.
    const std::size_t end =
        m_has_returns ? m_text.find_first_of("\r\n", position) : m_text.find('\n', position);
    return std::min(end, m_text.size());
}

std::size_t PropertyReader::end_of_value(std::size_t position) const
{
    for (;;) {
        const std::size_t end = end_of_line(position);
        std::size_t backslashes = 0;
        while (end - backslashes > position && m_text[end - backslashes - 1] == '\\')
            ++backslashes;
        if (end == m_text.size() || backslashes % 2 == 0)
            return end;
        position = end + 1;
        if (m_text[end] == '\r' && position < m_text.size() && m_text[position] == '\n')
            ++position;
    }
}

} // namespace zvlog
