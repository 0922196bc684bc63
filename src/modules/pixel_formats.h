#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>

namespace zvgentl {

/// One row of the conversion table: a CoaXPress pixel-format code and the PFNC code of the same format.
struct PixelFormatRow {
    uint16_t coaxpress;
    uint32_t pfnc;
};

/// Sorted by the CoaXPress code. 0x244 has no row on purpose: its code is passed on unchanged.
inline constexpr PixelFormatRow pixel_formats[] = {
    {0x101, 0x01080001}, // Mono8
    {0x102, 0x01100003}, // Mono10
    {0x103, 0x01100005}, // Mono12
    {0x104, 0x01100025}, // Mono14
    {0x105, 0x01100007}, // Mono16
    {0x241, 0x02180021}, // RGB8_Planar
    {0x242, 0x02300022}, // RGB10_Planar
    {0x243, 0x02300023}, // RGB12_Planar
    {0x245, 0x02300024}, // RGB16_Planar
    {0x311, 0x01080008}, // BayerGR8
    {0x312, 0x0110000C}, // BayerGR10
    {0x313, 0x01100010}, // BayerGR12
    {0x314, 0x01100109}, // BayerGR14
    {0x315, 0x0110002E}, // BayerGR16
    {0x321, 0x01080009}, // BayerRG8
    {0x322, 0x0110000D}, // BayerRG10
    {0x323, 0x01100011}, // BayerRG12
    {0x324, 0x0110010A}, // BayerRG14
    {0x325, 0x0110002F}, // BayerRG16
    {0x331, 0x0108000A}, // BayerGB8
    {0x332, 0x0110000E}, // BayerGB10
    {0x333, 0x01100012}, // BayerGB12
    {0x334, 0x0110010B}, // BayerGB14
    {0x335, 0x01100030}, // BayerGB16
    {0x341, 0x0108000B}, // BayerBG8
    {0x342, 0x0110000F}, // BayerBG10
    {0x343, 0x01100013}, // BayerBG12
    {0x344, 0x0110010C}, // BayerBG14
    {0x345, 0x01100031}, // BayerBG16
    {0x401, 0x02180014}, // RGB8
    {0x402, 0x02300018}, // RGB10
    {0x403, 0x0230001A}, // RGB12
    {0x404, 0x0230005E}, // RGB14
    {0x405, 0x02300033}, // RGB16
    {0x501, 0x02200016}, // RGBa8
    {0x502, 0x0240005F}, // RGBa10
    {0x503, 0x02400061}, // RGBa12
    {0x504, 0x02400063}, // RGBa14
    {0x505, 0x02400064}, // RGBa16
    {0x611, 0x020C001E}, // YUV411_8
    {0x621, 0x02100032}, // YUV422_8
    {0x631, 0x02180020}, // YUV8
    {0x721, 0x0210003E}, // YCbCr601_422_8
    {0x722, 0x0220008D}, // YCbCr601_422_10
    {0x723, 0x0220008F}, // YCbCr601_422_12
    {0x821, 0x02100041}, // YCbCr709_422_8
    {0x822, 0x02200095}, // YCbCr709_422_10
    {0x823, 0x02200097}, // YCbCr709_422_12
};

static_assert(std::size(pixel_formats) == 48, "one row per format that both standards name");

/// The PFNC code of a CoaXPress code; nothing when the table has no row for it.
inline std::optional<uint32_t> pfnc_of(uint32_t coaxpress) noexcept
{
    const auto* const row = std::lower_bound(
        std::begin(pixel_formats), std::end(pixel_formats), coaxpress,
        [](const PixelFormatRow& candidate, uint32_t code) { return candidate.coaxpress < code; });
    if (row == std::end(pixel_formats) || row->coaxpress != coaxpress)
        return std::nullopt;
    return row->pfnc;
}

} // namespace zvgentl
