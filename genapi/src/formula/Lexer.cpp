#include "formula/Lexer.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>
#include <string>
#include <system_error>

#include "formula/arithmetic.h"

namespace zvgenapi::formula {

namespace {

/// Longer ones first, because the first one that fits is taken.
constexpr std::string_view symbols[] = {
    "**", "<<", ">>", "<=", ">=", "<>", "==", "!=", "&&", "||", "+", "-", "*", "/",
    "%",  "&",  "|",  "^",  "~",  "!",  "<",  ">",  "=",  "?",  ":", "(", ")", ",",
};

bool is_space(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool is_digit(char c) { return c >= '0' && c <= '9'; }

bool is_hexadecimal_digit(char c) { return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

bool begins_name(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

bool continues_name(char c) { return begins_name(c) || is_digit(c) || c == '.'; }

/// The characters at the start of the text that belong together.
template <class Predicate>
std::size_t length_while(std::string_view text, Predicate belongs)
{
    const auto end = std::find_if_not(text.begin(), text.end(), belongs);
    return static_cast<std::size_t>(end - text.begin());
}

/// ".5" is a number, a point alone is not.
bool begins_number(std::string_view text)
{
    const std::size_t digit = text[0] == '.' ? 1 : 0;
    return text.size() > digit && is_digit(text[digit]);
}

bool begins_hexadecimal(std::string_view text)
{
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') &&
           is_hexadecimal_digit(text[2]);
}

/// Digits, at most one point among them, and an exponent if digits follow its letter.
std::size_t decimal_length(std::string_view text)
{
    std::size_t length = length_while(text, is_digit);
    if (length < text.size() && text[length] == '.')
        length += 1 + length_while(text.substr(length + 1), is_digit);
    if (length < text.size() && (text[length] == 'e' || text[length] == 'E')) {
        std::size_t digits = length + 1;
        if (digits < text.size() && (text[digits] == '+' || text[digits] == '-'))
            ++digits;
        const std::size_t count = length_while(text.substr(digits), is_digit);
        if (count > 0)
            length = digits + count;
    }
    return length;
}

} // namespace

Token Lexer::next()
{
    while (m_position < m_text.size() && is_space(m_text[m_position]))
        ++m_position;
    const std::string_view rest = m_text.substr(m_position);
    if (rest.empty())
        return {Token::Kind::end, rest, m_position, {}};
    if (begins_number(rest))
        return number_token();
    if (!begins_name(rest[0]))
        return symbol_token();
    const Token token{Token::Kind::name, rest.substr(0, length_while(rest, continues_name)), m_position, {}};
    m_position += token.text.size();
    return token;
}

Token Lexer::number_token()
{
    const std::string_view rest = m_text.substr(m_position);
    const bool is_hexadecimal = begins_hexadecimal(rest);
    const std::size_t length =
        is_hexadecimal ? 2 + length_while(rest.substr(2), is_hexadecimal_digit) : decimal_length(rest);
    if (length < rest.size() && continues_name(rest[length]))
        throw TextFault{Fault::syntax, "a number that goes on with a letter, a digit or a point",
                        m_position + length};
    const std::string_view text = rest.substr(0, length);
    const Token token{Token::Kind::number, text, m_position,
                      is_hexadecimal ? hexadecimal(text.substr(2)) : decimal(text)};
    m_position += length;
    return token;
}

/// All 64 bits may be given: 0xFFFFFFFFFFFFFFFF is -1.
Number Lexer::hexadecimal(std::string_view digits) const
{
    std::uint64_t bits = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), bits, 16);
    if (result.ec != std::errc())
        throw TextFault{Fault::value, "a number of more than 64 bits", m_position};
    return Number::integer(static_cast<std::int64_t>(bits));
}

/// A whole number of 64 bits in integer arithmetic, where it wraps around, too. Everything else is floating.
Number Lexer::decimal(std::string_view digits) const
{
    const char* const end = digits.data() + digits.size();
    if (m_arithmetic == Arithmetic::integer && length_while(digits, is_digit) == digits.size()) {
        std::uint64_t bits = 0;
        if (std::from_chars(digits.data(), end, bits).ec != std::errc())
            throw TextFault{Fault::value, "a number of more than 64 bits", m_position};
        return Number::integer(static_cast<std::int64_t>(bits));
    }
    double value = 0;
    if (std::from_chars(digits.data(), end, value).ec != std::errc())
        throw TextFault{Fault::value, "a number that is too large or too small", m_position};
    return Number::floating(value);
}

Token Lexer::symbol_token()
{
    const std::string_view rest = m_text.substr(m_position);
    const auto* const symbol =
        std::find_if(std::begin(symbols), std::end(symbols), [rest](std::string_view candidate) {
            return rest.substr(0, candidate.size()) == candidate;
        });
    if (symbol == std::end(symbols))
        throw TextFault{Fault::syntax, "a character that has no meaning in formulas", m_position};
    const Token token{Token::Kind::symbol, *symbol, m_position, {}};
    m_position += symbol->size();
    return token;
}

Number parse_literal(std::string_view text, Arithmetic arithmetic)
{
    Lexer lexer(text, arithmetic);
    Token token = lexer.next();
    const bool is_negative = token.is("-");
    if (is_negative || token.is("+"))
        token = lexer.next();
    if (token.kind != Token::Kind::number || lexer.next().kind != Token::Kind::end)
        throw TextFault{Fault::syntax, "a constant that is not a number", 0};
    return is_negative ? negate(token.number) : token.number;
}

} // namespace zvgenapi::formula
