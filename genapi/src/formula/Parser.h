#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "formula/Compiler.h"
#include "formula/Lexer.h"
#include "formula/Program.h"

namespace zvgenapi::formula {

/// Turns one text into instructions. It is recursive, as deep as the compiler allows.
class Parser {
public:
    Parser(Compiler& compiler, std::string_view text, std::size_t text_number);

    /// To be called once. Throws TextFault and, for the text of another expression, FormulaError.
    Piece parse();

private:
    void advance() { m_token = m_lexer.next(); }
    void expect(std::string_view symbol);

    // Each parses one kind of thing, whose value is then on top of the stack.
    void choice();
    void operators(std::uint8_t lowest);
    void right_operand(int lowest, std::size_t position);
    void condition(Action skip, std::uint8_t precedence, std::size_t position);
    void operand();
    void name();
    void function(const Token& name);
    void symbol(const Token& name, const Names::Symbol& symbol);

    /// Appends an instruction; returns where it is.
    std::size_t emit(Action action, std::size_t position, std::size_t operand = 0);
    /// Lets the jump lead to what is appended next.
    void land(std::size_t jump);
    void grow(std::size_t values, std::size_t for_a_moment = 0);
    [[noreturn]] void reject(const std::string& what) const;

    Compiler& m_compiler;
    Lexer m_lexer;
    std::uint32_t m_text_number;
    Token m_token;
    Piece m_piece;
    std::size_t m_depth{0}; ///< values on the stack
};

} // namespace zvgenapi::formula
