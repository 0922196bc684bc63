#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "formula/FormulaError.h"
#include "formula/Number.h"

namespace zvgenapi::formula {

/// What a formula calculates with. In integer arithmetic (IntSwissKnife, IntConverter) variables become whole
/// numbers; only a literal with a fraction or an exponent, PI, E and functions that have no whole result make
/// a floating value, and so is what is calculated from it. In floating arithmetic (SwissKnife, Converter)
/// every value is a double; bit operators and shifts cut off fractions.
enum class Arithmetic { integer, floating };

/// How large a formula may be.
struct FormulaLimits {
    std::size_t text{1U << 16U}; ///< characters of the formula and of every expression that it uses, together
    std::size_t nesting{600};    ///< brackets and operators within one another; expressions count, too
    std::size_t expressions{100};        ///< within one another
    std::size_t instructions{1U << 16U}; ///< of the compiled program
};

/// The names that a formula may use. It keeps views: names and texts must stay alive until the formulas that
/// use them are compiled. Names are case-sensitive and may contain dots ("VAR.Min"). They precede PI and E.
class Names {
public:
    /// Each adds a name and returns whether it was new; of two equal names the first one counts.
    bool add_variable(std::string_view name, std::size_t index);
    bool add_constant(std::string_view name, std::string_view literal); ///< a number, with a sign or without
    bool add_expression(std::string_view name, std::string_view text);  ///< may use all of these names

    enum class Kind { variable, constant, expression };
    struct Symbol {
        Kind kind;
        std::size_t index;     ///< of a variable
        std::string_view text; ///< of a constant or an expression
    };
    const Symbol* find(std::string_view name) const;

private:
    std::unordered_map<std::string_view, Symbol> m_symbols;
};

/// How many steps are left to the evaluations of one query.
class StepBudget {
public:
    explicit StepBudget(std::uint64_t steps) noexcept : m_left(steps) {}
    std::uint64_t left() const noexcept { return m_left; }
    /// Throws FormulaError (Fault::limit) if fewer are left.
    void take(std::uint64_t steps);

private:
    std::uint64_t m_left;
};

/// A reference to something that can be called with the index of a variable and returns its Number, such as a
/// lambda. It does not own or copy it.
class VariableReader {
public:
    template <class Callable>
    VariableReader(const Callable& callable) noexcept // not explicit, so that a lambda can be passed
        : m_callable(&callable), m_call([](const void* object, std::size_t index) -> Number {
              return (*static_cast<const Callable*>(object))(index);
          })
    {
    }
    Number operator()(std::size_t index) const { return m_call(m_callable, index); }

private:
    const void* m_callable;
    Number (*m_call)(const void* callable, std::size_t index);
};

struct Program;

/// A compiled formula. It never changes, so several threads may evaluate it at the same time.
class Formula {
public:
    /// Throws FormulaError with the position in the text: not a formula, an unknown name, a cycle of
    /// expressions, too large.
    static Formula compile(std::string_view text, Arithmetic arithmetic, const Names& names,
                           const FormulaLimits& limits = {});

    Formula(Formula&&) noexcept;
    Formula& operator=(Formula&&) noexcept;
    ~Formula();

    /// The result: a whole number in integer arithmetic, where a floating result is cut off at its point, and
    /// a floating one otherwise. Each variable is read once, when its value is first needed, and not for a
    /// branch of
    /// ?:, && or || that is not taken. Allocates nothing unless the formula needs more than 24 values at a
    /// time. Throws FormulaError (Fault::value, Fault::limit) and what the reader throws.
    Number evaluate(VariableReader read_variable, StepBudget& budget) const;

    /// The indexes of the variables that the formula or its expressions use, each once, in the order of first
    /// use.
    const std::vector<std::size_t>& variables() const noexcept;

private:
    explicit Formula(std::unique_ptr<const Program> program) noexcept;

    std::unique_ptr<const Program> m_program;
};

} // namespace zvgenapi::formula
