#include "zvgentl/FeatureFile.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <set>
#include <sstream>
#include <stdexcept>
#include <utility>

#include <fmt/core.h>

#include "genapi/values.h"

namespace zvgentl::tool {

namespace {

constexpr std::size_t most_selections = 4096; // of one feature
constexpr std::int64_t most_values = 256;     // of a selector that is a number
constexpr int most_rounds = 20;

/// Gives features the values back that they had.
class KeptValues {
public:
    explicit KeptValues(const NodeMap& map) : m_map(map) {}
    ~KeptValues()
    {
        for (const auto& [name, value] : m_values)
            try {
                m_map.set(name, value);
            } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): the others still can be
            }
    }
    KeptValues(const KeptValues&) = delete;
    KeptValues& operator=(const KeptValues&) = delete;

    void keep(const std::string& name)
    {
        const bool is_known = std::any_of(m_values.begin(), m_values.end(),
                                          [&name](const auto& kept) { return kept.name == name; });
        if (!is_known)
            m_values.push_back({name, m_map.get_text(name)});
    }

private:
    const NodeMap& m_map;
    Assignments m_values; // the outermost selectors first
};

std::vector<std::string> values_of(const Feature& selector)
{
    if (selector.kind == FeatureKind::enumeration)
        return selector.entries;
    if (selector.kind == FeatureKind::boolean)
        return {"false", "true"};
    std::vector<std::string> values;
    const auto* const low = std::get_if<std::int64_t>(&selector.minimum);
    const auto* const high = std::get_if<std::int64_t>(&selector.maximum);
    const auto* const step = std::get_if<std::int64_t>(&selector.increment);
    if (low == nullptr || high == nullptr)
        return values;
    for (std::int64_t value = *low;
         static_cast<std::int64_t>(values.size()) < most_values && value <= *high;) {
        values.push_back(to_text(value, selector.notation));
        const std::int64_t way = step == nullptr ? 1 : *step;
        if (*high - way < value)
            break;
        value += way;
    }
    return values;
}

/// Reads one feature for every value of its selectors.
class Reader {
public:
    Reader(const NodeMap& map, SavedFeatures& features, std::vector<std::string>& problems)
        : m_map(map), m_features(features), m_problems(problems)
    {
    }

    void read(const FeatureDetails& details)
    {
        m_details = &details;
        m_count = 0;
        m_chosen.clear();
        choose(0);
    }

private:
    void choose(std::size_t index)
    {
        if (index == m_details->selectors.size()) {
            add();
            return;
        }
        const std::string& selector = m_details->selectors[index];
        const Feature feature = m_map.describe(selector);
        if (!feature.access.is_writable) { // it has one value only
            m_chosen.push_back({selector, ""});
            choose(index + 1);
            m_chosen.pop_back();
            return;
        }
        for (const auto& value : values_of(feature)) {
            try {
                m_map.set(selector, value);
            } catch (const std::exception& reason) {
                m_problems.emplace_back(reason.what());
                continue;
            }
            m_chosen.push_back({selector, value});
            choose(index + 1);
            m_chosen.pop_back();
        }
    }

    void add()
    {
        if (++m_count > most_selections)
            return;
        SavedFeature saved{{}, m_details->feature.name, {}};
        for (const auto& chosen : m_chosen)
            if (!chosen.value.empty())
                saved.selectors.push_back(chosen);
        try {
            const Feature feature = m_map.describe(saved.name);
            if (!feature.problem.empty())
                throw std::runtime_error(feature.problem);
            if (!feature.access.is_writable || !feature.access.is_readable)
                return;
            saved.value = m_map.get_text(saved.name);
            m_features.push_back(std::move(saved));
        } catch (const std::exception& reason) {
            m_problems.push_back(saved.title() + ": " + reason.what());
        }
    }

    const NodeMap& m_map;
    SavedFeatures& m_features;
    std::vector<std::string>& m_problems;
    const FeatureDetails* m_details{nullptr};
    Assignments m_chosen;
    std::size_t m_count{0};
};

