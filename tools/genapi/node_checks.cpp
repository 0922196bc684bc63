#include "genapi/node_checks.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include <arv.h>

#include "genapi/Nodes.h"
#include "gentl/texts.h"

namespace zvgentl::tool {

namespace {

// Far beyond what devices have, far below what ends the stack or takes long.
constexpr std::size_t most_levels = 200;
constexpr std::size_t most_steps = 10000;
constexpr long long longest_register = 64LL << 20U;

/// What is asked about a node. Limits may depend on the value of a node whose limits depend on this one's
/// value: only a circle through the same question has no end.
enum class Aspect { value, limits, access };

using Question = std::pair<const GraphNode*, Aspect>;

/// What is known about a question; every question is answered once.
struct Answer {
    bool is_open{true}; // still being followed: coming here again means a circle
    std::size_t levels{1};
    std::size_t steps{1};
    std::string objection;
};

struct Reference {
    const char* tag;
    Aspect from;
    Aspect to;
};

constexpr Reference references[] = {
    {"pValue", Aspect::value, Aspect::value},          {"pValueDefault", Aspect::value, Aspect::value},
    {"pValueIndexed", Aspect::value, Aspect::value},   {"pValueCopy", Aspect::value, Aspect::value},
    {"pIndex", Aspect::value, Aspect::value},          {"pOffset", Aspect::value, Aspect::value},
    {"pVariable", Aspect::value, Aspect::value},       {"pAddress", Aspect::value, Aspect::value},
    {"pLength", Aspect::value, Aspect::value},         {"pOnValue", Aspect::value, Aspect::value},
    {"pOffValue", Aspect::value, Aspect::value},       {"pCommandValue", Aspect::value, Aspect::value},
    {"pPort", Aspect::value, Aspect::value},           {"pMin", Aspect::limits, Aspect::value},
    {"pMax", Aspect::limits, Aspect::value},           {"pInc", Aspect::limits, Aspect::value},
    {"pVariable", Aspect::limits, Aspect::value},      {"pValue", Aspect::limits, Aspect::limits},
    {"pIsImplemented", Aspect::access, Aspect::value}, {"pIsAvailable", Aspect::access, Aspect::value},
    {"pIsLocked", Aspect::access, Aspect::value},      {"pValue", Aspect::access, Aspect::access},
};

/// A formula may ask for more than the value of a node; the parser takes the value all the same.
bool asks_for_more_than_the_value(const std::string& variable)
{
    return ends_in(variable, ".Min") || ends_in(variable, ".Max") || ends_in(variable, ".Inc") ||
           variable.find(".Enum") != std::string::npos;
}

bool is_whole_number_formula(const std::string& element)
{
    return element == "IntSwissKnife" || element == "IntConverter";
}

/// Evaluates it with every variable 1: what the parser then objects to is the formula itself, except that an
/// expression in it may be 0.
std::string objection_to(const GraphNode& node, const std::string& formula)
{
    const std::unique_ptr<ArvEvaluator, ReleaseObject> evaluator(arv_evaluator_new(formula.c_str()));
    for (const auto& property : node.properties) {
        if (property.tag == "Expression")
            arv_evaluator_set_sub_expression(evaluator.get(), property.name.c_str(), property.text.c_str());
        else if (property.tag == "Constant")
            arv_evaluator_set_constant(evaluator.get(), property.name.c_str(), property.text.c_str());
        else if (property.tag == "pVariable")
            arv_evaluator_set_int64_variable(evaluator.get(), property.name.c_str(), 1);
    }
    for (const char* const variable : {"FROM", "TO"})
        if (node.element == "Converter" || node.element == "IntConverter")
            arv_evaluator_set_int64_variable(evaluator.get(), variable, 1);

    GError* error = nullptr;
    if (is_whole_number_formula(node.element))
        arv_evaluator_evaluate_as_int64(evaluator.get(), &error);
    else
        arv_evaluator_evaluate_as_double(evaluator.get(), &error);
    const std::string text = error == nullptr ? "" : error->message;
    g_clear_error(&error);
    return text.find("division by zero") == std::string::npos ? text : std::string();
}

/// Why the parser cannot evaluate the formulas of this node, which would then be 0 without an error; empty
/// when it can, or the node has none.
std::string formula_objection(const GraphNode& node)
{
    for (const auto& property : node.properties)
        if (property.tag == "pVariable" && asks_for_more_than_the_value(property.name))
            return "its formula uses " + property.name + ", which this program cannot evaluate";
    for (const auto& property : node.properties) {
        if (property.tag != "Formula" && property.tag != "FormulaTo" && property.tag != "FormulaFrom")
            continue;
        const std::string objection = objection_to(node, property.text);
        if (!objection.empty())
            return "its formula \"" + property.text.substr(0, 200) + "\" cannot be evaluated: " + objection;
    }
    return {};
}

class Checker {
public:
    explicit Checker(const NodeGraph& graph) : m_graph(graph) {}

