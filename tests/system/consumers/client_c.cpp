#include <array>
#include <string>
#include <vector>

#include "system/consumers/client.h"

// A consumer without a GenApi library: it knows the camera's registers by their addresses. It queues with a
// flush, leaves with flushes, and closes its stream with the event registered and the buffers announced.

namespace {

using namespace GenTL;
using namespace zvclient;

constexpr std::size_t buffer_count = 8;
constexpr int wanted_frames = 20;

// docs/camera-features.md lists them.
constexpr std::uint64_t width_register = 0x2008;
constexpr std::uint64_t height_register = 0x200C;
constexpr std::uint64_t pixel_format_register = 0x2018;
constexpr std::uint64_t acquisition_start_register = 0x3008;
constexpr std::uint64_t acquisition_stop_register = 0x300C;
constexpr std::uint64_t payload_size_register = 0x5000;
constexpr std::uint64_t vendor_name_register = 0x1000;

constexpr std::uint32_t mono12 = 0x01100005;

class ClientC {
public:
    explicit ClientC(const Functions& functions) : gentl{functions} {}

    void run()
    {
        open();
        configure();
        stream();
        close();
    }

private:
    void open()
    {
        need(gentl.TLOpen(&m_system), "TLOpen");
        bool8_t has_changed = 0;
        need(gentl.TLUpdateInterfaceList(m_system, &has_changed, 500), "TLUpdateInterfaceList");
        need(gentl.TLOpenInterface(m_system, "FG0", &m_interface), "TLOpenInterface");
        need(gentl.IFUpdateDeviceList(m_interface, &has_changed, 500), "IFUpdateDeviceList");
        need(gentl.IFOpenDevice(m_interface, "Device00", DEVICE_ACCESS_CONTROL, &m_device), "IFOpenDevice");
        need(gentl.DevGetPort(m_device, &m_remote), "DevGetPort");
    }

    std::uint64_t read(std::uint64_t address, std::size_t length) const
    {
        std::array<unsigned char, 8> bytes{};
        std::size_t size = length;
        need(gentl.GCReadPort(m_remote, address, bytes.data(), &size), "GCReadPort");
        need_true(size == length, "a short read");
        std::uint64_t value = 0;
        for (std::size_t at = 0; at < length; ++at)
            value = value << 8U | bytes[at];
        return value;
    }

    void write(std::uint64_t address, std::uint32_t value) const
    {
        const std::array<unsigned char, 4> bytes{
            static_cast<unsigned char>(value >> 24U), static_cast<unsigned char>(value >> 16U & 0xFFU),
            static_cast<unsigned char>(value >> 8U & 0xFFU), static_cast<unsigned char>(value & 0xFFU)};
        std::size_t size = bytes.size();
        need(gentl.GCWritePort(m_remote, address, bytes.data(), &size), "GCWritePort");
        need_true(size == bytes.size(), "a short write");
    }

    void configure()
    {
        std::array<char, 64> vendor{};
        std::size_t size = vendor.size();
        need(gentl.GCReadPort(m_remote, vendor_name_register, vendor.data(), &size), "GCReadPort");
        need_true(size == vendor.size() && vendor.front() != '\0', "the camera's maker");
        write(width_register, 128);
        write(height_register, 100);
        write(pixel_format_register, mono12);
        need_true(read(width_register, 4) == 128 && read(height_register, 4) == 100, "the new size");
        m_payload = static_cast<std::size_t>(read(payload_size_register, 8));
        need_true(m_payload == std::size_t{128} * 100 * 2, "the payload of the new size");
    }

    void stream()
    {
        need(gentl.DevOpenDataStream(m_device, "Stream000", &m_stream), "DevOpenDataStream");
        m_memory.assign(buffer_count, std::vector<unsigned char>(m_payload));
        for (auto& memory : m_memory) {
            BUFFER_HANDLE buffer = nullptr;
            need(gentl.DSAnnounceBuffer(m_stream, memory.data(), memory.size(), memory.data(), &buffer),
                 "DSAnnounceBuffer");
        }
        EVENT_HANDLE event = nullptr;
        need(gentl.GCRegisterEvent(m_stream, EVENT_NEW_BUFFER, &event), "GCRegisterEvent");
        need(gentl.DSFlushQueue(m_stream, ACQ_QUEUE_ALL_TO_INPUT), "DSFlushQueue");
        need(gentl.DSStartAcquisition(m_stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE),
             "DSStartAcquisition");
        write(acquisition_start_register, 1);
        receive(event);
        write(acquisition_stop_register, 1);
        need(gentl.DSStopAcquisition(m_stream, ACQ_STOP_FLAGS_DEFAULT), "DSStopAcquisition");
        need(gentl.DSFlushQueue(m_stream, ACQ_QUEUE_INPUT_TO_OUTPUT), "DSFlushQueue");
        need(gentl.DSFlushQueue(m_stream, ACQ_QUEUE_OUTPUT_DISCARD), "DSFlushQueue");
    }

    void receive(EVENT_HANDLE event) const
    {
        FrameCheck check;
        while (check.frames() < wanted_frames) {
            EVENT_NEW_BUFFER_DATA data{};
            std::size_t size = sizeof data;
            const GC_ERROR code = gentl.EventGetData(event, &data, &size, 2000);
            if (code == GC_ERR_TIMEOUT) // woken for a frame that was taken already, or a slow machine
                continue;
            need(code, "EventGetData");
            check.expect_newer(data.pUserPointer, m_payload);
            need(gentl.DSQueueBuffer(m_stream, data.BufferHandle), "DSQueueBuffer");
        }
    }

    void close()
    {
        need(gentl.DSClose(m_stream), "DSClose"); // with its event and its buffers
        need(gentl.DevClose(m_device), "DevClose");
        need(gentl.IFClose(m_interface), "IFClose");
        need(gentl.TLClose(m_system), "TLClose");
    }

    const Functions& gentl;
    TL_HANDLE m_system{nullptr};
    IF_HANDLE m_interface{nullptr};
    DEV_HANDLE m_device{nullptr};
    PORT_HANDLE m_remote{nullptr};
    DS_HANDLE m_stream{nullptr};
    std::size_t m_payload{0};
    std::vector<std::vector<unsigned char>> m_memory;
};

} // namespace

int main(int count, char** arguments)
{
    return run_client(count, arguments, [](const Functions& gentl) { ClientC{gentl}.run(); });
}
