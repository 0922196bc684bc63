#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "GenTL/GenTL.h"

#include "system/consumer/Functions.h"

namespace zvsystem {

/// The system module, with the interfaces that were opened below it.
class System {
public:
    explicit System(const Functions& gentl);
    /// Closes the system, and with it every interface.
    ~System();
    System(const System&) = delete;
    System& operator=(const System&) = delete;

    /// Opens an interface and looks for its devices.
    GenTL::IF_HANDLE open_interface(const char* id) const;

    GenTL::TL_HANDLE handle() const noexcept { return m_handle; }
    /// Nothing will be closed: the producer ends first.
    void abandon() noexcept { m_handle = nullptr; }

private:
    const Functions& m_gentl;
    GenTL::TL_HANDLE m_handle{nullptr};
};

/// What the new-buffer event delivers.
struct Filled {
    GenTL::BUFFER_HANDLE buffer;
    /// The private pointer given when the buffer was announced.
    void* user;
};

/// Who provides the memory of the buffers.
enum class Memory { of_consumer, of_producer };

/// A device with its data stream, both open, and a new-buffer event. Failures throw std::runtime_error.
class Camera {
public:
    Camera(const Functions& gentl, GenTL::IF_HANDLE iface, const char* device_id);
    /// Closes the device, and with it the stream.
    ~Camera();
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    GenTL::DEV_HANDLE device() const noexcept { return m_device; }
    GenTL::DS_HANDLE stream() const noexcept { return m_stream; }
    GenTL::EVENT_HANDLE event() const noexcept { return m_event; }
    const std::vector<GenTL::BUFFER_HANDLE>& buffers() const noexcept { return m_buffers; }

    /// Closing and opening again, step by step. Closing the stream takes its event and buffers along.
    void open_device(GenTL::IF_HANDLE iface, const char* device_id);
    void close_device();
    void open_stream();
    void close_stream();
    /// Nothing will be closed: a module above is closed instead, before this object is destroyed and the
    /// memory of its buffers with it.
    void abandon() noexcept;

    /// Announces buffers of the payload size and `extra` bytes, with a private pointer that is not null.
    void announce(size_t count, Memory memory = Memory::of_producer, size_t extra = 0);
    void revoke_all();

    void queue(GenTL::BUFFER_HANDLE buffer) const
    {
        check(m_gentl.DSQueueBuffer(m_stream, buffer), "DSQueueBuffer");
    }
    void queue_all() const
    {
        for (const GenTL::BUFFER_HANDLE buffer : m_buffers)
            queue(buffer);
    }
    void flush(GenTL::ACQ_QUEUE_TYPE operation) const
    {
        check(m_gentl.DSFlushQueue(m_stream, operation), "DSFlushQueue");
    }
    /// Starts with what is in the input queue. A frame that arrives before the call has returned may be lost,
    /// and its buffer with it; see start_and_queue().
    void start(uint64_t frames = GENTL_INFINITE) const
    {
        check(m_gentl.DSStartAcquisition(m_stream, GenTL::ACQ_START_FLAGS_DEFAULT, frames),
              "DSStartAcquisition");
    }
    /// Starts, then queues all buffers: nothing can arrive too early.
    void start_and_queue(uint64_t frames = GENTL_INFINITE) const
    {
        start(frames);
        queue_all();
    }
    void stop() const
    {
        check(m_gentl.DSStopAcquisition(m_stream, GenTL::ACQ_STOP_FLAGS_DEFAULT), "DSStopAcquisition");
    }

    /// The next filled buffer; throws when none comes in a time that is long enough for any machine.
    Filled next() const;
    /// One call of EventGetData.
    GenTL::GC_ERROR get(Filled& filled, uint64_t timeout_ms) const;

    uint64_t stream_number(GenTL::STREAM_INFO_CMD command) const;
    uint64_t event_number(GenTL::EVENT_INFO_CMD command) const;
    uint64_t buffer_number(GenTL::BUFFER_HANDLE buffer, GenTL::BUFFER_INFO_CMD command) const;
    const void* memory(GenTL::BUFFER_HANDLE buffer) const;

private:
    const Functions& m_gentl;
    GenTL::DEV_HANDLE m_device{nullptr};
    GenTL::DS_HANDLE m_stream{nullptr};
    GenTL::EVENT_HANDLE m_event{nullptr};
    std::vector<GenTL::BUFFER_HANDLE> m_buffers;
    std::vector<std::unique_ptr<unsigned char[]>> m_memory; // of the consumer's own buffers
};

} // namespace zvsystem
