#include "genapi/NodeMap.h"

#include <algorithm>
#include <set>
#include <stdexcept>

#include "genapi/describe.h"
#include "genapi/values.h"
#include "gentl/texts.h"
#include "zvgenapi/NodeMap.h"

namespace zvgentl::tool {

using zvgenapi::Node;

namespace {

[[noreturn]] void refuse_value(const Feature& feature, const std::string& text, const std::string& allowed)
{
    throw std::runtime_error(feature.name + " cannot be \"" + text + "\"; allowed: " + allowed);
}

std::string unit_of(const Feature& feature) { return feature.unit.empty() ? "" : " " + feature.unit; }

template <class Number>
void check_range(const Feature& feature, const std::string& text, Number number)
{
    if (!is_allowed(feature, number))
        refuse_value(feature, text, range_text(feature) + unit_of(feature));
}

std::string why_not_writable(const Feature& feature)
{
    if (!feature.access.is_implemented)
        return "this device does not have it";
    if (!feature.access.is_available)
        return "it is not available at the moment; another feature may have to be set first";
    if (feature.access.is_locked)
        return "it is locked at the moment: the camera is streaming, or another feature controls it";
    return "it is read only";
}

std::string why_not_readable(const Access& access)
{
    if (!access.is_implemented)
        return "this device does not have it";
    if (!access.is_available)
        return "it is not available at the moment; another feature may have to be set first";
    return "it is write only";
}

void check_entry(const Feature& feature, const std::string& text)
{
    const auto& entries = feature.entries;
    if (std::find(entries.begin(), entries.end(), text) == entries.end())
        refuse_value(feature, text,
                     entries.empty() ? "none of its entries at the moment" : joined(entries, ", "));
}

void check_length(const Feature& feature, const std::string& text)
{
    const auto* const most = std::get_if<std::int64_t>(&feature.maximum);
    if (most != nullptr && text.size() > static_cast<std::uint64_t>(*most))
        refuse_value(feature, text, "at most " + std::to_string(*most) + " characters");
}

/// A register that is set as a whole, as the other features are.
struct Bytes {
    zvgenapi::Register handle;
    void set(const std::vector<unsigned char>& bytes) { handle.write(bytes); }
};

/// The registers of the port, as the parser wants them.
class RegisterPort final : public zvgenapi::Port {
public:
    explicit RegisterPort(const Registers& registers) : m_registers(registers) {}
    void read(std::uint64_t address, void* data, std::size_t size) override
    {
        m_registers.read(address, data, size);
    }
    void write(std::uint64_t address, const void* data, std::size_t size) override
    {
        m_registers.write(address, data, size);
    }

private:
    const Registers& m_registers;
};

zvgenapi::NodeMap load(const std::string& description)
{
    try {
        return zvgenapi::NodeMap::load(description);
    } catch (const zvgenapi::Error& error) {
        throw std::runtime_error(std::string("the port's description is damaged: ") + error.what());
    }
}

/// The elements by which the value of a node depends on another one.
constexpr const char* value_references[] = {
    "pValue",    "pValueDefault", "pValueIndexed",  "pValueCopy",   "pIndex",
    "pVariable", "pAddress",      "pLength",        "pMin",         "pMax",
    "pInc",      "pIsLocked",     "pIsImplemented", "pIsAvailable", "pCommandValue",
};

} // namespace

class NodeMap::Impl {
public:
    Impl(const std::string& description, const Registers& registers) : port(registers), map(load(description))
    {
        for (std::size_t i = 0; i < map.size(); ++i) {
            const std::string name = map.at(i).full_name();
            if (map.at(i).is<zvgenapi::PortNode>() &&
                map.find(name) == map.at(i)) // not the second one of a name
                map.connect(name, port);
        }
    }

    /// Throws std::runtime_error, with the names that may have been meant, for one that does not exist.
    Node find(const std::string& name)
    {
        map.invalidate();
        const Node node = map.find(name);
        if (node && kind_of(node) != FeatureKind::other)
            return node;
        const auto near = near_names(name, names());
        throw std::runtime_error("there is no feature " + name +
                                 (near.empty() ? "; `zvgentl features` lists those that exist"
                                               : "; did you mean " + joined(near, " or ") + "?"));
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> all;
        for (std::size_t i = 0; i < map.size(); ++i)
            if (map.at(i).is<zvgenapi::Category>())
                for (auto& name : map.at(i).properties("pFeature"))
                    all.push_back(std::move(name));
        return all;
    }

