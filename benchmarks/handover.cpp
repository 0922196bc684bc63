#include "benchmarks/handover.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <vector>

namespace zvbench {

namespace {

using Clock = std::chrono::steady_clock;

double nanoseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::nano>{duration}.count();
}

double median(std::vector<double>& values)
{
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The thread that waits for what is sent.
class Receiver {
public:
    Receiver(const Parties& parties, int core, size_t count)
        : m_parties{parties}, m_core{core}, m_thread{[this, count] { run(count); }}
    {
        while (m_id == 0)
            sched_yield();
    }

    /// The thread has ended, or it ends because it failed.
    ~Receiver() { m_thread.join(); }
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    pid_t id() const { return m_id; }
    Clock::time_point received() const { return m_received; }

    /// Throws what went wrong on the thread.
    void wait_for(size_t deliveries) const
    {
        while (m_done.load(std::memory_order_acquire) < deliveries) {
            if (m_has_failed)
                std::rethrow_exception(m_failure);
            sched_yield();
        }
    }

private:
    void run(size_t count)
    try {
        const PinnedThread pinned{m_core};
        m_id = this_thread();
        for (; count > 0; --count) {
            m_parties.receive();
            m_received = Clock::now();
            if (m_parties.settle)
                m_parties.settle();
            m_done.fetch_add(1, std::memory_order_release);
        }
    } catch (...) {
        m_failure = std::current_exception();
        m_has_failed = true;
    }

    const Parties& m_parties;
    int m_core;
    std::atomic<pid_t> m_id{0};
    Clock::time_point m_received; // written before m_done, read after it
    std::atomic<size_t> m_done{0};
    std::exception_ptr m_failure;
    std::atomic<bool> m_has_failed{false};
    std::thread m_thread;
};

/// A spinning receiver needs a moment until it spins.
void wait_until_spinning()
{
    constexpr std::chrono::microseconds moment{3};
    for (const auto start = Clock::now(); Clock::now() - start < moment;) {
    }
}

} // namespace

DeliveryTimes deliver(const Parties& parties, Cores cores, Waiting waiting, size_t count)
{
    const PinnedThread pinned{cores.sender};
    Receiver receiver{parties, cores.receiver, count};
    const SleepWatch watch{receiver.id()};
    std::vector<double> until_received;
    std::vector<double> sending;
    for (size_t i = 0; i < count; ++i) {
        if (waiting == Waiting::spinning)
            wait_until_spinning();
        while (waiting == Waiting::asleep && !watch.is_asleep())
            sched_yield();
        const auto start = Clock::now();
        parties.send();
        const auto sent = Clock::now();
        receiver.wait_for(i + 1);
        until_received.push_back(nanoseconds(receiver.received() - start));
        sending.push_back(nanoseconds(sent - start));
    }
    return {median(until_received), median(sending)};
}

} // namespace zvbench
