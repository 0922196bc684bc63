#include "modules/BufferQueue.h"

namespace zvgentl {

namespace {

constexpr size_t first_capacity = 256;

} // namespace

BufferQueue::BufferQueue() : m_ring(first_capacity) {}

void BufferQueue::push(BufferModule* buffer)
{
    if (m_size == m_ring.size()) {
        std::vector<BufferModule*> larger(m_ring.size() * 2);
        for (size_t i = 0; i < m_size; ++i)
            larger[i] = m_ring[(m_first + i) % m_ring.size()];
        m_ring.swap(larger);
        m_first = 0;
    }
    m_ring[(m_first + m_size) % m_ring.size()] = buffer;
    ++m_size;
}

void BufferQueue::pop() noexcept
{
    m_first = (m_first + 1) % m_ring.size();
    --m_size;
}

void BufferQueue::clear() noexcept
{
    m_first = 0;
    m_size = 0;
}

} // namespace zvgentl
