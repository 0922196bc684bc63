#pragma once

#include <atomic>

#include "unit/simulator/fixtures.h"

namespace zvsim_test {

/// Pages that nobody may touch. The first access stops in the handler of the fault until the
/// test lets it go on. One at a time in a process.
class BlockingMemory {
public:
    explicit BlockingMemory(size_t size);
    BlockingMemory(const BlockingMemory&) = delete;
    BlockingMemory& operator=(const BlockingMemory&) = delete;
    ~BlockingMemory();

    unsigned char* data() const { return m_data; }
    size_t size() const { return m_size; }

    /// Waits until a thread has been stopped.
    bool wait_for_access() const
    {
        return becomes_true([this] { return m_is_accessed.load(); });
    }
    /// Lets that thread, and every later access, go on.
    void let_go();

    /// Called by the handler: false if the address is not in this memory.
    bool hold_up(const void* address);

private:
    size_t m_size;
    unsigned char* m_data;
    std::atomic<bool> m_is_accessed{false};
    std::atomic<bool> m_is_released{false};
};

} // namespace zvsim_test
