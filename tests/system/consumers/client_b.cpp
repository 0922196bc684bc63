#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "system/consumers/Client.h"

// A consumer that opens every interface and keeps it open; that expects a port to have the name of the port
// in its description, and each write to move every byte; that lets the producer allocate, waits three seconds
// for a frame and asks for everything about a buffer; and that closes the device, not the stream.

namespace {

using namespace GenTL;
using namespace zvclient;

constexpr std::uint64_t patience_ms = 3000;
constexpr int buffer_count = 6;
constexpr int wanted_frames = 25;
constexpr std::size_t room = 512;

struct OpenInterface {
    IF_HANDLE handle{nullptr};
    std::vector<std::string> devices;
};

class ClientB : Client {
public:
    using Client::Client;

    void run()
    {
        open_everything();
        m_interface = m_interfaces.back().handle;
        read_features([this](const ExactPort& port) { return description_of_port(port); });
        configure();
        stream();
        close_from_the_device_on();
    }

private:
    template <class Query>
    static std::string text_in_a_large_buffer(const Query& query, const char* call)
    {
        char text[room] = {};
        std::size_t size = sizeof text;
        need(query(text, &size), call);
        return text;
    }

    void open_everything()
    {
        need(gentl.TLOpen(&m_system), "TLOpen");
        ask_for_system_information();
        need(gentl.TLUpdateInterfaceList(m_system, nullptr, 1000), "TLUpdateInterfaceList");
        std::uint32_t count = 0;
        need(gentl.TLGetNumInterfaces(m_system, &count), "TLGetNumInterfaces");
        for (std::uint32_t index = 0; index < count; ++index)
            open_interface(text_in_a_large_buffer(
                [&](char* id, std::size_t* size) {
                    return gentl.TLGetInterfaceID(m_system, index, id, size);
                },
                "TLGetInterfaceID"));
        need_true(m_interfaces.size() == 2, "there are not two interfaces");
        const OpenInterface& last = m_interfaces.back();
        need(gentl.IFOpenDevice(last.handle, last.devices.front().c_str(), DEVICE_ACCESS_CONTROL, &m_device),
             "IFOpenDevice");
        need(gentl.DevGetPort(m_device, &m_remote), "DevGetPort");
        std::uint32_t streams = 0;
        need(gentl.DevGetNumDataStreams(m_device, &streams), "DevGetNumDataStreams");
        need_true(streams == 1, "there is not one stream");
        const std::string stream = text_in_a_large_buffer(
            [&](char* id, std::size_t* size) { return gentl.DevGetDataStreamID(m_device, 0, id, size); },
            "DevGetDataStreamID");
        need(gentl.DevOpenDataStream(m_device, stream.c_str(), &m_stream), "DevOpenDataStream");
    }

    void ask_for_system_information() const
    {
        for (const TL_INFO_CMD command : {0, 1, 2, 3, 4, 5, 6, 7, 9, 10}) {
            char text[room] = {};
            std::size_t size = sizeof text;
            INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
            const GC_ERROR code = gentl.TLGetInfo(m_system, command, &type, text, &size);
            // The version numbers are there without a system (GCGetInfo) or not at all.
            need_code(command <= TL_INFO_DISPLAYNAME ? GC_ERR_SUCCESS : GC_ERR_NOT_IMPLEMENTED, code,
                      "TLGetInfo");
        }
    }

    void open_interface(const std::string& id)
    {
        OpenInterface opened;
        need(gentl.TLOpenInterface(m_system, id.c_str(), &opened.handle), "TLOpenInterface");
        need(gentl.IFUpdateDeviceList(opened.handle, nullptr, 1000), "IFUpdateDeviceList");
        std::uint32_t count = 0;
        need(gentl.IFGetNumDevices(opened.handle, &count), "IFGetNumDevices");
        for (std::uint32_t index = 0; index < count; ++index)
            opened.devices.push_back(text_in_a_large_buffer(
                [&](char* text, std::size_t* size) {
                    return gentl.IFGetDeviceID(opened.handle, index, text, size);
                },
                "IFGetDeviceID"));
        m_interfaces.push_back(opened);
    }

    std::string description_of_port(const ExactPort& port) const
    {
        std::uint32_t urls = 0;
        need(gentl.GCGetNumPortURLs(port.handle(), &urls), "GCGetNumPortURLs");
        need_true(urls == 1, "there is not one URL");
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        const std::string url = text_in_a_large_buffer(
            [&](char* text, std::size_t* size) {
                return gentl.GCGetPortURLInfo(port.handle(), 0, URL_INFO_URL, &type, text, size);
            },
            "GCGetPortURLInfo");
        const std::string name = text_in_a_large_buffer(
            [&](char* text, std::size_t* size) {
                return gentl.GCGetPortInfo(port.handle(), PORT_INFO_PORTNAME, &type, text, size);
            },
            "GCGetPortInfo");
        const std::string description = description_of(port, url);
        need_true(description.find("<Port Name=\"" + name + '"') != std::string::npos,
                  "the description of " + url + " has no port " + name);
        return description;
    }

