#pragma once

#include <atomic>
#include <thread>
#include <vector>

namespace zvtest {

/// Runs `work(thread)` on four threads that start together, and waits for them.
template <class Work>
void on_threads(Work work)
{
    constexpr int count = 4;
    std::atomic<int> waiting{count};
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&work, &waiting, i] {
            --waiting;
            while (waiting.load() > 0)
                std::this_thread::yield();
            work(i);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace zvtest
