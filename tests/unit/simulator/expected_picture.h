#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "simulator/Settings.h"

// The test patterns by their documented formulas, pixel by pixel.

namespace zvsim_test {

/// A picture of which pixels are asked for.
struct Shot {
    zvsim::TestPattern pattern;
    uint64_t picture{0};
    uint32_t sensor_width{0};
    uint32_t sensor_height{0};
    double brightness{1};
};

using Color = std::array<uint32_t, 3>;

/// Red, green and blue of a pixel of the sensor in samples of so many bits.
Color color_at(const Shot& shot, uint32_t x, uint32_t y, unsigned bits);

/// What a channel of a decoded picture (decode.h) should hold at a pixel of the sensor, before it is rounded.
double expected_sample(const Shot& shot, const std::string& format, uint32_t x, uint32_t y, size_t channel);

} // namespace zvsim_test
