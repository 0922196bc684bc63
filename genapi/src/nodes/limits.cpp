#include "nodes/limits.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "nodes/Step.h"
#include "nodes/formulas.h"
#include "nodes/registers.h"
#include "nodes/values.h"

namespace zvgenapi {

namespace {

using Whole = std::numeric_limits<std::int64_t>;
using Real = std::numeric_limits<double>;

// By Limit: the elements, as a reference and as a literal.
constexpr std::pair<Tag, Tag> tags[] = {
    {Tag::p_min, Tag::min}, {Tag::p_max, Tag::max}, {Tag::p_inc, Tag::inc}};

bool is_whole(const Core& core, NodeIndex node)
{
    return interface_of(core.description.nodes[node].type) == InterfaceType::integer;
}

Number widest(bool whole, Limit limit) noexcept
{
    switch (limit) {
    case Limit::minimum:
        return whole ? Number::integer(Whole::min()) : Number::floating(Real::lowest());
    case Limit::maximum:
        return whole ? Number::integer(Whole::max()) : Number::floating(Real::max());
    case Limit::increment:
        break;
    }
    return whole ? Number::integer(1) : Number::floating(0);
}

bool is_widest(const Number& number, Limit limit) noexcept
{
    const Number most = widest(number.is_integer(), limit);
    return number.is_integer() ? number.to_integer() == most.to_integer()
                               : number.to_floating() == most.to_floating();
}

/// A limit as the node itself counts: a whole number that lies within, or a floating one.
Number fitted(bool whole, Limit limit, const Number& number) noexcept
{
    if (!whole)
        return Number::floating(number.to_floating());
    if (number.is_integer())
        return number;
    const double value = limit == Limit::minimum   ? std::ceil(number.to_floating())
                         : limit == Limit::maximum ? std::floor(number.to_floating())
                                                   : std::round(number.to_floating());
    if (std::isnan(value))
        return widest(true, limit);
    constexpr double most = 9223372036854775808.0;
    if (value < -most || value >= most)
        return Number::integer(value < 0 ? Whole::min() : Whole::max());
    return Number::integer(static_cast<std::int64_t>(value));
}

/// What the formula makes of a limit of the node below; nothing where it has no result.
std::optional<Number> converted(Core& core, NodeIndex node, const Number& number)
{
    try {
        const Number result = evaluate(core, node, Tag::formula_from, number);
        return std::isnan(result.to_floating()) ? std::nullopt : std::optional<Number>(result);
    } catch (const Error& error) {
        if (error.kind() != ErrorKind::formula && error.kind() != ErrorKind::value)
            throw;
        return std::nullopt;
    }
}

bool is_less(const Number& one, const Number& other)
{
    return one.is_integer() && other.is_integer() ? one.to_integer() < other.to_integer()
                                                  : one.to_floating() < other.to_floating();
}

/// A step of the node below is a step of a linear converter, of the same size everywhere.
Number converted_increment(Core& core, NodeIndex node, NodeIndex target)
{
    const bool whole = is_whole(core, node);
    const Number step = limit_of(core, target, Limit::increment);
    const Number low = limit_of(core, target, Limit::minimum);
    if (!parse_yes_no(text_in(core, node, Tag::is_linear)).value_or(false) || !step.is_true())
        return widest(whole, Limit::increment);
    const auto start = converted(core, node, low);
    const auto next = converted(core, node, Number::floating(low.to_floating() + step.to_floating()));
    if (!start || !next)
        return widest(whole, Limit::increment);
    return fitted(whole, Limit::increment,
                  Number::floating(std::fabs(next->to_floating() - start->to_floating())));
}

/// A number one step nearer to the end without a limit. If there is none, it is that end already.
Number stepped(const Number& number, Limit towards)
{
    const std::int64_t step = towards == Limit::maximum ? 1 : -1;
    if (!number.is_integer())
        return Number::floating(number.to_floating() + static_cast<double>(step));
    return is_widest(number, towards) ? number : Number::integer(number.to_integer() + step);
}

/// Whether the formula's results fall where the values below rise. Ends without a limit tell nothing, so that
/// a step from the other end is looked at. Nothing if the formula has no results.
std::optional<bool> is_falling(Core& core, NodeIndex node, const Number& low, const Number& high,
                               bool has_low, bool has_high)
{
    const std::string_view slope = text_in(core, node, Tag::slope);
    if (slope == "Increasing" || slope == "Decreasing")
        return slope == "Decreasing";
    const auto start = converted(core, node, has_low ? low : stepped(high, Limit::minimum));
    const auto end = converted(core, node, has_high ? high : stepped(low, Limit::maximum));
    return start && end ? std::optional<bool>(is_less(*end, *start)) : std::nullopt;
}

/// What has no limit below has none above.
Number converted_limit(Core& core, NodeIndex node, NodeIndex target, Limit limit)
{
    const bool whole = is_whole(core, node);
    if (limit == Limit::increment)
        return converted_increment(core, node, target);
    const Number low = limit_of(core, target, Limit::minimum);
    const Number high = limit_of(core, target, Limit::maximum);
    const bool has_low = !is_widest(low, Limit::minimum);
    const bool has_high = !is_widest(high, Limit::maximum);
    if (text_in(core, node, Tag::slope) == "Varying" || (!has_low && !has_high))
        return widest(whole, limit);
    const auto falling = is_falling(core, node, low, high, has_low, has_high);
    if (!falling)
        return widest(whole, limit);
    const bool from_high = *falling == (limit == Limit::minimum);
    const auto end =
        (from_high ? has_high : has_low) ? converted(core, node, from_high ? high : low) : std::nullopt;
    return end ? fitted(whole, limit, *end) : widest(whole, limit);
}

Number inherited(Core& core, NodeIndex node, Limit limit)
{
    const NodeType type = core.description.nodes[node].type;
    const bool whole = is_whole(core, node);
    if (is_number_register(type)) {
        if (limit == Limit::increment)
            return widest(whole, limit);
        const NumberRange range = range_of(core, node);
        return limit == Limit::minimum ? range.minimum : range.maximum;
    }
    const bool is_converter = type == NodeType::converter || type == NodeType::int_converter;
    if (type != NodeType::integer && type != NodeType::float_ && !is_converter)
        return widest(whole, limit);
    const Source source = source_of(core, node);
    if (source.literal != nullptr)
        return widest(whole, limit);
    if (is_converter)
        return converted_limit(core, node, source.target, limit);
    return fitted(whole, limit, limit_of(core, source.target, limit));
}

Number own_or_inherited(Core& core, NodeIndex node, Limit limit)
{
    const auto& [reference, literal] = tags[static_cast<std::size_t>(limit)];
    const bool whole = is_whole(core, node);
    if (const Element* const element = core.description.find(node, reference))
        return fitted(whole, limit, read_number(core, target_of(core, node, *element)));
    if (const Element* const element = core.description.find(node, literal))
        return whole ? Number::integer(integer_in(core, node, *element))
                     : Number::floating(float_in(core, node, *element));
    return inherited(core, node, limit);
}

Number imposed(const std::unordered_map<NodeIndex, Number>& limits, NodeIndex node, const Number& number,
               Limit limit)
{
    const auto found = limits.find(node);
    if (found == limits.end())
        return number;
    const bool is_whole_number = number.is_integer();
    const bool is_narrower =
        is_whole_number ? (limit == Limit::minimum) == (found->second.to_integer() > number.to_integer())
                        : (limit == Limit::minimum) == (found->second.to_floating() > number.to_floating());
    return is_narrower ? found->second : number;
}

std::string shown(const Number& number)
{
    std::array<char, 64> text{};
    const auto end = number.is_integer()
                         ? std::to_chars(text.data(), text.data() + text.size(), number.to_integer())
                         : std::to_chars(text.data(), text.data() + text.size(), number.to_floating());
    return {text.data(), end.ptr};
}

[[noreturn]] void refuse(const Core& core, NodeIndex node, const Number& value, const std::string& reason)
{
    fail(core, node, ErrorKind::range, "it cannot be " + shown(value) + ": " + reason);
}

void check_integer(Core& core, NodeIndex node, const Number& value)
{
    const std::int64_t number = value.to_integer();
    const std::int64_t low = limit_of(core, node, Limit::minimum).to_integer();
    const std::int64_t high = limit_of(core, node, Limit::maximum).to_integer();
    if (number < low || number > high)
        refuse(core, node, value,
               "it must be within " + std::to_string(low) + " and " + std::to_string(high));
    const std::int64_t step = limit_of(core, node, Limit::increment).to_integer();
    // Without a sign, because the way from the minimum may be longer than a signed number.
    const std::uint64_t way = static_cast<std::uint64_t>(number) - static_cast<std::uint64_t>(low);
    if (way % static_cast<std::uint64_t>(step) != 0)
        refuse(core, node, value,
               "it changes in steps of " + std::to_string(step) + " from " + std::to_string(low));
}

void check_float(Core& core, NodeIndex node, const Number& value)
{
    const double low = limit_of(core, node, Limit::minimum).to_floating();
    const double high = limit_of(core, node, Limit::maximum).to_floating();
    const double number = value.to_floating();
    if (!(number >= low && number <= high)) // not a number is neither
        refuse(core, node, value,
               "it must be within " + shown(Number::floating(low)) + " and " + shown(Number::floating(high)));
}

} // namespace

Number limit_of(Core& core, NodeIndex node, Limit limit)
{
    const Step step(core, node, Aspect::limits);
    const InterfaceType kind = interface_of(core.description.nodes[node].type);
    if (kind == InterfaceType::enumeration || kind == InterfaceType::boolean)
        return widest(true, limit);
    if (kind != InterfaceType::integer && kind != InterfaceType::float_)
        fail(core, node, ErrorKind::wrong_type,
             std::string("a ") + name_of(core.description.nodes[node].type) + " has no limits");
    const Number number = own_or_inherited(core, node, limit);
    if (limit == Limit::minimum)
        return imposed(core.imposed_minimum, node, number, limit);
    if (limit == Limit::maximum)
        return imposed(core.imposed_maximum, node, number, limit);
    if (number.is_integer() ? number.to_integer() < 1 : !(number.to_floating() > 0))
        return widest(number.is_integer(), limit);
    return number;
}

std::vector<Number> valid_values(Core& core, NodeIndex node)
{
    const Step step(core, node, Aspect::limits);
    const Element* const element = core.description.find(node, Tag::valid_value_set);
    const NodeType type = core.description.nodes[node].type;
    if (element == nullptr) {
        if (type != NodeType::integer && type != NodeType::float_)
            return {};
        const Source source = source_of(core, node);
        return source.literal == nullptr ? valid_values(core, source.target) : std::vector<Number>();
    }
    take_steps(core, node, element->text.size());
    std::vector<Number> values;
    for (std::string_view rest = element->text; !rest.empty();) {
        const std::size_t end = std::min(rest.find_first_of(";,"), rest.size());
        Element part = *element;
        part.text = trimmed(rest.substr(0, end));
        if (!part.text.empty())
            values.push_back(is_whole(core, node) ? Number::integer(integer_in(core, node, part))
                                                  : Number::floating(float_in(core, node, part)));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return values;
}

void check_limits(Core& core, NodeIndex node, const Number& value)
{
    const std::vector<Number> valid = valid_values(core, node);
    const auto is_value = [&](const Number& one) {
        return is_whole(core, node) ? one.to_integer() == value.to_integer()
                                    : one.to_floating() == value.to_floating();
    };
    if (!valid.empty() && std::none_of(valid.begin(), valid.end(), is_value))
        refuse(core, node, value, "it is not one of the valid values");
    if (is_whole(core, node))
        check_integer(core, node, value);
    else
        check_float(core, node, value);
}

} // namespace zvgenapi
