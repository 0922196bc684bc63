#include "simulator/pictures/RowEncoder.h"

#include <algorithm>
#include <array>

namespace zvsim {

namespace {

/// The channels of a row, whether it is grey or not.
struct Channels {
    explicit Channels(const SceneRow& row)
        : red{row.is_grey ? row.green.data() : row.red.data()}, green{row.green.data()},
          blue{row.is_grey ? row.green.data() : row.blue.data()}
    {
    }

    ColorSum at(size_t pixel) const { return {red[pixel], green[pixel], blue[pixel]}; }
    ColorSum sum(size_t first, size_t count) const
    {
        ColorSum sum;
        for (size_t pixel = first; pixel < first + count; ++pixel) {
            sum.red += red[pixel];
            sum.green += green[pixel];
            sum.blue += blue[pixel];
        }
        return sum;
    }

    const uint16_t* red;
    const uint16_t* green;
    const uint16_t* blue;
};

size_t samples_per_row(const PixelFormat& format, size_t width)
{
    const uint32_t bits_of_sample = format.packing == Packing::whole_bytes  ? (format.bits > 8 ? 16 : 8)
                                    : format.packing == Packing::lsb_packed ? format.bits
                                                                            : 12;
    return width * format.bits_per_pixel() / bits_of_sample;
}

void pack_lsb(const std::vector<uint16_t>& samples, uint32_t bits, unsigned char* bytes)
{
    uint64_t waiting = 0;
    uint32_t filled = 0;
    for (const uint16_t sample : samples) {
        waiting |= uint64_t{sample} << filled;
        for (filled += bits; filled >= 8; filled -= 8) {
            *bytes++ = static_cast<unsigned char>(waiting & 0xFF);
            waiting >>= 8U;
        }
    }
}

void pack_gige(const std::vector<uint16_t>& samples, uint32_t bits, unsigned char* bytes)
{
    const uint32_t low_bits = bits - 8;
    const uint32_t low_mask = (1U << low_bits) - 1;
    for (size_t at = 0; at + 1 < samples.size(); at += 2) {
        const uint32_t first = samples[at];
        const uint32_t second = samples[at + 1];
        *bytes++ = static_cast<unsigned char>(first >> low_bits);
        *bytes++ = static_cast<unsigned char>((second & low_mask) << 4U | (first & low_mask));
        *bytes++ = static_cast<unsigned char>(second >> low_bits);
    }
}

} // namespace

RowEncoder::RowEncoder(const PixelFormat& format, size_t width)
    : m_format{format}, m_width{width}, m_matrix{format.colors, format.bits},
      m_samples(samples_per_row(format, width))
{
}

void RowEncoder::encode(const SceneRow& row, uint32_t y, unsigned char* bytes)
{
    arrange(row, y);
    pack(bytes);
}

void RowEncoder::arrange(const SceneRow& row, uint32_t y)
{
    switch (m_format.colors) {
    case Colors::mono:
        return arrange_mono(row);
    case Colors::bayer_gr:
    case Colors::bayer_rg:
    case Colors::bayer_gb:
    case Colors::bayer_bg:
        return arrange_bayer(row, y);
    case Colors::rgb:
        return arrange_rgb(row, 3, 1);
    case Colors::rgb_planar:
        return arrange_rgb(row, 1, m_width);
    case Colors::rgba: {
        const auto opaque = static_cast<uint16_t>((1U << m_format.bits) - 1);
        for (size_t pixel = 0; pixel < m_width; ++pixel)
            m_samples[pixel * 4 + 3] = opaque;
        return arrange_rgb(row, 4, 1);
    }
    case Colors::yuv444:
        return arrange_yuv444(row);
    case Colors::yuv411:
        return arrange_yuv411(row);
    case Colors::yuv422:
    case Colors::ycbcr601_422:
    case Colors::ycbcr709_422:
        return arrange_yuv422(row);
    }
}

void RowEncoder::arrange_mono(const SceneRow& row)
{
    if (row.is_grey) {
        std::copy_n(row.green.begin(), m_width, m_samples.begin());
        return;
    }
    for (size_t pixel = 0; pixel < m_width; ++pixel) {
        const uint32_t thousandfold =
            299U * row.red[pixel] + 587U * row.green[pixel] + 114U * row.blue[pixel];
        m_samples[pixel] = static_cast<uint16_t>((thousandfold + 500) / 1000);
    }
}

void RowEncoder::arrange_bayer(const SceneRow& row, uint32_t y)
{
    const Channels from{row};
    const bool begins_with_green = m_format.colors == Colors::bayer_gr || m_format.colors == Colors::bayer_gb;
    const bool begins_with_red_row =
        m_format.colors == Colors::bayer_gr || m_format.colors == Colors::bayer_rg;
    const bool is_even = y % 2 == 0;
    const uint16_t* const other = is_even == begins_with_red_row ? from.red : from.blue;
    // Offsets are even, so even columns of the row are even columns of the sensor.
    const uint16_t* const even = is_even == begins_with_green ? from.green : other;
    const uint16_t* const odd = is_even == begins_with_green ? other : from.green;
    for (size_t pixel = 0; pixel + 1 < m_width; pixel += 2) {
        m_samples[pixel] = even[pixel];
        m_samples[pixel + 1] = odd[pixel + 1];
    }
}

void RowEncoder::arrange_rgb(const SceneRow& row, size_t pixel_step, size_t channel_step)
{
    const Channels from{row};
    uint16_t* to = m_samples.data();
    for (size_t pixel = 0; pixel < m_width; ++pixel, to += pixel_step) {
        to[0] = from.red[pixel];
        to[channel_step] = from.green[pixel];
        to[2 * channel_step] = from.blue[pixel];
    }
}

void RowEncoder::arrange_yuv444(const SceneRow& row)
{
    const Channels from{row};
    for (size_t pixel = 0; pixel < m_width; ++pixel) {
        const ColorSum color = from.at(pixel);
        m_samples[pixel * 3] = m_matrix.blue_chroma(color, 0);
        m_samples[pixel * 3 + 1] = m_matrix.luma(color);
        m_samples[pixel * 3 + 2] = m_matrix.red_chroma(color, 0);
    }
}

void RowEncoder::arrange_yuv422(const SceneRow& row)
{
    const Channels from{row};
    for (size_t pixel = 0; pixel + 1 < m_width; pixel += 2) {
        const ColorSum both = from.sum(pixel, 2);
        m_samples[pixel * 2] = m_matrix.luma(from.at(pixel));
        m_samples[pixel * 2 + 1] = m_matrix.blue_chroma(both, 1);
        m_samples[pixel * 2 + 2] = m_matrix.luma(from.at(pixel + 1));
        m_samples[pixel * 2 + 3] = m_matrix.red_chroma(both, 1);
    }
}

void RowEncoder::arrange_yuv411(const SceneRow& row)
{
    const Channels from{row};
    for (size_t pixel = 0; pixel + 3 < m_width; pixel += 4) {
        const ColorSum all = from.sum(pixel, 4);
        const std::array<uint16_t, 6> group{
            m_matrix.blue_chroma(all, 2),      m_matrix.luma(from.at(pixel)),
            m_matrix.luma(from.at(pixel + 1)), m_matrix.red_chroma(all, 2),
            m_matrix.luma(from.at(pixel + 2)), m_matrix.luma(from.at(pixel + 3))};
        std::copy(group.begin(), group.end(), m_samples.begin() + static_cast<std::ptrdiff_t>(pixel / 4 * 6));
    }
}

void RowEncoder::pack(unsigned char* bytes) const
{
    if (m_format.packing == Packing::lsb_packed)
        return pack_lsb(m_samples, m_format.bits, bytes);
    if (m_format.packing == Packing::gige_packed)
        return pack_gige(m_samples, m_format.bits, bytes);
    if (m_format.bits == 8) {
        for (size_t at = 0; at < m_samples.size(); ++at)
            bytes[at] = static_cast<unsigned char>(m_samples[at]);
        return;
    }
    for (size_t at = 0; at < m_samples.size(); ++at) {
        bytes[at * 2] = static_cast<unsigned char>(m_samples[at] & 0xFF);
        bytes[at * 2 + 1] = static_cast<unsigned char>(m_samples[at] >> 8U);
    }
}

} // namespace zvsim
