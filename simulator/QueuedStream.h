#pragma once

#include <list>
#include <map>
#include <new>

#include "zvgr/ZVGRLib.h"

#include "platform/unloading.h"
#include "simulator/Stream.h"

namespace zvsim {

/// A stream that fills announced buffers in the order in which they were queued. A buffer handle is the
/// stream's handle in its upper half and a number that is never used again in its lower one.
class QueuedStream final : public Stream {
public:
    using Stream::Stream;

    static uint32_t stream_of(uint64_t buffer) { return static_cast<uint32_t>(buffer >> 32U); }

    void set_callback(ZvStreamBufferCallback callback, void* context);

    /// Takes the consumer's memory; the new buffer's handle, or 0 when none are left.
    uint64_t announce(void* memory, uint64_t size);
    /// Allocates the memory too; 0 also when there is none.
    uint64_t allocate_and_announce(uint64_t size);
    /// Forgets a buffer. Releases the lock until the stream's thread no longer writes into it.
    uint32_t revoke(Lock& lock, uint64_t buffer);
    /// Moves a buffer to the back of a queue. A frame that is being drawn into it is lost; for the output
    /// queue, whose buffers people read, gives the lock up until that is over.
    uint32_t move_to(Lock& lock, uint64_t buffer, uint32_t queue);
    uint32_t info(uint64_t buffer, uint32_t command, uint64_t& value) const;

private:
    struct FreeMemory {
        void operator()(unsigned char* memory) const;
    };
    using Memory = std::unique_ptr<unsigned char, FreeMemory>;
    static Memory allocate(uint64_t size);

    struct Buffer;
    using Queue = std::list<Buffer>; // buffers move by splicing: nothing is allocated for a frame
    struct Buffer {
        uint64_t handle;
        unsigned char* memory;
        uint64_t size;
        /// Null when the memory is the consumer's.
        Memory own_memory;
        /// Where it is.
        Queue* queue;
        uint64_t timestamp;
        uint64_t frame_id;
    };

    bool has_room() const override { return !m_input.empty(); }
    bool deliver(Lock& lock, Acquisition& acquisition, const Frame& frame, const FrameFate& fate) override;
    void report_end(Lock& lock) override;

    uint64_t add(unsigned char* memory, uint64_t size, Memory own_memory);
    void move(Queue::iterator buffer, Queue& queue, Queue::const_iterator place);
    void wait_until_drawn(Lock& lock, uint64_t buffer);
    void call_back(Lock& lock, uint64_t buffer);

    Queue m_unqueued;
    Queue m_input;
    /// The buffer that the thread writes into, unless it has been moved or revoked meanwhile.
    Queue m_drawing;
    Queue m_output;
    std::map<uint64_t, Queue::iterator> m_buffers;
    uint32_t m_announced{0};
    /// The buffer that the thread writes into.
    uint64_t m_drawn_into{0};
    ZvStreamBufferCallback m_callback{nullptr};
    void* m_context{nullptr};
    /// Where the callback is.
    platform::LoadedModule m_receiver;
};

} // namespace zvsim
