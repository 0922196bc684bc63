#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Reads frames by the memory layouts of PFNC and GigE Vision, with nothing but the name of the pixel format:
// a second opinion on what the library writes.

namespace zvsim_test {

/// How a format's name says that its samples stand in memory.
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
/// that several pixels share stands in each of them.
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

} // namespace zvsim_test
