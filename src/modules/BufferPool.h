#pragma once

#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>

#include "modules/BufferModule.h"

namespace zvgentl {

class BufferPool;

/// A buffer that was found in its pool and stays alive until this is gone. Empty when nothing was found.
class PinnedBuffer {
public:
    PinnedBuffer() = default;
    PinnedBuffer(PinnedBuffer&& other) noexcept;
    PinnedBuffer& operator=(PinnedBuffer&& other) noexcept;
    ~PinnedBuffer();

    explicit operator bool() const noexcept { return m_buffer != nullptr; }
    BufferModule* get() const noexcept { return m_buffer; }
    BufferModule* operator->() const noexcept { return m_buffer; }
    BufferModule& operator*() const noexcept { return *m_buffer; }

private:
    friend class BufferPool;
    PinnedBuffer(BufferPool& pool, BufferModule& buffer) noexcept : m_pool(&pool), m_buffer(&buffer) {}

    BufferPool* m_pool{nullptr};
    BufferModule* m_buffer{nullptr};
};

/// The announced buffers of a stream in announce order, and the map from library handles to them. Owned by
/// the stream.
///
/// Consumer threads and the library's callback thread enter it. Its mutex guards pool, map and pins, with
/// only the buffers' own locks below it: it is never held over a call of the grabber library, a log line or a
/// copy. Whoever works on a buffer pins it; removing a buffer waits until its pins are gone, so a frame that
/// is being copied is finished before its memory goes away.
class BufferPool {
public:
    BufferPool() = default;
    ~BufferPool() { close(); }
    BufferPool(const BufferPool&) = delete;
    BufferPool& operator=(const BufferPool&) = delete;

    size_t size() const;
    bool holds(const void* handle) const;

    PinnedBuffer find(const void* handle);
    /// The buffer at a position; later positions move up when one is removed.
    PinnedBuffer at(size_t position);
    PinnedBuffer find_memory(const void* memory, uint64_t size);
    PinnedBuffer find_library_handle(uint64_t grabber_handle);
    /// The first buffer of the input pool, taken out of it: its tag is OUTPUT when this returns.
    PinnedBuffer take_first_input();

    /// How many buffers satisfy `condition`, a callable over const BufferModule&.
    template <class Condition>
    size_t count_if(Condition condition) const
    {
        const std::lock_guard lock(m_mutex);
        size_t count = 0;
        for (const auto& buffer : m_pool)
            count += condition(*buffer) ? 1 : 0;
        return count;
    }

    /// Null, and the buffer is destroyed, when the pool is closed.
    BufferModule* add(std::unique_ptr<BufferModule> buffer);
    /// The same for a buffer that callbacks name by its library handle.
    BufferModule* add_mapped(std::unique_ptr<BufferModule> buffer);
    /// Destroys a buffer; false when it is not, or no longer, in the pool.
    bool remove(const void* handle);
    /// Destroys every buffer, in order, and refuses new ones until open().
    void close();
    void open();

private:
    friend class PinnedBuffer;

    template <class Condition>
    PinnedBuffer pin_first(Condition condition);
    PinnedBuffer pin(BufferModule& buffer) noexcept;
    void unpin(BufferModule& buffer) noexcept;
    void destroy(std::unique_ptr<BufferModule> buffer, std::unique_lock<std::mutex>& lock);

    mutable std::mutex m_mutex;
    bool m_is_open{true};
    size_t m_last_found{0}; // where the next search for a handle begins: usually it is this one or the next
    int m_waiting{0};       // threads that wait for a buffer to be unpinned
    std::condition_variable m_unpinned;
    std::deque<std::unique_ptr<BufferModule>> m_pool;
    std::map<uint64_t, BufferModule*> m_StreamBufferMap;
};

} // namespace zvgentl
