#include "benchmarks/BareSystem.h"
#include "benchmarks/handover.h"
#include "benchmarks/program.h"
#include "benchmarks/ways.h"

// Delivery to a consumer that waits on a thread of its own: from the grabber library's callback to the return
// of EventGetData, or of all calls that a consumer makes for a frame.

namespace {

using namespace GenTL;
using namespace zvbench;

constexpr size_t deliveries = 200; // of a round

enum class Calls { event_only, all };

/// A frame through the producer: its buffer is asked about and queued again inside or outside the time.
class Frame {
public:
    Frame(BareSystem& system, Calls calls) : m_way{system, system.streams.back()}, m_calls{calls} {}

    Parties parties()
    {
        return {[this] { m_way.deliver(); }, [this] { receive(); }, [this] { settle(); }};
    }

    // For one thread.
    void run(size_t count)
    {
        for (; count > 0; --count) {
            m_way.deliver();
            receive();
            settle();
        }
    }

private:
    void receive()
    {
        m_buffer = m_way.wait();
        require(m_buffer != nullptr, "a frame was lost");
        if (m_calls == Calls::all) {
            m_way.ask(m_buffer);
            m_way.queue(m_buffer);
        }
    }

    void settle()
    {
        if (m_calls == Calls::event_only)
            m_way.queue(m_buffer);
    }

    ProducerWay m_way;
    Calls m_calls;
    BUFFER_HANDLE m_buffer{nullptr};
};

Work time_until_received(Parties parties, Cores cores, Waiting waiting)
{
    return [parties = std::move(parties), cores, waiting](size_t count) {
        return deliver(parties, cores, waiting, count).until_received;
    };
}

Comparison compare_delivery(const Setup& setup, Calls calls, Cores cores, double tolerance)
{
    const BareLibraries bare;
    BareSystem system{bare, setup};
    Frame frame{system, calls};
    const bool is_across = cores.sender != cores.receiver;
    const Waiting waiting = setup.is_polling ? Waiting::spinning : Waiting::asleep;
    Parties signal{bare.condition_signal, bare.condition_wait, {}};
    if (setup.is_polling)
        signal = {bare.spin_signal, bare.spin_wait, {}};
    else if (is_across)
        signal = {bare.futex_signal, bare.futex_wait, {}};
    return compare(time_until_received(signal, cores, waiting),
                   time_until_received(frame.parties(), cores, waiting), {tolerance, deliveries});
}

Row one_core_row(const char* what, Calls calls, size_t buffers, double limit)
{
    return {
        what + (", one core, " + std::to_string(buffers) + " buffers"), "bare auto-reset wake", {limit}, [=] {
            return ratio_of(compare_delivery({1, buffers}, calls, one_core(), same_core));
        }};
}

Result measure_append()
{
    const BareLibraries bare;
    BareSystem system{bare, {1, 64, 4096, zvsystem::Mode::queued, true}};
    Frame frame{system, Calls::event_only};
    const Work work = [&](size_t count) {
        return deliver(frame.parties(), two_cores(), Waiting::spinning, count).sending;
    };
    return fastest_of(time_alone(work, effort().is_trial ? 1 : deliveries), 1000);
}

/// Of a delivery to a consumer that need not wait.
void count_delivery(size_t count)
{
    const BareLibraries bare;
    const SecondThread second;
    BareSystem system{bare, {1, 16}};
    Frame frame{system, Calls::event_only};
    count_instructions([&](size_t frames) { frame.run(frames); }, count);
}

} // namespace

int main(int argc, char** argv)
{
    const char* const delivery = "delivery to a sleeping consumer";
    const char* const with_calls = "the same with all calls of a frame";
    std::vector<Row> rows{
        one_core_row(delivery, Calls::event_only, 16, 1.2),
        one_core_row(delivery, Calls::event_only, 1024, 1.3),
        one_core_row(with_calls, Calls::all, 16, 1.35),
        one_core_row(with_calls, Calls::all, 256, 1.5),
        one_core_row(with_calls, Calls::all, 1024, 1.6),
        one_core_row(with_calls, Calls::all, 4096, 2.0),
        {"delivery to a sleeping consumer, two cores",
         "bare futex wake",
         {1.1},
         [] {
             return ratio_of(compare_delivery({1, 16}, Calls::event_only, two_cores(), across_cores));
         }},
        {"delivery to a polling consumer, two cores",
         "bare spinning",
         {5.0},
         [] {
             return ratio_of(compare_delivery({1, 16, 4096, zvsystem::Mode::queued, true}, Calls::event_only,
                                              two_cores(), across_cores));
         }},
        {"callback while a consumer polls", "", {1.0, "us"}, measure_append},
    };
    rows.front().count = count_delivery;
    return run_program(argc, argv, "Times deliveries to a consumer that waits.", rows);
}
