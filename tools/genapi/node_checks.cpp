#include "genapi/node_checks.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

#include "genapi/formulas.h"

namespace zvgentl::tool {

namespace {

// Far beyond what devices have, far below what ends the stack or takes long.
constexpr std::size_t most_levels = 200;
constexpr std::size_t most_steps = 10000;
constexpr long long longest_register = 64LL << 20U;

/// What of a node is asked for. Limits may depend on the value of a node whose limits depend on this one's
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
                    objection =
                        owner.name + " refers to " + property.text + ", which the description does not have";
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
