#include "formula/Compiler.h"

#include <algorithm>
#include <utility>

#include "formula/Lexer.h"
#include "formula/Parser.h"

namespace zvgenapi::formula {

Compiler::Compiler(Arithmetic arithmetic, const Names& names, const FormulaLimits& limits)
    : m_names(names), m_limits(limits), m_program(std::make_unique<Program>())
{
    m_program->arithmetic = arithmetic;
}

std::unique_ptr<const Program> Compiler::compile(std::string_view text)
{
    const Piece formula = parse(text, 0);
    append(formula);
    m_program->stack = formula.stack;
    for (std::size_t i = 0; i < m_pieces.size(); ++i) {
        m_program->expressions[i].start = m_program->code.size();
        append(m_pieces[i]);
    }
    return std::move(m_program);
}

Piece Compiler::parse(std::string_view text, std::size_t text_number)
{
    const std::string name = text_number == 0 ? std::string() : m_program->expressions[text_number - 1].name;
    try {
        if (text.size() > m_limits.text - m_text)
            throw TextFault{Fault::limit, "the formula and its expressions are too long", 0};
        m_text += text.size();
        return Parser(*this, text, text_number).parse();
    } catch (const TextFault& fault) {
        throw FormulaError(fault.fault, fault.what, fault.position, name);
    }
}

void Compiler::append(const Piece& piece)
{
    m_program->code.insert(m_program->code.end(), piece.code.begin(), piece.code.end());
}

std::uint32_t Compiler::add_literal(const Number& number)
{
    const bool is_floating = arithmetic() == Arithmetic::floating;
    m_program->literals.push_back(is_floating ? Number::floating(number.to_floating()) : number);
    return static_cast<std::uint32_t>(m_program->literals.size() - 1);
}

std::uint32_t Compiler::add_variable(std::size_t index)
{
    const auto next = static_cast<std::uint32_t>(m_program->variables.size());
    const auto [known, is_new] = m_variables.emplace(index, next);
    if (is_new)
        m_program->variables.push_back(index);
    return known->second;
}

std::uint32_t Compiler::add_expression(std::string_view name, std::string_view text, std::size_t position)
{
    const auto next = static_cast<std::uint32_t>(m_program->expressions.size());
    const auto [known, is_new] = m_expressions.emplace(name, next);
    if (std::find(m_open.begin(), m_open.end(), name) != m_open.end())
        throw TextFault{Fault::cycle, "an expression uses itself: " + circle(name), position};
    if (!is_new)
        return known->second;
    if (m_open.size() == m_limits.expressions)
        throw TextFault{Fault::limit, "expressions are nested too deeply", position};
    m_program->expressions.push_back({std::string(name), 0});
    m_pieces.emplace_back();
    m_open.push_back(name);
    Piece piece = parse(text, std::size_t{next} + 1);
    m_open.pop_back();
    m_pieces[next] = std::move(piece);
    return next;
}

std::string Compiler::circle(std::string_view name) const
{
    std::string names;
    for (auto step = std::find(m_open.begin(), m_open.end(), name); step != m_open.end(); ++step)
        names.append(*step).append(" -> ");
    return names.append(name);
}

void Compiler::count_instruction(std::size_t position)
{
    if (++m_instructions > m_limits.instructions)
        throw TextFault{Fault::limit, "the formula is too long", position};
}

void Compiler::enter_level(std::size_t position)
{
    if (++m_level > m_limits.nesting)
        throw TextFault{Fault::limit, "the formula is nested too deeply", position};
}

} // namespace zvgenapi::formula
