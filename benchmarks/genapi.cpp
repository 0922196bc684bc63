#include <malloc.h>

#include <cstring>
#include <memory>
#include <optional>

#include "benchmarks/genapi_description.h"
#include "benchmarks/program.h"
#include "zvgenapi/NodeMap.h"

#ifdef ZV_WITH_ARAVIS
#include <arv.h>
#endif

// Large register descriptions: how long they take to load and to answer, and the memory that they need;
// beside another library, where it is installed.

namespace {

using namespace zvbench;
using namespace zvgenapi;

constexpr std::size_t megabyte = 1'000'000;
constexpr double millisecond = 1e6;
constexpr double microsecond = 1e3;

/// Registers that all have the same value.
class SteadyPort : public Port {
public:
    void read(std::uint64_t, void* data, std::size_t size) override { std::memset(data, 1, size); }
    void write(std::uint64_t, const void*, std::size_t) override {}
};

#ifdef ZV_WITH_ARAVIS

struct Release {
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};

using OtherMap = std::unique_ptr<ArvGc, Release>;

OtherMap load_other(const std::string& description)
{
    OtherMap map(arv_gc_new(nullptr, description.data(), description.size()));
    require(map != nullptr && arv_gc_get_node(map.get(), "Width0") != nullptr,
            "libaravis cannot load the description");
    return map;
}

std::optional<double> other_load_time(const std::string& description)
{
    return time_alone(elapsing([&](size_t) { load_other(description); }), 1).fastest();
}

#else

std::optional<double> other_load_time(const std::string&) { return std::nullopt; }

#endif

Result measure_loading(std::size_t bytes)
{
    const std::string description = camera_description(bytes);
    const Work load = elapsing([&](size_t) {
        const NodeMap map = NodeMap::load(description);
        require(map.problems().empty(), "the description is faulty");
    });
    Result result = fastest_of(time_alone(load, 1), millisecond);
    result.anchor_ns = other_load_time(description);
    return result;
}

/// A feature whose limits and value need ten other nodes and seven registers, asked for first.
Result measure_first_value()
{
    const std::string description = camera_description(3 * megabyte);
    SteadyPort port;
    std::optional<NodeMap> map;
    const Work ask = [&](size_t) {
        map.emplace(NodeMap::load(description));
        map->connect("Device", port);
        return elapsing([&](size_t) {
            const auto size = map->get("PayloadSize0").as<Integer>();
            require(size.value() == (0x01010101LL * 0x01010101LL + 7) / 8, "the value is wrong");
        })(1);
    };
    return fastest_of(time_alone(ask, 1), microsecond);
}

/// The same value again; `use_cache` decides whether its registers are read.
Result measure_value(UseCache use_cache)
{
    SteadyPort port;
    NodeMap map = NodeMap::load(camera_description(megabyte));
    map.connect("Device", port);
    const auto size = map.get("PayloadSize0").as<Integer>();
    const Work ask = computing([&](size_t count) {
        for (; count > 0; --count)
            size.value(use_cache);
    });
    return fastest_of(time_alone(ask, effort().is_trial ? 1 : 10'000), microsecond);
}

std::size_t allocated()
{
    const auto state = mallinfo2();
    return state.uordblks + state.hblkhd;
}

/// Of what the map keeps, as a multiple of the description's bytes.
Result measure_memory(std::size_t bytes)
{
    const std::string description = camera_description(bytes);
    const std::size_t before = allocated();
    const NodeMap map = NodeMap::load(description);
    return {static_cast<double>(allocated() - before) / static_cast<double>(description.size())};
}

} // namespace

int main(int argc, char** argv)
{
    const std::string other = "libaravis";
    const std::vector<Row> rows{
        {"load a register description of 1 MB", other, {{}, "ms"}, [] { return measure_loading(megabyte); }},
        {"load a register description of 3 MB",
         other,
         {150, "ms"},
         [] { return measure_loading(3 * megabyte); }},
        {"load a register description of 20 MB",
         other,
         {{}, "ms"},
         [] { return measure_loading(20 * megabyte); }},
        {"first value of a description of 3 MB", "", {1000, "us"}, measure_first_value},
        {"value of a formula over nine registers, cached",
         "",
         {{}, "us"},
         [] { return measure_value(UseCache::yes); }},
        {"value of a formula over nine registers, read",
         "",
         {{}, "us"},
         [] { return measure_value(UseCache::no); }},
        {"memory of a description of 3 MB", "its size", {}, [] { return measure_memory(3 * megabyte); }},
        {"memory of a description of 20 MB", "its size", {}, [] { return measure_memory(20 * megabyte); }},
    };
    return run_program(argc, argv, "Times large register descriptions.", rows);
}
