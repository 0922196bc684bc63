#include "nodes/values.h"

#include <limits>

#include "nodes/Step.h"
#include "nodes/access.h"
#include "nodes/changes.h"
#include "nodes/formulas.h"
#include "nodes/limits.h"
#include "nodes/registers.h"

namespace zvgenapi {

namespace {

Source source_in(const Core& core, NodeIndex node, const Element& element)
{
    if (is_reference(element.tag))
        return {nullptr, target_of(core, node, element)};
    return {&element, no_node};
}

/// One of several values: that of the index, or else the default one.
Source indexed_source(Core& core, NodeIndex node, const Element& p_index)
{
    const std::int64_t index = whole_part(core, node, read_number(core, target_of(core, node, p_index)));
    const Element* otherwise = nullptr;
    for (const Element& element : core.description.of(node)) {
        if (element.tag == Tag::value_default || element.tag == Tag::p_value_default)
            otherwise = &element;
        const bool is_indexed = element.tag == Tag::value_indexed || element.tag == Tag::p_value_indexed;
        if (is_indexed && parse_integer(element.name) == index)
            return source_in(core, node, element);
    }
    if (otherwise == nullptr)
        fail(core, node, ErrorKind::value, "it has no value for the index " + std::to_string(index),
             &p_index);
    return source_in(core, node, *otherwise);
}

Number read_literal(const Core& core, NodeIndex node, const Element& element)
{
    const auto written = core.local_numbers.find(&element);
    if (written != core.local_numbers.end())
        return written->second;
    if (core.description.nodes[node].type == NodeType::float_)
        return Number::floating(float_in(core, node, element));
    if (core.description.nodes[node].type == NodeType::boolean)
        if (const auto yes = parse_yes_no(element.text); yes && !parse_integer(element.text))
            return Number::integer(number_of_boolean(core, node, *yes ? Tag::on_value : Tag::off_value));
    return Number::integer(integer_in(core, node, element));
}

Number read_source(Core& core, NodeIndex node)
{
    const Source source = source_of(core, node);
    return source.literal == nullptr ? read_number(core, source.target)
                                     : read_literal(core, node, *source.literal);
}

Number find_out(Core& core, NodeIndex node)
{
    const NodeType type = core.description.nodes[node].type;
    switch (type) {
    case NodeType::integer:
    case NodeType::enumeration:
        return Number::integer(whole_part(core, node, read_source(core, node)));
    case NodeType::float_:
        return Number::floating(read_source(core, node).to_floating());
    case NodeType::boolean:
        return Number::integer(whole_part(core, node, read_source(core, node)) ==
                                       number_of_boolean(core, node, Tag::on_value)
                                   ? 1
                                   : 0);
    case NodeType::enum_entry:
        if (const Element* const value = core.description.find(node, Tag::value))
            return Number::integer(integer_in(core, node, *value));
        fail(core, node, ErrorKind::description, "an entry has no Value");
    case NodeType::swiss_knife:
    case NodeType::int_swiss_knife:
        return evaluate(core, node, Tag::formula);
    case NodeType::converter:
    case NodeType::int_converter:
        return evaluate(core, node, Tag::formula_from, read_source(core, node));
    default:
        if (is_number_register(type))
            return read_register(core, node);
        fail(core, node, ErrorKind::wrong_type, std::string("a ") + name_of(type) + " is not a number");
    }
}

void check_copy(Core& core, NodeIndex target, const Number& value)
{
    const InterfaceType kind = interface_of(core.description.nodes[target].type);
    if (kind == InterfaceType::integer)
        check_limits(core, target, Number::integer(nearest_integer(core, target, value)));
    else if (kind == InterfaceType::float_)
        check_limits(core, target, value);
}

void write_to_source(Core& core, NodeIndex node, const Number& value, Verify verify)
{
    const Source source = source_of(core, node);
    if (verify == Verify::yes) // nothing is written if one of them refuses it
        for (const Element& element : core.description.of(node))
            if (element.tag == Tag::p_value_copy)
                check_copy(core, target_of(core, node, element), value);
    if (source.literal != nullptr)
        core.local_numbers[source.literal] = value;
    else
        write_number(core, source.target, value, verify);
    for (const Element& element : core.description.of(node))
        if (element.tag == Tag::p_value_copy)
            write_number(core, target_of(core, node, element), value, verify);
}

void check_entry(Core& core, NodeIndex node, const Number& value)
{
    const std::int64_t number = nearest_integer(core, node, value);
    const NodeIndex entry = find_entry(core, node, number);
    if (entry == no_node)
        fail(core, node, ErrorKind::range, "none of its entries has the value " + std::to_string(number));
    if (!is_readable(access_mode(core, entry)))
        fail(core, node, ErrorKind::access,
             "its entry " + std::string(core.description.nodes[entry].symbolic) +
                 " is not available at the moment");
}

} // namespace

Source source_of(Core& core, NodeIndex node)
{
    if (const Element* const index = core.description.find(node, Tag::p_index))
        return indexed_source(core, node, *index);
    if (const Element* const reference = core.description.find(node, Tag::p_value))
        return source_in(core, node, *reference);
    if (const Element* const literal = core.description.find(node, Tag::value))
        return source_in(core, node, *literal);
    fail(core, node, ErrorKind::description, "it has neither a Value nor a pValue");
}

Number read_number(Core& core, NodeIndex node)
{
    Known& known = core.known[node];
    if (known.value_query == core.query_number)
        return known.value;
    const Step step(core, node, Aspect::value);
    const Number value = find_out(core, node);
    known.value = value;
    known.value_query = core.query_number;
    return value;
}

void write_number(Core& core, NodeIndex node, const Number& value, Verify verify)
{
    const Step step(core, node, Aspect::value);
    const NodeType type = core.description.nodes[node].type;
    switch (type) {
    case NodeType::integer: {
        const Number whole = Number::integer(nearest_integer(core, node, value));
        if (verify == Verify::yes)
            check_limits(core, node, whole);
        write_to_source(core, node, whole, verify);
        break;
    }
    case NodeType::float_:
        if (verify == Verify::yes)
            check_limits(core, node, value);
        write_to_source(core, node, Number::floating(value.to_floating()), verify);
        break;
    case NodeType::boolean:
        write_to_source(
            core, node,
            Number::integer(number_of_boolean(core, node, value.is_true() ? Tag::on_value : Tag::off_value)),
            verify);
        break;
    case NodeType::enumeration:
        if (verify == Verify::yes)
            check_entry(core, node, value);
        write_to_source(core, node, value, verify);
        break;
    case NodeType::command:
        write_to_source(core, node, value, verify);
        break;
    case NodeType::converter:
    case NodeType::int_converter: {
        const Number input =
            type == NodeType::converter ? value : Number::integer(nearest_integer(core, node, value));
        if (verify == Verify::yes)
            check_limits(core, node, input);
        write_to_source(core, node, evaluate(core, node, Tag::formula_to, input), verify);
        break;
    }
    case NodeType::swiss_knife:
    case NodeType::int_swiss_knife:
        fail(core, node, ErrorKind::access, "a formula cannot be written");
    default:
        if (!is_number_register(type))
            fail(core, node, ErrorKind::wrong_type, std::string("a ") + name_of(type) + " is not a number");
        if (verify == Verify::yes)
            check_limits(core, node,
                         interface_of(type) == InterfaceType::float_
                             ? value
                             : Number::integer(nearest_integer(core, node, value)));
        write_register(core, node, value);
    }
    note_written(core, node);
}

std::int64_t number_of_boolean(const Core& core, NodeIndex node, Tag tag)
{
    const Element* const element = core.description.find(node, tag);
    return element == nullptr ? (tag == Tag::on_value ? 1 : 0) : integer_in(core, node, *element);
}

std::int64_t command_value(Core& core, NodeIndex node)
{
    if (const Element* const reference = core.description.find(node, Tag::p_command_value))
        return whole_part(core, node, read_number(core, target_of(core, node, *reference)));
    if (const Element* const literal = core.description.find(node, Tag::command_value))
        return integer_in(core, node, *literal);
    fail(core, node, ErrorKind::description, "it has neither a CommandValue nor a pCommandValue");
}

bool is_command_done(Core& core, NodeIndex node)
{
    // Nobody takes a value back that never left this map.
    for (NodeIndex next = node;;) {
        const Step step(core, next, Aspect::value);
        const NodeType type = core.description.nodes[next].type;
        if (type != NodeType::command && type != NodeType::integer)
            break;
        const Source source = source_of(core, next);
        if (source.literal != nullptr)
            return true;
        next = source.target;
    }
    const NodeIndex target = source_of(core, node).target;
    return !is_readable(access_mode(core, target)) ||
           whole_part(core, node, read_number(core, target)) != command_value(core, node);
}

NodeIndex find_entry(Core& core, NodeIndex enumeration, std::int64_t number)
{
    for (const Element& element : core.description.of(enumeration))
        if (element.tag == Tag::enum_entry && read_number(core, element.target).to_integer() == number)
            return element.target;
    return no_node;
}

NodeIndex find_entry(const Core& core, NodeIndex enumeration, std::string_view symbolic)
{
    for (const Element& element : core.description.of(enumeration))
        if (element.tag == Tag::enum_entry && core.description.nodes[element.target].symbolic == symbolic)
            return element.target;
    return no_node;
}

std::string read_text(Core& core, NodeIndex node)
{
    const Step step(core, node, Aspect::value);
    const NodeType type = core.description.nodes[node].type;
    if (type == NodeType::string_reg) {
        std::string bytes = read_bytes(core, node);
        bytes.resize(std::min(bytes.size(), bytes.find('\0')));
        return bytes;
    }
    if (type != NodeType::string)
        fail(core, node, ErrorKind::wrong_type, std::string("a ") + name_of(type) + " is not a text");
    const Source source = source_of(core, node);
    if (source.literal == nullptr)
        return read_text(core, source.target);
    const auto written = core.local_texts.find(source.literal);
    return written == core.local_texts.end() ? std::string(source.literal->text) : written->second;
}

std::int64_t longest_text(Core& core, NodeIndex node)
{
    const Step step(core, node, Aspect::value);
    const NodeType type = core.description.nodes[node].type;
    if (type == NodeType::string_reg)
        return static_cast<std::int64_t>(length_of(core, node));
    if (type != NodeType::string)
        fail(core, node, ErrorKind::wrong_type, std::string("a ") + name_of(type) + " is not a text");
    const Source source = source_of(core, node);
    return source.literal == nullptr ? longest_text(core, source.target)
                                     : std::numeric_limits<std::int64_t>::max();
}

void write_text(Core& core, NodeIndex node, const std::string& value)
{
    const Step step(core, node, Aspect::value);
    if (core.description.nodes[node].type == NodeType::string_reg) {
        const std::uint64_t length = length_of(core, node);
        if (value.size() > length)
            fail(core, node, ErrorKind::range,
                 "the text is longer than the allowed " + std::to_string(length) + " bytes");
        std::string bytes = value;
        bytes.resize(static_cast<std::size_t>(length), '\0');
        write_bytes(core, node, bytes);
    } else {
        longest_text(core, node); // throws for another kind of node
        const Source source = source_of(core, node);
        if (source.literal == nullptr)
            write_text(core, source.target, value);
        else
            core.local_texts[source.literal] = value;
        for (const Element& element : core.description.of(node))
            if (element.tag == Tag::p_value_copy)
                write_text(core, target_of(core, node, element), value);
    }
    note_written(core, node);
}

} // namespace zvgenapi
