#pragma once

#include <cmath>
#include <cstdint>

#include "simulator/PixelFormat.h"

// What the features of a camera are set to, and what a camera or a grabber can be set to, by its
// configuration as by its features.

namespace zvsim {

/// The demo grabber comes on top.
constexpr uint32_t most_grabbers = 64;
/// Of one grabber.
constexpr uint32_t most_cameras = 16;
/// Bytes of a name of a camera: what its record holds.
constexpr uint32_t longest_identity = 64;
/// Of a sensor, in pixels.
constexpr uint32_t largest_side = 16384;
/// Bytes of a buffer.
constexpr uint64_t largest_payload = 1ULL << 30;
/// Pictures in a buffer.
constexpr uint32_t most_segments = 256;

/// Frames per second.
constexpr double lowest_rate = 0.001;
constexpr double highest_rate = 100000;
constexpr double shortest_exposure_us = 1;
constexpr double longest_exposure_us = 10e6;
constexpr double lowest_gain_db = -12;
constexpr double highest_gain_db = 48;
/// Of a multi-frame acquisition.
constexpr uint32_t most_frames = 65535;

enum class TestPattern : uint32_t {
    /// A ramp along the diagonal that moves by one pixel a frame.
    diagonal_ramp,
    /// From dark to bright, left to right, still.
    horizontal_ramp,
    /// From dark to bright, top to bottom, still.
    vertical_ramp,
    /// Eight vertical bars from white to black.
    color_bars,
    /// Fields of 32 x 32 pixels that swap every frame.
    checkerboard,
    black,
    white,
    /// Half of the full scale.
    grey,
    /// Bright lines every 64 pixels.
    grid,
    /// A bright vertical bar that moves by eight pixels a frame.
    moving_bar,
    /// Black and white in turn.
    blinking,
    /// Another one in every frame, the same in every run.
    noise,
    /// The frame's number in large digits.
    frame_counter,
    /// Rays from the middle: focus and resolution.
    star,
};

enum class AcquisitionMode : uint32_t { continuous, single_frame, multi_frame };
enum class TriggerSource : uint32_t { software, line0, line1 };
enum class TriggerActivation : uint32_t { rising_edge, falling_edge, any_edge, level_high, level_low };

/// Values of camera features. Width, height and offsets fit the sensor and the steps of the format.
struct CameraSettings {
    uint32_t width{0};
    uint32_t height{0};
    uint32_t offset_x{0};
    uint32_t offset_y{0};
    /// Never null once a camera has it.
    const PixelFormat* format{nullptr};
    TestPattern pattern{TestPattern::diagonal_ramp};
    /// With a gain of 0 dB the patterns have their nominal brightness.
    double exposure_us{10000};
    double gain_db{0};
    double frames_per_second{25};
    /// Else free-running: a frame whenever the consumer can take one.
    bool is_rate_set{true};
    AcquisitionMode mode{AcquisitionMode::continuous};
    /// Of a multi-frame acquisition.
    uint32_t frame_count{1};
    /// Frames wait for a trigger each.
    bool is_triggered{false};
    TriggerSource trigger_source{TriggerSource::software};
    TriggerActivation trigger_activation{TriggerActivation::rising_edge};

    /// How bright pictures are, 1: nominal. Proportional to exposure time and gain.
    double brightness() const
    {
        constexpr double nominal_exposure_us = 10000;
        return exposure_us / nominal_exposure_us * std::pow(10.0, gain_db / 20);
    }
};

} // namespace zvsim
