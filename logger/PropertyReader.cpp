#include "logger/PropertyReader.h"

namespace zvlog {

namespace {

constexpr std::string_view blanks = " \t\r\n\f\v";
constexpr std::string_view line_ends = "\r\n";
constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

} // namespace

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

PropertyReader::PropertyReader(std::string_view text) : m_text(text)
{
    if (m_text.substr(0, byte_order_mark.size()) == byte_order_mark)
        m_position = byte_order_mark.size();
}

bool PropertyReader::next(Property& property)
{
    for (;;) {
        m_position = m_text.find_first_not_of(blanks, m_position);
        if (m_position == std::string_view::npos) {
            m_position = m_text.size();
            return false;
        }
        if (m_text[m_position] != '#' && m_text[m_position] != '!')
            break;
        skip_line();
    }

    std::size_t end = m_text.find_first_of("=:\r\n", m_position);
    if (end == std::string_view::npos)
        end = m_text.size();
    property.key = trimmed(m_text.substr(m_position, end - m_position));
    property.value.clear();
    property.has_separator = end < m_text.size() && (m_text[end] == '=' || m_text[end] == ':');
    m_position = end;
    if (property.has_separator) {
        ++m_position;
        read_value(property.value);
    }
    return true;
}

void PropertyReader::skip_line()
{
    m_position = m_text.find_first_of(line_ends, m_position);
    if (m_position == std::string_view::npos)
        m_position = m_text.size();
}

void PropertyReader::read_value(std::string& value)
{
    for (;;) {
        std::size_t end = m_text.find_first_of("\\\r\n", m_position);
        if (end == std::string_view::npos)
            end = m_text.size();
        value.append(m_text.substr(m_position, end - m_position));
        m_position = end;
        if (end == m_text.size() || m_text[end] != '\\')
            break;
        ++m_position;
        read_escaped(value);
    }
    value = std::string(trimmed(value));
}

void PropertyReader::read_escaped(std::string& value)
{
    if (m_position == m_text.size())
        return;
    const char escaped = m_text[m_position++];
    switch (escaped) {
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
        if (m_position < m_text.size() && m_text[m_position] == '\n')
            ++m_position;
        break;
    case '\n':
        break;
    default:
        value += escaped;
    }
}

} // namespace zvlog
