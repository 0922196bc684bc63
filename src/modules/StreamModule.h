#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "zvgr/ZVGRLib.h"

#include "modules/BufferPool.h"
#include "modules/EventList.h"
#include "modules/LogThrottle.h"
#include "modules/PortModule.h"

namespace zvgentl {

class CameraModule;

/// How frames reach the consumer's buffers.
enum class StreamMode : uint32_t {
    cyclic = 0, // the library fills a ring of its own; each frame is copied once
    queued = 1, // the library fills the announced buffers; nothing is copied
};

const char* name_of(StreamMode mode) noexcept;

/// How revoking a buffer ended. The last is never reached: a buffer may be revoked in any queue.
enum class RevokeOutcome { revoked = 0, not_in_pool = 1, in_use = 2 };

/// The flush operation beyond those of the standard: drop every entry of the new-buffer event.
constexpr int32_t flush_all_events = 1000;

/// A flush operation's name as log lines print it.
std::string queue_operation_name(int32_t operation);

/// The data stream of one camera: the announced buffers, the registered events and the delivery of frames.
/// Made and owned by its camera, closed until `connect`, and open to be connected again after `close`.
///
/// Consumer threads call it; the library's thread enters the two callbacks. One short lock guards pool,
/// events and their queues; it is a leaf, never held over a call of the grabber library, a log line, a copy
/// or a wait. Flags and counters are atomic and order nothing. `m_mutex` lets one cyclic frame at a time be
/// delivered: it is held over the library's queries for that frame, and no function that a consumer calls
/// takes it.
class StreamModule final : public PortModule {
public:
    StreamModule(CameraModule* camera, std::string id);
    ~StreamModule();

    std::string getId() const override { return m_id; }
    CameraModule* get_Camera() const noexcept { return m_camera; }
    /// Whether the stream's device is in the list of an interface, and so in the module tree. Its interface
    /// says so.
    bool is_Listed() const noexcept { return m_listed.load(std::memory_order_acquire); }
    void set_Listed(bool listed) noexcept { m_listed.store(listed, std::memory_order_release); }
    uint32_t get_Handle() const noexcept { return m_stream_handle.load(std::memory_order_relaxed); }
    bool is_Open() const noexcept { return get_Handle() != ZV_NO_HANDLE; }

    /// Takes over a library stream and connects its frame callback. Failures are logged: the stream is then
    /// open but never delivers.
    void connect(uint32_t stream_handle, StreamMode mode);
    /// Ends every wait, destroys events and buffers and deletes the library stream.
    void close();
    /// Forgets the library stream, for an unload at which the library is not called any more.
    void abandon() noexcept { m_stream_handle.store(ZV_NO_HANDLE, std::memory_order_relaxed); }

    // Buffers: StreamModule_buffers.cpp
    BufferPool& get_Buffers() noexcept { return m_pool; }
    const BufferPool& get_Buffers() const noexcept { return m_pool; }
    /// Announces memory of the consumer, or memory that library or buffer allocate when `memory` is null. The
    /// same memory and size again give the same buffer with the new private pointer. Null on failure.
    BufferModule* new_buffer(void* memory, uint64_t size, void* private_pointer);
    /// Puts a buffer into the input pool; false when it is not, or no longer, the buffer of these facts.
    bool queue_buffer(const void* handle, BufferFacts& facts);
    /// `buffer` is compared, never read.
    RevokeOutcome revoke(const void* buffer, uint64_t grabber_handle);
    /// Moves buffers between queues by an ACQ_QUEUE_* operation; false for an unsupported one met with a
    /// buffer.
    bool buffer_operation(int32_t operation);

    // Events
    ShortLock& get_Lock() noexcept { return m_lock; }
    EventList& get_Events() noexcept { return m_events; }
    const EventList& get_Events() const noexcept { return m_events; }
    bool is_SignaledEventMode() const noexcept { return m_signaled_event_mode; }
    /// Whether a function that is called per frame should log now.
    bool is_log_due(LogThrottle::Function function, LogThrottle::Mark mark) noexcept
    {
        return m_throttle.is_due(function, is_Acquiring() ? Acquisition::running : Acquisition::idle, mark);
    }

    // Acquisition: StreamModule_delivery.cpp
    /// Starts the camera for `frames` frames, 0: until stopped. False when the library refuses.
    bool start(uint32_t frames);
    void stop();
    bool is_Acquiring() const noexcept { return m_AcquisitionFlag.load(std::memory_order_relaxed); }
    int64_t get_Delivered() const noexcept
    {
        return m_StreamDeliveredBuffers.load(std::memory_order_relaxed);
    }
    int64_t get_Underruns() const noexcept { return m_underruns.load(std::memory_order_relaxed); }
    /// Cyclic mode: the library has filled a ring frame.
    void buffer_callback(uint32_t stream_handle);
    /// Queued mode: the library has filled a buffer, or ended the acquisition by itself (0).
    void stream_buffer_callback(uint64_t buffer_handle);

    // Queries of the library
    uint64_t get_PayloadSize() const;
    uint64_t get_Alignment() const;
    uint32_t get_BufferAllocMin() const noexcept { return m_buffer_alloc_min; }
    bool is_Grabbing() const;

private:
    bool is_Queued() const noexcept { return m_mode.load(std::memory_order_relaxed) == StreamMode::queued; }
    uint64_t readable_of(uint64_t size) const;
    BufferModule* announce_cyclic(void* memory, uint64_t size, void* private_pointer);
    BufferModule* announce_queued(void* memory, uint64_t size, void* private_pointer);
    void move_to_input(BufferModule& buffer);
    void move_to_output(BufferModule& buffer);
    /// `queue` is the buffer's queue as it was logged; false for an unsupported operation.
    bool apply_operation(int32_t operation, BufferModule& buffer, BUFFER_QUEUE_TYPE queue,
                         EventModule* event);
    void reset_counts();
    void deliver(PinnedBuffer&& buffer);

    const std::string m_id;
    std::atomic<StreamMode> m_mode{StreamMode::queued};
    std::atomic<uint32_t> m_stream_handle{ZV_NO_HANDLE};
    CameraModule* const m_camera;
    std::atomic<bool> m_listed{false};
    std::mutex m_mutex;
    std::atomic<int64_t> m_image_id_supported{0};
    const uint32_t m_payload_size_type;
    const uint32_t m_buffer_alloc_min;
    const bool m_signaled_event_mode;
    std::atomic<bool> m_AcquisitionFlag{false};
    LogThrottle m_throttle;
    // What is changed for every frame has lines of the caches to itself.
    alignas(64) ShortLock m_lock;                     // of pool and events
    std::atomic<int64_t> m_StreamDeliveredBuffers{0}; // changed under the lock
    BufferPool m_pool{m_lock};
    std::atomic<int64_t> m_underruns{0};
    EventList m_events{m_lock};
};

} // namespace zvgentl
