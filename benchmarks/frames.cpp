#include <string>

#include <benchmark/benchmark.h>

#include "benchmarks/Bench.h"

// The path of a frame: the software camera draws it, the producer delivers it, the consumer takes it and
// queues its buffer again.

using namespace GenTL;
using namespace zvbench;
using namespace zvsystem;

namespace {

constexpr size_t buffers = 16;

void deliver_frames(benchmark::State& state, Mode mode)
{
    const std::string size = std::to_string(state.range(0)) + "x" + std::to_string(state.range(1));
    Surroundings::set_frame_size(size);
    const OneCamera one(mode, buffers);
    const Camera& camera = one.camera;
    camera.start_and_queue();
    camera.queue(camera.next().buffer); // the camera takes a while to start
    for (auto _ : state)
        camera.queue(camera.next().buffer);
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * state.range(0) * state.range(1));
    camera.stop();
    Surroundings::set_frame_size("");
}

void frame_queued(benchmark::State& state) { deliver_frames(state, Mode::queued); }
void frame_cyclic(benchmark::State& state) { deliver_frames(state, Mode::cyclic); }

BENCHMARK(frame_queued)->Args({64, 48})->Args({640, 480})->Args({2048, 1024})->UseRealTime();
BENCHMARK(frame_cyclic)->Args({64, 48})->Args({640, 480})->Args({2048, 1024})->UseRealTime();

} // namespace
