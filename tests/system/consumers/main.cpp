#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "platform/DynamicLibrary.h"
#include "system/consumer/Surroundings.h"
#include "system/consumers/Client.h"

// Loads the producer, with settings and logs in a private folder and a few software cameras, and runs one
// client. The exit code says whether it got through; the reason is printed if it did not.

namespace {

using namespace zvclient;
namespace tool = zvgentl::tool;

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
  - name: Reports its geometry
    protocol: CameraLinkHS
    reports_geometry: true
    cameras:
      - {model: Line, serial: C-3, sensor_width: 256, sensor_height: 64, rate: 50, start_up: 500 ms}
)";

const std::map<std::string, void (*)(const Functions&)> clients{
    {"a", run_client_a}, {"b", run_client_b}, {"c", run_client_c}, {"d", run_client_d}, {"e", run_client_e},
};

} // namespace

int main(int count, char** arguments)
try {
    const std::vector<std::string> words(arguments, arguments + count);
    if (count != 4 || clients.count(words[1]) == 0 || (words[3] != "queued" && words[3] != "cyclic")) {
        std::cerr << "usage: " << words[0] << " a|b|c|d|e PRODUCER.cti queued|cyclic\n";
        return EXIT_FAILURE;
    }
    const zvsystem::Surroundings surroundings;
    surroundings.set_mode(words[3] == "queued" ? zvsystem::Mode::queued : zvsystem::Mode::cyclic);
    zvsystem::Surroundings::set_frame_rate(""); // as the file says
    const auto file = surroundings.folder() / "grabbers.yaml";
    std::ofstream{file} << grabbers;
    zvsystem::Surroundings::set_grabber_file(file.string());

    const platform::DynamicLibrary library{words[2]};
    const Functions gentl = tool::find_functions(library);
    need(gentl.GCInitLib(), "GCInitLib");
    clients.at(words[1])(gentl);
    need(gentl.GCCloseLib(), "GCCloseLib");
    std::cout << "done\n";
    return EXIT_SUCCESS;
} catch (const std::exception& problem) {
    std::cerr << "FAILED: " << problem.what() << '\n';
    return EXIT_FAILURE;
}
