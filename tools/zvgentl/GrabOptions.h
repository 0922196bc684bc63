#pragma once

#include <cstdint>
#include <string>

#include "zvgentl/PortOptions.h"

namespace zvgentl::tool {

/// How frames reach the consumer's buffers: filled in place, or copied from a ring of the grabber library.
enum class StreamMode { queued, cyclic };

const char* mode_name(StreamMode mode) noexcept;

/// How frames are saved: as pictures, or their bytes unchanged, each behind a line of JSON that describes
/// them.
enum class SaveFormat { png, tiff, raw };

const char* format_name(SaveFormat format) noexcept;

/// The options of `zvgentl grab` with their defaults.
struct GrabOptions : DeviceOptions {
    Assignments settings;     // features of the camera that are set first
    std::uint64_t frames{10}; // 0: until interrupted
    std::uint64_t buffers{8};
    StreamMode mode{StreamMode::queued};
    std::uint64_t timeout_ms{5000};
    std::string output; // folder for frames, a file for raw ones, "-"; empty: none are saved
    SaveFormat format{SaveFormat::png};
    bool overwrite{false}; // frames of an earlier run in the folder are removed first
    bool append{false};    // numbers go on after them
    bool fail_on_loss{false};
    bool json{false};
    bool quiet{false}; // neither progress nor a summary as text
    bool verify{true};
    std::uint64_t skip{0};       // frames that are dropped first
    std::uint64_t duration_s{0}; // 0: no limit
    bool has_frames{false};      // whether `frames` was given on the command line
    std::string frames_csv;      // file for a table of the frames; empty: none

    /// Whether frames go to standard output, which leaves the error output for the summary.
    bool saves_to_output() const noexcept { return output == "-"; }
    /// Frames to grab; 0 for no limit.
    std::uint64_t wanted() const noexcept { return duration_s > 0 && !has_frames ? 0 : frames; }
};

/// Describes them to the command line.
void describe_grab(OptionList& list, GrabOptions& options);

} // namespace zvgentl::tool
