#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/unloading.h"
#include "simulator/Pacer.h"

namespace zvsim {

/// A thread that calls a function at given times. Without it an acquisition whose camera has been unplugged
/// would not end before somebody called.
class PlugTimer {
public:
    /// The function takes the library's lock.
    PlugTimer(std::vector<Clock::time_point> times, std::function<void()> function);
    PlugTimer(const PlugTimer&) = delete;
    PlugTimer& operator=(const PlugTimer&) = delete;
    /// Waits for a call that goes on; without the library's lock.
    ~PlugTimer();

private:
    void work();

    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_is_ended{false};
    std::vector<Clock::time_point> m_times;
    std::function<void()> m_function;
    /// Where the thread is.
    platform::LoadedModule m_module{platform::LoadedModule::own()};
    std::thread m_thread;
};

} // namespace zvsim