    const std::string& objection(const Question& question)
    {
        follow(question);
        return m_answers.at(question).objection;
    }

private:
    struct Step {
        Question question;
        std::vector<Question> next;
        std::size_t done{0};
    };

    /// With a stack of its own, because descriptions decide how deep it goes.
    void follow(const Question& question)
    {
        if (m_answers.count(question) != 0)
            return;
        std::vector<Step> steps;
        open(question, steps);
        while (!steps.empty()) {
            Step& step = steps.back();
            if (step.done == step.next.size()) {
                m_answers.at(step.question).is_open = false;
                steps.pop_back();
                if (!steps.empty())
                    take_over(steps.back());
                continue;
            }
            if (m_answers.count(step.next[step.done]) != 0)
                take_over(step);
            else
                open(Question(step.next[step.done]), steps);
        }
    }

    void open(const Question& question, std::vector<Step>& steps)
    {
        Answer& answer = m_answers[question];
        answer.objection = own_objection(*question.first);
        Step step{question, {}, 0};
        add_references(*question.first, *question.first, question.second, step.next, answer.objection);
        for (const auto& formula : question.first->formulas)
            if (question.second == Aspect::value)
                add_references(*question.first, formula, question.second, step.next, answer.objection);
        const GraphNode* const parent = m_graph.find(question.first->parent);
        if (question.first->element == "StructEntry" && parent != nullptr)
            step.next.emplace_back(parent, question.second);
        if (question.first->element == "Enumeration")
            for (const auto* const entry : m_graph.entries(question.first->name))
                for (const Aspect aspect : {Aspect::value, Aspect::access})
                    add_references(*question.first, *entry, aspect, step.next, answer.objection);
        steps.push_back(std::move(step));
    }

    void add_references(const GraphNode& owner, const GraphNode& node, Aspect aspect,
                        std::vector<Question>& next, std::string& objection) const
    {
        for (const auto& property : node.properties)
            for (const auto& reference : references) {
                if (reference.from != aspect || property.tag != reference.tag)
                    continue;
                const GraphNode* const target = m_graph.find(property.text);
                if (target != nullptr)
                    next.emplace_back(target, reference.to);
                else if (objection.empty())
                    objection = owner.name + " refers to " + property.text +
                                ", which the description does not contain";
            }
    }

    /// Adds the answer to the next question of this step, which is known by now.
    void take_over(Step& step)
    {
        const Question& next = step.next[step.done++];
        const Answer& known = m_answers.at(next);
        Answer& answer = m_answers.at(step.question);
        answer.levels = std::max(answer.levels, std::min(most_levels, known.levels) + 1);
        answer.steps = std::min(most_steps, answer.steps + known.steps);
        if (!answer.objection.empty())
            return;
        if (known.is_open)
            answer.objection = next.first->name + " depends on itself";
        else if (!known.objection.empty())
            answer.objection = known.objection;
        else if (answer.levels > most_levels)
            answer.objection = step.question.first->name + " depends on too long a chain of nodes";
        else if (answer.steps >= most_steps)
            answer.objection = step.question.first->name + " depends on too many nodes";
    }

    static std::string own_objection(const GraphNode& node)
    {
        std::string objection = length_objection(node);
        if (objection.empty())
            objection = formula_objection(node);
        for (const auto& formula : node.formulas)
            if (objection.empty())
                objection = formula_objection(formula);
        return objection.empty() ? objection : node.name + ": " + objection;
    }

    static std::string length_objection(const GraphNode& node)
    {
        const std::string* const text = node.find("Length");
        if (text == nullptr)
            return {};
        long long length = 0;
        const long long most = longest_length(node.element);
        if (!parse_literal(*text, length) || length < 1 || length > most)
            return "a register of this kind cannot be " + *text + " bytes long";
        return {};
    }

    static long long longest_length(const std::string& element)
    {
        const bool is_number = element == "IntReg" || element == "MaskedIntReg" || element == "FloatReg";
        return is_number ? 8 : longest_register;
    }

    const NodeGraph& m_graph;
    std::map<Question, Answer> m_answers;
};

} // namespace

std::map<std::string, std::string> find_unusable_nodes(const NodeGraph& graph)
{
    std::map<std::string, std::string> unusable;
    Checker checker(graph);
    for (const auto& node : graph.nodes()) {
        if (graph.find(node.name) != &node)
            continue;
        for (const Aspect aspect : {Aspect::value, Aspect::limits, Aspect::access}) {
            const std::string& objection = checker.objection({&node, aspect});
            if (!objection.empty())
                unusable.emplace(node.name, objection);
        }
    }
    return unusable;
}

bool is_reference(const std::string& tag) noexcept
{
    return std::any_of(std::begin(references), std::end(references),
                       [&tag](const Reference& reference) { return tag == reference.tag; });
}

} // namespace zvgentl::tool
