#include <chrono>
#include <variant>
#include <vector>

#include "genapi/Feature.h"
#include "genapi/NodeMap.h"
#include "system/consumers/Client.h"

namespace zvclient {

using namespace zvgentl::tool;

namespace {

constexpr std::chrono::seconds longest_command{5};

std::vector<Feature> all_features(const NodeMap& nodes)
{
    std::vector<Feature> features;
    for (const TreeEntry& entry : nodes.tree()) {
        Feature feature = nodes.describe(entry.name);
        need_true(feature.problem.empty(), entry.name + ": " + feature.problem);
        if (feature.kind != FeatureKind::category && !entry.is_repeated)
            features.push_back(std::move(feature));
    }
    need_true(!features.empty(), "a description without a feature");
    return features;
}

void write_and_compare(const NodeMap& nodes, const Feature& feature, const std::string& text)
{
    nodes.set(feature.name, text);
    const std::string now = nodes.get_text(feature.name);
    need_true(now == text, feature.name + " is " + now + " after " + text + " was written");
}

std::vector<std::string> values_to_write(const Feature& feature)
{
    switch (feature.kind) {
    case FeatureKind::integer:
    case FeatureKind::floating_point: {
        std::vector<std::string> limits;
        for (const Value& limit : {feature.minimum, feature.maximum}) {
            if (!std::holds_alternative<std::monostate>(limit))
                limits.push_back(to_text(limit, feature.notation));
        }
        return limits;
    }
    case FeatureKind::boolean:
        return {"true", "false"};
    case FeatureKind::enumeration:
        return feature.entries;
    case FeatureKind::string: {
        const auto* const longest = std::get_if<std::int64_t>(&feature.maximum);
        const auto length = longest != nullptr ? static_cast<std::size_t>(*longest) : 1;
        return {"", std::string(length, 'x')};
    }
    default:
        return {};
    }
}

class FeaturesOfNodeMap final : public Features {
public:
    FeaturesOfNodeMap(const std::string& description, const ExactPort& port) : m_nodes{description, port} {}

    bool is_empty() const override { return m_nodes.tree().empty(); }

    int read_every() const override
    {
        const std::vector<Feature> features = all_features(m_nodes);
        for (const Feature& feature : features) {
            const bool has_value = !std::holds_alternative<std::monostate>(feature.value);
            need_true(has_value || !feature.access.is_readable || feature.kind == FeatureKind::command,
                      feature.name + " cannot be read");
        }
        return static_cast<int>(features.size());
    }

    /// At its limits, and every entry of an enumeration.
    int write_every() const override
    {
        int count = 0;
        for (const Feature& feature : all_features(m_nodes)) {
            // Its limits may have changed with the features that were written before.
            const Feature present = m_nodes.describe(feature.name);
            if (!present.access.is_writable)
                continue;
            if (present.kind == FeatureKind::command) {
                execute(present.name, longest_command);
            } else {
                const std::string before = m_nodes.get_text(present.name);
                for (const std::string& value : values_to_write(present))
                    write_and_compare(m_nodes, present, value);
                write_and_compare(m_nodes, present, before);
            }
            ++count;
        }
        return count;
    }

    std::int64_t integer(const std::string& name) const override
    {
        const Value value = m_nodes.get(name);
        const auto* const number = std::get_if<std::int64_t>(&value);
        need_true(number != nullptr, name + " is not an integer");
        return *number;
    }

    void set(const std::string& name, const std::string& text) const override { m_nodes.set(name, text); }

    void execute(const std::string& name, std::chrono::milliseconds timeout) const override
    {
        m_nodes.execute(name, timeout);
    }

private:
    const NodeMap m_nodes;
};

} // namespace

std::unique_ptr<Features> features_of(const std::string& description, const ExactPort& port)
{
    return std::make_unique<FeaturesOfNodeMap>(description, port);
}

} // namespace zvclient
