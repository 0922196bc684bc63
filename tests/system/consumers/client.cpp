#include "system/consumers/client.h"

#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "zvgr/FrameStamp.h"

#include "gentl/Description.h"
#include "gentl/PortUrl.h"
#include "platform/DynamicLibrary.h"
#include "platform/environment.h"
#include "system/consumer/Surroundings.h"

namespace zvclient {

using namespace GenTL;
namespace tool = zvgentl::tool;

namespace {

/// Slow enough that a consumer which starts before it queues its buffers loses none, fast enough for a test.
constexpr const char* grabbers = R"(demo_grabber: true
grabbers:
  - name: Two cameras
    protocol: CoaXPress
    image_ids: true
    cameras:
      - {model: Small, serial: C-1, sensor_width: 320, sensor_height: 240, rate: 50, start_up: 500 ms,
         pixel_formats: [Mono8, Mono12, RGB8, BayerRG8]}
      - {model: Coded, serial: C-2, sensor_width: 160, sensor_height: 120, rate: 50, start_up: 500 ms,
         pixel_formats: [Mono8, Mono16], pixel_format_codes: CoaXPress}
  - name: Tells its geometry
    protocol: CameraLinkHS
    reports_geometry: true
    cameras:
      - {model: Line, serial: C-3, sensor_width: 256, sensor_height: 64, rate: 50, start_up: 500 ms}
)";

} // namespace

void need(GC_ERROR code, const char* call) { need_code(GC_ERR_SUCCESS, code, call); }

void need_code(GC_ERROR wanted, GC_ERROR code, const char* call)
{
    if (code != wanted)
        throw std::runtime_error(std::string(call) + " answered " + std::to_string(code) + " instead of " +
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

DescriptionPlace place_of(const std::string& url)
{
    const tool::PortUrl parsed = tool::parse_port_url(url);
    return {parsed.file_name, parsed.address, parsed.length};
}

std::string description_of(const ExactPort& port, const std::string& url)
{
    const DescriptionPlace place = place_of(url);
    std::string data(place.length, '\0');
    port.read(place.address, data.data(), data.size());
    return tool::unpack({place.name, data});
}

std::uint64_t counter_of(const void* frame, std::size_t size)
{
    const auto stamp = zvgr::read_stamp(frame, size);
    need_true(stamp.has_value(), "a frame without a stamp");
    need_true(stamp->checksum_ok, "frame " + std::to_string(stamp->counter) + " is damaged");
    return stamp->counter;
}

void FrameCheck::expect_newer(const void* frame, std::size_t size)
{
    const std::uint64_t counter = counter_of(frame, size);
    need_true(m_frames == 0 || counter > m_last,
              "frame " + std::to_string(counter) + " came after frame " + std::to_string(m_last));
    m_last = counter;
    ++m_frames;
}

int run_client(int count, char** arguments, const std::function<void(const Functions&)>& client)
try {
    const std::vector<std::string> words(arguments, arguments + count);
    if (count != 3 || (words[2] != "queued" && words[2] != "cyclic")) {
        std::cerr << "usage: " << words[0] << " PRODUCER.cti queued|cyclic\n";
        return EXIT_FAILURE;
    }
    const zvsystem::Surroundings surroundings;
    surroundings.set_mode(words[2] == "queued" ? zvsystem::Mode::queued : zvsystem::Mode::cyclic);
    zvsystem::Surroundings::set_frame_rate(""); // as the file says
    const auto file = surroundings.folder() / "grabbers.yaml";
    std::ofstream{file} << grabbers;
    platform::set_environment("ZV_GRABBER_CONFIG", file.u8string());

    const platform::DynamicLibrary library{words[1]};
    const Functions gentl = tool::find_functions(library);
    need(gentl.GCInitLib(), "GCInitLib");
    client(gentl);
    need(gentl.GCCloseLib(), "GCCloseLib");
    std::cout << "done\n";
    return EXIT_SUCCESS;
} catch (const std::exception& problem) {
    std::cerr << "FAILED: " << problem.what() << '\n';
    return EXIT_FAILURE;
}

} // namespace zvclient
