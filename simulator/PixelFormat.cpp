#include "simulator/PixelFormat.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace zvsim {

namespace {

// clang-format off
constexpr PixelFormatTable all_formats = {{
    {"Mono8", 0x101, 0x01080001, Colors::mono, 8, Packing::whole_bytes},
    {"Mono10", 0x102, 0x01100003, Colors::mono, 10, Packing::whole_bytes},
    {"Mono12", 0x103, 0x01100005, Colors::mono, 12, Packing::whole_bytes},
    {"Mono14", 0x104, 0x01100025, Colors::mono, 14, Packing::whole_bytes},
    {"Mono16", 0x105, 0x01100007, Colors::mono, 16, Packing::whole_bytes},
    {"RGB8_Planar", 0x241, 0x02180021, Colors::rgb_planar, 8, Packing::whole_bytes},
    {"RGB10_Planar", 0x242, 0x02300022, Colors::rgb_planar, 10, Packing::whole_bytes},
    {"RGB12_Planar", 0x243, 0x02300023, Colors::rgb_planar, 12, Packing::whole_bytes},
    {"RGB16_Planar", 0x245, 0x02300024, Colors::rgb_planar, 16, Packing::whole_bytes},
    {"BayerGR8", 0x311, 0x01080008, Colors::bayer_gr, 8, Packing::whole_bytes},
    {"BayerGR10", 0x312, 0x0110000C, Colors::bayer_gr, 10, Packing::whole_bytes},
    {"BayerGR12", 0x313, 0x01100010, Colors::bayer_gr, 12, Packing::whole_bytes},
    {"BayerGR14", 0x314, 0x01100109, Colors::bayer_gr, 14, Packing::whole_bytes},
    {"BayerGR16", 0x315, 0x0110002E, Colors::bayer_gr, 16, Packing::whole_bytes},
    {"BayerRG8", 0x321, 0x01080009, Colors::bayer_rg, 8, Packing::whole_bytes},
    {"BayerRG10", 0x322, 0x0110000D, Colors::bayer_rg, 10, Packing::whole_bytes},
    {"BayerRG12", 0x323, 0x01100011, Colors::bayer_rg, 12, Packing::whole_bytes},
    {"BayerRG14", 0x324, 0x0110010A, Colors::bayer_rg, 14, Packing::whole_bytes},
    {"BayerRG16", 0x325, 0x0110002F, Colors::bayer_rg, 16, Packing::whole_bytes},
    {"BayerGB8", 0x331, 0x0108000A, Colors::bayer_gb, 8, Packing::whole_bytes},
    {"BayerGB10", 0x332, 0x0110000E, Colors::bayer_gb, 10, Packing::whole_bytes},
    {"BayerGB12", 0x333, 0x01100012, Colors::bayer_gb, 12, Packing::whole_bytes},
    {"BayerGB14", 0x334, 0x0110010B, Colors::bayer_gb, 14, Packing::whole_bytes},
    {"BayerGB16", 0x335, 0x01100030, Colors::bayer_gb, 16, Packing::whole_bytes},
    {"BayerBG8", 0x341, 0x0108000B, Colors::bayer_bg, 8, Packing::whole_bytes},
    {"BayerBG10", 0x342, 0x0110000F, Colors::bayer_bg, 10, Packing::whole_bytes},
    {"BayerBG12", 0x343, 0x01100013, Colors::bayer_bg, 12, Packing::whole_bytes},
    {"BayerBG14", 0x344, 0x0110010C, Colors::bayer_bg, 14, Packing::whole_bytes},
    {"BayerBG16", 0x345, 0x01100031, Colors::bayer_bg, 16, Packing::whole_bytes},
    {"RGB8", 0x401, 0x02180014, Colors::rgb, 8, Packing::whole_bytes},
    {"RGB10", 0x402, 0x02300018, Colors::rgb, 10, Packing::whole_bytes},
    {"RGB12", 0x403, 0x0230001A, Colors::rgb, 12, Packing::whole_bytes},
    {"RGB14", 0x404, 0x0230005E, Colors::rgb, 14, Packing::whole_bytes},
    {"RGB16", 0x405, 0x02300033, Colors::rgb, 16, Packing::whole_bytes},
    {"RGBa8", 0x501, 0x02200016, Colors::rgba, 8, Packing::whole_bytes},
    {"RGBa10", 0x502, 0x0240005F, Colors::rgba, 10, Packing::whole_bytes},
    {"RGBa12", 0x503, 0x02400061, Colors::rgba, 12, Packing::whole_bytes},
    {"RGBa14", 0x504, 0x02400063, Colors::rgba, 14, Packing::whole_bytes},
    {"RGBa16", 0x505, 0x02400064, Colors::rgba, 16, Packing::whole_bytes},
    {"YUV411_8_UYYVYY", 0x611, 0x020C001E, Colors::yuv411, 8, Packing::whole_bytes},
    {"YUV422_8", 0x621, 0x02100032, Colors::yuv422, 8, Packing::whole_bytes},
    {"YUV8_UYV", 0x631, 0x02180020, Colors::yuv444, 8, Packing::whole_bytes},
    {"YCbCr601_422_8", 0x721, 0x0210003E, Colors::ycbcr601_422, 8, Packing::whole_bytes},
    {"YCbCr601_422_10", 0x722, 0x0220008D, Colors::ycbcr601_422, 10, Packing::whole_bytes},
    {"YCbCr601_422_12", 0x723, 0x0220008F, Colors::ycbcr601_422, 12, Packing::whole_bytes},
    {"YCbCr709_422_8", 0x821, 0x02100041, Colors::ycbcr709_422, 8, Packing::whole_bytes},
    {"YCbCr709_422_10", 0x822, 0x02200095, Colors::ycbcr709_422, 10, Packing::whole_bytes},
    {"YCbCr709_422_12", 0x823, 0x02200097, Colors::ycbcr709_422, 12, Packing::whole_bytes},
    {"Mono10p", 0, 0x010A0046, Colors::mono, 10, Packing::lsb_packed},
    {"Mono12p", 0, 0x010C0047, Colors::mono, 12, Packing::lsb_packed},
    {"Mono14p", 0, 0x010E0104, Colors::mono, 14, Packing::lsb_packed},
    {"Mono10Packed", 0, 0x010C0004, Colors::mono, 10, Packing::gige_packed},
    {"Mono12Packed", 0, 0x010C0006, Colors::mono, 12, Packing::gige_packed},
    {"BayerGR10p", 0, 0x010A0056, Colors::bayer_gr, 10, Packing::lsb_packed},
    {"BayerGR12p", 0, 0x010C0057, Colors::bayer_gr, 12, Packing::lsb_packed},
    {"BayerRG10p", 0, 0x010A0058, Colors::bayer_rg, 10, Packing::lsb_packed},
    {"BayerRG12p", 0, 0x010C0059, Colors::bayer_rg, 12, Packing::lsb_packed},
    {"BayerGB10p", 0, 0x010A0054, Colors::bayer_gb, 10, Packing::lsb_packed},
    {"BayerGB12p", 0, 0x010C0055, Colors::bayer_gb, 12, Packing::lsb_packed},
    {"BayerBG10p", 0, 0x010A0052, Colors::bayer_bg, 10, Packing::lsb_packed},
    {"BayerBG12p", 0, 0x010C0053, Colors::bayer_bg, 12, Packing::lsb_packed},
    {"RGB10p", 0, 0x021E005C, Colors::rgb, 10, Packing::lsb_packed},
    {"RGB12p", 0, 0x0224005D, Colors::rgb, 12, Packing::lsb_packed},
}};
// clang-format on

} // namespace

