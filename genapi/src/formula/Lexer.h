#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "formula/Formula.h"
#include "formula/FormulaError.h"
#include "formula/Number.h"

namespace zvgenapi::formula {

/// A piece of a formula.
struct Token {
    enum class Kind { end, number, name, symbol };

    Kind kind{Kind::end};
    std::string_view text;
    std::size_t position{0};
    Number number;

    bool is(std::string_view symbol) const noexcept { return kind == Kind::symbol && text == symbol; }
};

/// What is wrong with a text, before it is known whose text it is.
struct TextFault {
    Fault fault;
    std::string what;
    std::size_t position;
};

/// Cuts a formula into tokens. It keeps a view of the text.
class Lexer {
public:
    Lexer(std::string_view text, Arithmetic arithmetic) noexcept : m_text(text), m_arithmetic(arithmetic) {}

    /// The next token; Kind::end from the end of the text on. Throws TextFault.
    Token next();

private:
    Token number_token();
    Token symbol_token();
    Number hexadecimal(std::string_view digits) const;
    Number decimal(std::string_view digits) const;

    std::string_view m_text;
    Arithmetic m_arithmetic;
    std::size_t m_position{0};
};

/// The number that a text consists of, which may have a sign. Throws TextFault.
Number parse_literal(std::string_view text, Arithmetic arithmetic);

} // namespace zvgenapi::formula
