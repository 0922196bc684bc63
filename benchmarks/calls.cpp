#include <array>

#include <benchmark/benchmark.h>

#include "benchmarks/Bench.h"

// Calls that a consumer makes for every frame, or that show one part of it.

using namespace GenTL;
using namespace zvbench;
using namespace zvsystem;

namespace {

/// At the default log level: an enter line that is not written, the guard, and a refusal.
void disabled_log_line(benchmark::State& state)
{
    surroundings();
    const Producer producer(ZV_PRODUCER_FILE);
    const auto refused = producer.functions().TLOpen;
    for (auto _ : state)
        benchmark::DoNotOptimize(refused(nullptr));
}
BENCHMARK(disabled_log_line);

/// The same with three arguments that would have to be formatted.
void disabled_log_line_with_arguments(benchmark::State& state)
{
    const OneCamera one(Mode::queued, 1);
    constexpr uint64_t no_frames = 0; // refused before the handle is looked at
    for (auto _ : state)
        benchmark::DoNotOptimize(
            one.gentl.DSStartAcquisition(one.camera.stream(), ACQ_START_FLAGS_DEFAULT, no_frames));
}
BENCHMARK(disabled_log_line_with_arguments);

template <class Query>
void expect_number(benchmark::State& state, const Query& query)
{
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    std::array<unsigned char, 16> value{};
    for (auto _ : state) {
        size_t size = value.size();
        if (query(&type, value.data(), &size) != GC_ERR_SUCCESS) {
            state.SkipWithError("a query failed");
            return;
        }
    }
}

/// The handle that takes longest to find: an event of the last stream.
void handle_check_event(benchmark::State& state)
{
    const FullTree tree;
    const EVENT_HANDLE event = tree.cameras.back().event();
    expect_number(state, [&](INFO_DATATYPE* type, void* value, size_t* size) {
        return tree.gentl.EventGetInfo(event, EVENT_EVENT_TYPE, type, value, size);
    });
}
BENCHMARK(handle_check_event);

/// A buffer handle that is searched for in all streams: the last one of 256.
void handle_check_buffer(benchmark::State& state)
{
    const FullTree tree;
    const Camera& last = tree.cameras.back();
    expect_number(state, [&](INFO_DATATYPE* type, void* value, size_t* size) {
        return tree.gentl.DSGetBufferPartInfo(last.stream(), last.buffers().back(), 0, BUFFER_PART_INFO_BASE,
                                              type, value, size);
    });
}
BENCHMARK(handle_check_buffer);

/// What consumers query for each frame: one value of the first or the last buffer of the last stream.
void buffer_info(benchmark::State& state)
{
    const FullTree tree;
    const Camera& last = tree.cameras.back();
    const BUFFER_HANDLE buffer = last.buffers().at(static_cast<size_t>(state.range(0)));
    expect_number(state, [&](INFO_DATATYPE* type, void* value, size_t* size) {
        return tree.gentl.DSGetBufferInfo(last.stream(), buffer, BUFFER_INFO_TIMESTAMP, type, value, size);
    });
}
BENCHMARK(buffer_info)->Arg(0)->Arg(FullTree::buffers_per_camera - 1);

} // namespace
