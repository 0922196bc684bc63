#include "description/cycles.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace zvgenapi {

namespace {

struct Need {
    Tag tag;
    Aspect from;
    Aspect to;
};

constexpr Need needs[] = {
    {Tag::p_value, Aspect::value, Aspect::value},
    {Tag::p_value_default, Aspect::value, Aspect::value},
    {Tag::p_value_indexed, Aspect::value, Aspect::value},
    {Tag::p_index, Aspect::value, Aspect::value},
    {Tag::p_index_offset, Aspect::value, Aspect::value},
    {Tag::p_variable, Aspect::value, Aspect::value},
    {Tag::p_address, Aspect::value, Aspect::value},
    {Tag::p_length, Aspect::value, Aspect::value},
    {Tag::int_swiss_knife, Aspect::value, Aspect::value},
    {Tag::p_min, Aspect::limits, Aspect::value},
    {Tag::p_max, Aspect::limits, Aspect::value},
    {Tag::p_inc, Aspect::limits, Aspect::value},
    {Tag::p_index, Aspect::limits, Aspect::value},
    {Tag::p_value, Aspect::limits, Aspect::limits},
    {Tag::p_value_default, Aspect::limits, Aspect::limits},
    {Tag::p_value_indexed, Aspect::limits, Aspect::limits},
    {Tag::p_is_implemented, Aspect::access, Aspect::value},
    {Tag::p_is_available, Aspect::access, Aspect::value},
    {Tag::p_is_locked, Aspect::access, Aspect::value},
    {Tag::p_index, Aspect::access, Aspect::value},
    {Tag::p_value, Aspect::access, Aspect::access},
    {Tag::p_value_copy, Aspect::access, Aspect::access},
    {Tag::p_value_default, Aspect::access, Aspect::access},
    {Tag::p_value_indexed, Aspect::access, Aspect::access},
    {Tag::p_variable, Aspect::access, Aspect::access},
    {Tag::p_port, Aspect::access, Aspect::access},
};

constexpr std::size_t most_names = 20; // of those on the way round
constexpr std::size_t most_told = 1000;

using Vertex = std::uint32_t; // a node and an aspect

Vertex vertex_of(NodeIndex node, Aspect aspect) noexcept
{
    return node * static_cast<Vertex>(aspect_count) + static_cast<Vertex>(aspect);
}

bool is_converter(NodeType type) noexcept
{
    return type == NodeType::converter || type == NodeType::int_converter;
}

Aspect aspect_of_variable(const Element& element) noexcept
{
    const VariablePart part = parse_variable(element.name).part;
    return part == VariablePart::value || part == VariablePart::entry ? Aspect::value : Aspect::limits;
}

/// Everything that questions lead to, as one list with a start for each question.
class Graph {
public:
    explicit Graph(const Description& description)
    {
        const auto vertices = description.nodes.size() * aspect_count;
        m_starts.reserve(vertices + 1);
        m_targets.reserve(description.elements.size());
        for (Vertex vertex = 0; vertex < vertices; ++vertex) {
            m_starts.push_back(static_cast<std::uint32_t>(m_targets.size()));
            for_each_need(description, vertex / aspect_count, static_cast<Aspect>(vertex % aspect_count),
                          [this](const Element& element, Aspect to) {
                              m_targets.push_back(vertex_of(element.target, to));
                          });
        }
        m_starts.push_back(static_cast<std::uint32_t>(m_targets.size()));
    }

    std::size_t size() const noexcept { return m_starts.size() - 1; }
    std::uint32_t first(Vertex vertex) const noexcept { return m_starts[vertex]; }
    std::uint32_t last(Vertex vertex) const noexcept { return m_starts[vertex + 1]; }
    Vertex target(std::uint32_t edge) const noexcept { return m_targets[edge]; }

private:
    std::vector<std::uint32_t> m_starts;
    std::vector<Vertex> m_targets;
};

/// Tarjan's search for strongly connected components, with a stack of its own, because descriptions decide
/// how deep it goes.
class CycleSearch {
public:
    CycleSearch(Description& description, const Graph& graph)
        : m_description(description), m_graph(graph), m_numbers(graph.size(), 0), m_lowest(graph.size(), 0),
          m_components(graph.size(), 0)
    {
    }

    void run()
    {
        for (Vertex vertex = 0; vertex < m_graph.size(); ++vertex)
            if (m_numbers[vertex] == 0)
                follow(vertex);
    }

private:
    struct Step {
        Vertex vertex;
        std::uint32_t edge;
    };

    void open(Vertex vertex)
    {
        m_numbers[vertex] = m_lowest[vertex] = ++m_count;
        m_candidates.push_back(vertex);
        m_steps.push_back({vertex, m_graph.first(vertex)});
    }

