#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "GenTL/GenTL.h"

#include "modules/BufferFacts.h"
#include "modules/Quarantine.h"
#include "platform/copy.h"

namespace zvgentl {

class StreamModule;

/// The tag's name as log lines print it.
const char* name_of(BUFFER_QUEUE_TYPE queue) noexcept;

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

/// One announced buffer: its memory and its facts. Its address is the buffer handle. Owned by its stream's
/// pool, which also changes its queue and fill state; consumer threads and the library's callback thread read
/// it.
class BufferModule final : public QuarantinedModule<retired_buffers> {
public:
    /// Captures geometry and pixel format from grabber and camera. Without `memory` the buffer allocates
    /// `size` bytes of its own. Throws std::bad_alloc when it cannot.
    BufferModule(StreamModule& stream, void* memory, uint64_t size, uint64_t grabber_handle,
                 void* private_pointer);

    std::string getId() const override;

    /// The URL of the port's register description.
    std::string get_Url() const;
    /// Reads the port's memory, which is that description alone; `*size` is shortened to what is there.
    /// GC_ERR_INVALID_ADDRESS, with `*size` untouched, for an address outside.
    GenTL::GC_ERROR ReadPort(uint64_t address, void* buffer, size_t* size) const;

    uint64_t get_GrabberHandle() const noexcept { return m_facts->library_handle.get(); }
    const StreamModule& get_Stream() const noexcept { return m_stream; }
    const BufferFacts& get_Facts() const noexcept { return *m_facts; }
    void* get_Memory() const noexcept { return m_facts->memory.get(); }
    uint64_t get_Size() const noexcept { return m_facts->get_Geometry(Geometry::size); }
    /// Before the buffer is in a pool: how many bytes of a ring frame are copied, where not all of its size.
    void limit_copy(uint64_t size) noexcept { m_copy_size = size; }
    /// Copies a ring frame into the memory. For the one thread that delivers a cyclic frame.
    void copy_from(const void* frame) noexcept
    {
        platform::copy_frame(get_Memory(), frame, static_cast<size_t>(m_copy_size), m_last_copy);
    }

    void* get_Private() const noexcept { return m_facts->private_pointer.get(); }
    void set_Private(void* private_pointer) noexcept { m_facts->private_pointer.set(private_pointer); }

    /// Changed by the pool: BufferPool::set_queue.
    BUFFER_QUEUE_TYPE get_Queue() const noexcept { return m_facts->queue.get(); }
    /// Changed by the pool. Who reads `filled` sees the pixels, the timestamp and the frame id.
    FillState get_FillState() const noexcept { return m_facts->fill_state.get(); }

private:
    friend class BufferPool;

    void query_geometry(uint64_t size);

    const StreamModule& m_stream;
    const BufferFactsStore::Borrowed m_facts;
    uint64_t m_copy_size;
    platform::LastCopy m_last_copy;
    AlignedMemory m_own_memory;
};

} // namespace zvgentl
