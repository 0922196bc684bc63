#include <atomic>
#include <cerrno>

#include "benchmarks/BareSystem.h"
#include "benchmarks/program.h"
#include "benchmarks/ways.h"

// Heap operations for each frame. The program takes the place of the C library's allocator and counts.

namespace {

std::atomic<size_t> heap_operations{0};

} // namespace

#pragma GCC visibility push(default)
extern "C" {

// The C library's own functions, under the names that they have besides.
void* library_malloc(size_t size) __asm__("__libc_malloc");
void* library_calloc(size_t count, size_t size) __asm__("__libc_calloc");
void* library_realloc(void* memory, size_t size) __asm__("__libc_realloc");
void* library_memalign(size_t alignment, size_t size) __asm__("__libc_memalign");

void* malloc(size_t size)
{
    heap_operations.fetch_add(1, std::memory_order_relaxed);
    return library_malloc(size);
}

void* calloc(size_t count, size_t size)
{
    heap_operations.fetch_add(1, std::memory_order_relaxed);
    return library_calloc(count, size);
}

void* realloc(void* memory, size_t size)
{
    heap_operations.fetch_add(1, std::memory_order_relaxed);
    return library_realloc(memory, size);
}

void* aligned_alloc(size_t alignment, size_t size)
{
    heap_operations.fetch_add(1, std::memory_order_relaxed);
    return library_memalign(alignment, size);
}

int posix_memalign(void** memory, size_t alignment, size_t size)
{
    *memory = aligned_alloc(alignment, size);
    return *memory == nullptr ? ENOMEM : 0;
}
}
#pragma GCC visibility pop

namespace {

using namespace GenTL;
using namespace zvbench;
using zvsystem::Mode;

size_t operations_of(const std::function<void()>& work)
{
    const size_t before = heap_operations;
    work();
    return heap_operations - before;
}

constexpr size_t frames = 1000;

/// Of one frame, after others.
Result count_steady(const Setup& setup)
{
    const BareLibraries bare;
    BareSystem system{bare, setup};
    ProducerWay way{system, system.streams.back()};
    const auto run = [&way](size_t count) {
        for (; count > 0; --count) {
            way.deliver();
            const BUFFER_HANDLE buffer = way.wait();
            way.ask(buffer);
            way.queue(buffer);
        }
    };
    run(2 * setup.buffers);
    return {static_cast<double>(operations_of([&] { run(frames); })) / static_cast<double>(frames)};
}

/// Of a frame that the consumer also asks what no producer can tell.
Result count_refusals()
{
    const BareLibraries bare;
    BareSystem system{bare, {}};
    const OpenStream& open = system.streams.back();
    ProducerWay way{system, system.streams.back()};
    const auto run = [&] {
        for (size_t i = 0; i < frames; ++i) {
            way.deliver();
            const BUFFER_HANDLE buffer = way.take();
            INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
            uint64_t value = 0;
            size_t size = sizeof value;
            system.gentl.DSGetBufferInfo(open.stream, buffer, BUFFER_INFO_CUSTOM_ID, &type, &value, &size);
            way.queue(buffer);
        }
    };
    run();
    return {static_cast<double>(operations_of(run)) / static_cast<double>(frames)};
}

/// Of a consumer that falls behind by 4000 frames and catches up, when it does so again.
Result count_falling_behind()
{
    constexpr size_t behind = 4000;
    const BareLibraries bare;
    BareSystem system{bare, {1, behind + 96}};
    ProducerWay way{system, system.streams.back()};
    const auto run = [&] {
        for (size_t i = 0; i < behind; ++i)
            way.deliver();
        for (size_t i = 0; i < behind; ++i)
            way.queue(way.take());
    };
    run();
    return {static_cast<double>(operations_of(run))};
}

} // namespace

int main(int argc, char** argv)
{
    const std::string per_frame = "per frame";
    const std::vector<Row> rows{
        {"heap operations, queued", "", {0, per_frame}, [] { return count_steady({}); }},
        {"heap operations, queued, 16 cameras",
         "",
         {0, per_frame},
         [] {
             return count_steady({16, 64});
         }},
        {"heap operations, queued, polling",
         "",
         {0, per_frame},
         [] {
             return count_steady({1, 64, 4096, Mode::queued, true});
         }},
        {"heap operations, cyclic",
         "",
         {0, per_frame},
         [] {
             return count_steady({1, 16, 4096, Mode::cyclic});
         }},
        {"heap operations, consumer behind by 4000 frames again", "", {0, "in all"}, count_falling_behind},
        {"heap operations, a query that is not implemented", "", {2, per_frame}, count_refusals},
    };
    return run_program(argc, argv, "Counts the heap operations of frames.", rows);
}
