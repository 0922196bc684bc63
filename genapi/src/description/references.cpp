#include "description/references.h"

#include <string>
#include <utility>

namespace zvgenapi {

namespace {

constexpr std::size_t most_problems = 1000; // that are worth telling

void add_problem(Description& description, const std::string& message, NodeIndex node, std::uint32_t line)
{
    if (description.problems.size() < most_problems)
        description.problems.emplace_back(ErrorKind::description, message,
                                          std::string(description.nodes[node].name), static_cast<int>(line));
}

void enter_name(Description& description, NodeIndex index)
{
    const NodeText& node = description.nodes[index];
    if (node.name.empty()) {
        if (node.type != NodeType::int_swiss_knife || node.owner == no_node)
            add_problem(description, "a node has no name", index, node.line);
        return;
    }
    auto& names =
        node.name_space == NameSpace::standard ? description.standard_names : description.custom_names;
    const auto [place, is_new] = names.emplace(node.name, index);
    if (is_new)
        return;
    const NodeText& other = description.nodes[place->second];
    if (node.merge_priority == other.merge_priority)
        add_problem(description, "the name is used in line " + std::to_string(other.line) + ", too", index,
                    node.line);
    else if (node.merge_priority > other.merge_priority)
        place->second = index;
}

/// Marks what the category Root lists, and the categories below it.
void find_features(Description& description)
{
    std::vector<NodeIndex> open;
    const NodeIndex root = description.find("Root");
    if (root != no_node)
        open.push_back(root);
    while (!open.empty()) {
        const NodeIndex node = open.back();
        open.pop_back();
        if (description.nodes[node].type != NodeType::category)
            continue;
        for (const Element& element : description.of(node))
            if (element.tag == Tag::p_feature && element.target != no_node &&
                !std::exchange(description.nodes[element.target].is_feature, true))
                open.push_back(element.target);
    }
}

} // namespace

void resolve_references(Description& description)
{
    description.standard_names.reserve(description.nodes.size());
    description.custom_names.reserve(description.nodes.size());
    for (NodeIndex node = 0; node < description.nodes.size(); ++node)
        enter_name(description, node);
    for (NodeIndex node = 0; node < description.nodes.size(); ++node) {
        const NodeText& text = description.nodes[node];
        for (auto i = text.first; i < text.last; ++i) {
            Element& element = description.elements[i];
            if (!is_reference(element.tag) || element.target != no_node)
                continue;
            element.target = description.find(element.text);
            if (element.target == no_node)
                add_problem(description,
                            "it refers to " + std::string(element.text.substr(0, 200)) +
                                ", which the description does not contain",
                            node, element.line);
        }
    }
    find_features(description);
}

} // namespace zvgenapi
