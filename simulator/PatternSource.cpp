#include "simulator/PatternSource.h"

#include "simulator/Devices.h"

#include "zvgr/FrameStamp.h"

#include <algorithm>
#include <cstring>

namespace zvsim {

namespace {

constexpr size_t ramp_pixels_8_bit = 256;
constexpr size_t ramp_pixels_16_bit = 1024; // steps of 64, so that both bytes of a pixel change

} // namespace

PatternSource::PatternSource(const CameraDevice& camera)
    : m_bytes_per_pixel{camera.settings().format->bits_per_pixel() / 8},
      m_row_size{camera.settings().width * m_bytes_per_pixel}, m_height{camera.settings().height},
      m_ramp_pixels{m_bytes_per_pixel == 2 ? ramp_pixels_16_bit : ramp_pixels_8_bit},
      m_has_stamp{camera.model().has_stamp},
      m_ramp((camera.settings().width + m_ramp_pixels) * m_bytes_per_pixel)
{
    for (size_t at = 0; at < m_ramp.size(); ++at) {
        const size_t pixel = at / m_bytes_per_pixel;
        const size_t value = m_bytes_per_pixel == 2 ? pixel * 64 >> (8 * (at % 2)) : pixel;
        m_ramp[at] = static_cast<unsigned char>(value & 0xFF);
    }
}

void PatternSource::draw(const Exposure& exposure, unsigned char* target, size_t size)
{
    const size_t whole = m_row_size * m_height;
    const size_t drawn = std::min(size, whole);
    size_t row = static_cast<size_t>(exposure.frame % m_ramp_pixels);
    for (size_t at = 0; at < drawn; at += m_row_size, ++row) {
        const size_t shift = row % m_ramp_pixels * m_bytes_per_pixel;
        std::memcpy(target + at, m_ramp.data() + shift, std::min(m_row_size, drawn - at));
    }
    if (!m_has_stamp)
        return;
    if (drawn == whole)
        zvgr::write_stamp(target, whole, exposure.frame);
    else
        zvgr::write_stamp_of_cut_frame(target, drawn, whole, exposure.frame);
}

} // namespace zvsim
