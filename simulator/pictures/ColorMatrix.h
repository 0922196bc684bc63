#pragma once

#include <cstdint>

#include "simulator/PixelFormat.h"

namespace zvsim {

/// A colour, or the sum of several.
struct ColorSum {
    int64_t red{0};
    int64_t green{0};
    int64_t blue{0};
};

/// The conversion that PFNC names in a format: "YUV" is BT.601 over the full range of the samples, "YCbCr601"
/// and "YCbCr709" keep to the ranges of the two ITU recommendations (8 bit: luma 16 to 235, chroma 16 to
/// 240). Results are rounded to the nearest sample.
class ColorMatrix {
public:
    ColorMatrix(Colors colors, uint32_t bits);

    uint16_t luma(const ColorSum& color) const { return m_luma.of(color, 0); }
    /// Of the mean of 2^`log2_count` colours that `sum` holds.
    uint16_t blue_chroma(const ColorSum& sum, unsigned log2_count) const
    {
        return m_blue_chroma.of(sum, log2_count);
    }
    uint16_t red_chroma(const ColorSum& sum, unsigned log2_count) const
    {
        return m_red_chroma.of(sum, log2_count);
    }

private:
    /// Fixed-point numbers: the error of a result is far below a thousandth of a sample.
    struct Component {
        static constexpr unsigned fraction_bits = 40;

        int64_t red{0};
        int64_t green{0};
        int64_t blue{0};
        /// A half is in it, for the rounding.
        int64_t offset{0};
        int64_t full_scale{0};

        uint16_t of(const ColorSum& sum, unsigned log2_count) const;
    };

    static Component component(double red, double green, double blue, double offset, uint32_t bits);

    Component m_luma;
    Component m_blue_chroma;
    Component m_red_chroma;
};

inline uint16_t ColorMatrix::Component::of(const ColorSum& sum, unsigned log2_count) const
{
    const int64_t weighted = red * sum.red + green * sum.green + blue * sum.blue;
    const int64_t value = (weighted + offset * (int64_t{1} << log2_count)) >> (fraction_bits + log2_count);
    // Only full-range chroma reaches beyond: that of pure blue or red would be one sample too high.
    return static_cast<uint16_t>(value < full_scale ? value : full_scale);
}

} // namespace zvsim
