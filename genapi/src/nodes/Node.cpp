#include "zvgenapi/Node.h"

#include <algorithm>
#include <unordered_set>

#include "nodes/Core.h"
#include "nodes/Step.h"
#include "nodes/access.h"
#include "nodes/changes.h"
#include "nodes/registers.h"
#include "nodes/texts.h"
#include "zvgenapi/Error.h"

namespace zvgenapi {

namespace {

const NodeText& text_of(const Core* core, std::uint32_t index) { return core->description.nodes[index]; }

std::string literal(const Core* core, std::uint32_t index, Tag tag)
{
    return std::string(text_in(*core, index, tag));
}

bool is_yes(const Core* core, std::uint32_t index, Tag tag)
{
    return parse_yes_no(text_in(*core, index, tag)).value_or(false);
}

Visibility visibility_in(const Core* core, std::uint32_t index, Tag tag)
{
    const std::string_view text = text_in(*core, index, tag);
    for (const Visibility visibility : {Visibility::expert, Visibility::guru, Visibility::invisible})
        if (text == name_of(visibility))
            return visibility;
    return Visibility::beginner;
}

/// The targets of all references, each once.
template <class Counts>
std::vector<Node> targets(Core* core, std::uint32_t index, const Counts& counts)
{
    std::vector<Node> nodes;
    std::unordered_set<NodeIndex> seen;
    for (const Element& element : core->description.of(index))
        if (element.target != no_node && counts(element.tag) && seen.insert(element.target).second)
            nodes.emplace_back(core, element.target);
    return nodes;
}

Node target(Core* core, std::uint32_t index, Tag tag)
{
    const Element* const element = core->description.find(index, tag);
    return element == nullptr || element->target == no_node ? Node() : Node(core, element->target);
}

} // namespace

std::string Node::name() const { return std::string(text_of(m_core, m_index).name); }

std::string Node::full_name() const
{
    return (name_space() == NameSpace::standard ? "Std::" : "Cust::") + name();
}

NameSpace Node::name_space() const { return text_of(m_core, m_index).name_space; }
NodeType Node::type() const { return text_of(m_core, m_index).type; }
InterfaceType Node::interface_type() const { return interface_of(type()); }
int Node::line() const { return static_cast<int>(text_of(m_core, m_index).line); }

std::string Node::display_name() const
{
    std::string text = literal(m_core, m_index, Tag::display_name);
    if (!text.empty())
        return text;
    return type() == NodeType::enum_entry ? std::string(text_of(m_core, m_index).symbolic) : name();
}

std::string Node::tool_tip() const { return literal(m_core, m_index, Tag::tool_tip); }
std::string Node::description() const { return literal(m_core, m_index, Tag::description); }
std::string Node::docu_url() const { return literal(m_core, m_index, Tag::docu_url); }

Visibility Node::visibility() const
{
    return std::max(visibility_in(m_core, m_index, Tag::visibility),
                    visibility_in(m_core, m_index, Tag::imposed_visibility));
}

Caching Node::caching() const
{
    bool is_uncached = false;
    bool is_around = false;
    for_each_below(*m_core, {m_index}, [&](NodeIndex below) {
        if (!is_register(text_of(m_core, below).type))
            return;
        const Caching caching = caching_of_register(*m_core, below);
        is_uncached = is_uncached || caching == Caching::no_cache;
        is_around = is_around || caching == Caching::write_around;
    });
    if (is_uncached)
        return Caching::no_cache;
    return is_around ? Caching::write_around : Caching::write_through;
}

std::int64_t Node::polling_time() const
{
    return parse_integer(text_in(*m_core, m_index, Tag::polling_time)).value_or(-1);
}

std::string Node::event_id() const { return literal(m_core, m_index, Tag::event_id); }
bool Node::is_deprecated() const { return is_yes(m_core, m_index, Tag::is_deprecated); }
bool Node::is_feature() const { return text_of(m_core, m_index).is_feature; }
bool Node::is_streamable() const { return is_yes(m_core, m_index, Tag::streamable); }

Node Node::alias() const { return target(m_core, m_index, Tag::p_alias); }
Node Node::cast_alias() const { return target(m_core, m_index, Tag::p_cast_alias); }
Node Node::error_node() const { return target(m_core, m_index, Tag::p_error); }

std::vector<Node> Node::selected() const
{
    return targets(m_core, m_index, [](Tag tag) { return tag == Tag::p_selected; });
}

std::vector<Node> Node::selecting() const
{
    std::vector<Node> nodes;
    for (const NodeIndex selector : m_core->selecting.of(m_index))
        if (nodes.empty() || nodes.back().index() != selector)
            nodes.emplace_back(m_core, selector);
    return nodes;
}

std::vector<Node> Node::invalidators() const
{
    return targets(m_core, m_index, [](Tag tag) { return tag == Tag::p_invalidator; });
}

std::vector<Node> Node::children() const
{
    return targets(m_core, m_index, [](Tag) { return true; });
}

std::vector<std::string> Node::extensions() const { return properties(element_name(Tag::extension)); }

std::optional<std::string> Node::property(const std::string& element) const
{
    const Tag tag = tag_of(element);
    const Element* const found = tag == Tag::unknown ? nullptr : m_core->description.find(m_index, tag);
    return found == nullptr ? std::nullopt : std::optional<std::string>(found->text);
}

std::vector<std::string> Node::properties(const std::string& element) const
{
    const Tag tag = tag_of(element);
    std::vector<std::string> texts;
    for (const Element& one : m_core->description.of(m_index))
        if (one.tag == tag && tag != Tag::unknown)
            texts.emplace_back(one.text);
    return texts;
}

AccessMode Node::access() const
{
    return m_core->run([this] { return access_mode(*m_core, m_index); });
}

bool Node::is_locked() const
{
    return m_core->run([this] { return zvgenapi::is_locked(*m_core, m_index); });
}

std::string Node::to_string(UseCache use_cache) const
{
    return m_core->run(use_cache, [this] {
        require_readable(*m_core, m_index);
        return value_text(*m_core, m_index);
    });
}

void Node::from_string(const std::string& text, Verify verify)
{
    m_core->run([&] {
        require_writable(*m_core, m_index);
        write_value_text(*m_core, m_index, text, verify);
    });
}

void Node::invalidate()
{
    m_core->run([this] { forget_registers(*m_core, {m_index}); });
}

void Node::refuse_type(const char* wanted) const
{
    if (m_core == nullptr)
        throw Error(ErrorKind::wrong_type, std::string("an empty handle is not an ") + wanted);
    fail(*m_core, m_index, ErrorKind::wrong_type,
         std::string("the node has the interface ") + name_of(interface_type()) + ", not " + wanted);
}

} // namespace zvgenapi
