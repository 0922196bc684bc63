#include <chrono>
#include <cstring>

#include <malloc.h>

#include "benchmarks/BareSystem.h"
#include "benchmarks/program.h"
#include "benchmarks/threads.h"
#include "benchmarks/ways.h"

// Cyclic mode, on one thread: every frame is copied from the library's ring into a buffer. The anchor copies
// the same bytes from the same slots of the ring into the same buffers.

namespace {

using namespace GenTL;
using namespace zvbench;
using zvsystem::Mode;

constexpr uint64_t mebibyte = 1U << 20U;

/// A consumer that keeps the newest `held` frames and queues the oldest again.
class Consumer {
public:
    Consumer(const BareLibraries& bare, const Setup& setup, size_t held)
        : m_bare{bare}, m_system{bare, setup}, m_way{m_system, m_open}
    {
        for (size_t i = 0; i < held; ++i)
            m_frames.push_back(next());
        for (size_t i = 0; i <= held; ++i) // those that the frames take in turn
            m_memory.push_back(memory_of(m_open.buffers[i]));
    }

    /// A frame arrives, and the oldest goes back.
    void step()
    {
        m_frames.push_back(next());
        give_back();
    }

    /// The callback's part of step().
    double time_callback()
    {
        const double taken = elapsing([this](size_t) { m_way.deliver(); })(1);
        m_frames.push_back(take());
        give_back();
        return taken;
    }

    /// Copies what step() would make the producer copy.
    void copy_plainly()
    {
        const uint32_t slot = m_slot++ % ring_frames;
        void* const destination = m_memory[m_destination];
        m_destination = (m_destination + 1) % m_memory.size();
        std::memcpy(destination, m_bare.ring_frame(m_open.source.stream(), slot), m_system.setup().payload);
    }

    /// All buffers are new ones.
    void replace_buffers()
    {
        const zvsystem::Functions& gentl = m_system.gentl;
        for (BUFFER_HANDLE& buffer : m_open.buffers) {
            zvsystem::check(gentl.DSRevokeBuffer(m_open.stream, buffer, nullptr, nullptr), "DSRevokeBuffer");
            zvsystem::check(
                gentl.DSAllocAndAnnounceBuffer(m_open.stream, m_system.setup().payload, nullptr, &buffer),
                "DSAllocAndAnnounceBuffer");
        }
        for (const BUFFER_HANDLE buffer : m_open.buffers)
            m_way.queue(buffer);
    }

    /// A frame into each buffer, in turn.
    void fill_all()
    {
        for (size_t i = 0; i < m_open.buffers.size(); ++i)
            m_frames.push_back(next());
    }
    void give_all_back()
    {
        while (!m_frames.empty())
            give_back();
    }

    size_t buffers() const { return m_open.buffers.size(); }
    const BareSystem& system() const { return m_system; }

private:
    BUFFER_HANDLE take() const
    {
        const BUFFER_HANDLE buffer = m_way.take();
        require(buffer != nullptr, "a frame was lost");
        return buffer;
    }

    BUFFER_HANDLE next()
    {
        m_way.deliver();
        return take();
    }

    void give_back()
    {
        m_way.queue(m_frames.front());
        m_frames.pop_front();
    }

    void* memory_of(BUFFER_HANDLE buffer) const
    {
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        void* memory = nullptr;
        size_t size = sizeof memory;
        zvsystem::check(
            m_system.gentl.DSGetBufferInfo(m_open.stream, buffer, BUFFER_INFO_BASE, &type, &memory, &size),
            "DSGetBufferInfo");
        return memory;
    }

