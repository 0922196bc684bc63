#include "support/LogLine.h"

#include <cctype>
#include <ostream>
#include <string_view>

namespace zvtest {

namespace {

// Reads one text from the front to the back; every step fails for good once one has failed.
class Reader {
public:
    explicit Reader(std::string_view text) : m_rest(text) {}

    bool skip(std::string_view expected)
    {
        if (m_rest.substr(0, expected.size()) != expected)
            return false;
        m_rest.remove_prefix(expected.size());
        return true;
    }

    bool read_until(std::string_view end, std::string& text)
    {
        const size_t position = m_rest.find(end);
        if (position == std::string_view::npos)
            return false;
        text = m_rest.substr(0, position);
        m_rest.remove_prefix(position + end.size());
        return true;
    }

    bool read_hex8(uint32_t& number)
    {
        if (m_rest.size() < 8)
            return false;
        number = 0;
        for (const char digit : m_rest.substr(0, 8)) {
            if (std::isdigit(static_cast<unsigned char>(digit)) != 0)
                number = number * 16 + static_cast<uint32_t>(digit - '0');
            else if (digit >= 'A' && digit <= 'F')
                number = number * 16 + static_cast<uint32_t>(digit - 'A' + 10);
            else
                return false;
        }
        m_rest.remove_prefix(8);
        return true;
    }

    bool read_decimal(int& number)
    {
        size_t digits = 0;
        number = 0;
        while (digits < m_rest.size() && std::isdigit(static_cast<unsigned char>(m_rest[digits])) != 0)
            number = number * 10 + (m_rest[digits++] - '0');
        m_rest.remove_prefix(digits);
        return digits > 0 && digits < 9;
    }

    std::string rest() const { return std::string(m_rest); }

private:
    std::string_view m_rest;
};

bool parse(const std::string& text, LogLine& line)
{
    Reader reader(text);
    if (!reader.skip("thr") || !reader.read_hex8(line.thread) || !reader.skip(":") ||
        !reader.read_until("::", line.logger))
        return false;
    line.has_function = reader.skip("{");
    if (line.has_function && !reader.read_until("}", line.function))
        return false;
    int number = -1;
    if (!reader.skip("[") || !reader.read_decimal(number) || !reader.skip("]"))
        return false;
    if (!reader.skip(": ") && !reader.skip(" "))
        return false;
    line.number = number;
    line.message = reader.rest();
    return true;
}

bool is_digit_of(char conversion, char digit)
{
    const auto character = static_cast<unsigned char>(digit);
    switch (conversion) {
    case 'X':
        return std::isdigit(character) != 0 || (digit >= 'A' && digit <= 'F');
    case 'x':
        return std::isdigit(character) != 0 || (digit >= 'a' && digit <= 'f');
    default:
        return std::isdigit(character) != 0;
    }
}

bool matches(std::string_view pattern, std::string_view text);

// A number: an optional sign for %d, then as many digits as there are, since a digit never follows one.
bool matches_number(char conversion, size_t width, std::string_view pattern, std::string_view text)
{
    size_t used = 0;
    if (conversion == 'd' && !text.empty() && text.front() == '-')
        ++used;
    const size_t sign = used;
    while (used < text.size() && is_digit_of(conversion, text[used]))
        ++used;
    for (size_t digits = used - sign; digits >= 1 && digits >= width; --digits) {
        if (matches(pattern, text.substr(sign + digits)))
            return true;
    }
    return false;
}

bool matches_any_text(std::string_view pattern, std::string_view text)
{
    for (size_t used = 0; used <= text.size(); ++used) {
        if (matches(pattern, text.substr(used)))
            return true;
    }
    return false;
}

bool matches(std::string_view pattern, std::string_view text)
{
    while (!pattern.empty()) {
        const char next = pattern.front();
        pattern.remove_prefix(1);
        if (next != '%' || (!pattern.empty() && pattern.front() == '%')) {
            if (text.empty() || text.front() != next)
                return false;
            text.remove_prefix(1);
            if (next == '%')
                pattern.remove_prefix(1);
            continue;
        }
        size_t width = 0;
        while (!pattern.empty() && std::isdigit(static_cast<unsigned char>(pattern.front())) != 0) {
            width = width * 10 + static_cast<size_t>(pattern.front() - '0');
            pattern.remove_prefix(1);
        }
        while (!pattern.empty() && std::string_view("lhzj").find(pattern.front()) != std::string_view::npos)
            pattern.remove_prefix(1);
        if (pattern.empty())
            return false;
        const char conversion = pattern.front() == 'i' ? 'd' : pattern.front();
        pattern.remove_prefix(1);
        return conversion == 's' ? matches_any_text(pattern, text)
                                 : matches_number(conversion, width, pattern, text);
    }
    return text.empty();
}

} // namespace

const char* name_of(Priority priority)
{
    static constexpr const char* names[] = {"?",      "fatal",       "critical", "error", "warning",
                                            "notice", "information", "debug",    "trace"};
    const auto number = static_cast<size_t>(priority);
    return number < std::size(names) ? names[number] : "?";
}

std::ostream& operator<<(std::ostream& out, const LogLine& line)
{
    return out << '<' << name_of(line.priority) << "> " << line.text;
}

LogLine parse_log_line(const std::string& source, Priority priority, const std::string& text)
{
    LogLine line;
    if (!parse(text, line)) {
        line = LogLine();
        line.message = text;
    }
    line.source = source;
    line.priority = priority;
    line.text = text;
    return line;
}

bool matches_format(const std::string& pattern, const std::string& message)
{
    return matches(pattern, message);
}

} // namespace zvtest
