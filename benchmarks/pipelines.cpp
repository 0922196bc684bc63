#include <atomic>
#include <chrono>
#include <deque>
#include <memory>

#include "benchmarks/BareSystem.h"
#include "benchmarks/program.h"
#include "benchmarks/threads.h"
#include "benchmarks/ways.h"

// Sixteen cameras at a fixed rate, each with a thread that delivers and one that consumes: the processor time
// of all, and the frames that are lost.

namespace {

using namespace GenTL;
using namespace zvbench;

constexpr size_t cameras = 16;

struct Load {
    Setup setup;
    double rate;                                                    // frames per second of each camera
    size_t frames() const { return static_cast<size_t>(rate / 4); } // a quarter of a second
};

/// All cameras of one kind of way.
template <class Way>
class Pipelines {
public:
    explicit Pipelines(double rate) : m_period{std::chrono::nanoseconds{static_cast<int64_t>(1e9 / rate)}} {}

    template <class... Arguments>
    void add(Arguments&&... arguments)
    {
        m_ways.push_back(std::make_unique<Way>(std::forward<Arguments>(arguments)...));
    }

    /// Runs so many frames of each camera. Answers the processor time of one frame, in nanoseconds.
    double run(size_t frames)
    {
        const double before = processor_time();
        const auto start = std::chrono::steady_clock::now() + m_period;
        std::vector<std::thread> consumers;
        std::vector<std::thread> senders;
        for (size_t i = 0; i < m_ways.size(); ++i) {
            const auto phase = m_period * static_cast<int64_t>(i) / static_cast<int64_t>(m_ways.size());
            consumers.emplace_back([this, i] { consume(*m_ways[i]); });
            senders.emplace_back(
                [this, i, first = start + phase, frames] { send(*m_ways[i], first, frames); });
        }
        for (std::thread& sender : senders)
            sender.join();
        wait_for_the_last();
        for (size_t i = 0; i < m_ways.size(); ++i) {
            m_ways[i]->kill();
            consumers[i].join();
        }
        return (processor_time() - before) / static_cast<double>(frames * m_ways.size());
    }

    /// Frames for which there was no buffer, or that did not arrive.
    size_t lost() const { return m_sent - m_received; }

private:
    void send(Way& way, std::chrono::steady_clock::time_point next, size_t frames)
    {
        for (; frames > 0; --frames, next += m_period) {
            std::this_thread::sleep_until(next);
            ++m_sent;
            if (way.is_ready())
                way.deliver();
        }
    }

    /// Until it is killed: every kill ends a wait, so none is left for the next run.
    void consume(Way& way)
    {
        for (BUFFER_HANDLE buffer = way.wait(); buffer != nullptr; buffer = way.wait()) {
            ++m_received;
            way.queue(buffer);
        }
    }

    /// Frames that have not arrived after this time are lost.
    void wait_for_the_last() const
    {
        constexpr std::chrono::milliseconds moment{1};
        for (int i = 0; i < 200 && m_received != m_sent; ++i)
            std::this_thread::sleep_for(moment);
    }

    std::chrono::nanoseconds m_period;
    std::vector<std::unique_ptr<Way>> m_ways;
    std::atomic<size_t> m_sent{0};
    std::atomic<size_t> m_received{0};
};

/// The producer and the bare chains under the same load.
class Contest {
public:
    explicit Contest(const Load& load)
        : m_system{m_bare, load.setup}, m_producer{load.rate}, m_chains{load.rate}
    {
        for (OpenStream& open : m_system.streams)
            m_producer.add(m_system, open);
        for (uint32_t camera = 0; camera < cameras; ++camera)
            m_chains.add(m_bare, m_system, load.setup, camera);
    }

    Comparison compare_processor_time(const Load& load)
    {
        return compare([this](size_t count) { return m_chains.run(count); },
                       [this](size_t count) { return m_producer.run(count); },
                       {across_cores, effort().is_trial ? 2 : load.frames(), std::chrono::seconds{40}});
    }

    /// Throws NoResult when the bare chains lose frames too.
    Result count_lost(const Load& load)
    {
        const size_t frames = effort().is_trial ? 2 : 8 * load.frames();
        m_chains.run(frames);
        m_producer.run(frames);
        if (m_chains.lost() != 0 && m_producer.lost() != 0)
            throw NoResult{"machine too busy"};
        return {static_cast<double>(m_producer.lost())};
    }

private:
    BareLibraries m_bare;
    BareSystem m_system;
    Pipelines<ProducerWay> m_producer;
    Pipelines<ChainWay> m_chains;
};

void add_rows(std::vector<Row>& rows, const std::string& what, const char* anchor, const Load& load,
              double limit)
{
    rows.push_back({what + ": processor time", anchor, {limit}, [load] {
                        return ratio_of(Contest{load}.compare_processor_time(load));
                    }});
    rows.push_back({what + ": lost", "", {0, "frames"}, [load] { return Contest{load}.count_lost(load); }});
}

} // namespace

int main(int argc, char** argv)
{
    constexpr uint64_t mebibyte = 1U << 20U;
    std::vector<Row> rows;
    add_rows(rows, "16 cameras, 1000 frames/s each", "bare chains", {{cameras, 64}, 1000}, 1.4);
    add_rows(rows, "16 cameras, 250 frames/s of 1 MiB, cyclic", "memcpy and wakes",
             {{cameras, 8, mebibyte, zvsystem::Mode::cyclic}, 250}, 1.25);
    return run_program(argc, argv, "Measures what sixteen cameras cost.", rows);
}
