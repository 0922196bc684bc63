#include "nodes/Step.h"

#include <cmath>

namespace zvgenapi {

namespace {

struct TypeTraits {
    InterfaceType interface_type;
    bool is_register;
};

// By NodeType.
constexpr TypeTraits traits[] = {
    {InterfaceType::base, false},        // Node
    {InterfaceType::category, false},    // Category
    {InterfaceType::integer, false},     // Integer
    {InterfaceType::integer, true},      // IntReg
    {InterfaceType::integer, true},      // MaskedIntReg
    {InterfaceType::integer, true},      // StructEntry
    {InterfaceType::float_, false},      // Float
    {InterfaceType::float_, true},       // FloatReg
    {InterfaceType::boolean, false},     // Boolean
    {InterfaceType::command, false},     // Command
    {InterfaceType::enumeration, false}, // Enumeration
    {InterfaceType::enum_entry, false},  // EnumEntry
    {InterfaceType::string, false},      // String
    {InterfaceType::string, true},       // StringReg
    {InterfaceType::register_, true},    // Register
    {InterfaceType::float_, false},      // SwissKnife
    {InterfaceType::integer, false},     // IntSwissKnife
    {InterfaceType::float_, false},      // Converter
    {InterfaceType::integer, false},     // IntConverter
    {InterfaceType::port, false},        // Port
    {InterfaceType::value, false},       // ConfRom
    {InterfaceType::value, false},       // TextDesc
    {InterfaceType::value, false},       // IntKey
    {InterfaceType::value, false},       // AdvFeatureLock
    {InterfaceType::value, false},       // SmartFeature
};

[[noreturn]] void refuse_number(const Core& core, NodeIndex node, const Element& element)
{
    fail(core, node, ErrorKind::description,
         std::string(element_name(element.tag)) + " \"" + std::string(element.text.substr(0, 100)) +
             "\" is not a number",
         &element);
}

constexpr std::size_t looked_at_in_a_step = 16;

constexpr double lowest_integer = -9223372036854775808.0;

std::int64_t to_integer(const Core& core, NodeIndex node, double value)
{
    if (!(value >= lowest_integer && value < -lowest_integer))
        fail(core, node, ErrorKind::value, std::to_string(value) + " does not fit into a whole number");
    return static_cast<std::int64_t>(value);
}

} // namespace

void fail(const Core& core, NodeIndex node, ErrorKind kind, const std::string& message,
          const Element* element)
{
    const NodeText& text = core.description.nodes[node];
    throw Error(kind, message, std::string(text.name),
                static_cast<int>(element == nullptr ? text.line : element->line));
}

Step::Step(Core& core, NodeIndex node, Aspect aspect) : m_core(core)
{
    core.description.check_cycle(node, aspect);
    if (core.query.depth >= core.limits.evaluation_depth)
        fail(core, node, ErrorKind::limit, "it is at the end of too long a chain of nodes");
    take_steps(core, node, core.description.of(node).size());
    ++core.query.depth;
}

void take_steps(Core& core, NodeIndex node, std::size_t count)
{
    const std::uint64_t steps = 1 + count / looked_at_in_a_step;
    if (core.query.steps.left() < steps)
        fail(core, node, ErrorKind::limit, "it takes too many steps to answer");
    core.query.steps.take(steps);
}

NodeIndex target_of(const Core& core, NodeIndex node, const Element& element)
{
    if (element.target == no_node)
        fail(core, node, ErrorKind::description,
             std::string(element_name(element.tag)) + " refers to " +
                 std::string(element.text.substr(0, 200)) + ", which the description does not contain",
             &element);
    return element.target;
}

std::int64_t integer_in(const Core& core, NodeIndex node, const Element& element)
{
    const auto number = parse_integer(element.text);
    if (!number)
        refuse_number(core, node, element);
    return *number;
}

double float_in(const Core& core, NodeIndex node, const Element& element)
{
    const auto number = parse_float(element.text);
    if (!number)
        refuse_number(core, node, element);
    return *number;
}

std::string_view text_in(const Core& core, NodeIndex node, Tag tag) noexcept
{
    const Element* const element = core.description.find(node, tag);
    return element == nullptr ? std::string_view() : element->text;
}

std::int64_t nearest_integer(const Core& core, NodeIndex node, const Number& value)
{
    return value.is_integer() ? value.to_integer() : to_integer(core, node, std::round(value.to_floating()));
}

std::int64_t whole_part(const Core& core, NodeIndex node, const Number& value)
{
    return value.is_integer() ? value.to_integer() : to_integer(core, node, std::trunc(value.to_floating()));
}

bool is_register(NodeType type) noexcept { return traits[static_cast<std::size_t>(type)].is_register; }

bool is_number_register(NodeType type) noexcept
{
    return is_register(type) && type != NodeType::string_reg && type != NodeType::register_;
}

InterfaceType interface_of(NodeType type) noexcept
{
    return traits[static_cast<std::size_t>(type)].interface_type;
}

} // namespace zvgenapi
