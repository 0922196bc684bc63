#include "simulator/pictures/PatternSource.h"

#include <algorithm>
#include <cstring>

#include "zvgr/FrameStamp.h"

#include "simulator/Devices.h"

namespace zvsim {

namespace {

/// Pixels of the long ramp; none where a row cannot be cut out of one.
size_t long_ramp_width(const CameraDevice& camera, const PatternWindow& window)
{
    const PixelFormat& format = *camera.settings().format;
    const bool is_alike = format.colors == Colors::mono || format.is_bayer() ||
                          format.colors == Colors::rgb || format.colors == Colors::rgba;
    if (!is_alike || format.packing != Packing::whole_bytes)
        return 0;
    return (size_t{camera.settings().width} + window.ramp_length() + 1) / 2 * 2; // a mosaic comes in pairs
}

} // namespace

PatternSource::PatternSource(const CameraDevice& camera)
    : m_scene{camera}, m_encoder{camera}, m_segments{camera.grabber().segments_per_buffer},
      m_rows{camera.settings().height}, m_top{camera.settings().offset_y},
      m_bytes_per_pixel{camera.settings().format->bits_per_pixel() / 8},
      m_row_size{camera.settings().width * m_bytes_per_pixel}, m_has_stamp{camera.model().has_stamp},
      m_ramp_colors{long_ramp_width(camera, m_scene.window())}, m_ramp_encoder{*camera.settings().format,
                                                                               m_ramp_colors.green.size()},
      m_long_ramp(m_ramp_encoder.size())
{
    if (has_long_ramp())
        make_long_ramp(m_ramp_brightness);
}

void PatternSource::draw(const Exposure& exposure, unsigned char* target, size_t size)
{
    const size_t whole = m_encoder.frame_size();
    const size_t drawn = std::min(size, whole);
    m_scene.show(exposure.pattern);
    if (exposure.pattern == TestPattern::diagonal_ramp && has_long_ramp())
        draw_long_ramp(exposure, target, drawn);
    else
        m_encoder.draw(m_scene, exposure, target, drawn);
    if (!m_has_stamp)
        return;
    if (drawn == whole)
        zvgr::write_stamp(target, whole, exposure.frame);
    else
        zvgr::write_stamp_of_cut_frame(target, drawn, whole, exposure.frame);
}

void PatternSource::make_long_ramp(double brightness)
{
    const PatternWindow& window = m_scene.window();
    for (size_t at = 0; at < m_ramp_colors.green.size(); ++at)
        m_ramp_colors.green[at] = static_cast<uint16_t>(at % window.ramp_length() * window.ramp_step());
    if (brightness != 1)
        scale_brightness(m_ramp_colors, brightness, window.bits);
    m_ramp_encoder.encode(m_ramp_colors, 0, m_long_ramp.data()); // a grey mosaic has no colours to mix up
    m_ramp_brightness = brightness;
}

void PatternSource::draw_long_ramp(const Exposure& exposure, unsigned char* target, size_t size)
{
    if (exposure.brightness != m_ramp_brightness)
        make_long_ramp(exposure.brightness);
    const PatternWindow& window = m_scene.window();
    size_t at = 0;
    for (size_t segment = 0; segment < m_segments; ++segment) {
        uint64_t pixel = exposure.frame * m_segments + segment + m_top + window.left;
        for (size_t row = 0; row < m_rows && at < size; ++row, ++pixel, at += m_row_size) {
            const size_t shift = static_cast<size_t>(pixel % window.ramp_length()) * m_bytes_per_pixel;
            std::memcpy(target + at, m_long_ramp.data() + shift, std::min(m_row_size, size - at));
        }
    }
}

} // namespace zvsim
