#pragma once

#include <atomic>
#include <cstddef>
#include <vector>

namespace zvgentl {

class BufferModule;
struct BufferFacts;

/// A queue of buffers, oldest first. It allocates only when it is full, so frames are appended without an
/// allocation. The buffers are not owned and never read: they may have been revoked, as their facts tell. One
/// thread at a time, but any may ask for the size.
class BufferQueue {
public:
    struct Entry {
        BufferModule* buffer;
        const BufferFacts* facts; // of the buffer when it was appended
    };

    BufferQueue();
    bool empty() const noexcept { return size() == 0; }
    size_t size() const noexcept { return m_size.load(std::memory_order_relaxed); }
    const Entry& front() const noexcept { return m_ring[m_first]; }
    void push(const Entry& entry)
    {
        const size_t count = size();
        if (count == m_ring.size())
            grow();
        m_ring[place(count)] = entry;
        set_size(count + 1);
    }
    void pop() noexcept
    {
        m_first = place(1);
        set_size(size() - 1);
    }
    void clear() noexcept;

private:
    size_t place(size_t position) const noexcept { return (m_first + position) & (m_ring.size() - 1); }
    void grow();
    void set_size(size_t size) noexcept { m_size.store(size, std::memory_order_relaxed); }

    std::vector<Entry> m_ring; // as many as a power of 2
    size_t m_first{0};
    std::atomic<size_t> m_size{0};
};

} // namespace zvgentl