    void follow(Vertex start)
    {
        open(start);
        while (!m_steps.empty()) {
            Step& step = m_steps.back();
            const Vertex vertex = step.vertex;
            if (step.edge < m_graph.last(vertex)) {
                const Vertex target = m_graph.target(step.edge++);
                if (m_numbers[target] == 0)
                    open(target);
                else if (m_components[target] == 0)
                    m_lowest[vertex] = std::min(m_lowest[vertex], m_numbers[target]);
                continue;
            }
            m_steps.pop_back();
            if (!m_steps.empty())
                m_lowest[m_steps.back().vertex] = std::min(m_lowest[m_steps.back().vertex], m_lowest[vertex]);
            if (m_lowest[vertex] == m_numbers[vertex])
                close_component(vertex);
        }
    }

    void close_component(Vertex root)
    {
        ++m_component;
        std::vector<Vertex> members;
        do {
            members.push_back(m_candidates.back());
            m_components[m_candidates.back()] = m_component;
            m_candidates.pop_back();
        } while (members.back() != root);
        if (members.size() > 1 || next_within(root) != no_node)
            report(members);
    }

    /// What the vertex leads to within its own component; no_node if there is nothing.
    Vertex next_within(Vertex vertex) const
    {
        for (auto edge = m_graph.first(vertex); edge < m_graph.last(vertex); ++edge)
            if (m_components[m_graph.target(edge)] == m_components[vertex])
                return m_graph.target(edge);
        return no_node;
    }

    void report(const std::vector<Vertex>& members)
    {
        m_description.cycles.resize(m_graph.size(), 0);
        std::uint32_t problem = no_node; // beyond all problems: it is not told
        if (++m_told <= most_told) {
            const NodeIndex node = members.back() / aspect_count;
            m_description.problems.emplace_back(ErrorKind::cycle, way_round(members.back()),
                                                std::string(m_description.nodes[node].name),
                                                static_cast<int>(m_description.nodes[node].line));
            problem = static_cast<std::uint32_t>(m_description.problems.size());
        }
        for (const Vertex member : members)
            m_description.cycles[member] = problem;
    }

    std::string way_round(Vertex vertex) const
    {
        std::unordered_map<Vertex, std::size_t> places;
        std::vector<Vertex> way;
        for (; places.emplace(vertex, way.size()).second; vertex = next_within(vertex))
            way.push_back(vertex);
        way.erase(way.begin(), way.begin() + static_cast<std::ptrdiff_t>(places.at(vertex)));
        way.push_back(vertex);
        std::string text = "it depends on itself: ";
        for (std::size_t i = 0; i < way.size(); ++i) {
            if (i == most_names)
                return text + " -> ...";
            text += i == 0 ? "" : " -> ";
            text += m_description.nodes[way[i] / aspect_count].name;
        }
        return text;
    }

    Description& m_description;
    const Graph& m_graph;
    std::vector<std::uint32_t> m_numbers; // in the order of discovery, from 1
    std::vector<std::uint32_t> m_lowest;
    std::vector<std::uint32_t> m_components; // 0: not known yet
    std::vector<Vertex> m_candidates;
    std::vector<Step> m_steps;
    std::uint32_t m_count{0};
    std::uint32_t m_component{0};
    std::size_t m_told{0};
};

} // namespace

Variable parse_variable(std::string_view name) noexcept
{
    const std::size_t dot = name.find('.');
    if (dot == std::string_view::npos)
        return {};
    const std::string_view ending = name.substr(dot + 1);
    if (ending == "Min")
        return {VariablePart::minimum, {}};
    if (ending == "Max")
        return {VariablePart::maximum, {}};
    if (ending == "Inc")
        return {VariablePart::increment, {}};
    for (const std::string_view prefix : {"Entry.", "Enum."})
        if (ending.substr(0, prefix.size()) == prefix)
            return {VariablePart::entry, ending.substr(prefix.size())};
    return {};
}

void for_each_need(const Description& description, NodeIndex node, Aspect aspect,
                   const std::function<void(const Element&, Aspect)>& action)
{
    for (const Element& element : description.of(node)) {
        if (element.target == no_node)
            continue;
        for (const Need& need : needs)
            if (need.tag == element.tag && need.from == aspect)
                action(element, element.tag == Tag::p_variable && aspect == Aspect::value
                                    ? aspect_of_variable(element)
                                    : need.to);
        // The limits of a converter are those of the node below it, converted.
        if (aspect == Aspect::limits && element.tag == Tag::p_variable &&
            is_converter(description.nodes[node].type))
            action(element, aspect_of_variable(element));
    }
}

void find_cycles(Description& description)
{
    const Graph graph(description);
    CycleSearch(description, graph).run();
}

} // namespace zvgenapi
