#include "unit/genapi/try_description.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>

#include "zvgenapi/NodeMap.h"

namespace zvgenapi {

namespace {

/// What is written is read again from the first bytes; the others are always the same.
class SmallPort : public Port {
public:
    void read(std::uint64_t address, void* data, std::size_t size) override
    {
        auto* const bytes = static_cast<unsigned char*>(data);
        for (std::size_t i = 0; i < size; ++i)
            bytes[i] = address + i < sizeof m_bytes ? m_bytes[address + i] : static_cast<unsigned char>(i);
    }
    void write(std::uint64_t address, const void* data, std::size_t size) override
    {
        if (address < sizeof m_bytes)
            std::memcpy(m_bytes + address, data, std::min<std::size_t>(size, sizeof m_bytes - address));
    }

private:
    unsigned char m_bytes[256]{};
};

/// Does something with the device or the description, which may refuse.
template <class Action>
void attempt(const Action& action)
{
    try {
        action();
    } catch (const Error&) {
        // that is how they refuse
    }
}

Limits small_limits()
{
    Limits limits;
    limits.description_bytes = 1U << 20U;
    limits.nodes = 20'000;
    limits.elements = 100'000;
    limits.evaluation_steps = 20'000;
    limits.query_bytes = 1U << 18U;
    limits.register_bytes = 1U << 16U;
    limits.cache_bytes = 1U << 16U;
    return limits;
}

void ask(const Node& node)
{
    node.name();
    node.full_name();
    node.display_name();
    node.children();
    node.selected();
    node.extensions();
    attempt([&] { node.access(); });
    attempt([&] { node.is_locked(); });
    attempt([&] { node.caching(); });
    attempt([&] { node.to_string(); });
    attempt([&] { node.to_string(UseCache::no); });
    if (const auto integer = node.try_as<Integer>()) {
        attempt([&] { integer.minimum(); });
        attempt([&] { integer.maximum(); });
        attempt([&] { integer.increment(); });
        attempt([&] { integer.valid_values(); });
    }
    if (const auto number = node.try_as<Float>()) {
        attempt([&] { number.minimum(); });
        attempt([&] { number.maximum(); });
        attempt([&] { number.increment(); });
        attempt([&] { number.representation(); });
    }
    if (const auto enumeration = node.try_as<Enumeration>())
        attempt([&] { enumeration.available_entries(); });
    if (const auto text = node.try_as<String>())
        attempt([&] { text.max_length(); });
    if (const auto memory = node.try_as<Register>())
        attempt([&] { memory.address(); });
    if (const auto category = node.try_as<Category>())
        attempt([&] { category.features(); });
}

void change(Node node)
{
    for (const char* const text : {"1", "-3", "0.5", "true", "Off", "9223372036854775807", "01 02"})
        attempt([&] { node.from_string(text); });
    attempt([&] { node.from_string("2", Verify::no); });
    if (auto command = node.try_as<Command>()) {
        attempt([&] { command.execute(); });
        attempt([&] { command.is_done(); });
    }
    if (auto memory = node.try_as<Register>())
        attempt([&] { memory.write(memory.read()); });
}

} // namespace

bool try_description(const std::string& bytes)
{
    SmallPort port;
    try {
        NodeMap map = NodeMap::load(bytes, small_limits());
        for (std::size_t i = 0; i < map.size(); ++i)
            if (map.at(i).is<PortNode>())
                attempt([&] { map.connect(map.at(i).full_name(), port); });
        for (std::size_t i = 0; i < map.size(); ++i)
            ask(map.at(i));
        for (std::size_t i = 0; i < map.size(); ++i)
            change(map.at(i));
        map.poll(std::chrono::seconds(1));
        for (std::size_t i = 0; i < map.size(); ++i)
            ask(map.at(i));
        return true;
    } catch (const Error&) {
        return false;
    }
}

} // namespace zvgenapi
