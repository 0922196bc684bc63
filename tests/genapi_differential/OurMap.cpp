#include "genapi_differential/OurMap.h"

namespace zvgenapi::differential {

namespace {

std::string value_text(const Node& node, InterfaceType kind)
{
    switch (kind) {
    case InterfaceType::integer:
        return text_of(node.as<Integer>().value());
    case InterfaceType::float_:
        return text_of(node.as<Float>().value());
    case InterfaceType::boolean:
        return node.as<Boolean>().value() ? "true" : "false";
    case InterfaceType::enumeration:
        return text_of(node.as<Enumeration>().value());
    case InterfaceType::string:
        return node.as<String>().value();
    case InterfaceType::register_:
        return text_of(node.as<Register>().read());
    default:
        return "";
    }
}

std::string limit_text(const Node& node, InterfaceType kind, Question question)
{
    if (kind == InterfaceType::integer) {
        const auto integer = node.as<Integer>();
        return text_of(question == Question::minimum   ? integer.minimum()
                       : question == Question::maximum ? integer.maximum()
                                                       : integer.increment());
    }
    if (kind == InterfaceType::float_) {
        const auto number = node.as<Float>();
        return text_of(question == Question::minimum   ? number.minimum()
                       : question == Question::maximum ? number.maximum()
                                                       : number.increment());
    }
    return "";
}

std::string available_entries(const Node& node)
{
    std::vector<std::string> names;
    for (const auto& entry : node.as<Enumeration>().available_entries())
        names.push_back(entry.symbolic());
    return text_of(names);
}

std::string property_text(const Node& node, InterfaceType kind, Question question)
{
    const bool is_integer = kind == InterfaceType::integer;
    const bool is_float = kind == InterfaceType::float_;
    switch (question) {
    case Question::representation:
        return is_integer ? name_of(node.as<Integer>().representation())
               : is_float ? name_of(node.as<Float>().representation())
                          : "";
    case Question::unit:
        return is_integer ? node.as<Integer>().unit() : is_float ? node.as<Float>().unit() : "";
    case Question::notation:
        return is_float ? name_of(node.as<Float>().display_notation()) : "";
    case Question::precision:
        return is_float ? text_of(node.as<Float>().display_precision()) : "";
    case Question::visibility:
        return name_of(node.visibility());
    case Question::display_name:
        return node.display_name();
    case Question::tool_tip:
        return node.tool_tip();
    case Question::description:
        return node.description();
    default:
        return "";
    }
}

std::string answer_text(const Node& node, InterfaceType kind, Question question)
{
    const bool is_register = node.is<Register>();
    switch (question) {
    case Question::value:
        return value_text(node, kind);
    case Question::minimum:
    case Question::maximum:
    case Question::increment:
        return limit_text(node, kind, question);
    case Question::access:
        return name_of(node.access());
    case Question::entries:
        return kind == InterfaceType::enumeration ? available_entries(node) : "";
    case Question::length:
        return is_register ? text_of(node.as<Register>().length()) : "";
    case Question::address:
        return is_register ? text_of(static_cast<std::int64_t>(node.as<Register>().address())) : "";
    default:
        return property_text(node, kind, question);
    }
}

void write(const Node& node, InterfaceType kind, const Setting& setting)
{
    switch (kind) {
    case InterfaceType::integer:
        node.as<Integer>().set(setting.integer);
        break;
    case InterfaceType::float_:
        node.as<Float>().set(setting.floating);
        break;
    case InterfaceType::boolean:
        node.as<Boolean>().set(setting.integer != 0);
        break;
    case InterfaceType::enumeration:
        node.as<Enumeration>().set(setting.text);
        break;
    case InterfaceType::string:
        node.as<String>().set(setting.text);
        break;
    case InterfaceType::register_:
        node.as<Register>().write(setting.bytes);
        break;
    case InterfaceType::command:
        node.as<Command>().execute();
        break;
    default:
        break;
    }
}

} // namespace

OurMap::OurMap(const std::string& description, Memory& memory) : m_map(NodeMap::load(description))
{
    m_map.connect("Device", memory);
}

Answer OurMap::ask(const std::string& node, InterfaceType kind, Question question)
{
    try {
        return {answer_text(m_map.get(node), kind, question), false, {}};
    } catch (const Error& error) {
        return {error.what(), true, error.kind()};
    }
}

Answer OurMap::set(const std::string& node, InterfaceType kind, const Setting& setting)
{
    try {
        write(m_map.get(node), kind, setting);
        return {};
    } catch (const Error& error) {
        return {error.what(), true, error.kind()};
    }
}

} // namespace zvgenapi::differential
