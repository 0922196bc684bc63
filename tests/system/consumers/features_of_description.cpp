#include <algorithm>
#include <cstring>
#include <vector>

#include "system/consumers/Client.h"

// Without a GenApi parser: the registers of the software grabbers and cameras, found in the text of the
// description, whose elements have one simple form.

namespace zvclient {

namespace {

using Clock = std::chrono::steady_clock;
using Bytes = std::vector<unsigned char>;

constexpr std::chrono::seconds longest_command{5};

std::string between(const std::string& text, const std::string& begin, const std::string& end)
{
    const std::size_t found = text.find(begin);
    if (found == std::string::npos)
        return "";
    const std::size_t start = found + begin.size();
    return text.substr(start, text.find(end, start) - start);
}

/// An element of a description, with the text between its ends.
struct Node {
    std::string kind;
    std::string name;
    std::string content;

    /// The first property of this name; empty if there is none.
    std::string value_of(const std::string& property) const
    {
        return between(content, "<" + property + ">", "</" + property + ">");
    }
    /// The number of an enumeration's entry, or the text itself.
    std::string number_of(const std::string& value) const
    {
        const std::string entry = between(content, "<EnumEntry Name=\"" + value + "\"", "</EnumEntry>");
        return entry.empty() ? value : between(entry, "<Value>", "</Value>");
    }
};

std::vector<Node> nodes_of(const std::string& description)
{
    need_true(description.find("<RegisterDescription") != std::string::npos, "not a register description");
    const std::string name = " Name=\"";
    std::vector<Node> nodes;
    for (std::size_t at = description.find(name); at != std::string::npos;
         at = description.find(name, at + 1)) {
        const std::size_t start = description.rfind('<', at) + 1;
        const std::string kind = description.substr(start, at - start);
        const std::size_t end_of_tag = description.find('>', at);
        const bool is_empty = description[end_of_tag - 1] == '/';
        const std::size_t end = is_empty ? end_of_tag : description.find("</" + kind + ">", at);
        nodes.push_back({kind, between(description.substr(at, end_of_tag - at), name, "\""),
                         description.substr(end_of_tag, end - end_of_tag)});
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

std::uint64_t address_of(const Node& place) { return std::stoull(place.value_of("Address"), nullptr, 0); }

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
    return big_endian(std::stoull(feature.number_of(value), nullptr, 0), length);
}

class FeaturesOfDescription final : public Features {
public:
    FeaturesOfDescription(const std::string& description, const ExactPort& port)
        : m_nodes{nodes_of(description)}, m_port{port}
    {
    }

    bool is_empty() const override
    {
        const Node* const root = find("Root");
        return root == nullptr || root->value_of("pFeature").empty();
    }

    /// Of the registers of several cameras, those of the first.
    int read_every() const override
    {
        int count = 0;
        for (const Node& node : m_nodes) {
            if (node.value_of("Address").empty())
                continue;
            read(node);
            ++count;
        }
        return count;
    }

    /// Only the commands: which values a feature takes is for a parser to find out.
    int write_every() const override
    {
        int count = 0;
        for (const Node& node : m_nodes) {
            if (node.kind == "Command") {
                execute(node.name, longest_command);
                ++count;
            }
        }
        return count;
    }

    std::int64_t integer(const std::string& name) const override
    {
        const Node& place = place_of(at(name));
        need_true(place.kind == "IntReg", name + " is not an integer");
        return static_cast<std::int64_t>(number_of(read(place)));
    }

    void set(const std::string& name, const std::string& text) const override { write(at(name), text); }

    void execute(const std::string& name, std::chrono::milliseconds timeout) const override
    {
        const Node& command = at(name);
        write(command, command.value_of("CommandValue"));
        const auto end = Clock::now() + timeout;
        while (number_of(read(place_of(command))) != 0)
            need_true(Clock::now() < end, name + " is not done in time");
    }

private:
    const Node* find(const std::string& name) const
    {
        const auto found =
            std::find_if(m_nodes.begin(), m_nodes.end(), [&](const Node& node) { return node.name == name; });
        return found != m_nodes.end() ? &*found : nullptr;
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
        m_port.read(address_of(place), bytes.data(), bytes.size());
        return bytes;
    }

    void write(const Node& feature, const std::string& value) const
    {
        const Node& place = place_of(feature);
        const Bytes bytes = bytes_of(feature, place, value);
        m_port.write(address_of(place), bytes.data(), bytes.size());
    }

    const std::vector<Node> m_nodes;
    const ExactPort& m_port;
};

} // namespace

std::unique_ptr<Features> features_of(const std::string& description, const ExactPort& port)
{
    return std::make_unique<FeaturesOfDescription>(description, port);
}

} // namespace zvclient
