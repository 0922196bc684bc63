#include "logger/Configuration.h"

#include <algorithm>

#include "logger/PropertyReader.h"
#include "platform/environment.h"

namespace zvlog {

namespace {

constexpr int deepest_reference = 8; // a longer chain refers to itself
constexpr std::string_view environment_prefix = "system.env.";

} // namespace

Configuration::Configuration(std::string_view text, Problems& problems)
{
    PropertyReader reader(text);
    while (reader.next()) {
        const std::string key(reader.key());
        if (reader.has_separator())
            m_values[key] = reader.value();
        else
            problems.push_back("'" + key + "' is not a property");
    }
}

std::optional<std::string> Configuration::value(const std::string& key) const
{
    const auto found = m_values.find(key);
    if (found == m_values.end())
        return std::nullopt;
    return expanded(found->second, 0);
}

std::vector<std::string> Configuration::children(const std::string& key) const
{
    const std::string prefix = key + ".";
    std::vector<std::string> names;
    for (auto entry = m_values.lower_bound(prefix); entry != m_values.end(); ++entry) {
        if (entry->first.compare(0, prefix.size(), prefix) != 0)
            break;
        const std::size_t end = entry->first.find('.', prefix.size());
        const std::string name = entry->first.substr(prefix.size(), end - prefix.size());
        if (std::find(names.begin(), names.end(), name) == names.end())
            names.push_back(name);
    }
    return names;
}

std::string Configuration::expanded(const std::string& text, int depth) const
{
    std::string result;
    std::size_t position = 0;
    for (;;) {
        const std::size_t start = text.find("${", position);
        const std::size_t end = start == std::string::npos ? start : text.find('}', start);
        if (end == std::string::npos)
            return result + text.substr(position);
        result += text.substr(position, start - position);
        const auto reference = referenced(text.substr(start + 2, end - start - 2), depth);
        result += reference ? *reference : text.substr(start, end - start + 1);
        position = end + 1;
    }
}

std::optional<std::string> Configuration::referenced(const std::string& key, int depth) const
{
    if (key.compare(0, environment_prefix.size(), environment_prefix) == 0)
        return platform::environment(key.substr(environment_prefix.size()).c_str());
    const auto found = m_values.find(key);
    if (found == m_values.end() || depth == deepest_reference)
        return std::nullopt;
    return expanded(found->second, depth + 1);
}

} // namespace zvlog
