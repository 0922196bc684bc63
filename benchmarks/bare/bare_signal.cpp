#include "benchmarks/bare/bare_signal.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::mutex mutex;
std::condition_variable condition;
bool is_signalled = false;

std::atomic<uint32_t> futex_word{0};
static_assert(sizeof futex_word == sizeof(uint32_t));

std::atomic<bool> spin_word{false};

long futex(int operation, uint32_t value)
{
    return syscall(SYS_futex, &futex_word, operation | FUTEX_PRIVATE_FLAG, value, nullptr, nullptr, 0);
}

} // namespace

extern "C" {

void condition_signal()
{
    {
        const std::lock_guard lock{mutex};
        is_signalled = true;
    }
    condition.notify_one();
}

void condition_wait()
{
    std::unique_lock lock{mutex};
    condition.wait(lock, [] { return is_signalled; });
    is_signalled = false;
}

void futex_signal()
{
    futex_word.store(1, std::memory_order_release);
    futex(FUTEX_WAKE, 1);
}

void futex_wait()
{
    while (futex_word.exchange(0, std::memory_order_acquire) == 0)
        futex(FUTEX_WAIT, 0);
}

void spin_signal() { spin_word.store(true, std::memory_order_release); }

void spin_wait()
{
    while (!spin_word.exchange(false, std::memory_order_acquire)) {
    }
}
}
