#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <mutex>
#include <thread>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "benchmarks/BareSystem.h"
#include "benchmarks/Comparison.h"

// The way of a frame through the producer against the bare chain: delivery, one EventGetData, eight
// DSGetBufferInfo and one DSQueueBuffer, all on one thread.

namespace {

using namespace GenTL;
using namespace zvbench;

constexpr uint64_t payload = 4096;
constexpr BUFFER_INFO_CMD queries[] = {BUFFER_INFO_BASE,    BUFFER_INFO_SIZE_FILLED,  BUFFER_INFO_WIDTH,
                                       BUFFER_INFO_HEIGHT,  BUFFER_INFO_PIXELFORMAT,  BUFFER_INFO_TIMESTAMP,
                                       BUFFER_INFO_FRAMEID, BUFFER_INFO_IS_INCOMPLETE};

/// The C library drops atomic operations while a process has one thread. Consumers have more.
class SecondThread {
public:
    ~SecondThread()
    {
        {
            const std::lock_guard lock{m_mutex};
            m_is_done = true;
        }
        m_done.notify_one();
        m_thread.join();
    }

private:
    void sleep()
    {
        std::unique_lock lock{m_mutex};
        m_done.wait(lock, [this] { return m_is_done; });
    }

    std::mutex m_mutex;
    std::condition_variable m_done;
    bool m_is_done{false};
    std::thread m_thread{&SecondThread::sleep, this};
};

void require(bool is_right, const char* what)
{
    if (!is_right)
        throw std::runtime_error{what};
}

/// Frames through the bare chain.
class Chain {
public:
    Chain(BareLibraries& bare, uint32_t buffers) : m_bare{bare}, m_buffers{buffers}
    {
        m_bare.set_up(1, 1, payload);
        m_bare.chain_open(buffers, payload);
    }
    ~Chain() { m_bare.chain_close(); }
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;

    void run(size_t count)
    {
        for (; count > 0; --count) {
            m_bare.deliver(m_bare.chain_library_handle(m_next));
            m_next = (m_next + 1) % m_buffers;
            EVENT_NEW_BUFFER_DATA datum;
            require(m_bare.chain_get(&datum), "the chain lost a frame");
            for (const BUFFER_INFO_CMD query : queries) {
                INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
                uint64_t value = 0;
                size_t size = sizeof value;
                require(m_bare.chain_info(datum.BufferHandle, query, &type, &value, &size) == GC_ERR_SUCCESS,
                        "the chain refused a query");
            }
            m_bare.chain_queue(datum.BufferHandle);
        }
    }

private:
    BareLibraries& m_bare;
    uint32_t m_buffers;
    uint32_t m_next{0};
};

/// Frames through the producer: the last of the open cameras, its buffers in turn.
class Frames {
public:
    Frames(BareLibraries& bare, size_t cameras, size_t buffers)
        : m_bare{bare}, m_system{bare, cameras, buffers, payload}
    {
    }

    void run(size_t count)
    {
        const OpenStream& open = m_system.streams.back();
        const zvsystem::Functions& gentl = m_system.gentl;
        for (; count > 0; --count) {
            m_bare.deliver(open.library_handles[m_next]);
            m_next = (m_next + 1) % open.buffers.size();
            EVENT_NEW_BUFFER_DATA datum;
            size_t room = sizeof datum;
            require(gentl.EventGetData(open.event, &datum, &room, 0) == GC_ERR_SUCCESS, "a frame was lost");
            for (const BUFFER_INFO_CMD query : queries) {
                INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
                uint64_t value = 0;
                size_t size = sizeof value;
                require(gentl.DSGetBufferInfo(open.stream, datum.BufferHandle, query, &type, &value, &size) ==
                            GC_ERR_SUCCESS,
                        "a query failed");
            }
            require(gentl.DSQueueBuffer(open.stream, datum.BufferHandle) == GC_ERR_SUCCESS,
                    "a buffer could not be queued");
        }
    }

private:
    BareLibraries& m_bare;
    BareSystem m_system;
    size_t m_next{0};
};

struct Row {
    const char* name;
    size_t cameras;
    size_t buffers;
    double gate; // the largest ratio to the bare chain
};

constexpr Row rows[] = {
    {"chain, 1 camera, 16 buffers", 1, 16, 2.0},     {"chain, 1 camera, 64 buffers", 1, 64, 2.0},
    {"chain, 1 camera, 1024 buffers", 1, 1024, 2.6}, {"chain, 1 camera, 4096 buffers", 1, 4096, 3.0},
    {"chain, 16 cameras, 64 buffers", 16, 64, 3.0},  {"chain, 256 cameras, 64 buffers", 256, 64, 4.0},
};

Comparison measure(const Row& row)
{
    BareLibraries bare;
    const SecondThread second;
    Frames subject{bare, row.cameras, row.buffers};
    Chain anchor{bare, static_cast<uint32_t>(row.buffers)};
    return compare([&](size_t count) { anchor.run(count); }, [&](size_t count) { subject.run(count); });
}

} // namespace

/// Has a name that callgrind can be told: --toggle-collect=counted_frames
extern "C" [[gnu::noinline]] void counted_frames(Frames& subject, size_t frames) { subject.run(frames); }

namespace {

/// Runs frames that come after others, so that callgrind counts neither set-up nor first times.
void count_instructions(const Row& row, size_t frames)
{
    BareLibraries bare;
    const SecondThread second;
    Frames subject{bare, row.cameras, row.buffers};
    subject.run(2 * row.buffers);
    counted_frames(subject, frames);
}

} // namespace

int main(int argc, char** argv)
try {
    CLI::App app{"Times the way of a frame through the producer against the least that has to be done."};
    std::string json;
    int only = -1;
    size_t frames = 0;
    app.add_option("--json", json, "file for the results");
    app.add_option("--row", only, "measure only this row, counted from 0")
        ->check(CLI::Range(0, static_cast<int>(std::size(rows)) - 1));
    app.add_option("--count-instructions", frames, "under callgrind: run so many frames of the row");
    CLI11_PARSE(app, argc, argv);

    if (frames != 0) {
        count_instructions(rows[std::max(only, 0)], frames);
        return EXIT_SUCCESS;
    }
    nlohmann::json results = nlohmann::json::array();
    bool is_good = true;
    std::printf("%-34s %10s %10s %8s %8s %6s %s\n", "what", "anchor/ns", "frame/ns", "ratio", "spread",
                "gate", "");
    for (const Row& row : rows) {
        if (only >= 0 && &row != &rows[only])
            continue;
        const Comparison result = measure(row);
        const bool passes = result.ratio.median() <= row.gate;
        is_good = is_good && passes;
        std::printf("%-34s %10.1f %10.1f %8.2f %7.1f%% %6.1f %s\n", row.name, result.anchor.median(),
                    result.subject.median(), result.ratio.median(), 100 * result.ratio.spread(), row.gate,
                    passes ? "passed" : "MISSED");
        std::fflush(stdout);
        results.push_back({{"name", row.name},
                           {"anchor_ns", result.anchor.median()},
                           {"subject_ns", result.subject.median()},
                           {"ratio", result.ratio.median()},
                           {"spread", result.ratio.spread()},
                           {"void_rounds", result.void_rounds},
                           {"gate", row.gate},
                           {"passed", passes}});
    }
    if (!json.empty())
        std::ofstream{json} << results.dump(2) << '\n';
    return is_good ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (const std::exception& error) {
    std::cerr << "bench_frame_path: " << error.what() << '\n';
    return 2;
}
