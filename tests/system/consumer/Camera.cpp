#include "system/consumer/Camera.h"

#include <array>
#include <chrono>

namespace zvsystem {

using namespace GenTL;

namespace {

constexpr uint64_t scan_timeout_ms = 1000;
constexpr std::chrono::seconds longest_wait{60};

/// The value of a typed query; `which` are its arguments before the outputs.
template <class Query, class... Which>
uint64_t number_of(const char* function, const Query& query, Which... which)
{
    uint64_t value = 0; // little-endian: narrower types fill the low bytes
    size_t size = sizeof value;
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    check(query(which..., &type, &value, &size), function);
    return value;
}

} // namespace

System::System(const Functions& gentl) : m_gentl(gentl) { check(gentl.TLOpen(&m_handle), "TLOpen"); }

System::~System()
{
    if (m_handle != nullptr)
        m_gentl.TLClose(m_handle);
}

IF_HANDLE System::open_interface(const char* id) const
{
    IF_HANDLE iface = nullptr;
    check(m_gentl.TLUpdateInterfaceList(m_handle, nullptr, scan_timeout_ms), "TLUpdateInterfaceList");
    check(m_gentl.TLOpenInterface(m_handle, id, &iface), "TLOpenInterface");
    check(m_gentl.IFUpdateDeviceList(iface, nullptr, scan_timeout_ms), "IFUpdateDeviceList");
    return iface;
}

Camera::Camera(const Functions& gentl, IF_HANDLE iface, const char* device_id) : m_gentl(gentl)
{
    open_device(iface, device_id);
    open_stream();
}

Camera::~Camera()
{
    if (m_device != nullptr)
        m_gentl.DevClose(m_device);
}

void Camera::open_device(IF_HANDLE iface, const char* device_id)
{
    check(m_gentl.IFOpenDevice(iface, device_id, DEVICE_ACCESS_CONTROL, &m_device), "IFOpenDevice");
}

void Camera::close_device()
{
    const DEV_HANDLE device = m_device;
    abandon();
    m_buffers.clear();
    check(m_gentl.DevClose(device), "DevClose");
    m_memory.clear();
}

void Camera::open_stream()
{
    std::array<char, 64> id{};
    size_t size = id.size();
    check(m_gentl.DevGetDataStreamID(m_device, 0, id.data(), &size), "DevGetDataStreamID");
    check(m_gentl.DevOpenDataStream(m_device, id.data(), &m_stream), "DevOpenDataStream");
    check(m_gentl.GCRegisterEvent(m_stream, EVENT_NEW_BUFFER, &m_event), "GCRegisterEvent");
}

void Camera::close_stream()
{
    check(m_gentl.DSClose(m_stream), "DSClose");
    m_stream = nullptr;
    m_event = nullptr;
    m_buffers.clear();
    m_memory.clear();
}

void Camera::abandon() noexcept
{
    m_device = nullptr;
    m_stream = nullptr;
    m_event = nullptr;
}

void Camera::announce(size_t count, Memory memory, size_t extra)
{
    const auto size = static_cast<size_t>(stream_number(STREAM_INFO_PAYLOAD_SIZE)) + extra;
    for (size_t i = 0; i < count; ++i) {
        BUFFER_HANDLE buffer = nullptr;
        if (memory == Memory::of_producer) {
            check(m_gentl.DSAllocAndAnnounceBuffer(m_stream, size, this, &buffer),
                  "DSAllocAndAnnounceBuffer");
        } else {
            m_memory.push_back(std::make_unique<unsigned char[]>(size));
            check(m_gentl.DSAnnounceBuffer(m_stream, m_memory.back().get(), size, this, &buffer),
                  "DSAnnounceBuffer");
        }
        m_buffers.push_back(buffer);
    }
}

void Camera::revoke_all()
{
    for (const BUFFER_HANDLE buffer : m_buffers)
        check(m_gentl.DSRevokeBuffer(m_stream, buffer, nullptr, nullptr), "DSRevokeBuffer");
    m_buffers.clear();
    m_memory.clear();
}

GC_ERROR Camera::get(Filled& filled, uint64_t timeout_ms) const
{
    EVENT_NEW_BUFFER_DATA data{};
    size_t size = sizeof data;
    const GC_ERROR code = m_gentl.EventGetData(m_event, &data, &size, timeout_ms);
    if (code == GC_ERR_SUCCESS)
        filled = {data.BufferHandle, data.pUserPointer};
    return code;
}

Filled Camera::next() const
{
    const auto end = std::chrono::steady_clock::now() + longest_wait;
    Filled filled{};
    for (;;) {
        const GC_ERROR code = get(filled, 1000);
        if (code == GC_ERR_SUCCESS)
            return filled;
        // The signal of an entry that was flushed or already taken ends a wait before its time.
        if (code != GC_ERR_TIMEOUT || std::chrono::steady_clock::now() > end)
            check(code, "EventGetData");
    }
}

uint64_t Camera::stream_number(STREAM_INFO_CMD command) const
{
    return number_of("DSGetInfo", m_gentl.DSGetInfo, m_stream, command);
}

uint64_t Camera::event_number(EVENT_INFO_CMD command) const
{
    return number_of("EventGetInfo", m_gentl.EventGetInfo, m_event, command);
}

uint64_t Camera::buffer_number(BUFFER_HANDLE buffer, BUFFER_INFO_CMD command) const
{
    return number_of("DSGetBufferInfo", m_gentl.DSGetBufferInfo, m_stream, buffer, command);
}

const void* Camera::memory(BUFFER_HANDLE buffer) const
{
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the query hands the address out as a number
    return reinterpret_cast<const void*>(static_cast<uintptr_t>(buffer_number(buffer, BUFFER_INFO_BASE)));
}

} // namespace zvsystem
