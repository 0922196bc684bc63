#include "modules/BufferPool.h"

#include <algorithm>
#include <utility>

namespace zvgentl {

PinnedBuffer::PinnedBuffer(PinnedBuffer&& other) noexcept
    : m_pool(std::exchange(other.m_pool, nullptr)), m_buffer(std::exchange(other.m_buffer, nullptr))
{
}

PinnedBuffer& PinnedBuffer::operator=(PinnedBuffer&& other) noexcept
{
    std::swap(m_pool, other.m_pool);
    std::swap(m_buffer, other.m_buffer);
    return *this;
}

PinnedBuffer::~PinnedBuffer()
{
    if (m_buffer != nullptr)
        m_pool->unpin(*m_buffer);
}

size_t BufferPool::size() const
{
    const std::lock_guard lock(m_mutex);
    return m_pool.size();
}

bool BufferPool::holds(const void* handle) const
{
    return count_if([handle](const BufferModule& buffer) { return &buffer == handle; }) != 0;
}

template <class Condition>
PinnedBuffer BufferPool::pin_first(Condition condition)
{
    const std::lock_guard lock(m_mutex);
    for (const auto& buffer : m_pool) {
        if (condition(*buffer))
            return pin(*buffer);
    }
    return {};
}

PinnedBuffer BufferPool::pin(BufferModule& buffer) noexcept
{
    ++buffer.m_pins;
    return PinnedBuffer{*this, buffer};
}

// Consumers ask several times for the same buffer, and then for the next.
PinnedBuffer BufferPool::find(const void* handle)
{
    const std::lock_guard lock{m_mutex};
    const size_t size = m_pool.size();
    for (size_t i = 0, position = m_last_found; i < size; ++i, ++position) {
        if (position >= size)
            position = 0;
        if (m_pool[position].get() == handle) {
            m_last_found = position;
            return pin(*m_pool[position]);
        }
    }
    return {};
}

PinnedBuffer BufferPool::at(size_t position)
{
    return pin_first([&position](const BufferModule&) { return position-- == 0; });
}

PinnedBuffer BufferPool::find_memory(const void* memory, uint64_t size)
{
    return pin_first([memory, size](const BufferModule& buffer) {
        return buffer.get_Memory() == memory && buffer.get_Size() == size;
    });
}

PinnedBuffer BufferPool::find_library_handle(uint64_t grabber_handle)
{
    const std::lock_guard lock(m_mutex);
    const auto entry = m_StreamBufferMap.find(grabber_handle);
    if (entry == m_StreamBufferMap.end())
        return {};
    return pin(*entry->second);
}

PinnedBuffer BufferPool::take_first_input()
{
    return pin_first([](BufferModule& buffer) {
        if (buffer.get_Queue() != BUFFER_QUEUE_TYPE::INPUT)
            return false;
        buffer.set_Queue(BUFFER_QUEUE_TYPE::OUTPUT);
        return true;
    });
}

BufferModule* BufferPool::add(std::unique_ptr<BufferModule> buffer)
{
    const std::lock_guard lock(m_mutex);
    if (!m_is_open)
        return nullptr;
    m_pool.push_back(std::move(buffer));
    return m_pool.back().get();
}

BufferModule* BufferPool::add_mapped(std::unique_ptr<BufferModule> buffer)
{
    const uint64_t grabber_handle = buffer->get_GrabberHandle();
    // The entry is made first and linked last, so that when memory runs out neither container holds anything.
    std::map<uint64_t, BufferModule*> entry{{grabber_handle, buffer.get()}};
    const std::lock_guard lock(m_mutex);
    if (!m_is_open)
        return nullptr;
    m_pool.push_back(std::move(buffer));
    m_StreamBufferMap.erase(grabber_handle);
    m_StreamBufferMap.merge(entry);
    return m_pool.back().get();
}

bool BufferPool::remove(const void* handle)
{
    std::unique_lock lock(m_mutex);
    const auto position = std::find_if(m_pool.begin(), m_pool.end(),
                                       [handle](const auto& entry) { return entry.get() == handle; });
    if (position == m_pool.end())
        return false;
    std::unique_ptr<BufferModule> found = std::move(*position);
    m_pool.erase(position);
    destroy(std::move(found), lock);
    return true;
}

void BufferPool::open()
{
    const std::lock_guard lock{m_mutex};
    m_is_open = true;
}

void BufferPool::close()
{
    std::unique_lock lock(m_mutex);
    m_is_open = false;
    while (!m_pool.empty()) {
        std::unique_ptr<BufferModule> first = std::move(m_pool.front());
        m_pool.pop_front();
        destroy(std::move(first), lock);
    }
}

void BufferPool::unpin(BufferModule& buffer) noexcept
{
    const std::lock_guard lock(m_mutex);
    if (--buffer.m_pins == 0 && m_waiting != 0)
        m_unpinned.notify_all();
}

void BufferPool::destroy(std::unique_ptr<BufferModule> buffer, std::unique_lock<std::mutex>& lock)
{
    const auto entry = m_StreamBufferMap.find(buffer->get_GrabberHandle());
    if (entry != m_StreamBufferMap.end() && entry->second == buffer.get())
        m_StreamBufferMap.erase(entry);
    ++m_waiting;
    m_unpinned.wait(lock, [&buffer] { return buffer->m_pins == 0; });
    --m_waiting;
    lock.unlock();
    buffer.reset();
    lock.lock();
}

} // namespace zvgentl
