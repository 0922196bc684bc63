#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "simulator/Settings.h"

// A second opinion on what the library writes: reads frames by the memory layouts of PFNC and GigE Vision,
// with nothing but the name of the pixel format, and knows the test patterns by their documented formulas.

namespace zvsim_test {

/// The layout of samples in memory that a format's name describes.
struct FormatLayout {
    explicit FormatLayout(const std::string& name);

    enum class Order { mono, rgb, rgb_planar, rgba, u_y_y_v_y_y, y_u_y_v, u_y_v };
    enum class Packing { containers, gapless, pairs };

    Order order;
    Packing packing;
    /// Of a sample.
    unsigned bits;

    bool has_luma() const { return order >= Order::u_y_y_v_y_y; }
    size_t channels() const { return order == Order::mono ? 1 : order == Order::rgba ? 4 : 3; }
    size_t bits_per_pixel() const;
};

/// Channels are grey or mosaic; or red, green, blue (and alpha); or luma, blue chroma, red chroma. Chroma
/// that several pixels share is repeated in each of them.
struct Decoded {
    size_t width;
    size_t height;
    size_t channels;
    std::vector<uint32_t> samples;

    uint32_t at(size_t x, size_t y, size_t channel) const
    {
        return samples.at((y * width + x) * channels + channel);
    }
};

/// The picture that begins at `bytes`.
Decoded decode(const std::string& format, size_t width, size_t height, const unsigned char* bytes,
               size_t size);

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

/// What a channel of a decoded picture should hold at a pixel of the sensor, before it is rounded.
double expected_sample(const Shot& shot, const std::string& format, uint32_t x, uint32_t y, size_t channel);

} // namespace zvsim_test
