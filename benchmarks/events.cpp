#include <chrono>

#include <benchmark/benchmark.h>

#include "benchmarks/Bench.h"

// Entries of the new-buffer event, without a camera: in cyclic mode, buffers move between queues within the
// producer.

using namespace GenTL;
using namespace zvbench;
using namespace zvsystem;

namespace {

constexpr size_t buffers = 64;

double seconds_since(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// A flush appends an entry for each buffer.
void event_append(benchmark::State& state)
{
    const OneCamera one(Mode::cyclic, buffers);
    for (auto _ : state) {
        one.camera.flush(ACQ_QUEUE_ALL_TO_INPUT); // drops the entries as well
        const auto start = std::chrono::steady_clock::now();
        one.camera.flush(ACQ_QUEUE_INPUT_TO_OUTPUT);
        state.SetIterationTime(seconds_since(start));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(buffers));
}
BENCHMARK(event_append)->UseManualTime();

void event_take(benchmark::State& state)
{
    const OneCamera one(Mode::cyclic, buffers);
    for (auto _ : state) {
        one.camera.flush(ACQ_QUEUE_ALL_TO_INPUT);
        one.camera.flush(ACQ_QUEUE_INPUT_TO_OUTPUT);
        const auto start = std::chrono::steady_clock::now();
        for (size_t i = 0; i < buffers; ++i) {
            Filled filled{};
            check(one.camera.get(filled, 0), "EventGetData");
        }
        state.SetIterationTime(seconds_since(start));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(buffers));
}
BENCHMARK(event_take)->UseManualTime();

} // namespace
