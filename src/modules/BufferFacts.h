#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace zvgentl {

class BufferModule;
class BufferPool;
class StreamModule;

/// The queue that a buffer is in. The pool has no queue containers: this tag on each buffer is all there is.
enum class BUFFER_QUEUE_TYPE : uint8_t { // NOLINT(readability-identifier-naming): as log lines print it
    GENERAL = 0,                         // announced, in no queue
    INPUT = 1,                           // may be filled
    OUTPUT = 2,                          // filled, or handed to the consumer and not queued again
};

enum class FillState : uint8_t {
    never_filled = 0,
    filling = 1,
    filled = 2,
    incomplete = 3, // never set: a frame arrives whole or not at all
};

/// What a consumer can ask about the image, fixed when the buffer is announced.
enum class Geometry : uint32_t {
    width = 0,
    height = 1,
    size = 2,
    x_offset = 3,
    y_offset = 4,
    pixel_format = 5,
    data_size = 6,
    delivered_image_height = 7,
    pixel_format_namespace = 8,
};
constexpr size_t geometry_values = 9;

/// A value that consumers read while its owner may change it. What is read is never older than what was read
/// before it.
template <class T>
class Fact {
public:
    T get() const noexcept { return m_value.load(std::memory_order_acquire); }
    void set(T value) noexcept { m_value.store(value, std::memory_order_release); }

private:
    std::atomic<T> m_value{};
};

/// What consumers ask about a buffer several times per frame, apart from the buffer itself, so that they can
/// ask without a lock: facts outlive their buffer and are used again for another one. Who has read some of
/// them and then finds the buffer unchanged has read those of that buffer.
///
/// A frame touches two lines of the caches here, and not the buffer: what changes stands in the first, and
/// what is asked most in the next.
struct alignas(64) BufferFacts {
    Fact<BufferModule*> buffer; // whose address is the handle; null unless it is in a pool
    Fact<const BufferPool*> pool;
    Fact<StreamModule*> stream;
    Fact<uint64_t> library_handle; // 0 in cyclic mode
    Fact<void*> private_pointer;
    Fact<uint64_t> timestamp; // ticks of 25 MHz; 0 until the first frame
    Fact<uint64_t> frame_id;
    Fact<BUFFER_QUEUE_TYPE> queue;
    Fact<FillState> fill_state;
    int32_t pins{0}; // the pool's own, under its lock

    Fact<void*> memory;
    std::array<Fact<uint64_t>, geometry_values> geometry; // a signed value's bits for width, height, offsets

    uint64_t order{0}; // in which buffers were announced; the pool's own

    /// 0 for an index that does not exist.
    uint64_t get_Geometry(Geometry value) const noexcept
    {
        const auto index = static_cast<size_t>(value);
        return index < geometry.size() ? geometry[index].get() : 0;
    }
    Fact<uint64_t>& operator[](Geometry value) noexcept { return geometry[static_cast<size_t>(value)]; }
};

/// Owns all facts until the library is unloaded: as many as there ever were buffers at a time. Any thread.
class BufferFactsStore {
public:
    BufferFactsStore() = default;
    BufferFactsStore(const BufferFactsStore&) = delete;
    BufferFactsStore& operator=(const BufferFactsStore&) = delete;

    /// Gives facts back.
    struct GiveBack {
        void operator()(BufferFacts* facts) const noexcept;
    };
    using Borrowed = std::unique_ptr<BufferFacts, GiveBack>;

    /// Facts of a buffer that was never filled. Throws std::bad_alloc when there is no memory for more.
    Borrowed take();

private:
    std::mutex m_mutex;
    std::deque<BufferFacts> m_facts;
    std::vector<BufferFacts*> m_free; // has room for all of them
};

/// The store of this library. Inline, so that it is made before the device store and destroyed after it.
inline BufferFactsStore buffer_facts;

} // namespace zvgentl
