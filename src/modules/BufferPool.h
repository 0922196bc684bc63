#pragma once

#include <array>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>

#include "modules/BufferModule.h"
#include "modules/ShortLock.h"
#include "modules/handles.h"

namespace zvgentl {

class BufferPool;

/// A buffer that was found in its pool and stays alive until this is gone. Empty when nothing was found.
class PinnedBuffer {
public:
    PinnedBuffer() = default;
    PinnedBuffer(PinnedBuffer&& other) noexcept;
    PinnedBuffer& operator=(PinnedBuffer&& other) noexcept;
    ~PinnedBuffer();
    PinnedBuffer(const PinnedBuffer&) = delete;
    PinnedBuffer& operator=(const PinnedBuffer&) = delete;

    explicit operator bool() const noexcept { return m_buffer != nullptr; }
    BufferModule* get() const noexcept { return m_buffer; }
    BufferModule* operator->() const noexcept { return m_buffer; }
    BufferModule& operator*() const noexcept { return *m_buffer; }
    BufferFacts& facts() const noexcept { return *m_facts; }
    /// For the thread that delivers a frame.
    void set_Frame(uint64_t timestamp, uint64_t frame_id) const noexcept
    {
        m_facts->timestamp.set(timestamp);
        m_facts->frame_id.set(frame_id);
    }

private:
    friend class BufferPool;
    PinnedBuffer(BufferPool& pool, BufferFacts& facts) noexcept
        : m_pool(&pool), m_facts(&facts), m_buffer(facts.buffer.get())
    {
    }

    BufferPool* m_pool{nullptr};
    BufferFacts* m_facts{nullptr};
    BufferModule* m_buffer{nullptr}; // the facts' one may be gone from the pool meanwhile
};

/// The announced buffers of a stream in announce order, their queues and fill states, and what finds them: by
/// handle, by memory and by library handle. Owned by the stream, whose lock guards everything in it; consumer
/// threads and the library's callback thread enter it.
///
/// Whoever works on a buffer without the lock pins it; removing a buffer waits until its pins are gone, so a
/// frame that is being copied is finished before its memory goes away.
class BufferPool {
public:
    explicit BufferPool(ShortLock& lock) : m_lock{lock} {}
    ~BufferPool() { close(); }
    BufferPool(const BufferPool&) = delete;
    BufferPool& operator=(const BufferPool&) = delete;

    /// What consumers count.
    enum class Place { waiting, started, output };

    size_t size() const;
    /// How many buffers wait to be filled, are being filled, or are in the output queue.
    size_t count(Place place) const;
    bool holds(const void* handle) const noexcept;

    /// Reads facts of the buffer of a handle, without a lock. False when there is no such buffer, and also
    /// when it was removed meanwhile: what was read then is worthless.
    template <class Read>
    bool read(const void* handle, Read read) const noexcept
    {
        const BufferFacts* const facts = buffer_index.find(handle);
        if (facts == nullptr || facts->pool.get() != this)
            return false;
        read(*facts);
        return facts->buffer.get() == handle;
    }

    PinnedBuffer find(const void* handle);
    /// The buffer at a position; later positions move up when one is removed.
    PinnedBuffer at(size_t position);
    PinnedBuffer find_memory(const void* memory, uint64_t size);
    /// The first buffer of the input pool, taken out of it: its tag is OUTPUT when this returns.
    PinnedBuffer take_first_input();
    /// The buffer of a library handle, which the library has filled: its tag is OUTPUT and its fill state
    /// `filling` when this returns.
    PinnedBuffer take_library_handle(uint64_t grabber_handle);
    /// The end of a frame: the buffer is filled, and no longer pinned.
    void complete(const ShortLock::Held& held, PinnedBuffer&& buffer) noexcept;

    /// Puts a buffer into the input pool and answers its library handle; nothing when it is not, or no
    /// longer, the buffer of these facts. Who finds it in the input pool also sees what the consumer did
    /// before: both took the lock.
    std::optional<uint64_t> queue(const void* handle, BufferFacts& facts);
    /// Change a buffer that the caller has pinned.
    void set_queue(BufferModule& buffer, BUFFER_QUEUE_TYPE queue);
    void set_fill_state(BufferModule& buffer, FillState state);

    /// Null, and the buffer is destroyed, when the pool is closed.
    BufferModule* add(std::unique_ptr<BufferModule> buffer) { return add(std::move(buffer), Mapped::no); }
    /// The same for a buffer that callbacks name by its library handle.
    BufferModule* add_mapped(std::unique_ptr<BufferModule> buffer)
    {
        return add(std::move(buffer), Mapped::yes);
    }
    /// Destroys a buffer; false when it is not, or no longer, in the pool.
    bool remove(const void* handle);
    /// Destroys every buffer, in order, and refuses new ones until open().
    void close();
    void open();

private:
    friend class PinnedBuffer;
    enum class Mapped { no, yes };
    using Buffers = std::deque<std::unique_ptr<BufferModule>>;

    BufferModule* add(std::unique_ptr<BufferModule> buffer, Mapped mapped);
    PinnedBuffer pin(BufferFacts* facts) noexcept;
    PinnedBuffer pin(const BufferModule* buffer) noexcept;
    void unpin(const ShortLock::Held& held, BufferFacts& facts) noexcept;
    BufferFacts* look_up(const void* handle) const noexcept;
    Buffers::iterator place_of(uint64_t order);
    void change(BufferFacts& facts, BUFFER_QUEUE_TYPE queue, FillState state) noexcept;
    size_t& count_of(BUFFER_QUEUE_TYPE queue, FillState state) noexcept
    {
        return m_counts[static_cast<size_t>(queue)][static_cast<size_t>(state)];
    }
    void map(BufferModule& buffer);
    void forget(BufferModule& buffer) noexcept;
    void destroy(std::unique_ptr<BufferModule> buffer, std::unique_lock<ShortLock>& lock);

    ShortLock& m_lock;
    bool m_is_open{true};
    uint64_t m_announced{0};  // buffers ever
    uint64_t m_input_from{0}; // no buffer announced before this one is in the input pool
    int m_waiting{0};         // threads that wait for a buffer to be unpinned
    std::condition_variable_any m_unpinned;
    std::array<std::array<size_t, 4>, 3> m_counts{}; // of buffers by tag and fill state
    Buffers m_pool;
    std::unordered_multimap<const void*, BufferModule*> m_by_memory;
    Index<uint64_t, BufferFacts> m_StreamBufferMap;
};

} // namespace zvgentl
