#include "modules/BufferPool.h"

#include <algorithm>
#include <mutex>

namespace zvgentl {

namespace {

using Place = BufferPool::Place;

/// Where a buffer is counted that has this tag and fill state.
Place counted_place(BUFFER_QUEUE_TYPE queue, FillState state) noexcept
{
    constexpr Place places[] = {Place::elsewhere, Place::waiting, Place::output}; // by tag
    const bool is_started = queue == BUFFER_QUEUE_TYPE::INPUT && state == FillState::filling;
    return is_started ? Place::started : places[static_cast<size_t>(queue)];
}

} // namespace

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
    if (m_buffer == nullptr)
        return;
    const ShortLock::Held held{m_pool->m_lock};
    m_pool->unpin(held, *m_buffer);
}

size_t BufferPool::size() const
{
    const ShortLock::Held held{m_lock};
    return m_pool.size();
}

size_t BufferPool::count(Place place) const
{
    const ShortLock::Held held{m_lock};
    return m_counts[static_cast<size_t>(place)];
}

bool BufferPool::holds(const void* handle) const noexcept
{
    return read(handle, [](const BufferFacts&) {});
}

BufferModule* BufferPool::look_up(const void* handle) const noexcept
{
    const BufferFacts* const facts = buffer_index.find(handle);
    return facts != nullptr && facts->pool.get() == this ? facts->buffer.get() : nullptr;
}

PinnedBuffer BufferPool::pin(BufferModule* buffer) noexcept
{
    if (buffer == nullptr)
        return {};
    ++buffer->m_pins;
    return PinnedBuffer{*this, *buffer};
}

void BufferPool::unpin(const ShortLock::Held& /*held*/, BufferModule& buffer) noexcept
{
    if (--buffer.m_pins == 0 && m_waiting != 0)
        m_unpinned.notify_all();
}

PinnedBuffer BufferPool::find(const void* handle)
{
    const ShortLock::Held held{m_lock};
    return pin(look_up(handle));
}

PinnedBuffer BufferPool::at(size_t position)
{
    const ShortLock::Held held{m_lock};
    return pin(position < m_pool.size() ? m_pool[position].get() : nullptr);
}

PinnedBuffer BufferPool::find_memory(const void* memory, uint64_t size)
{
    const ShortLock::Held held{m_lock};
    BufferModule* first = nullptr;
    const auto [begin, end] = m_by_memory.equal_range(memory);
    for (auto entry = begin; entry != end; ++entry) {
        BufferModule* const buffer = entry->second;
        if (buffer->get_Size() == size && (first == nullptr || buffer->m_order < first->m_order))
            first = buffer;
    }
    return pin(first);
}

/// Where the buffer of an announce number is, or the next that is left.
BufferPool::Buffers::iterator BufferPool::place_of(uint64_t order)
{
    return std::lower_bound(m_pool.begin(), m_pool.end(), order,
                            [](const auto& buffer, uint64_t wanted) { return buffer->m_order < wanted; });
}

PinnedBuffer BufferPool::take_first_input()
{
    const ShortLock::Held held{m_lock};
    for (auto place = place_of(m_input_from); place != m_pool.end(); ++place) {
        BufferModule& buffer = **place;
        m_input_from = buffer.m_order + 1;
        if (buffer.get_Queue() == BUFFER_QUEUE_TYPE::INPUT) {
            change(buffer, BUFFER_QUEUE_TYPE::OUTPUT, buffer.get_FillState());
            return pin(&buffer);
        }
    }
    return {};
}

PinnedBuffer BufferPool::take_library_handle(uint64_t grabber_handle)
{
    const ShortLock::Held held{m_lock};
    const auto entry = m_StreamBufferMap.find(grabber_handle);
    if (entry == m_StreamBufferMap.end())
        return {};
    change(*entry->second, BUFFER_QUEUE_TYPE::OUTPUT, FillState::filling);
    return pin(entry->second);
}

void BufferPool::complete(const ShortLock::Held& held, PinnedBuffer buffer) noexcept
{
    change(*buffer, buffer->get_Queue(), FillState::filled);
    unpin(held, *std::exchange(buffer.m_buffer, nullptr));
}