    void configure()
    {
        m_features->set("Height", "48");
        m_features->set("Width", "200");
        m_features->set("Gain", "0");
        m_features->set("DeviceUserID", "client B");
        m_payload = static_cast<std::size_t>(m_features->integer("PayloadSize"));
    }

    template <class Type>
    std::optional<Type> buffer_info(BUFFER_HANDLE buffer, BUFFER_INFO_CMD command) const
    {
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        Type value{};
        std::size_t size = sizeof value;
        const GC_ERROR code = gentl.DSGetBufferInfo(m_stream, buffer, command, &type, &value, &size);
        if (code == GC_ERR_NOT_IMPLEMENTED)
            return std::nullopt;
        need(code, "DSGetBufferInfo");
        need_true(size == sizeof value,
                  "buffer information " + std::to_string(command) + " of " + std::to_string(size) + " bytes");
        return value;
    }

    void look_at(BUFFER_HANDLE buffer)
    {
        need_true(buffer_info<std::size_t>(buffer, BUFFER_INFO_PAYLOADTYPE) == PAYLOAD_TYPE_IMAGE,
                  "payload type");
        need_true(buffer_info<bool8_t>(buffer, BUFFER_INFO_IS_INCOMPLETE) == 0, "an incomplete frame");
        need_true(buffer_info<bool8_t>(buffer, BUFFER_INFO_IMAGEPRESENT) == 1, "no image");
        need_true(buffer_info<std::uint64_t>(buffer, BUFFER_INFO_PIXELFORMAT) == 0x01080001, "pixel format");
        const std::vector<std::size_t> sizes{200, 48, 0, 0, 0, 0};
        for (std::size_t at = 0; at < sizes.size(); ++at) {
            const auto command = static_cast<BUFFER_INFO_CMD>(BUFFER_INFO_WIDTH + static_cast<int>(at));
            need_true(buffer_info<std::size_t>(buffer, command) == sizes[at],
                      "buffer information " + std::to_string(command));
        }
        need_true(buffer_info<std::uint64_t>(buffer, BUFFER_INFO_FRAMEID).has_value(), "no frame id");
        need_true(buffer_info<std::int32_t>(buffer, BUFFER_INFO_PIXEL_ENDIANNESS) == PIXELENDIANNESS_LITTLE,
                  "endianness");
        need_true(buffer_info<std::size_t>(buffer, BUFFER_INFO_SIZE_FILLED) == m_payload, "filled size");
        need_true(buffer_info<std::size_t>(buffer, BUFFER_INFO_SIZE) == m_payload, "size");
        need_true(buffer_info<std::size_t>(buffer, BUFFER_INFO_IMAGEOFFSET) == 0U, "image offset");
        void* const base = buffer_info<void*>(buffer, BUFFER_INFO_BASE).value();
        // Nanoseconds are not offered: they follow from the ticks of 25 MHz.
        need_true(!buffer_info<std::uint64_t>(buffer, 28).has_value(), "buffer information 28");
        const std::uint64_t ticks = buffer_info<std::uint64_t>(buffer, BUFFER_INFO_TIMESTAMP).value();
        const std::uint64_t nanoseconds = ticks * 40;
        need_true(nanoseconds > m_last_time, "time goes backwards");
        m_last_time = nanoseconds;
        m_check.expect_newer(base, m_payload);
    }

    void stream()
    {
        for (int count = 0; count < buffer_count; ++count) {
            BUFFER_HANDLE buffer = nullptr;
            need(gentl.DSAllocAndAnnounceBuffer(m_stream, m_payload, nullptr, &buffer),
                 "DSAllocAndAnnounceBuffer");
            queue(buffer);
        }
        const EVENT_HANDLE event = register_event();
        start();
        m_features->execute("AcquisitionStart", std::chrono::seconds{1});
        receive(wanted_frames, event, patience_ms,
                [this](const EVENT_NEW_BUFFER_DATA& data) { look_at(data.BufferHandle); });
        m_features->execute("AcquisitionStop", std::chrono::seconds{1});
        stop();
        unregister_event();
        flush(ACQ_QUEUE_ALL_DISCARD);
        const int revoked = revoke_the_first_until_none_is_left();
        need_true(revoked == buffer_count, "revoked " + std::to_string(revoked) + " buffers");
    }

    void close_from_the_device_on()
    {
        need(gentl.DevClose(m_device), "DevClose");
        // The stream went with its device.
        need_true(gentl.DSClose(m_stream) != GC_ERR_SUCCESS, "a stream outlived its device");
        for (const OpenInterface& opened : m_interfaces)
            need(gentl.IFClose(opened.handle), "IFClose");
        need(gentl.TLClose(m_system), "TLClose");
    }

    std::vector<OpenInterface> m_interfaces;
    std::uint64_t m_last_time{0};
    FrameCheck m_check;
};

} // namespace

void zvclient::run_client_b(const Functions& gentl) { ClientB{gentl}.run(); }
