#pragma once

#include <atomic>
#include <thread>

#include "support/process/process_state.h"

namespace zvtest {

/// A thread that runs `work`, which waits for something. It is asleep, or done, when the constructor returns:
/// nobody else may hold a lock meanwhile, so that nothing but that wait can put it to sleep.
class SleepingThread {
public:
    template <class Work>
    explicit SleepingThread(Work work)
        : m_thread{[this, work] {
              m_id = this_thread();
              work();
              m_is_done = true;
          }}
    {
        while (!m_is_done && !is_asleep())
            std::this_thread::yield();
    }
    ~SleepingThread() { join(); }
    SleepingThread(const SleepingThread&) = delete;
    SleepingThread& operator=(const SleepingThread&) = delete;

    bool is_asleep() const { return !m_is_done && m_id != 0 && zvtest::is_asleep(m_id); }
    void join()
    {
        if (m_thread.joinable())
            m_thread.join();
    }

private:
    std::atomic<pid_t> m_id{0};
    std::atomic<bool> m_is_done{false};
    std::thread m_thread;
};

} // namespace zvtest
