#include "modules/BufferQueue.h"

namespace zvgentl {

namespace {

constexpr size_t first_capacity = 256;

} // namespace

BufferQueue::BufferQueue() : m_ring(first_capacity) {}

void BufferQueue::grow()
{
    std::vector<Entry> larger(m_ring.size() * 2);
    for (size_t i = 0; i < size(); ++i)
        larger[i] = m_ring[place(i)];
    m_ring.swap(larger);
    m_first = 0;
}

void BufferQueue::clear() noexcept
{
    m_first = 0;
    set_size(0);
}

} // namespace zvgentl
