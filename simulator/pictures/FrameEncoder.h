#pragma once

#include <cstddef>
#include <vector>

#include "simulator/PictureSource.h"
#include "simulator/pictures/RowEncoder.h"

namespace zvsim {

/// Scales the samples of a row: rounded to the nearest sample, at most full scale.
void scale_brightness(SceneRow& row, double brightness, uint32_t bits);

/// Encodes frames of a camera's present size, offset and format. A frame of several segments holds as many
/// consecutive pictures, one below the other.
class FrameEncoder {
public:
    explicit FrameEncoder(const CameraDevice& camera);

    /// Bytes of a whole frame.
    size_t frame_size() const { return m_picture_size * m_segments; }
    /// Columns that a scene draws in each row: the picture's, rounded up to the step of the format.
    size_t columns() const { return m_row.green.size(); }
    /// As much of the frame as fits into `size` bytes.
    void draw(const Scene& scene, const Exposure& exposure, unsigned char* target, size_t size);

private:
    void encode_row(const Scene& scene, ScenePlace place, double brightness);
    void place_row(size_t segment, size_t row, unsigned char* target, size_t size) const;

    const PixelFormat& m_format;
    size_t m_segments;
    /// First row of the sensor.
    uint32_t m_top;
    uint32_t m_height;
    /// Of one plane.
    size_t m_row_size;
    size_t m_picture_size;
    SceneRow m_row;
    RowEncoder m_encoder;
    /// The row that was encoded last.
    std::vector<unsigned char> m_bytes;
};

} // namespace zvsim
