#include "logger/Configuration.h"

#include <algorithm>

#include "logger/PropertyReader.h"
#include "platform/environment.h"

namespace zvlog {

namespace {

constexpr int deepest_reference = 8; // a longer chain refers to itself
constexpr std::string_view environment_prefix = "system.env.";
constexpr std::size_t most_references = 10000;
constexpr std::size_t most_characters = 1000000;

} // namespace

/// What all references of a configuration have taken together.
struct Configuration::Work {
    std::size_t references{0};
    std::size_t characters{0};
    int depth{0};

    bool is_too_much() const { return references > most_references || characters > most_characters; }
};

Configuration::Configuration(std::string_view text, Problems& problems)
{
    Values written;
    PropertyReader reader(text);
    while (reader.next()) {
        const std::string key(reader.key());
        if (reader.has_separator())
            written[key] = reader.value();
        else
            problems.push_back("'" + key + "' is not a property");
    }

    Work work;
    for (const auto& [key, value] : written)
        m_values[key] = expanded(written, value, work);
    if (work.is_too_much()) {
        problems.push_back("its references lead to more than " + std::to_string(most_references) +
                           " others or to more than a million characters, so it is not used");
        m_values.clear();
    }
}

std::optional<std::string> Configuration::value(const std::string& key) const
{
    const auto found = m_values.find(key);
    if (found == m_values.end())
        return std::nullopt;
    return found->second;
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

std::string Configuration::expanded(const Values& values, const std::string& text, Work& work)
{
    std::string result;
    std::size_t position = 0;
    for (;;) {
        const std::size_t start = text.find("${", position);
        const std::size_t end = start == std::string::npos ? start : text.find('}', start);
        if (end == std::string::npos || work.is_too_much())
            return result + text.substr(position);
        result += text.substr(position, start - position);
        const auto reference = referenced(values, text.substr(start + 2, end - start - 2), work);
        result += reference ? *reference : text.substr(start, end - start + 1);
        position = end + 1;
    }
}

std::optional<std::string> Configuration::referenced(const Values& values, const std::string& key, Work& work)
{
    ++work.references;
    std::optional<std::string> value;
    if (key.compare(0, environment_prefix.size(), environment_prefix) == 0) {
        value = platform::environment(key.substr(environment_prefix.size()).c_str());
    } else if (const auto found = values.find(key); found != values.end() && work.depth < deepest_reference) {
        ++work.depth;
        value = expanded(values, found->second, work);
        --work.depth;
    }
    work.characters += value ? value->size() : 0;
    return value;
}

} // namespace zvlog
