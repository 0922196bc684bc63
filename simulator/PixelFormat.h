#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace zvsim {

/// What the samples of a pixel mean, and their order.
enum class Colors {
    mono,
    bayer_gr,
    bayer_rg,
    bayer_gb,
    bayer_bg,
    rgb,
    rgb_planar,
    rgba,
    /// U Y Y V Y Y.
    yuv411,
    /// Y U Y V.
    yuv422,
    /// U Y V.
    yuv444,
    /// Y Cb Y Cr.
    ycbcr601_422,
    ycbcr709_422,
};

/// How samples that do not fill whole bytes are stored in memory.
enum class Packing {
    /// A sample of more than 8 bits takes two bytes, little-endian, in its low bits.
    whole_bytes,
    /// PFNC "p": without gaps, least significant bit first.
    lsb_packed,
    /// GigE Vision "Packed": two samples in three bytes, their low bits in the middle one.
    gige_packed,
};

/// A pixel format and its number in the two code spaces that cameras use.
struct PixelFormat {
    const char* name;
    /// 0: CoaXPress has none.
    uint32_t coaxpress_code;
    uint32_t pfnc_code;
    Colors colors;
    /// Of one sample.
    uint32_t bits;
    Packing packing;

    /// As PFNC writes it into the code.
    uint32_t bits_per_pixel() const { return pfnc_code >> 16U & 0xFFU; }
    bool is_bayer() const { return colors >= Colors::bayer_gr && colors <= Colors::bayer_bg; }
    /// Widths and horizontal offsets are multiples of this: rows of whole bytes and whole groups of pixels.
    uint32_t step_x() const;
    /// Heights and vertical offsets are multiples of this.
    uint32_t step_y() const { return is_bayer() ? 2 : 1; }
    /// Bytes of a picture, without padding.
    uint64_t size_of(uint32_t width, uint32_t height) const;
};

using PixelFormatTable = std::array<PixelFormat, 63>;
/// All formats: those that CoaXPress numbers, by that number, then the packed ones.
const PixelFormatTable& pixel_formats();
/// Null for an unknown name.
const PixelFormat* find_pixel_format(std::string_view name);
/// The format of this name, which must exist.
const PixelFormat& pixel_format(std::string_view name);

} // namespace zvsim
