#include "formula/Formula.h"

#include <array>
#include <string>
#include <utility>

#include "formula/Compiler.h"
#include "formula/Program.h"
#include "formula/arithmetic.h"
#include "formula/operations.h"

namespace zvgenapi::formula {

namespace {

/// What a formula can do without memory from the heap.
constexpr std::size_t most_cells_in_place = 24;

struct Cell {
    Number number;
    bool is_known{false}; ///< of a variable or an expression
};

/// One evaluation of a program.
class Evaluation {
public:
    Evaluation(const Program& program, VariableReader read_variable, Cell* cells) noexcept
        : m_program(program), m_read_variable(read_variable), m_variables(cells),
          m_expressions(cells + program.variables.size()), m_top(m_expressions + program.expressions.size())
    {
    }

    Number run()
    {
        const Instruction* const code = m_program.code.data();
        const Instruction* next = code;
        while (next->action != Action::finish) {
            ++m_steps;
            try {
                next = step(next);
            } catch (const NoResult& problem) {
                fail(*next, problem);
            }
        }
        try {
            return as_variable(m_top->number);
        } catch (const NoResult& problem) {
            fail(*next, problem);
        }
    }

    std::size_t steps() const noexcept { return m_steps; }

private:
    const Instruction* step(const Instruction* now)
    {
        switch (now->action) {
        case Action::literal:
            push(m_program.literals[now->operand]);
            break;
        case Action::variable:
            push(variable(now->operand));
            break;
        case Action::calculate_one:
            m_top->number = in_arithmetic(operation(now->operand).calculate(m_top->number, Number()));
            break;
        case Action::calculate_two:
            --m_top;
            m_top->number = in_arithmetic(operation(now->operand).calculate(m_top->number, m_top[1].number));
            break;
        case Action::to_truth:
            m_top->number = truth(m_top->number.is_true());
            break;
        case Action::jump:
            return now + now->operand;
        case Action::jump_if_false:
            return (m_top--)->number.is_true() ? now + 1 : now + now->operand;
        case Action::skip_if_false:
        case Action::skip_if_true:
            return skip(now);
        case Action::expression:
            return begin_expression(now);
        case Action::end_of_expression:
            return end_expression(now);
        case Action::finish:
            break;
        }
        return now + 1;
    }

    const Instruction* skip(const Instruction* now)
    {
        const bool value = m_top->number.is_true();
        if (value == (now->action == Action::skip_if_true)) {
            m_top->number = truth(value);
            return now + now->operand;
        }
        --m_top;
        return now + 1;
    }

    /// The return address waits on the stack, below what the expression pushes.
    const Instruction* begin_expression(const Instruction* now)
    {
        const Cell& known = m_expressions[now->operand];
        if (known.is_known) {
            push(known.number);
            return now + 1;
        }
        const Instruction* const code = m_program.code.data();
        push(Number::integer(now + 1 - code));
        return code + m_program.expressions[now->operand].start;
    }

    const Instruction* end_expression(const Instruction* now)
    {
        const Number result = (m_top--)->number;
        m_expressions[now->operand] = {result, true};
        const std::int64_t return_address = m_top->number.to_integer();
        m_top->number = result;
        return m_program.code.data() + return_address;
    }

    const Number& variable(std::size_t slot)
    {
        Cell& cell = m_variables[slot];
        if (!cell.is_known)
            cell = {as_variable(m_read_variable(m_program.variables[slot])), true};
        return cell.number;
    }

    void push(const Number& number) { (++m_top)->number = number; }

    Number truth(bool value) const { return in_arithmetic(Number::integer(value ? 1 : 0)); }

    /// In floating arithmetic nothing is whole. In integer arithmetic a calculation may have a floating
    /// result.
    Number in_arithmetic(const Number& number) const
    {
        const bool is_floating = m_program.arithmetic == Arithmetic::floating && number.is_integer();
        return is_floating ? Number::floating(number.to_floating()) : number;
    }

    /// What comes in and what goes out is of one kind.
    Number as_variable(const Number& number) const
    {
        if (m_program.arithmetic == Arithmetic::floating)
            return Number::floating(number.to_floating());
        return Number::integer(checked_integer(number));
    }

    [[noreturn]] void fail(const Instruction& where, const NoResult& problem) const
    {
        const std::string expression = where.text == 0 ? "" : m_program.expressions[where.text - 1U].name;
        throw FormulaError(Fault::value, problem.reason, where.position, expression);
    }

    const Program& m_program;
    VariableReader m_read_variable;
    Cell* m_variables;
    Cell* m_expressions;
    Cell* m_top; ///< the cell of the last value; at first one that is not used
    std::size_t m_steps{0};
};

} // namespace

bool Names::add_variable(std::string_view name, std::size_t index)
{
    return m_symbols.emplace(name, Symbol{Kind::variable, index, {}}).second;
}

bool Names::add_constant(std::string_view name, std::string_view literal)
{
    return m_symbols.emplace(name, Symbol{Kind::constant, 0, literal}).second;
}

bool Names::add_expression(std::string_view name, std::string_view text)
{
    return m_symbols.emplace(name, Symbol{Kind::expression, 0, text}).second;
}

const Names::Symbol* Names::find(std::string_view name) const
{
    const auto found = m_symbols.find(name);
    return found == m_symbols.end() ? nullptr : &found->second;
}

void StepBudget::take(std::uint64_t steps)
{
    if (steps > m_left) {
        m_left = 0;
        throw FormulaError(Fault::limit, "too many steps");
    }
    m_left -= steps;
}

Formula::Formula(std::unique_ptr<const Program> program) noexcept : m_program(std::move(program)) {}
Formula::Formula(Formula&&) noexcept = default;
Formula& Formula::operator=(Formula&&) noexcept = default;
Formula::~Formula() = default;

Formula Formula::compile(std::string_view text, Arithmetic arithmetic, const Names& names,
                         const FormulaLimits& limits)
{
    return Formula(Compiler(arithmetic, names, limits).compile(text));
}

Number Formula::evaluate(VariableReader read_variable, StepBudget& budget) const
{
    std::array<Cell, most_cells_in_place> in_place;
    std::vector<Cell> on_heap;
    Cell* cells = in_place.data();
    if (m_program->cells() > in_place.size()) {
        on_heap.resize(m_program->cells());
        cells = on_heap.data();
    }
    Evaluation evaluation(*m_program, read_variable, cells);
    const Number result = evaluation.run();
    budget.take(evaluation.steps());
    return result;
}

const std::vector<std::size_t>& Formula::variables() const noexcept { return m_program->variables; }

} // namespace zvgenapi::formula
