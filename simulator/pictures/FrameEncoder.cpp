#include "simulator/pictures/FrameEncoder.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

#include "simulator/Devices.h"

namespace zvsim {

namespace {

size_t rounded_up(size_t number, size_t step) { return (number + step - 1) / step * step; }

void scale(std::vector<uint16_t>& samples, uint64_t factor, uint64_t full_scale)
{
    for (uint16_t& sample : samples) {
        const uint64_t scaled = (sample * factor + (uint64_t{1} << 31U)) >> 32U;
        sample = static_cast<uint16_t>(std::min(scaled, full_scale));
    }
}

} // namespace

void scale_brightness(SceneRow& row, double brightness, uint32_t bits)
{
    constexpr double brightest = 65536; // makes the darkest of all samples white
    const double factor = brightness > 0 ? std::min(brightness, brightest) : 0;
    const auto fixed = static_cast<uint64_t>(std::llround(std::ldexp(factor, 32)));
    const uint64_t full_scale = (uint64_t{1} << bits) - 1;
    scale(row.green, fixed, full_scale);
    if (row.is_grey)
        return;
    scale(row.red, fixed, full_scale);
    scale(row.blue, fixed, full_scale);
}

FrameEncoder::FrameEncoder(const CameraDevice& camera)
    : m_format{*camera.settings().format}, m_segments{camera.grabber().segments_per_buffer},
      m_top{camera.settings().offset_y}, m_height{camera.settings().height},
      m_picture_size{static_cast<size_t>(m_format.size_of(camera.settings().width, m_height))},
      m_row{rounded_up(camera.settings().width, m_format.step_x())}, m_encoder{m_format, columns()},
      m_bytes(m_encoder.size())
{
    m_row_size = static_cast<size_t>(m_format.size_of(camera.settings().width, 1)) / m_encoder.planes();
}

void FrameEncoder::draw(const Scene& scene, const Exposure& exposure, unsigned char* target, size_t size)
{
    const size_t drawn = std::min(size, frame_size());
    for (size_t segment = 0; segment < m_segments && segment * m_picture_size < drawn; ++segment) {
        std::optional<uint64_t> encoded;
        for (uint32_t row = 0; row < m_height; ++row) {
            const ScenePlace place{exposure.frame * m_segments + segment, m_top + row};
            // The rows of a mosaic alternate even where the scene does not.
            const uint64_t kind = scene.row_kind(place) * 2 + (m_format.is_bayer() ? place.y % 2 : 0);
            if (kind != encoded)
                encode_row(scene, place, exposure.brightness);
            encoded = kind;
            place_row(segment, row, target, drawn);
        }
    }
}

void FrameEncoder::encode_row(const Scene& scene, ScenePlace place, double brightness)
{
    m_row.is_grey = true;
    scene.draw(place, m_row);
    if (brightness != 1)
        scale_brightness(m_row, brightness, m_format.bits);
    m_encoder.encode(m_row, place.y, m_bytes.data());
}

void FrameEncoder::place_row(size_t segment, size_t row, unsigned char* target, size_t size) const
{
    const size_t planes = m_encoder.planes();
    for (size_t plane = 0; plane < planes; ++plane) {
        const size_t at = segment * m_picture_size + plane * (m_picture_size / planes) + row * m_row_size;
        if (at < size)
            std::memcpy(target + at, m_bytes.data() + plane * (m_bytes.size() / planes),
                        std::min(m_row_size, size - at));
    }
}

} // namespace zvsim
