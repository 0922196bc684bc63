#include "genapi/NodeMap.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <stdexcept>
#include <thread>

#include "genapi/Nodes.h"
#include "genapi/describe.h"
#include "genapi/values.h"
#include "gentl/texts.h"

namespace zvgentl::tool {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds longest_pause{50}; // between two looks at a command

extern "C" void tell_and_end(int /*signal*/)
{
    // The fault interrupts nothing but the parser, so that the stream can be written to.
    std::fputs("zvgentl: a formula of the register description divides the smallest number by -1, which "
               "has no result; the description is faulty\n",
               stderr);
    std::_Exit(EXIT_FAILURE);
}

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

} // namespace

class NodeMap::Impl {
public:
    Impl(const std::string& description, const Registers& registers) : nodes(description, registers) {}

    /// Throws std::runtime_error, with the names that may have been meant, for one that does not exist.
    ArvGcNode* find(const std::string& name) const
    {
        if (nodes.graph().find(name) != nullptr && nodes.kind(name) != FeatureKind::other)
            return nodes.usable(name);
        const auto near = near_names(name, names());
        throw std::runtime_error("there is no feature " + name +
                                 (near.empty() ? "; `zvgentl features` lists those that exist"
                                               : "; did you mean " + joined(near, " or ") + "?"));
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> all;
        for (const auto& node : nodes.graph().nodes())
            for (const auto& name :
                 node.element == "Category" ? node.all("pFeature") : std::vector<std::string>())
                all.push_back(name);
        return all;
    }

    void write(ArvGcNode* node, const Feature& feature, const std::string& text) const;
    void write_entry(ArvGcNode* node, const Feature& feature, const std::string& text) const;
    static void write_string(ArvGcNode* node, const Feature& feature, const std::string& text);
    static void write_bytes(ArvGcNode* node, const Feature& feature, const std::string& text);
    bool is_done(const GraphNode& command) const;

    Nodes nodes;
};

bool has_genapi_parser() noexcept { return true; }

void end_on_arithmetic_fault() { std::signal(SIGFPE, &tell_and_end); }

NodeMap::NodeMap(const std::string& description, const Registers& registers)
    : m_impl(std::make_unique<Impl>(description, registers))
{
}

NodeMap::~NodeMap() = default;

std::vector<TreeEntry> NodeMap::tree(const std::string& category) const
{
    const NodeGraph& graph = m_impl->nodes.graph();
    const GraphNode* const start = graph.find(category);
    if (start == nullptr || start->element != "Category") {
        std::vector<std::string> categories;
        for (const auto& node : graph.nodes())
            if (node.element == "Category")
                categories.push_back(node.name);
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
        const GraphNode* const node = graph.find(entry.name);
        const bool is_category = node != nullptr && node->element == "Category";
        // A category that lists itself, however far round, ends here.
        const bool is_repeated = entry.level >= 0 && is_category && !shown.insert(entry.name).second;
        if (entry.level >= 0)
            entries.push_back({entry.name, entry.level, is_repeated});
        if (!is_category || is_repeated)
            continue;
        const auto features = node->all("pFeature");
        for (auto feature = features.rbegin(); feature != features.rend(); ++feature)
            open.push_back({*feature, entry.level + 1, false});
    }
    return entries;
}

Feature NodeMap::describe(const std::string& name) const { return describe_feature(m_impl->nodes, name); }

Value NodeMap::get(const std::string& name) const
{
    ArvGcNode* const node = m_impl->find(name);
    const FeatureKind kind = m_impl->nodes.kind(name);
    if (kind == FeatureKind::command)
        throw std::runtime_error(name + " is a command and has no value; `zvgentl exec " + name +
                                 "` executes it");
    if (kind == FeatureKind::category)
        throw std::runtime_error(name + " is a category and has no value; `zvgentl features --category " +
                                 name + "` lists its features");
    const Access access = m_impl->nodes.access(name);
    if (!access.is_readable)
        throw std::runtime_error(name + " cannot be read: " + why_not_readable(access));
    return read_value(node, name, kind);
}

std::string NodeMap::get_text(const std::string& name) const
{
    const Value value = get(name);
    return to_text(value, notation_of(m_impl->find(name)));
}

void NodeMap::set(const std::string& name, const std::string& text) const
{
    ArvGcNode* const node = m_impl->find(name);
    const FeatureKind kind = m_impl->nodes.kind(name);
    if (kind == FeatureKind::command)
        throw std::runtime_error(name + " is a command and has no value; `zvgentl exec " + name +
                                 "` executes it");
    if (kind == FeatureKind::category)
        throw std::runtime_error(name + " is a category and has no value");
    const Feature feature = describe_for_writing(m_impl->nodes, name);
    if (!feature.access.is_writable)
        throw std::runtime_error(name + " cannot be written: " + why_not_writable(feature));
    try {
        m_impl->write(node, feature, text);
    } catch (const PortFailure& failure) {
        throw std::runtime_error(name + " was not set to \"" + text + "\": " + failure.what());
    }
}