std::optional<uint64_t> BufferPool::queue(const void* handle)
{
    const ShortLock::Held held{m_lock};
    BufferModule* const buffer = look_up(handle);
    if (buffer == nullptr)
        return std::nullopt;
    change(*buffer, BUFFER_QUEUE_TYPE::INPUT, buffer->get_FillState());
    return buffer->get_GrabberHandle();
}

void BufferPool::set_queue(BufferModule& buffer, BUFFER_QUEUE_TYPE queue)
{
    const ShortLock::Held held{m_lock};
    change(buffer, queue, buffer.get_FillState());
}

void BufferPool::set_fill_state(BufferModule& buffer, FillState state)
{
    const ShortLock::Held held{m_lock};
    change(buffer, buffer.get_Queue(), state);
}

/// Of the place where the buffer is counted. One that was removed while a frame was copied into it is counted
/// nowhere.
size_t& BufferPool::count_of(const BufferModule& buffer) noexcept
{
    const bool is_listed = buffer.m_facts->buffer.get() != nullptr;
    const Place place =
        is_listed ? counted_place(buffer.get_Queue(), buffer.get_FillState()) : Place::elsewhere;
    return m_counts[static_cast<size_t>(place)];
}

void BufferPool::change(BufferModule& buffer, BUFFER_QUEUE_TYPE queue, FillState state) noexcept
{
    --count_of(buffer);
    buffer.m_facts->queue.set(queue);
    buffer.m_facts->fill_state.set(state);
    ++count_of(buffer);
    if (queue == BUFFER_QUEUE_TYPE::INPUT)
        m_input_from = std::min(m_input_from, buffer.m_order);
}

BufferModule* BufferPool::add(std::unique_ptr<BufferModule> buffer, Mapped mapped)
{
    BufferModule& added = *buffer;
    const ShortLock::Held held{m_lock};
    if (!m_is_open)
        return nullptr;
    try {
        m_by_memory.emplace(added.get_Memory(), &added);
        m_pool.emplace_back();
        buffer_index.add(&added, added.m_facts.get());
        if (mapped == Mapped::yes) // last: it may take the handle over from another buffer
            m_StreamBufferMap[added.get_GrabberHandle()] = &added;
    } catch (...) { // no memory for one of the entries: leave none behind
        if (!m_pool.empty() && m_pool.back() == nullptr)
            m_pool.pop_back();
        forget(added);
        throw;
    }
    added.m_order = m_announced++;
    added.m_facts->pool.set(this);
    added.m_facts->buffer.set(&added);
    ++count_of(added);
    m_pool.back() = std::move(buffer);
    return &added;
}

/// Takes out everything that finds the buffer.
void BufferPool::forget(BufferModule& buffer) noexcept
{
    buffer.m_facts->buffer.set(nullptr);
    buffer_index.remove(&buffer);
    const auto [begin, end] = m_by_memory.equal_range(buffer.get_Memory());
    const auto entry = std::find_if(begin, end, [&](const auto& found) { return found.second == &buffer; });
    if (entry != end)
        m_by_memory.erase(entry);
    const auto mapped = m_StreamBufferMap.find(buffer.get_GrabberHandle());
    if (mapped != m_StreamBufferMap.end() && mapped->second == &buffer)
        m_StreamBufferMap.erase(mapped);
}

bool BufferPool::remove(const void* handle)
{
    std::unique_lock lock{m_lock};
    BufferModule* const buffer = look_up(handle);
    if (buffer == nullptr)
        return false;
    const auto place = place_of(buffer->m_order);
    std::unique_ptr<BufferModule> found = std::move(*place);
    m_pool.erase(place);
    destroy(std::move(found), lock);
    return true;
}

void BufferPool::open()
{
    const ShortLock::Held held{m_lock};
    m_is_open = true;
}

void BufferPool::close()
{
    std::unique_lock lock{m_lock};
    m_is_open = false;
    while (!m_pool.empty()) {
        std::unique_ptr<BufferModule> first = std::move(m_pool.front());
        m_pool.pop_front();
        destroy(std::move(first), lock);
    }
}

void BufferPool::destroy(std::unique_ptr<BufferModule> buffer, std::unique_lock<ShortLock>& lock)
{
    --count_of(*buffer);
    forget(*buffer);
    ++m_waiting;
    m_unpinned.wait(lock, [&buffer] { return buffer->m_pins == 0; });
    --m_waiting;
    lock.unlock();
    buffer.reset();
    lock.lock();
}

} // namespace zvgentl
