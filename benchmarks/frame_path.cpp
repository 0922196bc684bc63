#include <optional>

#include "benchmarks/BareSystem.h"
#include "benchmarks/program.h"
#include "benchmarks/threads.h"
#include "benchmarks/ways.h"

// The way of a frame through the producer against the bare chain, without a wait: delivery, one EventGetData,
// eight DSGetBufferInfo and one DSQueueBuffer, all on one thread.

namespace {

using namespace GenTL;
using namespace zvbench;

const char* const anchor = "bare chain";

/// Frames of the last of the open cameras.
Comparison compare_frames(const Setup& setup, const Setup& anchor_setup)
{
    const BareLibraries bare;
    const SecondThread second;
    BareSystem system{bare, setup};
    ProducerWay subject{system, system.streams.back()};
    ChainWay chain{bare, system, anchor_setup};
    return compare(frames_of(chain), frames_of(subject));
}

void count_frames(const Setup& setup, size_t count)
{
    const BareLibraries bare;
    const SecondThread second;
    BareSystem system{bare, setup};
    ProducerWay way{system, system.streams.back()};
    run_frames(way, setup.buffers); // every buffer once
    count_instructions([&](size_t frames) { run_frames(way, frames); }, count);
}

std::string described(const Setup& setup)
{
    return std::to_string(setup.cameras) + (setup.cameras == 1 ? " camera, " : " cameras, ") +
           std::to_string(setup.buffers) + " buffers";
}

Row frames_row(const Setup& setup, std::optional<double> limit)
{
    return {"frame without a wait, " + described(setup),
            anchor,
            {limit},
            [setup] { return ratio_of(compare_frames(setup, setup)); },
            [setup](size_t count) { count_frames(setup, count); }};
}

Row growth_row(const Setup& small, const Setup& large, double limit)
{
    return {"growth of a frame, " + described(small) + " to " + described(large),
            "itself",
            {limit},
            [small, large] { return growth_of(compare_frames(small, small), compare_frames(large, small)); }};
}

// The steps of a frame, each a batch of its own.

struct Step {
    const char* name;
    void (*run)(ProducerWay& way, std::vector<BUFFER_HANDLE>& buffers);
};

constexpr Step steps[] = {
    {"callback",
     [](ProducerWay& way, std::vector<BUFFER_HANDLE>& buffers) {
         for (size_t i = 0; i < buffers.size(); ++i)
             way.deliver();
     }},
    {"EventGetData",
     [](ProducerWay& way, std::vector<BUFFER_HANDLE>& buffers) {
         for (BUFFER_HANDLE& buffer : buffers)
             buffer = way.take();
     }},
    {"8 DSGetBufferInfo",
     [](ProducerWay& way, std::vector<BUFFER_HANDLE>& buffers) {
         for (const BUFFER_HANDLE buffer : buffers)
             way.ask(buffer);
     }},
    {"DSQueueBuffer",
     [](ProducerWay& way, std::vector<BUFFER_HANDLE>& buffers) {
         for (const BUFFER_HANDLE buffer : buffers)
             way.queue(buffer);
     }},
};

/// What one step of a frame takes.
Result measure_step(const Step& timed_step)
{
    const BareLibraries bare;
    const SecondThread second;
    BareSystem system{bare, {}};
    ProducerWay way{system, system.streams.back()};
    std::vector<BUFFER_HANDLE> buffers(system.setup().buffers);
    const Work work = [&](size_t batches) {
        double nanoseconds = 0;
        for (size_t i = 0; i < batches; ++i)
            for (const Step& step : steps) {
                const double taken = elapsing([&](size_t) { step.run(way, buffers); })(1);
                if (&step == &timed_step)
                    nanoseconds += taken;
            }
        return nanoseconds / static_cast<double>(batches * buffers.size());
    };
    return fastest_of(time_alone(work, 200), 1);
}

Row step_row(const Step& step)
{
    return {std::string{"step of a frame: "} + step.name, "", {std::nullopt, "ns"}, [&step] {
                return measure_step(step);
            }};
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<Row> rows{
        frames_row({1, 16}, 2.0),
        frames_row({1, 64}, 2.0),
        growth_row({1, 16}, {1, 1024}, 1.3),
        growth_row({1, 16}, {1, 4096}, 1.5),
        frames_row({16, 64}, 3.0),
        frames_row({256, 64}, 4.0),
        growth_row({1, 16}, {1024, 16}, 2.0),
        frames_row({1, 1024}, std::nullopt),
        frames_row({1, 4096}, std::nullopt),
        step_row(steps[0]),
        step_row(steps[1]),
        step_row(steps[2]),
        step_row(steps[3]),
    };
    return run_program(argc, argv, "Times the way of a frame against the least that has to be done.", rows);
}
