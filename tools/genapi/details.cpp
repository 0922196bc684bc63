#include "genapi/details.h"

#include <algorithm>
#include <set>

#include "genapi/describe.h"
#include "zvgenapi/NodeMap.h"

namespace zvgentl::tool {

using zvgenapi::Node;

namespace {

constexpr std::size_t most_registers = 1000; // of one feature

/// The elements that name the nodes a value is made of.
constexpr const char* parts_of_value[] = {"pValue", "pValueDefault", "pValueIndexed", "pValueCopy",
                                          "pVariable"};

RegisterPlace place_of(const zvgenapi::Register& node)
{
    RegisterPlace place;
    place.name = node.name();
    try {
        place.caching = name_of(node.caching());
        place.access = name_of(node.access());
        place.port = node.port().name();
        place.address = node.address();
        place.length = node.length();
    } catch (const std::exception& error) {
        place.problem = reason_of(node, error);
    }
    return place;
}

std::vector<RegisterPlace> registers_behind(const zvgenapi::NodeMap& map, const Node& start)
{
    std::vector<RegisterPlace> places;
    std::set<std::size_t> seen;
    std::vector<Node> open{start}; // what is still to be followed, the next one last
    while (!open.empty() && places.size() < most_registers) {
        const Node node = open.back();
        open.pop_back();
        if (!node || !seen.insert(node.index()).second)
            continue;
        if (const auto place = node.try_as<zvgenapi::Register>()) {
            places.push_back(place_of(place));
            continue;
        }
        std::vector<Node> parts;
        for (const char* const element : parts_of_value)
            for (const auto& name : node.properties(element))
                parts.push_back(map.find(name));
        open.insert(open.end(), parts.rbegin(), parts.rend());
    }
    return places;
}

void add_selectors(const Node& node, std::set<std::size_t>& seen, std::vector<std::string>& names)
{
    for (const Node& selector : node.selecting()) {
        if (!seen.insert(selector.index()).second)
            continue;
        add_selectors(selector, seen, names);
        names.push_back(selector.name());
    }
}

} // namespace

std::vector<std::string> selectors_of(const Node& node)
{
    std::vector<std::string> names;
    std::set<std::size_t> seen{node.index()};
    add_selectors(node, seen, names);
    return names;
}

FeatureDetails details_of(const zvgenapi::NodeMap& map, const Node& node)
{
    FeatureDetails details;
    details.element = name_of(node.type());
    details.long_description = node.description();
    details.docu_url = node.docu_url();
    details.selectors = selectors_of(node);
    details.is_streamable = node.is_streamable();
    details.is_deprecated = node.is_deprecated();
    details.registers = registers_behind(map, node);
    return details;
}

} // namespace zvgentl::tool
