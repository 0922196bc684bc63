#include "simulator/pictures/FolderSource.h"

#include <algorithm>
#include <cstring>

#include "simulator/Devices.h"
#include "simulator/PictureFolder.h"

namespace zvsim {

namespace {

/// Samples of a picture at the depth of a pixel format.
class Samples {
public:
    Samples(const Picture& picture, uint32_t bits)
        : m_pixels{picture.pixels.data()}, m_is_wide{picture.format->bits == 16}, m_surplus{16 - bits}
    {
    }

    uint16_t operator[](size_t at) const
    {
        // Full scale of 8 bits becomes that of 16.
        const uint32_t sample =
            m_is_wide ? m_pixels[at * 2] + 256U * m_pixels[at * 2 + 1] : m_pixels[at] * 257U;
        return static_cast<uint16_t>(sample >> m_surplus);
    }

private:
    const unsigned char* m_pixels;
    bool m_is_wide;
    uint32_t m_surplus;
};

} // namespace

void PictureScene::draw(ScenePlace place, SceneRow& row) const
{
    const Picture& picture = m_folder.picture(place.picture);
    const size_t columns = row.green.size();
    const size_t inside = place.y >= picture.height || m_left >= picture.width
                              ? 0
                              : std::min<size_t>(columns, picture.width - m_left);
    const Samples samples{picture, m_bits};
    const size_t first = size_t{place.y} * picture.width + m_left;
    row.is_grey = picture.format->colors == Colors::mono;
    if (row.is_grey) {
        for (size_t column = 0; column < inside; ++column)
            row.green[column] = samples[first + column];
    } else {
        for (size_t column = 0; column < inside; ++column) {
            row.red[column] = samples[(first + column) * 3];
            row.green[column] = samples[(first + column) * 3 + 1];
            row.blue[column] = samples[(first + column) * 3 + 2];
        }
    }
    for (auto* const channel : {&row.red, &row.green, &row.blue})
        std::fill(channel->begin() + static_cast<std::ptrdiff_t>(inside), channel->end(), uint16_t{0});
}

FolderSource::FolderSource(const CameraDevice& camera, const PictureFolder& folder)
    : m_folder{folder}, m_scene{folder, camera.settings().offset_x, camera.settings().format->bits},
      m_encoder{camera}, m_segments{camera.grabber().segments_per_buffer}, m_rows{camera.settings().height},
      m_left{camera.settings().offset_x}, m_top{camera.settings().offset_y}, m_width{camera.settings().width}
{
    m_can_copy = camera.settings().format == &folder.format() && m_left + m_width <= folder.width() &&
                 m_top + m_rows <= folder.height();
}

void FolderSource::draw(const Exposure& exposure, unsigned char* target, size_t size)
{
    if (m_can_copy && exposure.brightness == 1)
        copy(exposure, target, std::min(size, m_encoder.frame_size()));
    else
        m_encoder.draw(m_scene, exposure, target, size);
}

void FolderSource::copy(const Exposure& exposure, unsigned char* target, size_t size) const
{
    const size_t bytes_per_pixel = m_folder.format().bits_per_pixel() / 8;
    const size_t row_size = m_width * bytes_per_pixel;
    size_t at = 0;
    for (size_t segment = 0; segment < m_segments; ++segment) {
        const Picture& picture = m_folder.picture(exposure.frame * m_segments + segment);
        for (size_t row = 0; row < m_rows && at < size; ++row, at += row_size) {
            const size_t from = ((m_top + row) * picture.width + m_left) * bytes_per_pixel;
            std::memcpy(target + at, picture.pixels.data() + from, std::min(row_size, size - at));
        }
    }
}

} // namespace zvsim
