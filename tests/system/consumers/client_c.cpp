#include <array>
#include <string>
#include <vector>

#include "system/consumers/Client.h"

// A consumer without a GenApi library: it knows the addresses of the camera's registers. It queues with a
// flush, ends with flushes, and closes its stream with the event registered and the buffers announced.

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

class ClientC : Client {
public:
    using Client::Client;

    void run()
    {
        open();
        configure();
        stream();
        close(); // the stream with its event and its buffers
    }

private:
    void open()
    {
        open_system(500);
        open_interface("FG0", 500);
        open_device("Device00", DEVICE_ACCESS_CONTROL);
    }

    std::uint64_t read(std::uint64_t address, std::size_t length) const
    {
        std::array<unsigned char, 8> bytes{};
        ExactPort{gentl, m_remote}.read(address, bytes.data(), length);
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
        ExactPort{gentl, m_remote}.write(address, bytes.data(), bytes.size());
    }

    void configure()
    {
        std::array<char, 64> vendor{};
        ExactPort{gentl, m_remote}.read(vendor_name_register, vendor.data(), vendor.size());
        need_true(vendor.front() != '\0', "the camera has no vendor name");
        write(width_register, 128);
        write(height_register, 100);
        write(pixel_format_register, mono12);
        need_true(read(width_register, 4) == 128 && read(height_register, 4) == 100,
                  "the size is not what was written");
        m_payload = static_cast<std::size_t>(read(payload_size_register, 8));
        need_true(m_payload == std::size_t{128} * 100 * 2, "the payload does not fit the new size");
    }

    void stream()
    {
        open_stream("Stream000");
        for (auto& memory : make_memory(buffer_count))
            announce(memory, memory.data());
        const EVENT_HANDLE event = register_event();
        flush(ACQ_QUEUE_ALL_TO_INPUT);
        start();
        write(acquisition_start_register, 1);
        FrameCheck check;
        receive(wanted_frames, event, 2000, [this, &check](const EVENT_NEW_BUFFER_DATA& data) {
            check.expect_newer(data.pUserPointer, m_payload);
        });
        write(acquisition_stop_register, 1);
        stop();
        flush(ACQ_QUEUE_INPUT_TO_OUTPUT);
        flush(ACQ_QUEUE_OUTPUT_DISCARD);
    }
};

} // namespace

void zvclient::run_client_c(const Functions& gentl) { ClientC{gentl}.run(); }