bool is_stored(const Feature& feature)
{
    return feature.kind != FeatureKind::category && feature.kind != FeatureKind::command &&
           feature.kind != FeatureKind::other;
}

/// All features with a value, each once.
std::vector<FeatureDetails> all_details(const NodeMap& map)
{
    std::vector<FeatureDetails> all;
    std::set<std::string> seen;
    for (const auto& entry : map.tree()) {
        if (!seen.insert(entry.name).second || !is_stored(map.describe(entry.name)))
            continue;
        all.push_back(map.details(entry.name));
    }
    return all;
}

/// Whether a control character of the second set (C1) begins here, in UTF-8.
bool is_second_control(const std::string& text, std::size_t place)
{
    const auto byte = [&text](std::size_t at) {
        return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
    };
    return byte(place) == 0xC2 && byte(place + 1) >= 0x80 && byte(place + 1) < 0xA0;
}

std::string escaped(const std::string& value)
{
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const auto code = static_cast<unsigned char>(value[i]);
        if (value[i] == '\\')
            text += "\\\\";
        else if (value[i] == '\n')
            text += "\\n";
        else if (is_second_control(value, i))
            text += fmt::format("\\xC2\\x{:02X}", static_cast<unsigned char>(value[++i]));
        else if (code < ' ' || code == 0x7F)
            text += fmt::format("\\x{:02X}", code);
        else
            text += value[i];
    }
    return text;
}

std::string unescaped(const std::string& text)
{
    std::string value;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        if (text[i] != '\\') {
            value += text[i];
        } else if (next == 'n' || next == '\\') {
            value += next == 'n' ? '\n' : '\\';
            ++i;
        } else {
            const auto byte = next == 'x' ? parse_bytes(text.substr(i + 2, 2)) : std::nullopt;
            if (!byte || byte->size() != 1)
                throw std::runtime_error(
                    "after a backslash, only n, x with two digits, or another one may stand");
            value += static_cast<char>(byte->front());
            i += 3;
        }
    }
    return value;
}

std::string trimmed(const std::string& text)
{
    const std::size_t start = text.find_first_not_of(" \t\r");
    return start == std::string::npos ? "" : text.substr(start, text.find_last_not_of(" \t\r") - start + 1);
}

Assignments parse_selectors(const std::string& text)
{
    Assignments selectors;
    std::istringstream words(text);
    for (std::string word; std::getline(words, word, ',');) {
        const auto selector = parse_assignment(trimmed(word));
        if (!selector)
            throw std::runtime_error("\"" + word + "\" is not of the form SELECTOR=VALUE");
        selectors.push_back(*selector);
    }
    return selectors;
}

SavedFeature parse_line(const std::string& line)
{
    // The values of selectors stand in brackets and have equal signs too.
    const std::size_t bracket = line.find('[');
    const std::size_t first_sign = line.find('=');
    const bool has_selectors = bracket < first_sign;
    const std::size_t end = has_selectors ? line.find(']', bracket) : 0;
    const std::size_t sign = end == std::string::npos ? end : line.find('=', end);
    if (sign == std::string::npos)
        throw std::runtime_error("it is not of the form NAME = VALUE");
    SavedFeature feature;
    feature.name = trimmed(line.substr(0, has_selectors ? bracket : sign));
    if (has_selectors)
        feature.selectors = parse_selectors(line.substr(bracket + 1, end - bracket - 1));
    // One blank belongs to the sign, all others to the value.
    const std::size_t value = sign + 1 < line.size() && line[sign + 1] == ' ' ? sign + 2 : sign + 1;
    feature.value = unescaped(line.substr(value));
    if (feature.name.empty())
        throw std::runtime_error("the name of the feature is missing");
    return feature;
}

/// A feature on its way into the device.
struct Pending {
    LoadedFeature loaded;
    std::string accepted; // what the device made of the value
    bool is_accepted{false};
};