    Access access(const Node& node) { return without_writing_constants(node, access_of(node)); }
    Feature describe(const Node& node)
    {
        Feature feature = describe_feature(node);
        feature.access = without_writing_constants(node, feature.access);
        return feature;
    }
    Feature describe_for_writing(const Node& node)
    {
        Feature feature = tool::describe_for_writing(node);
        feature.access = without_writing_constants(node, feature.access);
        return feature;
    }

    static void write(const Node& node, const Feature& feature, const std::string& text);

    RegisterPort port;
    zvgenapi::NodeMap map;

private:
    // A value that is written in the description could be changed in our copy of it, which no device ever
    // sees. That makes sense only for one that chooses what other nodes mean.
    Access without_writing_constants(const Node& node, Access access)
    {
        if ((access.is_writable || access.is_locked) && node.property("Value") && !node.property("pValue") &&
            !is_referred_to(node)) {
            access.is_writable = false;
            access.is_locked = false;
        }
        return access;
    }

    bool is_referred_to(const Node& node)
    {
        if (m_referred.empty())
            for (std::size_t i = 0; i < map.size(); ++i)
                for (const char* const element : value_references)
                    for (auto& name : map.at(i).properties(element))
                        m_referred.insert(std::move(name));
        return m_referred.count(node.name()) != 0 || m_referred.count(node.full_name()) != 0;
    }

