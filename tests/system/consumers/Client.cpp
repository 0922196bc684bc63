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

std::string Client::text(const char* call, const TextQuery& query) const
{
    char text[512] = {};
    std::size_t size = sizeof text;
    need(query(text, &size), call);
    return text;
}

std::string Client::text_after_its_size(const char* call, const TextQuery& query, std::size_t held)
{
    std::size_t size = held;
    need(query(nullptr, &size), call);
    std::string text(size, '?');
    need(query(text.data(), &size), call);
    need_true(size == text.size() && text.back() == '\0', std::string(call) + " gave another size");
    text.pop_back();
    return text;
}

std::string Client::describe(const ExactPort& port) const
{
    return description_of(port,
                          info("GCGetPortURLInfo", gentl.GCGetPortURLInfo, port.handle(), 0U, URL_INFO_URL));
}

void Client::open_system(std::uint64_t timeout_ms)
{
    bool8_t has_changed = 0;
    need(gentl.TLOpen(&m_system), "TLOpen");
    need(gentl.TLUpdateInterfaceList(m_system, &has_changed, timeout_ms), "TLUpdateInterfaceList");
}

void Client::open_interface(const std::string& id, std::uint64_t timeout_ms)
{
    bool8_t has_changed = 0;
    need(gentl.TLOpenInterface(m_system, id.c_str(), &m_interface), "TLOpenInterface");
    need(gentl.IFUpdateDeviceList(m_interface, &has_changed, timeout_ms), "IFUpdateDeviceList");
}

void Client::open_device(const std::string& id, DEVICE_ACCESS_FLAGS access)
{
    need(gentl.IFOpenDevice(m_interface, id.c_str(), access, &m_device), "IFOpenDevice");
    need(gentl.DevGetPort(m_device, &m_remote), "DevGetPort");
}

void Client::read_features()
{
    for (const PORT_HANDLE handle : {m_system, m_interface, m_device, m_stream}) {
        const ExactPort port{gentl, handle};
        features_of(describe(port), port)->read_every();
    }
    m_port = std::make_unique<ExactPort>(gentl, m_remote);
    m_features = features_of(describe(*m_port), *m_port);
    m_features->read_every();
}

void Client::take_payload(std::size_t expected)
{
    m_payload = static_cast<std::size_t>(m_features->integer("PayloadSize"));
    need_true(m_payload == expected, "the payload does not fit the new size");
}

std::vector<std::vector<unsigned char>>& Client::make_memory(std::size_t frames)
{
    m_memory.assign(frames, std::vector<unsigned char>(m_payload));
    return m_memory;
}

void Client::receive(int buffers, EVENT_HANDLE event, std::uint64_t timeout_ms, const Look& look) const
{
    for (int received = 0; received < buffers;) {
        EVENT_NEW_BUFFER_DATA data{};
        std::size_t size = sizeof data;
        const GC_ERROR code = gentl.EventGetData(event, &data, &size, timeout_ms);
        if (code == GC_ERR_TIMEOUT)
            continue;
        need(code, "EventGetData");
        look(data);
        queue(data.BufferHandle);
        ++received;
    }
}

int Client::revoke_the_first_until_none_is_left() const
{
    int revoked = 0;
    BUFFER_HANDLE buffer = nullptr;
    for (; gentl.DSGetBufferID(m_stream, 0, &buffer) == GC_ERR_SUCCESS; ++revoked)
        revoke(buffer);
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
