#pragma once

#include <cstdint>

// What a camera or a grabber can be set to, by its configuration as by its features.

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

} // namespace zvsim
