#include "zvgentl/Assignments.h"

#include "genapi/NodeMap.h"

namespace zvgentl::tool {

std::optional<Assignment> parse_assignment(const std::string& text)
{
    const std::size_t sign = text.find('=');
    if (sign == std::string::npos || sign == 0)
        return std::nullopt;
    return Assignment{text.substr(0, sign), text.substr(sign + 1)};
}

std::optional<Assignments> parse_assignments(const std::vector<std::string>& words)
{
    if (words.size() == 2 && words[0].find('=') == std::string::npos && !words[0].empty())
        return Assignments{{words[0], words[1]}};
    Assignments assignments;
    for (const auto& word : words) {
        const auto assignment = parse_assignment(word);
        if (!assignment)
            return std::nullopt;
        assignments.push_back(*assignment);
    }
    return assignments.empty() ? std::nullopt : std::optional(assignments);
}

void set_all(const Assignments& assignments, const NodeMap& map)
{
    for (const auto& assignment : assignments)
        map.set(assignment.name, assignment.value);
}

} // namespace zvgentl::tool
