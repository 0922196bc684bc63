#include "formula/Parser.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "formula/operations.h"

namespace zvgenapi::formula {

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double e = 2.71828182845904523536;

/// One level of nesting, as long as it exists.
class Level {
public:
    Level(Compiler& compiler, std::size_t position) : m_compiler(compiler) { compiler.enter_level(position); }
    ~Level() { m_compiler.leave_level(); }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

private:
    Compiler& m_compiler;
};

std::string arguments_text(const Operation& row)
{
    const std::string text = std::string(row.name) + " takes ";
    return text + (row.most == 1 ? "one argument" : "one or two arguments");
}

} // namespace

Parser::Parser(Compiler& compiler, std::string_view text, std::size_t text_number)
    : m_compiler(compiler), m_lexer(text, compiler.arithmetic()),
      m_text_number(static_cast<std::uint32_t>(text_number))
{
}

Piece Parser::parse()
{
    advance();
    choice();
    if (m_token.kind != Token::Kind::end)
        reject("an operator is expected");
    if (m_text_number == 0)
        emit(Action::finish, 0);
    else
        emit(Action::end_of_expression, 0, m_text_number - std::size_t{1});
    return std::move(m_piece);
}

void Parser::expect(std::string_view symbol)
{
    if (!m_token.is(symbol))
        reject("\"" + std::string(symbol) + "\" is expected");
    advance();
}

/// a ? b : c ? d : e, where what follows a colon is not nested: such chains are long in some descriptions.
void Parser::choice()
{
    const Level level(m_compiler, m_token.position);
    std::vector<std::size_t> jumps_to_the_end;
    operators(or_precedence);
    while (m_token.is("?")) {
        const std::size_t jump_over = emit(Action::jump_if_false, m_token.position);
        --m_depth;
        advance();
        choice();
        jumps_to_the_end.push_back(emit(Action::jump, m_token.position));
        expect(":");
        --m_depth; // on the way to what follows, the first branch has left no value
        land(jump_over);
        operators(or_precedence);
    }
    for (const std::size_t jump : jumps_to_the_end)
        land(jump);
}

/// Operators of at least this precedence and what is between them.
void Parser::operators(std::uint8_t lowest)
{
    operand();
    while (m_token.kind == Token::Kind::symbol) {
        const std::size_t position = m_token.position;
        if (m_token.is("||") && lowest <= or_precedence) {
            condition(Action::skip_if_true, or_precedence, position);
            continue;
        }
        if (m_token.is("&&") && lowest <= and_precedence) {
            condition(Action::skip_if_false, and_precedence, position);
            continue;
        }
        const std::size_t row = find_operation(Form::between, m_token.text);
        if (row == no_operation || operation(row).precedence < lowest)
            return;
        advance();
        const std::uint8_t precedence = operation(row).precedence;
        right_operand(precedence == power_precedence ? precedence : precedence + 1, position);
        emit(Action::calculate_two, position, row);
        --m_depth;
    }
}

void Parser::right_operand(int lowest, std::size_t position)
{
    const Level level(m_compiler, position);
    operators(static_cast<std::uint8_t>(lowest));
}

/// The operator && or || and what follows it.
void Parser::condition(Action skip, std::uint8_t precedence, std::size_t position)
{
    const std::size_t jump = emit(skip, position);
    --m_depth;
    advance();
    right_operand(precedence + 1, position);
    emit(Action::to_truth, position);
    land(jump);
}

void Parser::operand()
{
    const Token token = m_token;
    if (token.kind == Token::Kind::name) {
        name();
    } else if (token.kind == Token::Kind::number) {
        emit(Action::literal, token.position, m_compiler.add_literal(token.number));
        grow(1);
        advance();
    } else if (token.is("(")) {
        advance();
        choice();
        expect(")");
    } else {
        const std::size_t row =
            token.kind == Token::Kind::symbol ? find_operation(Form::before, token.text) : no_operation;
        if (row == no_operation)
            reject("a value is expected");
        const Level level(m_compiler, token.position);
        advance();
        operand();
        emit(Action::calculate_one, token.position, row);
    }
}

void Parser::name()
{
    const Token name = m_token;
    advance();
    if (m_token.is("(")) {
        function(name);
        return;
    }
    if (const auto* const known = m_compiler.names().find(name.text)) {
        symbol(name, *known);
        return;
    }
    if (name.text != "PI" && name.text != "E")
        throw TextFault{Fault::unknown_name, "nothing is named " + std::string(name.text.substr(0, 100)),
                        name.position};
    const Number value = Number::floating(name.text == "E" ? e : pi);
    emit(Action::literal, name.position, m_compiler.add_literal(value));
    grow(1);
}

void Parser::function(const Token& name)
{
    const std::size_t row = find_operation(Form::function, name.text);
    if (row == no_operation)
        throw TextFault{Fault::unknown_name, "no function is named " + std::string(name.text.substr(0, 100)),
                        name.position};
    std::size_t arguments = 0;
    do {
        advance(); // the bracket or a comma
        choice();
        ++arguments;
    } while (m_token.is(",") && arguments < operation(row).most);
    if (m_token.is(","))
        reject(arguments_text(operation(row)));
    expect(")");
    emit(arguments == 1 ? Action::calculate_one : Action::calculate_two, name.position, row);
    m_depth -= arguments - 1;
}

void Parser::symbol(const Token& name, const Names::Symbol& symbol)
{
    switch (symbol.kind) {
    case Names::Kind::variable:
        emit(Action::variable, name.position, m_compiler.add_variable(symbol.index));
        grow(1);
        return;
    case Names::Kind::constant: {
        Number value;
        try {
            value = parse_literal(symbol.text, m_compiler.arithmetic());
        } catch (const TextFault& fault) {
            throw TextFault{fault.fault, std::string(name.text) + " is " + fault.what, name.position};
        }
        emit(Action::literal, name.position, m_compiler.add_literal(value));
        grow(1);
        return;
    }
    case Names::Kind::expression:
        const std::uint32_t index = m_compiler.add_expression(name.text, symbol.text, name.position);
        emit(Action::expression, name.position, index);
        grow(1, m_compiler.stack_of(index)); // it leaves its result where its return address was
        return;
    }
}

std::size_t Parser::emit(Action action, std::size_t position, std::size_t operand)
{
    m_compiler.count_instruction(position);
    m_piece.code.push_back(
        {action, m_text_number, static_cast<std::uint32_t>(position), static_cast<std::uint32_t>(operand)});
    return m_piece.code.size() - 1;
}

void Parser::land(std::size_t jump)
{
    m_piece.code[jump].operand = static_cast<std::uint32_t>(m_piece.code.size() - jump);
}

void Parser::grow(std::size_t values, std::size_t for_a_moment)
{
    m_depth += values;
    m_piece.stack = std::max(m_piece.stack, m_depth + for_a_moment);
}

void Parser::reject(const std::string& what) const
{
    const bool is_at_end = m_token.kind == Token::Kind::end;
    throw TextFault{
        Fault::syntax,
        what + (is_at_end ? " at the end" : ", not \"" + std::string(m_token.text.substr(0, 100)) + "\""),
        m_token.position};
}

} // namespace zvgenapi::formula
