#include "benchmarks/threads.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "benchmarks/Comparison.h"

namespace zvbench {

namespace {

void check_call(bool is_good, const char* what)
{
    if (!is_good)
        throw std::system_error{errno, std::generic_category(), what};
}

std::vector<int> usable_cores()
{
    cpu_set_t set;
    check_call(sched_getaffinity(0, sizeof set, &set) == 0, "sched_getaffinity");
    std::vector<int> cores;
    for (int core = 0; core < CPU_SETSIZE; ++core)
        if (CPU_ISSET(core, &set))
            cores.push_back(core);
    return cores;
}

} // namespace

SecondThread::~SecondThread()
{
    {
        const std::lock_guard lock{m_mutex};
        m_is_done = true;
    }
    m_done.notify_one();
    m_thread.join();
}

void SecondThread::sleep()
{
    std::unique_lock lock{m_mutex};
    m_done.wait(lock, [this] { return m_is_done; });
}

Cores one_core()
{
    const int core = usable_cores().back();
    return {core, core};
}

Cores two_cores()
{
    const std::vector<int> cores = usable_cores();
    if (cores.size() < 2)
        throw NoResult{"needs two processors"};
    return {cores.front(), cores.back()};
}

void stay_on(int core)
{
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(core, &set);
    check_call(sched_setaffinity(0, sizeof set, &set) == 0, "sched_setaffinity");
}

PinnedThread::PinnedThread(int core)
{
    check_call(sched_getaffinity(0, sizeof m_before, &m_before) == 0, "sched_getaffinity");
    stay_on(core);
}

PinnedThread::~PinnedThread() { sched_setaffinity(0, sizeof m_before, &m_before); }

SleepWatch::SleepWatch(pid_t thread)
    : m_file{open(("/proc/self/task/" + std::to_string(thread) + "/stat").c_str(), O_RDONLY | O_CLOEXEC)}
{
    check_call(m_file >= 0, "the state of a thread");
}

SleepWatch::~SleepWatch() { close(m_file); }

bool SleepWatch::is_asleep() const
{
    char text[128]; // "1234 (name) S ..."
    const ssize_t length = pread(m_file, text, sizeof text - 1, 0);
    check_call(length > 0, "the state of a thread");
    text[length] = '\0';
    const char* const name_end = std::strrchr(text, ')');
    return name_end != nullptr && name_end[1] != '\0' && name_end[2] == 'S';
}

pid_t this_thread() { return static_cast<pid_t>(syscall(SYS_gettid)); }

double processor_time()
{
    timespec time{};
    check_call(clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time) == 0, "clock_gettime");
    return 1e9 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec);
}

} // namespace zvbench
