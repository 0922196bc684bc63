#include "zvgenapi/NodeMap.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "description/Reader.h"
#include "nodes/Core.h"
#include "nodes/Step.h"
#include "nodes/changes.h"
#include "nodes/values.h"

namespace zvgenapi {

namespace {

constexpr std::int64_t longest_time = std::int64_t{1} << 60U; // between two looks at a node, in milliseconds
constexpr std::size_t longest_name = 100;                     // of those that are compared
constexpr std::size_t most_compared = 20000;
constexpr std::size_t most_suggested = 3;

std::string lower_case(std::string_view text)
{
    std::string result(text);
    for (char& letter : result)
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    return result;
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

std::string nearest_names(const Description& description, const std::string& wanted)
{
    if (wanted.empty() || wanted.size() > longest_name)
        return {};
    const std::string written = lower_case(wanted);
    const std::size_t most = std::max<std::size_t>(2, written.size() / 3);
    std::vector<std::pair<std::size_t, std::string_view>> near;
    const std::size_t count = std::min(description.nodes.size(), most_compared);
    for (std::size_t i = 0; i < count; ++i) {
        const std::string_view name = description.nodes[i].name;
        const std::size_t difference =
            std::max(name.size(), written.size()) - std::min(name.size(), written.size());
        if (name.empty() || difference > most)
            continue;
        const std::size_t letters = distance(written, lower_case(name));
        if (letters <= most)
            near.emplace_back(letters, name);
    }
    std::sort(near.begin(), near.end());
    std::string text;
    for (std::size_t i = 0; i < std::min(near.size(), most_suggested); ++i)
        text += (i == 0 ? "; did you mean " : " or ") + std::string(near[i].second);
    return text.empty() ? text : text + "?";
}

} // namespace

Subscription::~Subscription()
{
    if (m_core != nullptr)
        m_core->run([this] { m_core->call_backs.remove(m_id); });
}

Subscription::Subscription(Subscription&& other) noexcept
    : m_core(std::exchange(other.m_core, nullptr)), m_id(other.m_id)
{
}

Subscription& Subscription::operator=(Subscription&& other) noexcept
{
    std::swap(m_core, other.m_core);
    std::swap(m_id, other.m_id);
    return *this;
}

NodeMap NodeMap::load(const void* bytes, std::size_t size, const Limits& limits)
{
    Description description = read_description({static_cast<const char*>(bytes), size}, limits);
    return NodeMap(std::make_unique<Core>(std::move(description), limits));
}

NodeMap NodeMap::load(const std::string& bytes, const Limits& limits)
{
    return load(bytes.data(), bytes.size(), limits);
}

NodeMap::NodeMap(std::unique_ptr<Core> core) noexcept : m_core(std::move(core)) {}
NodeMap::~NodeMap() = default;
NodeMap::NodeMap(NodeMap&& other) noexcept = default;
NodeMap& NodeMap::operator=(NodeMap&& other) noexcept = default;

void NodeMap::connect(const std::string& port_name, Port& port)
{
    const PortNode node = get(port_name).as<PortNode>();
    m_core->run([&] {
        m_core->ports[static_cast<NodeIndex>(node.index())] = &port;
        forget_everything(*m_core);
    });
}

void NodeMap::disconnect(const std::string& port_name)
{
    const PortNode node = get(port_name).as<PortNode>();
    m_core->run([&] {
        m_core->ports[static_cast<NodeIndex>(node.index())] = nullptr;
        forget_everything(*m_core);
    });
}

Node NodeMap::find(const std::string& name) const
{
    const NodeIndex found = m_core->description.find(name);
    return found == no_node ? Node() : Node(m_core.get(), found);
}

Node NodeMap::get(const std::string& name) const
{
    const Node node = find(name);
    if (!node)
        throw Error(ErrorKind::unknown_node, "there is no node " + name.substr(0, longest_name) +
                                                 nearest_names(m_core->description, name));
    return node;
}

Node NodeMap::root() const
{
    const Node node = find("Root");
    return node && node.is<Category>() ? node : Node();
}

std::size_t NodeMap::size() const noexcept { return m_core->description.nodes.size(); }

Node NodeMap::at(std::size_t index) const
{
    if (index >= size())
        throw Error(ErrorKind::unknown_node, "there is no node number " + std::to_string(index));
    return {m_core.get(), static_cast<NodeIndex>(index)};
}

const DeviceInfo& NodeMap::info() const noexcept { return m_core->description.info; }
const std::vector<Error>& NodeMap::problems() const noexcept { return m_core->description.problems; }

void NodeMap::invalidate()
{
    m_core->run([this] { forget_everything(*m_core); });
}

void NodeMap::poll(std::chrono::milliseconds elapsed)
{
    m_core->run([&] {
        for (auto& [node, since] : m_core->polled) {
            const std::int64_t time = Node(m_core.get(), node).polling_time();
            since =
                std::min(since + std::clamp<std::int64_t>(elapsed.count(), 0, longest_time), longest_time);
            if (time < 0 || since < time)
                continue;
            const Element* const block = m_core->description.find(node, Tag::p_block_polling);
            if (block != nullptr && read_number(*m_core, target_of(*m_core, node, *block)).is_true())
                continue;
            since = 0;
            forget_registers(*m_core, {node});
        }
    });
}

Subscription NodeMap::on_change(const Node& node, std::function<void(Node)> call_back)
{
    const std::uint64_t id = m_core->run(
        [&] { return m_core->call_backs.add(static_cast<NodeIndex>(node.index()), std::move(call_back)); });
    return {m_core.get(), id};
}

} // namespace zvgenapi