uint32_t PixelFormat::step_x() const
{
    if (colors == Colors::yuv411)
        return 4;
    if (packing == Packing::lsb_packed)
        return bits % 4 == 0 ? 2 : 4; // the fewest pixels that fill whole bytes, and whole Bayer cells
    const bool is_in_pairs = packing == Packing::gige_packed || is_bayer() || colors == Colors::yuv422 ||
                             colors == Colors::ycbcr601_422 || colors == Colors::ycbcr709_422;
    return is_in_pairs ? 2 : 1;
}

uint64_t PixelFormat::size_of(uint32_t width, uint32_t height) const
{
    return (uint64_t{width} * height * bits_per_pixel() + 7) / 8;
}

const PixelFormatTable& pixel_formats() { return all_formats; }

const PixelFormat* find_pixel_format(std::string_view name)
{
    const auto* const found = std::find_if(all_formats.begin(), all_formats.end(),
                                           [name](const PixelFormat& format) { return format.name == name; });
    return found != all_formats.end() ? found : nullptr;
}

const PixelFormat& pixel_format(std::string_view name)
{
    const PixelFormat* const found = find_pixel_format(name);
    if (found == nullptr)
        throw std::invalid_argument{"no pixel format " + std::string{name}};
    return *found;
}

} // namespace zvsim
