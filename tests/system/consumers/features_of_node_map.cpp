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

    int write_every() const override
    {
        int count = 0;
        for (const Feature& feature : all_features(m_nodes)) {
            if (!feature.access.is_writable)
                continue;
            if (feature.kind == FeatureKind::command) {
                execute(feature.name, longest_command);
            } else {
                const std::string present = m_nodes.get_text(feature.name);
                m_nodes.set(feature.name, present);
                need_true(m_nodes.get_text(feature.name) == present,
                          feature.name + " is not what was written");
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
