#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "GenTL/GenTL.h"

#include "modules/Quarantine.h"
#include "modules/SerialLock.h"

namespace zvgentl {

class StreamModule;

/// The queue that a buffer is in. The pool has no queue containers: this tag on each buffer is all there is.
enum class BUFFER_QUEUE_TYPE : uint32_t { // NOLINT(readability-identifier-naming): as log lines print it
    GENERAL = 0,                          // announced, in no queue
    INPUT = 1,                            // may be filled
    OUTPUT = 2,                           // filled, or handed to the consumer and not queued again
};

/// The tag's name as log lines print it.
const char* name_of(BUFFER_QUEUE_TYPE queue) noexcept;

enum class FillState : uint32_t {
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

/// Memory aligned to 4096 bytes, freed with its owner.
class AlignedMemory {
public:
    AlignedMemory() = default;
    /// At least one byte; throws std::bad_alloc when there is no memory.
    explicit AlignedMemory(uint64_t size);

    void* get() const noexcept { return m_memory.get(); }

private:
    struct Free {
        void operator()(void* memory) const noexcept;
    };
    std::unique_ptr<void, Free> m_memory;
};

/// One announced buffer: its memory, the geometry of its image, the queue that it is in and what the last
/// frame left. Its address is the buffer handle. Owned by its stream's pool; consumer threads and the
/// library's callback thread enter it, so everything that changes after construction is atomic, and the queue
/// tag also goes through the buffer's lock.
class BufferModule final : public QuarantinedModule<retired_buffers> {
public:
    /// Captures geometry and pixel format from grabber and camera. Without `memory` the buffer allocates
    /// `size` bytes of its own. Throws std::bad_alloc when it cannot.
    BufferModule(const StreamModule& stream, void* memory, uint64_t size, uint64_t grabber_handle,
                 void* private_pointer);

    std::string getId() const override;

    /// The URL of the port's register description.
    std::string get_Url() const;
    /// Reads the port's memory, which is that description alone; `*size` is shortened to what is there.
    /// GC_ERR_INVALID_ADDRESS, with `*size` untouched, for an address outside.
    GenTL::GC_ERROR ReadPort(uint64_t address, void* buffer, size_t* size) const;

    uint64_t get_GrabberHandle() const noexcept { return m_grabber_handle; }
    const StreamModule& get_Stream() const noexcept { return m_stream; }
    void* get_Memory() const noexcept { return m_memory; }
    uint64_t get_Size() const noexcept { return get_Geometry(Geometry::size); }
    /// How many bytes of a ring frame are copied into the buffer: its size, unless less is readable.
    uint64_t get_CopySize() const noexcept { return m_copy_size; }
    /// Before the buffer is in a pool.
    void limit_copy(uint64_t size) noexcept { m_copy_size = size; }
    /// A signed value's bits for width, height and offsets; 0 for an index that does not exist.
    uint64_t get_Geometry(Geometry value) const noexcept;

    void* get_Private() const noexcept { return m_private.load(std::memory_order_relaxed); }
    void set_Private(void* private_pointer) noexcept
    {
        m_private.store(private_pointer, std::memory_order_relaxed);
    }

    /// Under the buffer's lock. Who sees INPUT in the pool also sees what the consumer did before it queued
    /// the buffer: both went through the pool's mutex.
    BUFFER_QUEUE_TYPE get_Queue() const;
    void set_Queue(BUFFER_QUEUE_TYPE queue);

    /// Acquire and release: who reads `filled` sees the pixels, the timestamp and the frame id.
    FillState get_FillState() const noexcept { return m_fill_state.load(std::memory_order_acquire); }
    void set_FillState(FillState state) noexcept { m_fill_state.store(state, std::memory_order_release); }

    /// Ticks of 25 MHz; 0 until the first frame.
    uint64_t get_Timestamp() const noexcept { return m_timestamp.load(std::memory_order_relaxed); }
    uint64_t get_FrameId() const noexcept { return m_frame_id.load(std::memory_order_relaxed); }
    void set_Frame(uint64_t timestamp, uint64_t frame_id) noexcept;

private:
    friend class BufferPool;

    void query_geometry(uint64_t size);
    uint64_t& geometry(Geometry value) noexcept { return m_geometry[static_cast<size_t>(value)]; }

    const uint64_t m_grabber_handle;
    std::atomic<void*> m_private;
    const StreamModule& m_stream;
    std::atomic<uint64_t> m_timestamp{0};
    std::atomic<BUFFER_QUEUE_TYPE> m_queue{BUFFER_QUEUE_TYPE::GENERAL};
    mutable SerialLock m_queue_lock;
    std::array<uint64_t, 9> m_geometry{};
    uint64_t m_copy_size;
    std::atomic<FillState> m_fill_state{FillState::never_filled};
    std::atomic<uint64_t> m_frame_id{0};
    AlignedMemory m_own_memory;
    void* m_memory;
    int m_pins{0}; // under the pool's mutex
};

} // namespace zvgentl
