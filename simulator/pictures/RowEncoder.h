#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "simulator/PixelFormat.h"
#include "simulator/pictures/ColorMatrix.h"
#include "simulator/pictures/Scene.h"

namespace zvsim {

/// Encodes rows of one format and width, in two steps: the samples in their order, then their packing. The
/// width is a multiple of the format's step.
class RowEncoder {
public:
    RowEncoder(const PixelFormat& format, size_t width);

    /// Planar formats have 3: a row is one piece of each.
    size_t planes() const { return m_format.colors == Colors::rgb_planar ? 3 : 1; }
    /// Bytes of a row in all planes.
    size_t size() const { return m_width * m_format.bits_per_pixel() / 8; }
    /// The row `y` of the sensor as size() bytes, plane after plane.
    void encode(const SceneRow& row, uint32_t y, unsigned char* bytes);

private:
    void arrange(const SceneRow& row, uint32_t y);
    void arrange_mono(const SceneRow& row);
    void arrange_bayer(const SceneRow& row, uint32_t y);
    void arrange_rgb(const SceneRow& row, size_t pixel_step, size_t channel_step);
    void arrange_yuv444(const SceneRow& row);
    void arrange_yuv422(const SceneRow& row);
    void arrange_yuv411(const SceneRow& row);
    void pack(unsigned char* bytes) const;

    const PixelFormat& m_format;
    size_t m_width;
    /// Of the formats with luma and chroma.
    ColorMatrix m_matrix;
    std::vector<uint16_t> m_samples;
};

} // namespace zvsim