    const BareLibraries& m_bare;
    BareSystem m_system;
    OpenStream& m_open{m_system.streams.back()};
    ProducerWay m_way;
    std::deque<BUFFER_HANDLE> m_frames; // oldest first
    std::vector<void*> m_memory;
    uint32_t m_slot{0};
    size_t m_destination{0};
};

/// A copy that is timed after others of its kind: each buffer has been the destination once.
Work warmed_up(size_t frames, const std::function<void()>& frame)
{
    return [=](size_t count) {
        for (size_t i = 0; i < frames; ++i)
            frame();
        return computing([&frame](size_t copies) {
            for (; copies > 0; --copies)
                frame();
        })(count);
    };
}

Result measure_copy(uint64_t payload, size_t buffers, size_t held)
{
    const BareLibraries bare;
    const SecondThread second;
    Consumer consumer{bare, {1, buffers, payload, Mode::cyclic}, held};
    consumer.step();
    return speed_of(compare(warmed_up(held + 1, [&] { consumer.copy_plainly(); }),
                            warmed_up(held + 1, [&] { consumer.step(); })));
}

Row copy_row(uint64_t payload, size_t buffers, size_t held, double least)
{
    return {"cyclic, " + std::to_string(payload / mebibyte) + " MiB, " + std::to_string(held) +
                " buffers held: speed",
            "memcpy",
            {least, "x", Gate::Bound::at_least},
            [=] { return measure_copy(payload, buffers, held); }};
}

/// The callback of small frames, compared with frames of a bare chain that stays the same.
Comparison compare_callback(size_t buffers, size_t held)
{
    constexpr uint64_t payload = 64;
    const BareLibraries bare;
    const SecondThread second;
    Consumer consumer{bare, {1, buffers, payload, Mode::cyclic}, held};
    ChainWay chain{bare, consumer.system(), {1, 16, payload}}; // queued
    const Work callbacks = [&](size_t count) {
        double nanoseconds = 0;
        for (size_t i = 0; i < count; ++i)
            nanoseconds += consumer.time_callback();
        return nanoseconds / static_cast<double>(count);
    };
    return compare(frames_of(chain), callbacks);
}

Row held_row(size_t buffers, size_t held)
{
    return {"growth of the cyclic callback, 16 buffers to " + std::to_string(buffers) + ", half held",
            "itself",
            {2.0},
            [=] { return growth_of(compare_callback(16, 0), compare_callback(buffers, held)); }};
}

/// A frame into memory that the producer has just allocated, and into the same memory later.
Result measure_first_frame()
{
    const BareLibraries bare;
    Consumer consumer{bare, {1, 8, 8 * mebibyte, Mode::cyclic}, 0};
    const auto fill = [&] { return computing([&](size_t) { consumer.fill_all(); })(1); };
    const Work later = [&](size_t) {
        const double taken = fill();
        consumer.give_all_back();
        return taken / static_cast<double>(consumer.buffers());
    };
    const Work first = [&](size_t count) {
        consumer.replace_buffers();
        return later(count);
    };
    constexpr size_t once = 1;
    return ratio_of(compare(later, first, {same_core, once}));
}

void count_frames(size_t count)
{
    const BareLibraries bare;
    const SecondThread second;
    Consumer consumer{bare, {1, 16, 64, Mode::cyclic}, 0};
    count_instructions(
        [&](size_t frames) {
            for (; frames > 0; --frames)
                consumer.step();
        },
        count);
}

} // namespace

int main(int argc, char** argv)
{
    // Large allocations are new memory each time, whatever was freed before.
    mallopt(M_MMAP_THRESHOLD, static_cast<int>(mebibyte));
    std::vector<Row> rows;
    for (const uint64_t size : {1U, 4U, 8U, 16U, 32U})
        for (const size_t held : {0U, 7U})
            rows.push_back(copy_row(size * mebibyte, 8, held, 0.95));
    rows.push_back(copy_row(8 * mebibyte, 17, 16, 1.2));
    rows.push_back(held_row(1024, 512));
    rows.push_back(held_row(4096, 2048));
    rows.push_back({"first frame into memory of the producer", "a later frame", {1.3}, measure_first_frame});
    rows.front().count = count_frames;
    return run_program(argc, argv, "Times frames that the producer copies.", rows);
}
