#include "gentl/Stream.h"

#include <algorithm>

#include "gentl/Error.h"

namespace zvgentl::tool {

using namespace GenTL;

Stream::Stream(const Device& device, const std::string& id) : m_producer(device.producer())
{
    m_producer.check(m_producer.functions().DevOpenDataStream(device.handle(), id.c_str(), &m_handle),
                     "DevOpenDataStream");
}

Stream::~Stream()
{
    const Functions& functions = m_producer.functions();
    if (m_running)
        functions.DSStopAcquisition(m_handle, ACQ_STOP_FLAGS_DEFAULT);
    release_buffers();
    functions.DSClose(m_handle);
}

std::uint64_t Stream::number(STREAM_INFO_CMD command) const
{
    return read_number(m_producer, "DSGetInfo", [&](INFO_DATATYPE* type, void* buffer, std::size_t* size) {
        return m_producer.functions().DSGetInfo(m_handle, command, type, buffer, size);
    });
}

BUFFER_HANDLE Stream::add_buffer(std::size_t size) const
{
    BUFFER_HANDLE buffer = nullptr;
    m_producer.check(m_producer.functions().DSAllocAndAnnounceBuffer(m_handle, size, nullptr, &buffer),
                     "DSAllocAndAnnounceBuffer");
    return buffer;
}

void Stream::add_buffers(std::size_t count, std::size_t size)
{
    for (std::size_t i = 0; i < count; ++i)
        queue(add_buffer(size));
}

void Stream::queue(BUFFER_HANDLE buffer) const
{
    m_producer.check(m_producer.functions().DSQueueBuffer(m_handle, buffer), "DSQueueBuffer");
}

Frame Stream::frame(BUFFER_HANDLE buffer) const
{
    Frame frame;
    const auto offset = static_cast<std::size_t>(buffer_number(buffer, BUFFER_INFO_IMAGEOFFSET));
    const auto filled = static_cast<std::size_t>(buffer_number(buffer, BUFFER_INFO_SIZE_FILLED));
    frame.data = static_cast<const std::uint8_t*>(buffer_base(buffer)) + std::min(offset, filled);
    frame.size = filled - std::min(offset, filled);
    frame.width = buffer_number(buffer, BUFFER_INFO_WIDTH);
    frame.height = buffer_number(buffer, BUFFER_INFO_HEIGHT);
    frame.row_padding = buffer_number(buffer, BUFFER_INFO_XPADDING);
    frame.pixel_format = buffer_number(buffer, BUFFER_INFO_PIXELFORMAT);
    frame.pixel_format_namespace = buffer_number(buffer, BUFFER_INFO_PIXELFORMAT_NAMESPACE);
    frame.id = buffer_number(buffer, BUFFER_INFO_FRAMEID);
    frame.timestamp = buffer_number(buffer, BUFFER_INFO_TIMESTAMP);
    const auto incomplete =
        find_number(m_producer, "DSGetBufferInfo", [&](INFO_DATATYPE* type, void* value, std::size_t* size) {
            return m_producer.functions().DSGetBufferInfo(m_handle, buffer, BUFFER_INFO_IS_INCOMPLETE, type,
                                                          value, size);
        });
    frame.is_incomplete = incomplete.value_or(0) != 0;
    return frame;
}

void Stream::start()
{
    m_producer.check(
        m_producer.functions().DSStartAcquisition(m_handle, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE),
        "DSStartAcquisition");
    m_running = true;
}

void Stream::stop()
{
    m_running = false;
    m_producer.check(m_producer.functions().DSStopAcquisition(m_handle, ACQ_STOP_FLAGS_DEFAULT),
                     "DSStopAcquisition");
}

std::uint64_t Stream::buffer_number(BUFFER_HANDLE buffer, BUFFER_INFO_CMD command) const
{
    return read_number(
        m_producer, "DSGetBufferInfo", [&](INFO_DATATYPE* type, void* value, std::size_t* size) {
            return m_producer.functions().DSGetBufferInfo(m_handle, buffer, command, type, value, size);
        });
}

const void* Stream::buffer_base(BUFFER_HANDLE buffer) const
{
    return read_pointer(m_producer, "DSGetBufferInfo",
                        [&](INFO_DATATYPE* type, void* value, std::size_t* size) {
                            return m_producer.functions().DSGetBufferInfo(m_handle, buffer, BUFFER_INFO_BASE,
                                                                          type, value, size);
                        });
}

void Stream::release_buffers() const noexcept
{
    const Functions& functions = m_producer.functions();
    functions.DSFlushQueue(m_handle, ACQ_QUEUE_ALL_DISCARD);
    BUFFER_HANDLE buffer = nullptr;
    while (functions.DSGetBufferID(m_handle, 0, &buffer) == GC_ERR_SUCCESS &&
           functions.DSRevokeBuffer(m_handle, buffer, nullptr, nullptr) == GC_ERR_SUCCESS) {
    }
}

NewBufferEvent::NewBufferEvent(const Stream& stream) : m_stream(stream)
{
    m_stream.producer().check(
        m_stream.producer().functions().GCRegisterEvent(m_stream.handle(), EVENT_NEW_BUFFER, &m_handle),
        "GCRegisterEvent");
}

NewBufferEvent::~NewBufferEvent()
{
    m_stream.producer().functions().GCUnregisterEvent(m_stream.handle(), EVENT_NEW_BUFFER);
}

std::optional<BUFFER_HANDLE> NewBufferEvent::wait(std::chrono::milliseconds timeout) const
{
    EVENT_NEW_BUFFER_DATA data{};
    std::size_t size = sizeof data;
    const auto allowed = static_cast<std::uint64_t>(timeout.count());
    const GC_ERROR code = m_stream.producer().functions().EventGetData(m_handle, &data, &size, allowed);
    if (code == GC_ERR_TIMEOUT)
        return std::nullopt;
    m_stream.producer().check(code, "EventGetData");
    return data.BufferHandle;
}

void NewBufferEvent::kill() const noexcept { m_stream.producer().functions().EventKill(m_handle); }

} // namespace zvgentl::tool
