#pragma once

#include <cstddef>
#include <vector>

namespace zvgentl {

class BufferModule;

/// A queue of buffers, oldest first. It allocates only when it is full, so frames are appended without an
/// allocation. The buffers are not owned and never read: they may have been revoked. One thread at a time.
class BufferQueue {
public:
    BufferQueue();
    bool empty() const noexcept { return m_size == 0; }
    size_t size() const noexcept { return m_size; }
    BufferModule* front() const noexcept { return m_ring[m_first]; }
    void push(BufferModule* buffer);
    void pop() noexcept;
    void clear() noexcept;

private:
    std::vector<BufferModule*> m_ring;
    size_t m_first{0};
    size_t m_size{0};
};

} // namespace zvgentl