void NodeMap::Impl::write(ArvGcNode* node, const Feature& feature, const std::string& text) const
{
    Failure failure;
    switch (feature.kind) {
    case FeatureKind::integer: {
        const auto number = parse_integer(text, feature.notation);
        if (!number)
            refuse_value(feature, text, "a whole number, " + range_text(feature) + unit_of(feature));
        check_range(feature, text, *number);
        arv_gc_integer_set_value(ARV_GC_INTEGER(node), *number, failure);
        break;
    }
    case FeatureKind::floating_point: {
        const auto number = parse_float(text);
        if (!number)
            refuse_value(feature, text, "a number, " + range_text(feature) + unit_of(feature));
        check_range(feature, text, *number);
        arv_gc_float_set_value(ARV_GC_FLOAT(node), *number, failure);
        break;
    }
    case FeatureKind::boolean: {
        const auto boolean = parse_boolean(text);
        if (!boolean)
            refuse_value(feature, text, "true or false");
        arv_gc_boolean_set_value(ARV_GC_BOOLEAN(node), *boolean ? TRUE : FALSE, failure);
        break;
    }
    case FeatureKind::enumeration:
        write_entry(node, feature, text);
        break;
    case FeatureKind::string:
        write_string(node, feature, text);
        break;
    case FeatureKind::bytes:
        write_bytes(node, feature, text);
        break;
    default:
        throw std::runtime_error(feature.name + " has no value");
    }
    check_port(failure);
}

void NodeMap::Impl::write_entry(ArvGcNode* node, const Feature& feature, const std::string& text) const
{
    const auto& entries = feature.entries;
    if (std::find(entries.begin(), entries.end(), text) == entries.end())
        refuse_value(feature, text,
                     entries.empty() ? "none of its entries at the moment" : joined(entries, ", "));
    Failure failure;
    arv_gc_enumeration_set_string_value(ARV_GC_ENUMERATION(node), text.c_str(), failure);
    check_port(failure);
}

void NodeMap::Impl::write_string(ArvGcNode* node, const Feature& feature, const std::string& text)
{
    const auto* const most = std::get_if<std::int64_t>(&feature.maximum);
    if (most != nullptr && text.size() > static_cast<std::uint64_t>(*most))
        refuse_value(feature, text, "at most " + std::to_string(*most) + " characters");
    Failure failure;
    arv_gc_string_set_value(ARV_GC_STRING(node), text.c_str(), failure);
    check_port(failure);
}

void NodeMap::Impl::write_bytes(ArvGcNode* node, const Feature& feature, const std::string& text)
{
    Failure failure;
    const guint64 length = arv_gc_register_get_length(ARV_GC_REGISTER(node), failure);
    check_port(failure);
    const auto bytes = parse_bytes(text);
    if (!bytes || bytes->size() != length)
        refuse_value(feature, text, std::to_string(length) + " bytes, each of two hexadecimal digits");
    arv_gc_register_set(ARV_GC_REGISTER(node), bytes->data(), length, failure);
    check_port(failure);
}

void NodeMap::execute(const std::string& name, std::chrono::milliseconds timeout) const
{
    ArvGcNode* const node = m_impl->find(name);
    if (m_impl->nodes.kind(name) != FeatureKind::command)
        throw std::runtime_error(name + " is not a command; `zvgentl set " + name + "=VALUE` writes a value");
    const Feature feature = describe_for_writing(m_impl->nodes, name);
    if (!feature.access.is_writable)
        throw std::runtime_error(name + " cannot be executed: " + why_not_writable(feature));
    Failure failure;
    arv_gc_command_execute(ARV_GC_COMMAND(node), failure);
    try {
        check_port(failure);
    } catch (const PortFailure& reason) {
        throw std::runtime_error(name + " was not executed: " + reason.what());
    }
    const auto end = Clock::now() + timeout;
    for (std::chrono::milliseconds pause{1}; !m_impl->is_done(*m_impl->nodes.graph().find(name));
         pause = std::min(2 * pause, longest_pause)) {
        if (Clock::now() >= end)
            throw std::runtime_error(name + " was started, but the device has not finished it after " +
                                     std::to_string(timeout.count()) +
                                     " ms; --timeout sets how long to wait");
        std::this_thread::sleep_for(pause);
    }
}

// A device that works on a command leaves the command's value in the register until it is done.
bool NodeMap::Impl::is_done(const GraphNode& command) const
{
    const std::string* const target = command.find("pValue");
    if (target == nullptr || !nodes.access(*target).is_readable)
        return true;
    const std::string* const source = command.find("pCommandValue");
    const std::string* const literal = command.find("CommandValue");
    long long value = 0;
    if (source != nullptr)
        value = nodes.whole_number(*source);
    else if (literal == nullptr || !parse_literal(*literal, value))
        return true;
    return nodes.whole_number(*target) != value;
}

} // namespace zvgentl::tool
