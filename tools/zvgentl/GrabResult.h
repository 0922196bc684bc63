#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "zvgentl/FrameCount.h"
#include "zvgentl/GrabOptions.h"

namespace zvgentl::tool {

/// How a grab ended. Incomplete: all that were asked for arrived, but others between them were lost.
enum class Outcome { complete, incomplete, interrupted, timed_out, failed };

/// What the pictures of a grab look like.
struct PictureKind {
    std::size_t width{0};
    std::size_t height{0};
    std::uint64_t pixel_format{0};
};

/// What a grab reports.
struct GrabResult {
    explicit GrabResult(const GrabOptions& grab_options);

    GrabOptions options;
    Outcome outcome{Outcome::complete};
    std::string problem;     // why it failed
    int interrupted_code{0}; // the exit code of an interruption
    std::string producer;
    std::string interface_id;
    std::string device_id;
    std::string vendor;
    std::string model;
    std::string serial_number;
    std::size_t buffer_size{0};
    FrameCount count;
    std::optional<PictureKind> picture; // of the first frame
    double seconds{0};                  // from the first frame to the last, by the clock of this computer
    double device_seconds{0};           // the same by the frames' time stamps; 0 when there are none
    std::uint64_t saved{0};

    /// Frames per second over a span that began with the first frame; nothing when it is unknown.
    std::optional<double> rate(double span) const;
    /// Whether it came so far that there is something to tell beside the problem.
    bool has_stream() const noexcept { return buffer_size > 0; }
    /// Whether frames were lost; also when that is not known and must be.
    bool fails_on_loss() const noexcept;
    /// A complete grab that lost frames is incomplete, and one without frames has timed out.
    void finish() noexcept;
    int exit_code() const;
};

std::string to_text(const GrabResult& result);

} // namespace zvgentl::tool
