#include "simulator/PictureSource.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "zvgr/FrameStamp.h"

#include "simulator/Devices.h"
#include "simulator/PictureFolder.h"
#include "simulator/pictures/FrameEncoder.h"
#include "simulator/pictures/PatternScene.h"

namespace zvsim {

namespace {

/// Test patterns, with the frame number and a checksum in the first bytes (zvgr/FrameStamp.h) if the camera
/// has such a stamp.
class PatternSource final : public PictureSource {
public:
    explicit PatternSource(const CameraDevice& camera);

    void draw(const Exposure& exposure, unsigned char* target, size_t size) override;

private:
    /// The diagonal ramp is drawn as fast as memory allows: in formats whose pixels all take the same whole
    /// number of bytes, a row is a piece of one long row.
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
    m_ramp_encoder.encode(m_ramp_colors, 0, m_long_ramp.data()); // in grey the rows of a mosaic are alike
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

/// A picture as a camera's window shows it; black beyond its borders.
class PictureScene final : public Scene {
public:
    PictureScene(const PictureFolder& folder, uint32_t left, uint32_t bits)
        : m_folder{folder}, m_left{left}, m_bits{bits}
    {
    }

    uint64_t row_kind(ScenePlace place) const override { return place.y; }
    void draw(ScenePlace place, SceneRow& row) const override;

private:
    const PictureFolder& m_folder;
    uint32_t m_left;
    uint32_t m_bits;
};

/// The folder's pictures in a loop: bit for bit when the camera has their pixel format and nominal
/// brightness, else converted to what it has.
class FolderSource final : public PictureSource {
public:
    FolderSource(const CameraDevice& camera, const PictureFolder& folder);

    void draw(const Exposure& exposure, unsigned char* target, size_t size) override;

private:
    void copy(const Exposure& exposure, unsigned char* target, size_t size) const;

    const PictureFolder& m_folder;
    PictureScene m_scene;
    FrameEncoder m_encoder;
    size_t m_segments;
    size_t m_rows;
    size_t m_left;
    size_t m_top;
    size_t m_width;
    /// The window lies within the pictures, and the format is theirs.
    bool m_can_copy{false};
};

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

} // namespace

std::unique_ptr<PictureSource> make_picture_source(const CameraDevice& camera)
{
    if (camera.model().pictures != nullptr)
        return std::make_unique<FolderSource>(camera, *camera.model().pictures);
    return std::make_unique<PatternSource>(camera);
}

} // namespace zvsim
