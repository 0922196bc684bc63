#include "genapi/names.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <utility>

namespace zvgentl::tool {

namespace {

constexpr std::size_t most_names = 3;
constexpr std::size_t longest_name = 100; // of those that are compared

std::string lower_case(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

/// How many letters must be inserted, removed or replaced to get from one to the other.
std::size_t distance(const std::string& from, const std::string& to)
{
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

} // namespace

std::vector<std::string> near_names(const std::string& wanted, const std::vector<std::string>& names)
{
    if (wanted.empty() || wanted.size() > longest_name)
        return {};
    const std::string written = lower_case(wanted);
    std::vector<std::pair<std::size_t, std::string>> near;
    for (const auto& name : names) {
        if (name.size() > longest_name)
            continue;
        const std::string candidate = lower_case(name);
        const bool is_part = written.size() > 2 && candidate.find(written) != std::string::npos;
        const std::size_t letters = distance(written, candidate);
        if (letters <= std::max<std::size_t>(2, written.size() / 3))
            near.emplace_back(letters, name);
        else if (is_part)
            near.emplace_back(longest_name + letters, name);
    }
    std::sort(near.begin(), near.end());
    near.erase(std::unique(near.begin(), near.end()), near.end());
    std::vector<std::string> best;
    if (!near.empty() && near.front().first == 0)
        return {near.front().second}; // only capital letters are wrong
    for (std::size_t i = 0; i < std::min(near.size(), most_names); ++i)
        best.push_back(near[i].second);
    return best;
}

} // namespace zvgentl::tool
