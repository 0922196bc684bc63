#include "nodes/formulas.h"

#include <deque>
#include <string>
#include <utility>

#include "nodes/Step.h"
#include "nodes/limits.h"
#include "nodes/values.h"

namespace zvgenapi {

namespace {

using formula::Arithmetic;
using formula::Fault;
using formula::FormulaError;
using formula::Names;
using Bound = CompiledFormula::Bound;

constexpr std::pair<const char*, VariablePart> parts[] = {
    {".Value", VariablePart::value},
    {".Min", VariablePart::minimum},
    {".Max", VariablePart::maximum},
    {".Inc", VariablePart::increment},
};

[[noreturn]] void pass_on(const Core& core, NodeIndex node, const Element& element, const FormulaError& error)
{
    const std::string text(element.text.substr(0, 200));
    if (error.fault() == Fault::limit)
        fail(core, node, ErrorKind::limit, "the formula \"" + text + "\": " + error.what(), &element);
    fail(core, node, ErrorKind::formula, "the formula \"" + text + "\" cannot be evaluated: " + error.what(),
         &element);
}

/// The names that the formulas of a node may use.
class NamesOfNode {
public:
    NamesOfNode(const Core& core, NodeIndex node, Tag formula)
    {
        if (formula != Tag::formula)
            add_variable(formula == Tag::formula_to ? "FROM" : "TO", {nullptr, {}});
        for (const Element& element : core.description.of(node)) {
            if (element.tag == Tag::constant)
                m_names.add_constant(element.name, element.text);
            else if (element.tag == Tag::expression)
                m_names.add_expression(element.name, element.text);
            else if (element.tag == Tag::p_variable)
                add_variable(element.name, {&element, parse_variable(element.name)});
        }
        add_parts(core, node);
    }

    const Names& names() const noexcept { return m_names; }
    std::vector<Bound> take_variables() { return std::move(m_variables); }

private:
    void add_variable(std::string_view name, const Bound& bound)
    {
        m_names.add_variable(name, m_variables.size());
        m_variables.push_back(bound);
    }

    /// A formula may ask for VAR.Min where only VAR is declared.
    void add_parts(const Core& core, NodeIndex node)
    {
        for (const Element& element : core.description.of(node)) {
            if (element.tag != Tag::p_variable || element.name.find('.') != std::string_view::npos)
                continue;
            for (const auto& [ending, part] : parts)
                add_variable(m_texts.emplace_back(std::string(element.name) + ending),
                             {&element, {part, {}}});
        }
    }

    Names m_names;
    std::vector<Bound> m_variables;
    std::deque<std::string> m_texts; // names are kept as views
};

const CompiledFormula& compiled(Core& core, NodeIndex node, Tag tag, const Element& element)
{
    const auto found = core.formulas.find(&element);
    if (found != core.formulas.end())
        return found->second;
    const NodeType type = core.description.nodes[node].type;
    const bool is_whole = type == NodeType::int_swiss_knife || type == NodeType::int_converter;
    NamesOfNode names(core, node, tag);
    auto formula = formula::Formula::compile(
        element.text, is_whole ? Arithmetic::integer : Arithmetic::floating, names.names());
    CompiledFormula result{std::move(formula), names.take_variables()};
    return core.formulas.emplace(&element, std::move(result)).first->second;
}

Number read_entry(Core& core, NodeIndex node, const Bound& bound)
{
    const NodeIndex enumeration = target_of(core, node, *bound.element);
    take_steps(core, node, core.description.of(enumeration).size());
    for (const Element& element : core.description.of(enumeration))
        if (element.tag == Tag::enum_entry &&
            core.description.nodes[element.target].symbolic == bound.variable.entry)
            return read_number(core, element.target);
    fail(core, node, ErrorKind::description,
         std::string(core.description.nodes[enumeration].name) + " has no entry " +
             std::string(bound.variable.entry.substr(0, 100)),
         bound.element);
}

Number read_variable(Core& core, NodeIndex node, const Bound& bound)
{
    const NodeIndex target = target_of(core, node, *bound.element);
    switch (bound.variable.part) {
    case VariablePart::minimum:
        return limit_of(core, target, Limit::minimum);
    case VariablePart::maximum:
        return limit_of(core, target, Limit::maximum);
    case VariablePart::increment:
        return limit_of(core, target, Limit::increment);
    case VariablePart::entry:
        return read_entry(core, node, bound);
    case VariablePart::value:
        break;
    }
    return read_number(core, target);
}

} // namespace

Number evaluate(Core& core, NodeIndex node, Tag tag, const Number& input)
{
    const Element* const element = core.description.find(node, tag);
    if (element == nullptr)
        fail(core, node, ErrorKind::description, std::string("it has no ") + element_name(tag));
    try {
        const CompiledFormula& formula = compiled(core, node, tag, *element);
        const auto read = [&](std::size_t index) {
            const Bound& bound = formula.variables[index];
            return bound.element == nullptr ? input : read_variable(core, node, bound);
        };
        return formula.formula.evaluate(read, core.query.steps);
    } catch (const FormulaError& error) {
        pass_on(core, node, *element, error);
    }
}

} // namespace zvgenapi
