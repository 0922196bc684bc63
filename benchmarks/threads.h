#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include <sched.h>
#include <sys/types.h>

namespace zvbench {

/// The C library drops atomic operations while a process has one thread. Consumers have more.
class SecondThread {
public:
    ~SecondThread();

private:
    void sleep();

    std::mutex m_mutex;
    std::condition_variable m_done;
    bool m_is_done{false};
    std::thread m_thread{&SecondThread::sleep, this};
};

/// Two processors for two threads: twice the same, or two different ones.
struct Cores {
    int sender;
    int receiver;
};
Cores one_core();
/// Throws NoResult where the process may use only one processor.
Cores two_cores();

/// Keeps the calling thread on a processor from now on.
void stay_on(int core);

/// Keeps the calling thread on a processor for a while.
class PinnedThread {
public:
    explicit PinnedThread(int core);
    /// Gives it back the processors that it had.
    ~PinnedThread();
    PinnedThread(const PinnedThread&) = delete;
    PinnedThread& operator=(const PinnedThread&) = delete;

private:
    cpu_set_t m_before{};
};

/// Tells whether a thread of this process sleeps in the kernel.
class SleepWatch {
public:
    explicit SleepWatch(pid_t thread);
    ~SleepWatch();
    SleepWatch(const SleepWatch&) = delete;
    SleepWatch& operator=(const SleepWatch&) = delete;

    bool is_asleep() const;

private:
    int m_file;
};

pid_t this_thread();

/// The processor time of the whole process, in nanoseconds.
double processor_time();

} // namespace zvbench
