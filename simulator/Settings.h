/// \file Settings.h
/// What the features of a camera are set to.
#pragma once

#include "simulator/PixelFormat.h"

#include <cstdint>

namespace zvsim {

enum class TestPattern : uint32_t {
    diagonal_ramp,   ///< A ramp along the diagonal that moves by one pixel a frame.
    horizontal_ramp, ///< From dark to bright, left to right, still.
    vertical_ramp,   ///< From dark to bright, top to bottom, still.
    color_bars,      ///< Eight vertical bars from white to black.
    checkerboard,    ///< Fields of 32 x 32 pixels that swap every frame.
    black,
    white,
    grey,          ///< Half of the full scale.
    grid,          ///< Bright lines every 64 pixels.
    moving_bar,    ///< A bright vertical bar that moves by eight pixels a frame.
    blinking,      ///< Black and white in turn.
    noise,         ///< Another one in every frame, the same in every run.
    frame_counter, ///< The frame's number in large digits.
    star,          ///< Rays from the middle: focus and resolution.
};

enum class AcquisitionMode : uint32_t { continuous, single_frame, multi_frame };
enum class TriggerSource : uint32_t { software, line0, line1 };
enum class TriggerActivation : uint32_t { rising_edge, falling_edge, any_edge, level_high, level_low };

/// Values of camera features. Width, height and offsets fit the sensor and the steps of the format.
struct CameraSettings {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t offset_x = 0;
    uint32_t offset_y = 0;
    const PixelFormat* format = nullptr; ///< Never null once a camera has it.
    TestPattern pattern = TestPattern::diagonal_ramp;
    double exposure_us = 10000; ///< With a gain of 0 dB the patterns have their nominal brightness.
    double gain_db = 0;
    double frames_per_second = 25;
    bool is_rate_set = true; ///< Else free-running: a frame whenever the consumer can take one.
    AcquisitionMode mode = AcquisitionMode::continuous;
    uint32_t frame_count = 1;  ///< Of a multi-frame acquisition.
    bool is_triggered = false; ///< Frames wait for a trigger each.
    TriggerSource trigger_source = TriggerSource::software;
    TriggerActivation trigger_activation = TriggerActivation::rising_edge;

    /// How bright pictures are, 1: nominal. Proportional to exposure time and gain.
    double brightness() const;
};

} // namespace zvsim
