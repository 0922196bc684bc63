#pragma once

#include <cstdint>
#include <string>

namespace zvgentl::tool {

/// How the samples of a pixel format are laid out in memory, as far as picture files can hold them unchanged.
struct PixelLayout {
    unsigned channels{0};         // samples of a pixel: 1 grey (Bayer mosaics too), 3 RGB, 4 RGB and alpha
    unsigned bytes_per_sample{0}; // 1, or 2 with the value in the low bits
    bool blue_first{false};

    bool is_known() const noexcept { return channels != 0; }
};

/// The standard's (PFNC) name of a 32-bit pixel format, or its number in hexadecimal.
std::string pixel_format_name(std::uint64_t format);

/// Its layout; unknown for packed, planar and YCbCr formats.
PixelLayout pixel_layout(std::uint64_t format) noexcept;

} // namespace zvgentl::tool
