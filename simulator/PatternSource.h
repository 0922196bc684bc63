/// \file PatternSource.h
/// The moving test pattern.
#pragma once

#include "simulator/PictureSource.h"

#include <vector>

namespace zvsim {

/// Diagonal ramps that move by one pixel per frame, with the frame number and a checksum in the first bytes
/// (zvgr/FrameStamp.h).
class PatternSource final : public PictureSource {
public:
    explicit PatternSource(const CameraDevice& camera);

    void draw(const Exposure& exposure, unsigned char* target, size_t size) override;

private:
    size_t m_bytes_per_pixel;
    size_t m_row_size;
    size_t m_height;
    size_t m_ramp_pixels; ///< Pixels after which the ramp repeats.
    bool m_has_stamp;
    std::vector<unsigned char> m_ramp; ///< A row and one repetition more: every shift of it is one copy.
};

} // namespace zvsim
