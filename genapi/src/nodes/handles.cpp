#include "zvgenapi/handles.h"

#include <algorithm>
#include <thread>

#include "nodes/Core.h"
#include "nodes/Step.h"
#include "nodes/access.h"
#include "nodes/changes.h"
#include "nodes/limits.h"
#include "nodes/registers.h"
#include "nodes/texts.h"
#include "nodes/values.h"

namespace zvgenapi {

namespace {

constexpr std::chrono::milliseconds longest_pause{50}; // between two looks at a command

Number value_of(Core* core, std::uint32_t node, UseCache use_cache, Verify verify = Verify::no)
{
    return core->run(use_cache, [&] {
        require_readable(*core, node);
        const Number value = read_number(*core, node);
        if (verify == Verify::yes)
            check_limits(*core, node, value);
        return value;
    });
}

void set_value(Core* core, std::uint32_t node, const Number& value, Verify verify)
{
    core->run([&] {
        require_writable(*core, node);
        write_number(*core, node, value, verify);
    });
}

Number limit(Core* core, std::uint32_t node, Limit which)
{
    return core->run([&] { return limit_of(*core, node, which); });
}

std::vector<Number> valid(Core* core, std::uint32_t node)
{
    return core->run([&] { return zvgenapi::valid_values(*core, node); });
}

} // namespace

bool Integer::fits(const Node& node) { return node.interface_type() == InterfaceType::integer; }

std::int64_t Integer::value(UseCache use_cache, Verify verify) const
{
    return value_of(m_core, m_index, use_cache, verify).to_integer();
}
void Integer::set(std::int64_t value, Verify verify)
{
    set_value(m_core, m_index, Number::integer(value), verify);
}
std::int64_t Integer::minimum() const { return limit(m_core, m_index, Limit::minimum).to_integer(); }
std::int64_t Integer::maximum() const { return limit(m_core, m_index, Limit::maximum).to_integer(); }
std::int64_t Integer::increment() const { return limit(m_core, m_index, Limit::increment).to_integer(); }

std::vector<std::int64_t> Integer::valid_values() const
{
    std::vector<std::int64_t> values;
    for (const Number& number : valid(m_core, m_index))
        values.push_back(whole_part(*m_core, m_index, number));
    return values;
}

Representation Integer::representation() const
{
    return m_core->run([this] { return representation_of(*m_core, m_index); });
}

std::string Integer::unit() const
{
    return m_core->run([this] { return unit_of(*m_core, m_index); });
}

void Integer::impose_minimum(std::int64_t value)
{
    m_core->run([&] {
        m_core->imposed_minimum[m_index] = Number::integer(value);
        m_core->changed.push_back(m_index);
    });
}

void Integer::impose_maximum(std::int64_t value)
{
    m_core->run([&] {
        m_core->imposed_maximum[m_index] = Number::integer(value);
        m_core->changed.push_back(m_index);
    });
}

bool Float::fits(const Node& node) { return node.interface_type() == InterfaceType::float_; }

double Float::value(UseCache use_cache, Verify verify) const
{
    return value_of(m_core, m_index, use_cache, verify).to_floating();
}
void Float::set(double value, Verify verify) { set_value(m_core, m_index, Number::floating(value), verify); }
double Float::minimum() const { return limit(m_core, m_index, Limit::minimum).to_floating(); }
double Float::maximum() const { return limit(m_core, m_index, Limit::maximum).to_floating(); }
bool Float::has_increment() const { return increment() > 0; }
double Float::increment() const { return limit(m_core, m_index, Limit::increment).to_floating(); }

std::vector<double> Float::valid_values() const
{
    std::vector<double> values;
    for (const Number& number : valid(m_core, m_index))
        values.push_back(number.to_floating());
    return values;
}

Representation Float::representation() const
{
    return m_core->run([this] { return representation_of(*m_core, m_index); });
}

std::string Float::unit() const
{
    return m_core->run([this] { return unit_of(*m_core, m_index); });
}

DisplayNotation Float::display_notation() const
{
    return m_core->run([this] { return notation_of(*m_core, m_index); });
}

std::int64_t Float::display_precision() const
{
    return m_core->run([this] { return precision_of(*m_core, m_index); });
}

void Float::impose_minimum(double value)
{
    m_core->run([&] {
        m_core->imposed_minimum[m_index] = Number::floating(value);
        m_core->changed.push_back(m_index);
    });
}

void Float::impose_maximum(double value)
{
    m_core->run([&] {
        m_core->imposed_maximum[m_index] = Number::floating(value);
        m_core->changed.push_back(m_index);
    });
}

bool Boolean::fits(const Node& node) { return node.interface_type() == InterfaceType::boolean; }
bool Boolean::value(UseCache use_cache) const { return value_of(m_core, m_index, use_cache).is_true(); }

void Boolean::set(bool value, Verify verify)
{
    set_value(m_core, m_index, Number::integer(value ? 1 : 0), verify);
}

bool Command::fits(const Node& node) { return node.interface_type() == InterfaceType::command; }

void Command::execute(Verify verify)
{
    m_core->run([&] {
        require_writable(*m_core, m_index);
        write_number(*m_core, m_index, Number::integer(command_value(*m_core, m_index)), verify);
    });
}

void Command::wait(std::chrono::milliseconds timeout) const
{
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    for (std::chrono::milliseconds pause{1}; !is_done(); pause = std::min(2 * pause, longest_pause)) {
        if (Clock::now() - start >= timeout)
            fail(*m_core, m_index, ErrorKind::time_out,
                 "the device has not finished it after " + std::to_string(timeout.count()) + " ms");
        std::this_thread::sleep_for(pause);
    }
}

bool Command::is_done() const
{
    return m_core->run(UseCache::no, [this] { return is_command_done(*m_core, m_index); });
}

bool EnumEntry::fits(const Node& node) { return node.interface_type() == InterfaceType::enum_entry; }

std::int64_t EnumEntry::value() const
{
    return m_core->run([this] { return read_number(*m_core, m_index).to_integer(); });
}

double EnumEntry::numeric_value() const
{
    return m_core->run([this] {
        const Element* const element = m_core->description.find(m_index, Tag::numeric_value);
        return element == nullptr ? read_number(*m_core, m_index).to_floating()
                                  : float_in(*m_core, m_index, *element);
    });
}

std::string EnumEntry::symbolic() const { return std::string(m_core->description.nodes[m_index].symbolic); }

bool EnumEntry::is_self_clearing() const
{
    return parse_yes_no(text_in(*m_core, m_index, Tag::is_self_clearing)).value_or(false);
}

bool Enumeration::fits(const Node& node) { return node.interface_type() == InterfaceType::enumeration; }

std::vector<EnumEntry> Enumeration::entries() const
{
    std::vector<EnumEntry> entries;
    for (const Element& element : m_core->description.of(m_index))
        if (element.tag == Tag::enum_entry)
            entries.emplace_back(Node(m_core, element.target));
    return entries;
}

std::vector<EnumEntry> Enumeration::available_entries() const
{
    return m_core->run([this] {
        std::vector<EnumEntry> available;
        for (const EnumEntry& entry : entries())
            if (zvgenapi::is_readable(access_mode(*m_core, static_cast<NodeIndex>(entry.index()))))
                available.push_back(entry);
        return available;
    });
}

EnumEntry Enumeration::entry(const std::string& symbolic) const
{
    const NodeIndex found = find_entry(*m_core, m_index, std::string_view(symbolic));
    return found == no_node ? EnumEntry() : EnumEntry(Node(m_core, found));
}

EnumEntry Enumeration::entry(std::int64_t value) const
{
    const NodeIndex found = m_core->run([&] { return find_entry(*m_core, m_index, value); });
    return found == no_node ? EnumEntry() : EnumEntry(Node(m_core, found));
}

EnumEntry Enumeration::current(UseCache use_cache) const { return entry(value(use_cache)); }

std::int64_t Enumeration::value(UseCache use_cache) const
{
    return value_of(m_core, m_index, use_cache).to_integer();
}

std::string Enumeration::symbolic(UseCache use_cache) const { return to_string(use_cache); }

void Enumeration::set(std::int64_t value, Verify verify)
{
    set_value(m_core, m_index, Number::integer(value), verify);
}

void Enumeration::set(const std::string& symbolic, Verify verify)
{
    m_core->run([&] {
        require_writable(*m_core, m_index);
        const NodeIndex found = find_entry(*m_core, m_index, std::string_view(symbolic));
        if (found == no_node)
            fail(*m_core, m_index, ErrorKind::range, "it has no entry \"" + symbolic.substr(0, 100) + "\"");
        write_number(*m_core, m_index, read_number(*m_core, found), verify);
    });
}

bool String::fits(const Node& node) { return node.interface_type() == InterfaceType::string; }

std::string String::value(UseCache use_cache) const
{
    return m_core->run(use_cache, [this] {
        require_readable(*m_core, m_index);
        return read_text(*m_core, m_index);
    });
}

void String::set(const std::string& value, Verify /*verify*/)
{
    m_core->run([&] {
        require_writable(*m_core, m_index);
        write_text(*m_core, m_index, value);
    });
}

std::int64_t String::max_length() const
{
    return m_core->run([this] { return longest_text(*m_core, m_index); });
}

bool Register::fits(const Node& node) { return is_register(node.type()); }

std::int64_t Register::length() const
{
    return m_core->run([this] { return static_cast<std::int64_t>(length_of(*m_core, m_index)); });
}

std::uint64_t Register::address() const
{
    return m_core->run([this] {
        const Step step(*m_core, m_index, Aspect::value);
        return locate(*m_core, m_index).address;
    });
}

std::vector<unsigned char> Register::read(UseCache use_cache) const
{
    return m_core->run(use_cache, [this] {
        const Step step(*m_core, m_index, Aspect::value);
        require_readable(*m_core, m_index);
        const std::string bytes = read_bytes(*m_core, m_index);
        return std::vector<unsigned char>(bytes.begin(), bytes.end());
    });
}

void Register::write(const std::vector<unsigned char>& bytes, Verify /*verify*/)
{
    m_core->run([&] {
        const Step step(*m_core, m_index, Aspect::value);
        require_writable(*m_core, m_index);
        write_bytes(*m_core, m_index, std::string(bytes.begin(), bytes.end()));
        note_written(*m_core, m_index);
    });
}

Node Register::port() const
{
    const Element* const port = m_core->description.find(m_index, Tag::p_port);
    return port == nullptr || port->target == no_node ? Node() : Node(m_core, port->target);
}

bool Category::fits(const Node& node) { return node.interface_type() == InterfaceType::category; }

std::vector<Node> Category::features() const
{
    std::vector<Node> features;
    for (const Element& element : m_core->description.of(m_index))
        if (element.tag == Tag::p_feature && element.target != no_node)
            features.emplace_back(m_core, element.target);
    return features;
}

bool PortNode::fits(const Node& node) { return node.interface_type() == InterfaceType::port; }

bool PortNode::is_connected() const
{
    return m_core->run([this] {
        const auto found = m_core->ports.find(m_index);
        return found != m_core->ports.end() && found->second != nullptr;
    });
}

std::string PortNode::chunk_id() const { return std::string(text_in(*m_core, m_index, Tag::chunk_id)); }

void PortNode::read(std::uint64_t address, void* data, std::size_t size) const
{
    m_core->run(UseCache::no, [&] {
        require_readable(*m_core, m_index);
        read_port(*m_core, m_index, address, data, size);
    });
}

void PortNode::write(std::uint64_t address, const void* data, std::size_t size)
{
    m_core->run([&] {
        require_writable(*m_core, m_index);
        write_port(*m_core, m_index, address, data, size);
        note_written(*m_core, m_index);
    });
}

} // namespace zvgenapi
