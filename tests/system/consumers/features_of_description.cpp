#include <algorithm>
#include <cstring>
#include <map>
#include <vector>

#include <libxml/parser.h>

#include "system/consumers/Client.h"

// Without a GenApi parser: the registers of the software grabbers and cameras, found in the description as
// XML.

namespace zvclient {

namespace {

using Clock = std::chrono::steady_clock;
using Bytes = std::vector<unsigned char>;

constexpr std::chrono::seconds longest_command{5};

/// A node of a description with its name and the first of each of its properties.
struct Node {
    std::string kind;
    std::string name;
    std::map<std::string, std::string> properties;
    /// The numbers of an enumeration's entries.
    std::map<std::string, std::string> entries;

    std::string value_of(const std::string& property) const
    {
        const auto found = properties.find(property);
        return found != properties.end() ? found->second : "";
    }
};

std::string text_of(const xmlChar* text)
{
    return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

std::string name_of(const xmlNode& element)
{
    for (const xmlAttr* at = element.properties; at != nullptr; at = at->next) {
        if (text_of(at->name) == "Name" && at->children != nullptr)
            return text_of(at->children->content);
    }
    return "";
}

Node node_of(const xmlNode& element)
{
    Node node{text_of(element.name), name_of(element), {}, {}};
    for (const xmlNode* child = element.children; child != nullptr; child = child->next) {
        if (child->type != XML_ELEMENT_NODE)
            continue;
        if (text_of(child->name) == "EnumEntry")
            node.entries.emplace(name_of(*child), node_of(*child).value_of("Value"));
        else if (child->children != nullptr)
            node.properties.emplace(text_of(child->name), text_of(child->children->content));
    }
    return node;
}

std::vector<Node> nodes_of(const std::string& description)
{
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document{
        xmlReadMemory(description.data(), static_cast<int>(description.size()), "description.xml", nullptr,
                      XML_PARSE_NONET),
        &xmlFreeDoc};
    need_true(document != nullptr, "the description is not well-formed");
    const xmlNode* const root = xmlDocGetRootElement(document.get());
    need_true(text_of(root->name) == "RegisterDescription", "the description is a " + text_of(root->name));
    std::vector<Node> nodes;
    for (const xmlNode* element = root->children; element != nullptr; element = element->next) {
        if (element->type == XML_ELEMENT_NODE)
            nodes.push_back(node_of(*element));
    }
    return nodes;
}

Bytes big_endian(std::uint64_t value, std::size_t length)
{
    Bytes bytes(length);
    for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte, value >>= 8U)
        *byte = static_cast<unsigned char>(value & 0xFFU);
    return bytes;
}

std::uint64_t number_of(const Bytes& bytes)
{
    std::uint64_t value = 0;
    for (const unsigned char byte : bytes)
        value = value << 8U | byte;
    return value;
}

std::size_t length_of(const Node& place) { return std::stoul(place.value_of("Length"), nullptr, 0); }

/// What a register of this kind holds for the value of the feature.
Bytes bytes_of(const Node& feature, const Node& place, const std::string& value)
{
    const std::size_t length = length_of(place);
    if (place.kind == "StringReg") {
        need_true(value.size() <= length, "\"" + value + "\" is too long");
        Bytes bytes(length);
        std::copy(value.begin(), value.end(), bytes.begin());
        return bytes;
    }
    need_true(place.value_of("Endianess") == "BigEndian", feature.name + " is not big-endian");
    if (place.kind == "FloatReg") {
        const double number = std::stod(value);
        std::uint64_t bits = 0;
        static_assert(sizeof bits == sizeof number);
        std::memcpy(&bits, &number, sizeof bits);
        return big_endian(bits, length);
    }
    const auto entry = feature.entries.find(value);
    return big_endian(std::stoull(entry != feature.entries.end() ? entry->second : value, nullptr, 0),
                      length);
}

} // namespace

class Features::Impl {
public:
    Impl(const std::string& description, const ExactPort& port) : nodes{nodes_of(description)}, m_port{port}
    {
    }

    const Node* find(const std::string& name) const
    {
        const auto found =
            std::find_if(nodes.begin(), nodes.end(), [&](const Node& node) { return node.name == name; });
        return found != nodes.end() ? &*found : nullptr;
    }

    const Node& at(const std::string& name) const
    {
        const Node* const node = find(name);
        need_true(node != nullptr, "there is no node " + name);
        return *node;
    }

    /// The register behind a feature, which may be the feature itself.
    const Node& place_of(const Node& feature) const
    {
        const std::string value = feature.value_of("pValue");
        return value.empty() ? feature : place_of(at(value));
    }

    Bytes read(const Node& place) const
    {
        Bytes bytes(length_of(place));
        m_port.read(std::stoull(place.value_of("Address"), nullptr, 0), bytes.data(), bytes.size());
        return bytes;
    }

    void write(const Node& place, const Bytes& bytes) const
    {
        m_port.write(std::stoull(place.value_of("Address"), nullptr, 0), bytes.data(), bytes.size());
    }

    void execute(const Node& command, std::chrono::milliseconds timeout) const
    {
        const Node& place = place_of(command);
        write(place, bytes_of(command, place, command.value_of("CommandValue")));
        const auto end = Clock::now() + timeout;
        while (number_of(read(place)) != 0)
            need_true(Clock::now() < end, command.name + " is not done in time");
    }

    const std::vector<Node> nodes;

private:
    const ExactPort& m_port;
};

Features::Features(const std::string& description, const ExactPort& port)
    : m_impl{std::make_unique<Impl>(description, port)}
{
}

Features::~Features() = default;

bool Features::is_empty() const
{
    const Node* const root = m_impl->find("Root");
    return root == nullptr || root->value_of("pFeature").empty();
}

/// Of the registers of several cameras, those of the first.
int Features::read_every() const
{
    int count = 0;
    for (const Node& node : m_impl->nodes) {
        if (node.value_of("Address").empty())
            continue;
        m_impl->read(node);
        ++count;
    }
    return count;
}

/// Only the commands: which values a feature takes is for a parser to find out.
int Features::write_every() const
{
    int count = 0;
    for (const Node& node : m_impl->nodes) {
        if (node.kind == "Command") {
            m_impl->execute(node, longest_command);
            ++count;
        }
    }
    return count;
}

std::int64_t Features::integer(const std::string& name) const
{
    const Node& place = m_impl->place_of(m_impl->at(name));
    need_true(place.kind == "IntReg", name + " is not an integer");
    return static_cast<std::int64_t>(number_of(m_impl->read(place)));
}

void Features::set(const std::string& name, const std::string& text) const
{
    const Node& feature = m_impl->at(name);
    const Node& place = m_impl->place_of(feature);
    m_impl->write(place, bytes_of(feature, place, text));
}

void Features::execute(const std::string& name, std::chrono::milliseconds timeout) const
{
    m_impl->execute(m_impl->at(name), timeout);
}

} // namespace zvclient
