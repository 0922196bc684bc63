#include "genapi/formulas.h"

#include <algorithm>
#include <memory>

#include <arv.h>

namespace zvgentl::tool {

namespace {

struct Unref {
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};

bool ends_in(const std::string& text, const std::string& ending)
{
    return text.size() > ending.size() &&
           text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

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
    const std::unique_ptr<ArvEvaluator, Unref> evaluator(arv_evaluator_new(formula.c_str()));
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

} // namespace

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

} // namespace zvgentl::tool
