#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "zvgentl/FrameCount.h"
#include "zvgentl/GrabOptions.h"

namespace zvgentl::tool {

/// How a grab ended.
enum class Outcome { complete, interrupted, timed_out };

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
    int exit_code() const;
};

std::string to_text(const GrabResult& result);

} // namespace zvgentl::tool
