#include <memory>
#include <optional>
#include <string>
#include <utility>
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
        read_features();
        configure();
        stream();
        close_from_the_device_on();
    }

private:
    void open_everything()
    {
        open_system(1000);
        ask_for_system_information();
        for (const std::string& id : interface_ids()) {
            open_interface(id, 1000);
            m_interfaces.push_back({m_interface, device_ids()});
        }
        need_true(m_interfaces.size() == 2, "there are not two interfaces");
        open_device(m_interfaces.back().devices.front(), DEVICE_ACCESS_CONTROL);
        std::uint32_t streams = 0;
        need(gentl.DevGetNumDataStreams(m_device, &streams), "DevGetNumDataStreams");
        need_true(streams == 1, "there is not one stream");
        open_stream(stream_id());
    }

    void ask_for_system_information() const
    {
        for (const TL_INFO_CMD command : {0, 1, 2, 3, 4, 5, 6, 7, 9, 10}) {
            char text[512] = {};
            std::size_t size = sizeof text;
            INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
            const GC_ERROR code = gentl.TLGetInfo(m_system, command, &type, text, &size);
            // The version numbers are there without a system (GCGetInfo) or not at all.
            need_code(command <= TL_INFO_DISPLAYNAME ? GC_ERR_SUCCESS : GC_ERR_NOT_IMPLEMENTED, code,
                      "TLGetInfo");
        }
    }

    std::string describe(const ExactPort& port) const override
    {
        std::uint32_t urls = 0;
        need(gentl.GCGetNumPortURLs(port.handle(), &urls), "GCGetNumPortURLs");
        need_true(urls == 1, "there is not one URL");
        const std::string name =
            info("GCGetPortInfo", gentl.GCGetPortInfo, port.handle(), PORT_INFO_PORTNAME);
        const std::string description = Client::describe(port);
        need_true(description.find("<Port Name=\"" + name + '"') != std::string::npos,
                  "the description has no port " + name);
        return description;
    }

    void configure()
    {
        m_features->set("Height", "48");
        m_features->set("Width", "200");
        m_features->set("Gain", "0");
        m_features->set("DeviceUserID", "client B");
        take_payload(std::size_t{200} * 48);
    }

    /// Nothing if the producer does not implement the query.
    std::optional<std::uint64_t> buffer_info(BUFFER_HANDLE buffer, BUFFER_INFO_CMD command) const
    {
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        std::uint64_t value = 0; // little-endian: narrower types fill the low bytes
        std::size_t size = sizeof value;
        const GC_ERROR code = gentl.DSGetBufferInfo(m_stream, buffer, command, &type, &value, &size);
        if (code == GC_ERR_NOT_IMPLEMENTED)
            return std::nullopt;
        need(code, "DSGetBufferInfo");
        return value;
    }

    void look_at(BUFFER_HANDLE buffer)
    {
        const std::pair<BUFFER_INFO_CMD, std::optional<std::uint64_t>> expectations[] = {
            {BUFFER_INFO_PAYLOADTYPE, PAYLOAD_TYPE_IMAGE},
            {BUFFER_INFO_IS_INCOMPLETE, 0},
            {BUFFER_INFO_IMAGEPRESENT, 1},
            {BUFFER_INFO_PIXELFORMAT, 0x01080001},
            {BUFFER_INFO_PIXEL_ENDIANNESS, PIXELENDIANNESS_LITTLE},
            {BUFFER_INFO_WIDTH, 200},
            {BUFFER_INFO_HEIGHT, 48},
            {BUFFER_INFO_XOFFSET, 0},
            {BUFFER_INFO_YOFFSET, 0},
            {BUFFER_INFO_XPADDING, 0},
            {BUFFER_INFO_YPADDING, 0},
            {BUFFER_INFO_SIZE_FILLED, m_payload},
            {BUFFER_INFO_SIZE, m_payload},
            {BUFFER_INFO_IMAGEOFFSET, 0},
            // Nanoseconds are not offered: they follow from the ticks of 25 MHz.
            {BUFFER_INFO_TIMESTAMP_NS, std::nullopt},
        };
        for (const auto& [command, expected] : expectations)
            need_true(buffer_info(buffer, command) == expected,
                      "buffer information " + std::to_string(command));
        need_true(buffer_info(buffer, BUFFER_INFO_FRAMEID).has_value(), "no frame id");
        const std::uint64_t nanoseconds = buffer_info(buffer, BUFFER_INFO_TIMESTAMP).value() * 40;
        need_true(nanoseconds > m_last_time, "time goes backwards");
        m_last_time = nanoseconds;
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the query hands the address out as a number
        m_check.expect_newer(reinterpret_cast<const void*>(buffer_info(buffer, BUFFER_INFO_BASE).value()),
                             m_payload);
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
