#include "genapi_differential/known_differences.h"

#include <algorithm>
#include <cfloat>
#include <string>
#include <vector>

namespace zvgenapi::differential {

namespace {

/// Questions about how a number is shown.
bool is_shown_with_value(Question question)
{
    return question == Question::unit || question == Question::representation ||
           question == Question::notation || question == Question::precision;
}

bool is_unsaid(const Node& node, Question question)
{
    return !node.property(question == Question::unit             ? "Unit"
                          : question == Question::representation ? "Representation"
                          : question == Question::notation       ? "DisplayNotation"
                                                                 : "DisplayPrecision");
}

bool is_limit(Question question) { return question == Question::minimum || question == Question::maximum; }

bool is_unlimited(const std::string& limit)
{
    return limit == text_of(DBL_MAX) || limit == text_of(-DBL_MAX);
}

bool has_copies(const Node& node) { return node.property("pValueCopy").has_value(); }

bool is_formula(const Node& node)
{
    return node.type() == NodeType::swiss_knife || node.type() == NodeType::int_swiss_knife;
}

bool is_converter(const Node& node)
{
    return node.type() == NodeType::converter || node.type() == NodeType::int_converter;
}

bool has_contradictory_limits(const Node& node)
{
    try {
        const auto integer = node.try_as<Integer>();
        const auto number = node.try_as<Float>();
        return (integer && integer.minimum() > integer.maximum()) ||
               (number && number.minimum() > number.maximum());
    } catch (const Error&) {
        return false;
    }
}

bool reaches_too_far(const Answer& ours)
{
    return ours.is_error && ours.text.find("beyond the last address") != std::string::npos;
}

/// Whether the condition holds for the node itself, or for one that it needs, however far down.
template <class Condition>
bool depends_on(const Node& node, const Condition& holds)
{
    std::vector<Node> open{node};
    for (std::size_t next = 0; next < open.size(); ++next) {
        if (holds(open[next]))
            return true;
        for (const auto& child : open[next].children())
            if (std::find(open.begin(), open.end(), child) == open.end())
                open.push_back(child);
    }
    return false;
}

struct QuestionRow {
    const char* reason;
    bool (*applies)(const Node& node, Question question, const Answer& ours, const Answer& theirs);
};

constexpr QuestionRow question_rows[] = {
    {"the other library leaves it to its user to look at the access mode before reading",
     [](const Node&, Question, const Answer& ours, const Answer&) {
         return ours.is_error && ours.kind == ErrorKind::access;
     }},
    {"without a DisplayName, the name is shown",
     [](const Node& node, Question question, const Answer& ours, const Answer& theirs) {
         return question == Question::display_name && theirs.text.empty() && ours.text == node.name();
     }},
    {"what the node says nothing about, the node that has its value says",
     [](const Node& node, Question question, const Answer& ours, const Answer&) {
         return is_shown_with_value(question) && is_unsaid(node, question) && node.property("pValue") &&
                !ours.is_error;
     }},
    {"a register must not reach beyond the last address",
     [](const Node&, Question, const Answer& ours, const Answer&) { return reaches_too_far(ours); }},
    {"a formula without a result is an error, not 0",
     [](const Node&, Question, const Answer& ours, const Answer&) {
         return ours.is_error && ours.kind == ErrorKind::formula;
     }},
    {"a formula cannot be read while one of its variables cannot",
     [](const Node& node, Question question, const Answer& ours, const Answer&) {
         const auto cannot_be_read = [](const Node& below) {
             return (is_formula(below) || is_converter(below)) && !below.is_readable();
         };
         return question == Question::access && !ours.is_error && depends_on(node, cannot_be_read);
     }},
    {"what may be done with an indexed node depends on the node that is selected",
     [](const Node& node, Question question, const Answer& ours, const Answer&) {
         const auto is_indexed = [](const Node& below) { return below.property("pIndex").has_value(); };
         return question == Question::access && !ours.is_error && depends_on(node, is_indexed);
     }},
    {"an imposed access mode narrows that of the node, instead of replacing it",
     [](const Node& node, Question question, const Answer& ours, const Answer&) {
         const auto is_imposed = [](const Node& below) {
             return below.property("ImposedAccessMode").has_value();
         };
         return question == Question::access && !ours.is_error && depends_on(node, is_imposed);
     }},
    {"a node whose copies cannot be written cannot be written",
     [](const Node& node, Question question, const Answer& ours, const Answer&) {
         return question == Question::access && !ours.is_error && depends_on(node, has_copies);
     }},
    {"if only one limit is known below a converter, the other library knows none, or makes it the wrong one",
     [](const Node& node, Question question, const Answer& ours, const Answer& theirs) {
         return is_limit(question) && depends_on(node, is_converter) &&
                (is_unlimited(ours.text) || is_unlimited(theirs.text));
     }},
    {"limits that exclude each other are not exchanged",
     [](const Node& node, Question question, const Answer& ours, const Answer&) {
         return is_limit(question) && !ours.is_error && depends_on(node, has_contradictory_limits);
     }},
    {"a Float has the increment of the whole number that has its value",
     [](const Node& node, Question question, const Answer& ours, const Answer& theirs) {
         return question == Question::increment && node.type() == NodeType::float_ &&
                node.property("pValue") && !node.property("Inc") && !ours.is_error && theirs.text == "0";
     }},
    {"a Float without limits has those of the whole number that has its value",
     [](const Node& node, Question question, const Answer&, const Answer& theirs) {
         return is_limit(question) && node.type() == NodeType::float_ && node.property("pValue") &&
                is_unlimited(theirs.text);
     }},
};

struct WriteRow {
    const char* reason;
    bool (*applies)(const Node& node, const Setting& setting, const Answer& ours, const Answer& theirs);
};

constexpr WriteRow write_rows[] = {
    {"the other library leaves it to its user to look at access mode and limits before writing",
     [](const Node&, const Setting&, const Answer& ours, const Answer&) {
         return ours.is_error && (ours.kind == ErrorKind::access || ours.kind == ErrorKind::range);
     }},
    {"a register must not reach beyond the last address",
     [](const Node&, const Setting&, const Answer& ours, const Answer&) { return reaches_too_far(ours); }},
    {"a formula without a result is an error, not 0",
     [](const Node&, const Setting&, const Answer& ours, const Answer&) {
         return ours.is_error && ours.kind == ErrorKind::formula;
     }},
    {"the other library does not write copies",
     [](const Node& node, const Setting&, const Answer& ours, const Answer&) {
         return !ours.is_error && depends_on(node, has_copies);
     }},
    {"the other bits of a register that can only be written are not read",
     [](const Node& node, const Setting&, const Answer& ours, const Answer&) {
         const auto is_only_written = [](const Node& below) {
             const bool is_masked =
                 below.type() == NodeType::masked_int_reg || below.type() == NodeType::struct_entry;
             return is_masked && (below.access() == AccessMode::WO || below.property("AccessMode") == "WO");
         };
         return !ours.is_error && depends_on(node, is_only_written);
     }},
};

} // namespace

const char* reason_for_difference(const Node& node, Question question, const Answer& ours,
                                  const Answer& theirs)
{
    for (const auto& row : question_rows)
        if (row.applies(node, question, ours, theirs))
            return row.reason;
    return nullptr;
}

const char* reason_for_difference(const Node& node, const Setting& setting, const Answer& ours,
                                  const Answer& theirs)
{
    for (const auto& row : write_rows)
        if (row.applies(node, setting, ours, theirs))
            return row.reason;
    return nullptr;
}

} // namespace zvgenapi::differential
