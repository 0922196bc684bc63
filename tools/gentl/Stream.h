#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "GenTL/GenTL.h"

#include "gentl/System.h"

namespace zvgentl::tool {

/// What a filled buffer holds. The memory belongs to the buffer: it is valid until the buffer is queued
/// again.
struct Frame {
    const std::uint8_t* data{nullptr};
    std::size_t size{0}; // bytes at data
    std::size_t width{0};
    std::size_t height{0};
    std::size_t row_padding{0}; // bytes behind each row
    std::uint64_t pixel_format{0};
    std::uint64_t pixel_format_namespace{0};
    std::uint64_t id{0};
    std::uint64_t timestamp{0}; // in ticks of the device
    bool is_incomplete{false};  // by what the producer says; false when it does not say
};

/// A data stream, open while the object lives; closing stops it and takes its buffers back.
class Stream {
public:
    Stream(const Device& device, const std::string& id);
    ~Stream();
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    const Producer& producer() const noexcept { return m_producer; }
    GenTL::DS_HANDLE handle() const noexcept { return m_handle; }

    /// A number of DSGetInfo; throws Error when the stream does not have it.
    std::uint64_t number(GenTL::STREAM_INFO_CMD command) const;

    /// Lets the stream allocate one buffer, which is not queued.
    GenTL::BUFFER_HANDLE add_buffer(std::size_t size) const;
    /// Lets the stream allocate `count` buffers of `size` bytes and queues them all.
    void add_buffers(std::size_t count, std::size_t size);
    void queue(GenTL::BUFFER_HANDLE buffer) const;
    Frame frame(GenTL::BUFFER_HANDLE buffer) const;

    /// Starts acquisition until stopped.
    void start();
    void stop();

private:
    std::uint64_t buffer_number(GenTL::BUFFER_HANDLE buffer, GenTL::BUFFER_INFO_CMD command) const;
    const void* buffer_base(GenTL::BUFFER_HANDLE buffer) const;
    void release_buffers() const noexcept;

    const Producer& m_producer;
    GenTL::DS_HANDLE m_handle{nullptr};
    bool m_running{false};
};

/// The stream's notice of filled buffers, registered while the object lives.
class NewBufferEvent {
public:
    explicit NewBufferEvent(const Stream& stream);
    ~NewBufferEvent();
    NewBufferEvent(const NewBufferEvent&) = delete;
    NewBufferEvent& operator=(const NewBufferEvent&) = delete;

    /// The next filled buffer in order of arrival, or nothing when `timeout` passed without one. Throws Error
    /// with GC_ERR_ABORT when kill() was called.
    std::optional<GenTL::BUFFER_HANDLE> wait(std::chrono::milliseconds timeout) const;

    /// Ends a present or the next wait(). May be called from any thread.
    void kill() const noexcept;

private:
    const Stream& m_stream;
    GenTL::EVENT_HANDLE m_handle{nullptr};
};

} // namespace zvgentl::tool
