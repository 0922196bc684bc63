#pragma once

#include <cstdint>
#include <string>

#include "pictures/PictureWriter.h"
#include "zvgentl/PortOptions.h"

namespace zvgentl::tool {

/// How frames reach the consumer's buffers: filled in place, or copied from a ring of the grabber library.
enum class StreamMode { queued, cyclic };

const char* mode_name(StreamMode mode) noexcept;

/// The options of `zvgentl grab` with their defaults.
struct GrabOptions : DeviceOptions {
    Assignments settings;     // features of the camera that are set first
    std::uint64_t frames{10}; // 0: until interrupted
    std::uint64_t buffers{8};
    StreamMode mode{StreamMode::queued};
    std::uint64_t timeout_ms{5000};
    std::string output; // folder for pictures; empty: none are saved
    FileFormat format{FileFormat::png};
    bool json{false};
    bool verify{true};
};

/// Describes them to the command line.
void describe_grab(OptionList& list, GrabOptions& options);

} // namespace zvgentl::tool
