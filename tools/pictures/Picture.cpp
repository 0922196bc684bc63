#include "pictures/Picture.h"

#include <cstring>
#include <stdexcept>
#include <utility>

#include <fmt/core.h>

#include "pictures/PixelFormat.h"

namespace zvgentl::tool {

namespace {

constexpr std::size_t largest_side = 1U << 24U; // keeps the products below from overflowing

PixelLayout checked_layout(const PixelSource& source)
{
    const PixelLayout layout = pixel_layout(source.pixel_format);
    if (!layout.is_known())
        throw std::runtime_error(
            fmt::format("frames with pixel format {} (0x{:08X}) cannot be saved as pictures; supported are "
                        "Mono, Bayer, RGB, BGR and RGBa with 8 to 16 bits, unpacked",
                        pixel_format_name(source.pixel_format), source.pixel_format));
    if (source.width == 0 || source.height == 0 || source.width > largest_side ||
        source.height > largest_side)
        throw std::runtime_error(
            fmt::format("a frame of {} x {} pixels cannot be saved", source.width, source.height));
    return layout;
}

template <class Sample>
void swap_red_and_blue(std::vector<std::uint8_t>& samples)
{
    for (std::size_t pixel = 0; pixel + 3 * sizeof(Sample) <= samples.size(); pixel += 3 * sizeof(Sample))
        for (std::size_t byte = 0; byte < sizeof(Sample); ++byte)
            std::swap(samples[pixel + byte], samples[pixel + 2 * sizeof(Sample) + byte]);
}

} // namespace

Picture make_picture(const PixelSource& source)
{
    const PixelLayout layout = checked_layout(source);
    Picture picture;
    picture.width = static_cast<std::uint32_t>(source.width);
    picture.height = static_cast<std::uint32_t>(source.height);
    picture.channels = layout.channels;
    picture.bits = layout.bytes_per_sample * 8;

    const std::size_t row = picture.row_size();
    const std::size_t stride = row + source.row_padding;
    if (source.size < row || (source.size - row) / stride < source.height - 1)
        throw std::runtime_error(
            fmt::format("a frame of {} x {} pixels of {} needs {} bytes, but its buffer holds {}",
                        source.width, source.height, pixel_format_name(source.pixel_format),
                        stride * (source.height - 1) + row, source.size));
    picture.samples.resize(row * picture.height);
    if (source.row_padding == 0)
        std::memcpy(picture.samples.data(), source.data, picture.samples.size());
    else
        for (std::size_t y = 0; y < picture.height; ++y)
            std::memcpy(picture.samples.data() + y * row, source.data + y * stride, row);
    if (layout.blue_first && layout.bytes_per_sample == 1)
        swap_red_and_blue<std::uint8_t>(picture.samples);
    else if (layout.blue_first)
        swap_red_and_blue<std::uint16_t>(picture.samples);
    return picture;
}

} // namespace zvgentl::tool
