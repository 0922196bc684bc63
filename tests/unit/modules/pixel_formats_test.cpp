#include <iterator>
#include <map>

#include <gtest/gtest.h>

#include "modules/pixel_formats.h"

namespace zvgentl {

namespace {

// clang-format off
/// By family, as the two standards number them.
const std::map<uint32_t, uint32_t> expected = {
    // Mono
    {0x101, 0x1080001}, {0x102, 0x1100003}, {0x103, 0x1100005}, {0x104, 0x1100025}, {0x105, 0x1100007},
    // BayerGR, BayerRG, BayerGB, BayerBG
    {0x311, 0x1080008}, {0x312, 0x110000C}, {0x313, 0x1100010}, {0x314, 0x1100109}, {0x315, 0x110002E},
    {0x321, 0x1080009}, {0x322, 0x110000D}, {0x323, 0x1100011}, {0x324, 0x110010A}, {0x325, 0x110002F},
    {0x331, 0x108000A}, {0x332, 0x110000E}, {0x333, 0x1100012}, {0x334, 0x110010B}, {0x335, 0x1100030},
    {0x341, 0x108000B}, {0x342, 0x110000F}, {0x343, 0x1100013}, {0x344, 0x110010C}, {0x345, 0x1100031},
    // RGB, planar RGB, RGBa
    {0x401, 0x2180014}, {0x402, 0x2300018}, {0x403, 0x230001A}, {0x404, 0x230005E}, {0x405, 0x2300033},
    {0x241, 0x2180021}, {0x242, 0x2300022}, {0x243, 0x2300023}, {0x245, 0x2300024}, // and none for 0x244
    {0x501, 0x2200016}, {0x502, 0x240005F}, {0x503, 0x2400061}, {0x504, 0x2400063}, {0x505, 0x2400064},
    // YUV, YCbCr601, YCbCr709
    {0x611, 0x20C001E}, {0x621, 0x2100032}, {0x631, 0x2180020},
    {0x721, 0x210003E}, {0x722, 0x220008D}, {0x723, 0x220008F},
    {0x821, 0x2100041}, {0x822, 0x2200095}, {0x823, 0x2200097},
};
// clang-format on

TEST(PixelFormats, ConvertEveryCodeThatHasARowAndNoOther)
{
    ASSERT_EQ(48U, expected.size());
    for (uint32_t code = 0; code <= 0x10000; ++code) {
        const auto row = expected.find(code);
        const auto pfnc = row == expected.end() ? std::nullopt : std::optional<uint32_t>(row->second);
        EXPECT_EQ(pfnc, pfnc_of(code)) << std::hex << code;
    }
}

TEST(PixelFormats, LookAtTheWholeCode)
{
    for (uint32_t code : {0x10101U, 0x01080001U, 0x80000101U, 0xFFFFFFFFU})
        EXPECT_EQ(std::nullopt, pfnc_of(code));
}

TEST(PixelFormats, AreSortedByTheirCode)
{
    for (size_t i = 1; i < std::size(pixel_formats); ++i)
        EXPECT_LT(pixel_formats[i - 1].coaxpress, pixel_formats[i].coaxpress);
}

} // namespace

} // namespace zvgentl
