#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "formula/Formula.h"
#include "formula/Program.h"

namespace zvgenapi::formula {

/// The instructions of one text and the values that they need at a time.
struct Piece {
    std::vector<Instruction> code;
    std::size_t stack{0};
};

/// What the texts of one formula, its own and those of the expressions, share while they are compiled.
class Compiler {
public:
    Compiler(Arithmetic arithmetic, const Names& names, const FormulaLimits& limits);

    /// To be called once. Throws FormulaError.
    std::unique_ptr<const Program> compile(std::string_view text);

    // For the parser of a text; these throw TextFault or, where another text is to blame, FormulaError.
    Arithmetic arithmetic() const noexcept { return m_program->arithmetic; }
    const Names& names() const noexcept { return m_names; }
    std::uint32_t add_literal(const Number& number);
    std::uint32_t add_variable(std::size_t index);
    /// Compiles the expression when it is first used. Returns its index.
    std::uint32_t add_expression(std::string_view name, std::string_view text, std::size_t position);
    std::size_t stack_of(std::uint32_t expression) const { return m_pieces[expression].stack; }
    void count_instruction(std::size_t position);
    void enter_level(std::size_t position);
    void leave_level() noexcept { --m_level; }

private:
    Piece parse(std::string_view text, std::size_t text_number);
    void append(const Piece& piece);
    std::string circle(std::string_view name) const;

    const Names& m_names;
    FormulaLimits m_limits;
    std::unique_ptr<Program> m_program;
    std::vector<Piece> m_pieces; ///< of the expressions
    std::unordered_map<std::string_view, std::uint32_t> m_expressions;
    std::unordered_map<std::size_t, std::uint32_t> m_variables;
    std::vector<std::string_view> m_open; ///< expressions that are being compiled, the outermost first
    std::size_t m_text{0};
    std::size_t m_instructions{0};
    std::size_t m_level{0};
};

} // namespace zvgenapi::formula
