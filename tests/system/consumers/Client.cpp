#include "system/consumers/Client.h"

#include <stdexcept>

#include "zvgr/FrameStamp.h"

#include "gentl/Description.h"

namespace zvclient {

using namespace GenTL;
namespace tool = zvgentl::tool;

void need(GC_ERROR code, const char* call) { need_code(GC_ERR_SUCCESS, code, call); }

void need_code(GC_ERROR wanted, GC_ERROR code, const char* call)
{
    need_true(code == wanted, std::string(call) + " answered " + std::to_string(code) + " instead of " +
                                  std::to_string(wanted));
}

void need_true(bool condition, const std::string& otherwise)
{
    if (!condition)
        throw std::runtime_error(otherwise);
}

void ExactPort::read(std::uint64_t address, void* data, std::size_t size) const
{
    std::size_t moved = size;
    need(m_gentl.GCReadPort(m_handle, address, data, &moved), "GCReadPort");
    need_true(moved == size, "a read of " + std::to_string(size) + " bytes moved " + std::to_string(moved));
}

void ExactPort::write(std::uint64_t address, const void* data, std::size_t size) const
{
    std::size_t moved = size;
    need(m_gentl.GCWritePort(m_handle, address, data, &moved), "GCWritePort");
    need_true(moved == size, "a write of " + std::to_string(size) + " bytes moved " + std::to_string(moved));
}

std::string description_of(const ExactPort& port, const std::string& url)
{
    const tool::PortUrl place = tool::parse_port_url(url);
    std::string data(place.length, '\0');
    port.read(place.address, data.data(), data.size());
    return tool::unpack({place.file_name, data});
}

void FrameCheck::expect_newer(const void* frame, std::size_t size)
{
    const auto stamp = zvgr::read_stamp(frame, size);
    need_true(stamp.has_value(), "a frame without a stamp");
    need_true(stamp->checksum_ok, "frame " + std::to_string(stamp->counter) + " is damaged");
    need_true(m_frames == 0 || stamp->counter > m_last,
              "frame " + std::to_string(stamp->counter) + " came after frame " + std::to_string(m_last));
    m_last = stamp->counter;
    ++m_frames;
}

BUFFER_HANDLE Client::announce(std::vector<unsigned char>& memory, void* user) const
{
    BUFFER_HANDLE buffer = nullptr;
    need(gentl.DSAnnounceBuffer(m_stream, memory.data(), memory.size(), user, &buffer), "DSAnnounceBuffer");
    return buffer;
}

void Client::queue(BUFFER_HANDLE buffer) const
{
    need(gentl.DSQueueBuffer(m_stream, buffer), "DSQueueBuffer");
}

EVENT_HANDLE Client::register_event() const
{
    EVENT_HANDLE event = nullptr;
    need(gentl.GCRegisterEvent(m_stream, EVENT_NEW_BUFFER, &event), "GCRegisterEvent");
    return event;
}

void Client::start() const
{
    need(gentl.DSStartAcquisition(m_stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE), "DSStartAcquisition");
}

void Client::stop() const
{
    need(gentl.DSStopAcquisition(m_stream, ACQ_STOP_FLAGS_DEFAULT), "DSStopAcquisition");
}

void Client::unregister_event() const
{
    need(gentl.GCUnregisterEvent(m_stream, EVENT_NEW_BUFFER), "GCUnregisterEvent");
}

void Client::flush(ACQ_QUEUE_TYPE operation) const
{
    need(gentl.DSFlushQueue(m_stream, operation), "DSFlushQueue");
}

int Client::revoke_the_first_until_none_is_left() const
{
    int revoked = 0;
    BUFFER_HANDLE buffer = nullptr;
    for (; gentl.DSGetBufferID(m_stream, 0, &buffer) == GC_ERR_SUCCESS; ++revoked)
        need(gentl.DSRevokeBuffer(m_stream, buffer, nullptr, nullptr), "DSRevokeBuffer");
    return revoked;
}

void Client::close() const
{
    need(gentl.DSClose(m_stream), "DSClose");
    need(gentl.DevClose(m_device), "DevClose");
    need(gentl.IFClose(m_interface), "IFClose");
    need(gentl.TLClose(m_system), "TLClose");
}

} // namespace zvclient
