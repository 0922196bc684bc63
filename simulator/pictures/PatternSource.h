#pragma once

#include <vector>

#include "simulator/PictureSource.h"
#include "simulator/pictures/FrameEncoder.h"
#include "simulator/pictures/PatternScene.h"

namespace zvsim {

/// Test patterns, with the frame number and a checksum in the first bytes (zvgr/FrameStamp.h) if the camera
/// has such a stamp.
class PatternSource final : public PictureSource {
public:
    explicit PatternSource(const CameraDevice& camera);

    void draw(const Exposure& exposure, unsigned char* target, size_t size) override;

private:
    /// The diagonal ramp has a way of its own, as fast as memory: in formats whose pixels all take the same
    /// whole number of bytes a row is a piece of one long row.
    bool has_long_ramp() const { return !m_long_ramp.empty(); }
    void make_long_ramp(double brightness);
    void draw_long_ramp(const Exposure& exposure, unsigned char* target, size_t size);

    PatternScene m_scene;
    FrameEncoder m_encoder;
    size_t m_segments;
    size_t m_rows;
    size_t m_top;
    size_t m_bytes_per_pixel;
    size_t m_row_size;
    bool m_has_stamp;
    SceneRow m_ramp_colors;
    RowEncoder m_ramp_encoder;
    /// A row and one repetition more: every shift of it is one copy.
    std::vector<unsigned char> m_long_ramp;
    double m_ramp_brightness{1};
};

} // namespace zvsim
