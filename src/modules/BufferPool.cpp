#include "modules/BufferPool.h"

#include <algorithm>
#include <mutex>
#include <numeric>

namespace zvgentl {

PinnedBuffer::PinnedBuffer(PinnedBuffer&& other) noexcept
    : m_pool(other.m_pool), m_facts(other.m_facts), m_buffer(std::exchange(other.m_buffer, nullptr))
{
}

PinnedBuffer& PinnedBuffer::operator=(PinnedBuffer&& other) noexcept
{
    std::swap(m_pool, other.m_pool);
    std::swap(m_facts, other.m_facts);
    std::swap(m_buffer, other.m_buffer);
    return *this;
}

PinnedBuffer::~PinnedBuffer()
{
    if (m_buffer == nullptr)
        return;
    const ShortLock::Held held{m_pool->m_lock};
    m_pool->unpin(held, *m_facts);
}

size_t BufferPool::size() const
{
    const ShortLock::Held held{m_lock};
    return m_pool.size();
}

size_t BufferPool::count(Place place) const
{
    const ShortLock::Held held{m_lock};
    const auto& by_state = m_counts[static_cast<size_t>(place == Place::output ? BUFFER_QUEUE_TYPE::OUTPUT
                                                                               : BUFFER_QUEUE_TYPE::INPUT)];
    const size_t all = std::accumulate(by_state.begin(), by_state.end(), size_t{0});
    const size_t started = by_state[static_cast<size_t>(FillState::filling)];
    if (place == Place::output)
        return all;
    return place == Place::started ? started : all - started;
}

bool BufferPool::holds(const void* handle) const noexcept
{
    return read(handle, [](const BufferFacts&) {});
}

inline void BufferPool::change(BufferFacts& facts, BUFFER_QUEUE_TYPE queue, FillState state) noexcept
{
    if (facts.buffer.get() != nullptr) { // else it was removed while a frame was copied into it
        --count_of(facts.queue.get(), facts.fill_state.get());
        ++count_of(queue, state);
    }
    facts.queue.set(queue);
    facts.fill_state.set(state);
    if (queue == BUFFER_QUEUE_TYPE::INPUT && m_input_from != 0)
        m_input_from = std::min(m_input_from, facts.order);
}

BufferFacts* BufferPool::look_up(const void* handle) const noexcept
{
    BufferFacts* const facts = buffer_index.find(handle);
    const bool is_ours = facts != nullptr && facts->pool.get() == this && facts->buffer.get() != nullptr;
    return is_ours ? facts : nullptr;
}

inline PinnedBuffer BufferPool::pin(BufferFacts* facts) noexcept
{
    if (facts == nullptr)
        return {};
    ++facts->pins;
    return PinnedBuffer{*this, *facts};
}

inline PinnedBuffer BufferPool::pin(const BufferModule* buffer) noexcept
{
    return pin(buffer != nullptr ? buffer->m_facts.get() : nullptr);
}

inline void BufferPool::unpin(const ShortLock::Held& /*held*/, BufferFacts& facts) noexcept
{
    if (--facts.pins == 0 && m_waiting != 0)
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
        if (buffer->get_Size() == size &&
            (first == nullptr || buffer->m_facts->order < first->m_facts->order))
            first = buffer;
    }
    return pin(first);
}

/// Where the buffer of an announce number is, or the next that is left.
BufferPool::Buffers::iterator BufferPool::place_of(uint64_t order)
{
    return std::lower_bound(m_pool.begin(), m_pool.end(), order, [](const auto& buffer, uint64_t wanted) {
        return buffer->m_facts->order < wanted;
    });
}

PinnedBuffer BufferPool::take_first_input()
{
    const ShortLock::Held held{m_lock};
    for (auto place = place_of(m_input_from); place != m_pool.end(); ++place) {
        BufferFacts& facts = *(*place)->m_facts;
        m_input_from = facts.order + 1;
        if (facts.queue.get() == BUFFER_QUEUE_TYPE::INPUT) {
            change(facts, BUFFER_QUEUE_TYPE::OUTPUT, facts.fill_state.get());
            return pin(&facts);
        }
    }
    return {};
}

PinnedBuffer BufferPool::take_library_handle(uint64_t grabber_handle)
{
    const ShortLock::Held held{m_lock};
    BufferFacts* const facts = m_StreamBufferMap.glance(grabber_handle); // nobody changes it meanwhile
    if (facts != nullptr)
        change(*facts, BUFFER_QUEUE_TYPE::OUTPUT, FillState::filling);
    return pin(facts);
}

void BufferPool::complete(const ShortLock::Held& held, PinnedBuffer&& buffer) noexcept
{
    BufferFacts& facts = *buffer.m_facts;
    change(facts, facts.queue.get(), FillState::filled);
    unpin(held, facts);
    buffer.m_buffer = nullptr;
}

std::optional<uint64_t> BufferPool::queue(const void* handle, BufferFacts& facts)
{
    const ShortLock::Held held{m_lock};
    if (facts.buffer.get() != handle || facts.pool.get() != this)
        return std::nullopt;
    change(facts, BUFFER_QUEUE_TYPE::INPUT, facts.fill_state.get());
    return facts.library_handle.get();
}

void BufferPool::set_queue(BufferModule& buffer, BUFFER_QUEUE_TYPE queue)
{
    const ShortLock::Held held{m_lock};
    change(*buffer.m_facts, queue, buffer.get_FillState());
}

void BufferPool::set_fill_state(BufferModule& buffer, FillState state)
{
    const ShortLock::Held held{m_lock};
    change(*buffer.m_facts, buffer.get_Queue(), state);
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
            map(added);
    } catch (...) { // no memory for one of the entries: leave none behind
        if (!m_pool.empty() && m_pool.back() == nullptr)
            m_pool.pop_back();
        forget(added);
        throw;
    }
    added.m_facts->order = m_announced++;
    added.m_facts->pool.set(this);
    added.m_facts->buffer.set(&added);
    ++count_of(added.get_Queue(), added.get_FillState());
    m_pool.back() = std::move(buffer);
    return &added;
}

/// Makes the buffer the one of its library handle. When memory runs out, that is still the one that it was.
void BufferPool::map(BufferModule& buffer)
{
    const uint64_t handle = buffer.get_GrabberHandle();
    m_StreamBufferMap.reserve_one();
    m_StreamBufferMap.remove(handle);
    m_StreamBufferMap.add(handle, buffer.m_facts.get());
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
    if (m_StreamBufferMap.find(buffer.get_GrabberHandle()) == buffer.m_facts.get())
        m_StreamBufferMap.remove(buffer.get_GrabberHandle());
}

bool BufferPool::remove(const void* handle)
{
    std::unique_lock lock{m_lock};
    const BufferFacts* const facts = look_up(handle);
    if (facts == nullptr)
        return false;
    const auto place = place_of(facts->order);
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
    --count_of(buffer->get_Queue(), buffer->get_FillState());
    forget(*buffer);
    ++m_waiting;
    m_unpinned.wait(lock, [&buffer] { return buffer->m_facts->pins == 0; });
    --m_waiting;
    lock.unlock();
    buffer.reset();
    lock.lock();
}

} // namespace zvgentl