    std::set<std::string>
        m_referred; // nodes that the value of another one depends on; found when first needed
};

NodeMap::NodeMap(const std::string& description, const Registers& registers)
    : m_impl(std::make_unique<Impl>(description, registers))
{
}

NodeMap::~NodeMap() = default;

std::vector<TreeEntry> NodeMap::tree(const std::string& category) const
{
    const zvgenapi::NodeMap& map = m_impl->map;
    const auto is_category = [&map](const std::string& name) {
        const Node node = map.find(name);
        return node && node.is<zvgenapi::Category>();
    };
    if (!is_category(category)) {
        std::vector<std::string> categories;
        for (std::size_t i = 0; i < map.size(); ++i)
            if (map.at(i).is<zvgenapi::Category>())
                categories.push_back(map.at(i).name());
        throw std::runtime_error(
            "there is no category " + category +
            (categories.empty() ? std::string() : "; there are " + joined(categories, ", ")));
    }
    std::vector<TreeEntry> entries;
    std::set<std::string> shown{category};
    std::vector<TreeEntry> open{{category, -1, false}}; // what is still to be listed, the next one last
    while (!open.empty()) {
        const TreeEntry entry = open.back();
        open.pop_back();
        const bool has_features = is_category(entry.name);
        // A category that lists itself, however far round, ends here.
        const bool is_repeated = entry.level >= 0 && has_features && !shown.insert(entry.name).second;
        if (entry.level >= 0)
            entries.push_back({entry.name, entry.level, is_repeated});
        if (!has_features || is_repeated)
            continue;
        const auto features = map.find(entry.name).properties("pFeature");
        for (auto feature = features.rbegin(); feature != features.rend(); ++feature)
            open.push_back({*feature, entry.level + 1, false});
    }
    return entries;
}

Feature NodeMap::describe(const std::string& name) const
{
    m_impl->map.invalidate();
    if (const Node node = m_impl->map.find(name))
        return m_impl->describe(node);
    Feature feature;
    feature.name = name;
    feature.access.is_available = false;
    feature.problem = "there is no feature " + name;
    return feature;
}

FeatureDetails NodeMap::details(const std::string& name) const
{
    const Node node = m_impl->find(name);
    FeatureDetails details = details_of(m_impl->map, node);
    details.feature = m_impl->describe(node);
    return details;
}

Value NodeMap::get(const std::string& name) const
{
    const Node node = m_impl->find(name);
    const FeatureKind kind = kind_of(node);
    if (kind == FeatureKind::command)
        throw std::runtime_error(name + " is a command and has no value; `zvgentl exec " + name +
                                 "` executes it");
    if (kind == FeatureKind::category)
        throw std::runtime_error(name + " is a category and has no value; `zvgentl features --category " +
                                 name + "` lists its features");
    Access access;
    try {
        access = access_of(node);
    } catch (const std::exception& error) {
        throw std::runtime_error(name + " cannot be read: " + reason_of(node, error));
    }
    if (!access.is_readable)
        throw std::runtime_error(name + " cannot be read: " + why_not_readable(access));
    return read_value(node);
}

std::string NodeMap::get_text(const std::string& name) const
{
    const Value value = get(name);
    return to_text(value, notation_of(m_impl->find(name)));
}

void NodeMap::set(const std::string& name, const std::string& text) const
{
    const Node node = m_impl->find(name);
    const FeatureKind kind = kind_of(node);
    if (kind == FeatureKind::command)
        throw std::runtime_error(name + " is a command and has no value; `zvgentl exec " + name +
                                 "` executes it");
    if (kind == FeatureKind::category)
        throw std::runtime_error(name + " is a category and has no value");
    Feature feature;
    try {
        feature = m_impl->describe_for_writing(node);
    } catch (const std::exception& error) {
        throw std::runtime_error(name + " cannot be written: " + reason_of(node, error));
    }
    if (!feature.access.is_writable)
        throw std::runtime_error(name + " cannot be written: " + why_not_writable(feature));
    Impl::write(node, feature, text);
}

void NodeMap::Impl::write(const Node& node, const Feature& feature, const std::string& text)
{
    const auto write_to = [&](auto handle, const auto& value) {
        try {
            handle.set(value);
        } catch (const std::exception& error) {
            throw std::runtime_error(feature.name + " was not set to \"" + text +
                                     "\": " + reason_of(node, error));
        }
    };
    switch (feature.kind) {
    case FeatureKind::integer: {
        const auto number = parse_integer(text, feature.notation);
        if (!number)
            refuse_value(feature, text, "a whole number, " + range_text(feature) + unit_of(feature));
        check_range(feature, text, *number);
        write_to(node.as<zvgenapi::Integer>(), *number);
        break;
    }
    case FeatureKind::floating_point: {
        const auto number = parse_float(text);
        if (!number)
            refuse_value(feature, text, "a number, " + range_text(feature) + unit_of(feature));
        check_range(feature, text, *number);
        write_to(node.as<zvgenapi::Float>(), *number);
        break;
    }
    case FeatureKind::boolean: {
        const auto boolean = parse_boolean(text);
        if (!boolean)
            refuse_value(feature, text, "true or false");
        write_to(node.as<zvgenapi::Boolean>(), *boolean);
        break;
    }
    case FeatureKind::enumeration:
        check_entry(feature, text);
        write_to(node.as<zvgenapi::Enumeration>(), text);
        break;
    case FeatureKind::string:
        check_length(feature, text);
        write_to(node.as<zvgenapi::String>(), text);
        break;
    case FeatureKind::bytes: {
        const auto bytes = parse_bytes(text);
        const std::int64_t length = node.as<zvgenapi::Register>().length();
        if (!bytes || static_cast<std::int64_t>(bytes->size()) != length)
            refuse_value(feature, text, std::to_string(length) + " bytes, each of two hexadecimal digits");
        write_to(Bytes{node.as<zvgenapi::Register>()}, *bytes);
        break;
    }
    default:
        throw std::runtime_error(feature.name + " has no value");
    }
}

void NodeMap::execute(const std::string& name, std::chrono::milliseconds timeout) const
{
    const Node node = m_impl->find(name);
    if (kind_of(node) != FeatureKind::command)
        throw std::runtime_error(name + " is not a command; `zvgentl set " + name + "=VALUE` writes a value");
    auto command = node.as<zvgenapi::Command>();
    try {
        const Feature feature = m_impl->describe_for_writing(node);
        if (!feature.access.is_writable)
            throw std::runtime_error(name + " cannot be executed: " + why_not_writable(feature));
    } catch (const zvgenapi::Error& error) {
        throw std::runtime_error(name + " cannot be executed: " + reason_of(node, error));
    }
    try {
        command.execute();
    } catch (const std::exception& error) {
        throw std::runtime_error(name + " was not executed: " + reason_of(node, error));
    }
    try {
        command.wait(timeout);
    } catch (const std::exception& error) {
        const auto* const known = dynamic_cast<const zvgenapi::Error*>(&error);
        if (known == nullptr || known->kind() != zvgenapi::ErrorKind::time_out)
            throw std::runtime_error(name + " was started, but the device does not say whether it is done: " +
                                     reason_of(node, error));
        throw std::runtime_error(name + " was started, but " + known->message() +
                                 "; --timeout sets how long to wait");
    }
}

} // namespace zvgentl::tool