/// Sets the feature unless it has its value. True when that changed something.
bool apply(Pending& pending, const NodeMap& map)
{
    LoadedFeature& loaded = pending.loaded;
    try {
        for (const auto& selector : loaded.feature.selectors)
            if (map.get_text(selector.name) != selector.value)
                map.set(selector.name, selector.value);
        const std::string present = map.get_text(loaded.feature.name);
        const bool has_value =
            present == loaded.feature.value || (pending.is_accepted && present == pending.accepted);
        if (has_value && loaded.result == LoadResult::failed)
            loaded.result = LoadResult::unchanged;
        if (has_value) {
            loaded.problem.clear();
            return false;
        }
        map.set(loaded.feature.name, loaded.feature.value);
        pending.accepted = map.get_text(loaded.feature.name);
        pending.is_accepted = true;
        loaded.result = LoadResult::set;
        loaded.problem.clear();
        return true;
    } catch (const std::exception& reason) {
        loaded.result = LoadResult::failed;
        loaded.problem = reason.what();
        return false;
    }
}

void apply_until_nothing_changes(std::vector<Pending*>& all, const NodeMap& map)
{
    std::vector<Pending*> changed;
    for (int round = 0; round < most_rounds; ++round) {
        changed.clear();
        for (Pending* const pending : all)
            if (apply(*pending, map))
                changed.push_back(pending);
        if (changed.empty())
            return;
    }
    for (Pending* const pending : changed) {
        pending->loaded.result = LoadResult::failed;
        pending->loaded.problem = pending->loaded.feature.name + " does not keep its value: another feature "
                                                                 "of the file changes it again";
    }
}

} // namespace

std::string SavedFeature::title() const
{
    std::string text;
    for (const auto& selector : selectors)
        text += (text.empty() ? "[" : ",") + selector.name + "=" + selector.value;
    return name + text + (text.empty() ? "" : "]");
}

SavedFeatures read_features(const NodeMap& map, std::vector<std::string>& problems)
{
    const auto all = all_details(map);
    const bool has_streamable =
        std::any_of(all.begin(), all.end(), [](const auto& details) { return details.is_streamable; });
    SavedFeatures features;
    KeptValues kept(map);
    Reader reader(map, features, problems);
    for (const auto& details : all) {
        if (has_streamable && !details.is_streamable)
            continue;
        try {
            for (const auto& selector : details.selectors)
                kept.keep(selector);
        } catch (const std::exception& reason) {
            problems.push_back(details.feature.name + ": " + reason.what());
            continue;
        }
        reader.read(details);
    }
    return features;
}

std::string to_text(const SavedFeatures& features, const std::string& comment)
{
    std::string text = "# " + escaped(comment) + "\n";
    for (const SavedFeature& feature : features)
        text += escaped(feature.title()) + " = " + escaped(feature.value) + "\n";
    return text;
}

SavedFeatures parse_features(const std::string& text)
{
    SavedFeatures features;
    std::istringstream lines(text);
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const std::string content = trimmed(line);
        if (content.empty() || content[0] == '#')
            continue;
        try {
            features.push_back(parse_line(line));
        } catch (const std::exception& reason) {
            throw std::runtime_error(fmt::format("line {}: {}", number, reason.what()));
        }
    }
    return features;
}

std::vector<LoadedFeature> apply_features(const SavedFeatures& features, const NodeMap& map)
{
    std::set<std::string> selectors;
    for (const SavedFeature& feature : features)
        for (const auto& selector : feature.selectors)
            selectors.insert(selector.name);
    std::vector<Pending> all;
    for (const SavedFeature& feature : features)
        all.push_back({{feature, LoadResult::failed, {}}, {}, false});
    std::vector<Pending*> plain;
    std::vector<Pending*> last;
    for (Pending& pending : all)
        (selectors.count(pending.loaded.feature.name) == 0 ? plain : last).push_back(&pending);
    {
        KeptValues kept(map); // of selectors that the file has no value for
        for (const std::string& selector : selectors)
            try {
                kept.keep(selector);
            } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): its features say it
            }
        apply_until_nothing_changes(plain, map);
    }
    apply_until_nothing_changes(last, map);
    std::vector<LoadedFeature> result;
    result.reserve(all.size());
    for (Pending& pending : all)
        result.push_back(std::move(pending.loaded));
    return result;
}

} // namespace zvgentl::tool
