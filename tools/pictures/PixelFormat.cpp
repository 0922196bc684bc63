#include "pictures/PixelFormat.h"

#include <algorithm>
#include <iterator>

#include <fmt/core.h>

namespace zvgentl::tool {

namespace {

struct FormatRow {
    std::uint64_t format;
    const char* name;
    PixelLayout layout;
};

constexpr PixelLayout other{};
constexpr PixelLayout grey_8{1, 1, false};
constexpr PixelLayout grey_16{1, 2, false};
constexpr PixelLayout rgb_8{3, 1, false};
constexpr PixelLayout rgb_16{3, 2, false};
constexpr PixelLayout bgr_8{3, 1, true};
constexpr PixelLayout bgr_16{3, 2, true};
constexpr PixelLayout rgba_8{4, 1, false};
constexpr PixelLayout rgba_16{4, 2, false};

constexpr FormatRow formats[] = {
    {0x01080001, "Mono8", grey_8},
    {0x01080008, "BayerGR8", grey_8},
    {0x01080009, "BayerRG8", grey_8},
    {0x0108000A, "BayerGB8", grey_8},
    {0x0108000B, "BayerBG8", grey_8},
    {0x010A0046, "Mono10p", other},
    {0x010A0052, "BayerBG10p", other},
    {0x010A0054, "BayerGB10p", other},
    {0x010A0056, "BayerGR10p", other},
    {0x010A0058, "BayerRG10p", other},
    {0x010C0004, "Mono10Packed", other},
    {0x010C0006, "Mono12Packed", other},
    {0x010C0047, "Mono12p", other},
    {0x010C0053, "BayerBG12p", other},
    {0x010C0055, "BayerGB12p", other},
    {0x010C0057, "BayerGR12p", other},
    {0x010C0059, "BayerRG12p", other},
    {0x01100003, "Mono10", grey_16},
    {0x01100005, "Mono12", grey_16},
    {0x01100007, "Mono16", grey_16},
    {0x0110000C, "BayerGR10", grey_16},
    {0x0110000D, "BayerRG10", grey_16},
    {0x0110000E, "BayerGB10", grey_16},
    {0x0110000F, "BayerBG10", grey_16},
    {0x01100010, "BayerGR12", grey_16},
    {0x01100011, "BayerRG12", grey_16},
    {0x01100012, "BayerGB12", grey_16},
    {0x01100013, "BayerBG12", grey_16},
    {0x01100025, "Mono14", grey_16},
    {0x0110002E, "BayerGR16", grey_16},
    {0x0110002F, "BayerRG16", grey_16},
    {0x01100030, "BayerGB16", grey_16},
    {0x01100031, "BayerBG16", grey_16},
    {0x01100109, "BayerGR14", grey_16},
    {0x0110010A, "BayerRG14", grey_16},
    {0x0110010B, "BayerGB14", grey_16},
    {0x0110010C, "BayerBG14", grey_16},
    {0x020C001E, "YUV411_8_UYYVYY", other},
    {0x02100032, "YUV422_8", other},
    {0x0210003E, "YCbCr601_422_8", other},
    {0x02100041, "YCbCr709_422_8", other},
    {0x02180014, "RGB8", rgb_8},
    {0x02180015, "BGR8", bgr_8},
    {0x02180020, "YUV8_UYV", other},
    {0x02180021, "RGB8_Planar", other},
    {0x02200016, "RGBa8", rgba_8},
    {0x0220008D, "YCbCr601_422_10", other},
    {0x0220008F, "YCbCr601_422_12", other},
    {0x02200095, "YCbCr709_422_10", other},
    {0x02200097, "YCbCr709_422_12", other},
    {0x02300018, "RGB10", rgb_16},
    {0x02300019, "BGR10", bgr_16},
    {0x0230001A, "RGB12", rgb_16},
    {0x0230001B, "BGR12", bgr_16},
    {0x02300022, "RGB10_Planar", other},
    {0x02300023, "RGB12_Planar", other},
    {0x02300024, "RGB16_Planar", other},
    {0x02300033, "RGB16", rgb_16},
    {0x0230004A, "BGR14", bgr_16},
    {0x0230004B, "BGR16", bgr_16},
    {0x0230005E, "RGB14", rgb_16},
    {0x0240005F, "RGBa10", rgba_16},
    {0x02400061, "RGBa12", rgba_16},
    {0x02400063, "RGBa14", rgba_16},
    {0x02400064, "RGBa16", rgba_16},
};

const FormatRow* find_row(std::uint64_t format) noexcept
{
    const auto* const row = std::lower_bound(
        std::begin(formats), std::end(formats), format,
        [](const FormatRow& candidate, std::uint64_t wanted) { return candidate.format < wanted; });
    return row != std::end(formats) && row->format == format ? row : nullptr;
}

} // namespace

std::string pixel_format_name(std::uint64_t format)
{
    const FormatRow* const row = find_row(format);
    return row == nullptr ? fmt::format("0x{:08X}", format) : row->name;
}

PixelLayout pixel_layout(std::uint64_t format) noexcept
{
    const FormatRow* const row = find_row(format);
    return row == nullptr ? PixelLayout{} : row->layout;
}

} // namespace zvgentl::tool
