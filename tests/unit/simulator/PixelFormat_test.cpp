#include <map>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "simulator/PixelFormat.h"

namespace {

using zvsim::pixel_formats;

// The list of values that belongs to PFNC, by name.
const std::map<std::string, uint32_t> pfnc_values{
    {"BayerBG10", 0x0110000F},       {"BayerBG10p", 0x010A0052},      {"BayerBG12", 0x01100013},
    {"BayerBG12p", 0x010C0053},      {"BayerBG14", 0x0110010C},       {"BayerBG16", 0x01100031},
    {"BayerBG8", 0x0108000B},        {"BayerGB10", 0x0110000E},       {"BayerGB10p", 0x010A0054},
    {"BayerGB12", 0x01100012},       {"BayerGB12p", 0x010C0055},      {"BayerGB14", 0x0110010B},
    {"BayerGB16", 0x01100030},       {"BayerGB8", 0x0108000A},        {"BayerGR10", 0x0110000C},
    {"BayerGR10p", 0x010A0056},      {"BayerGR12", 0x01100010},       {"BayerGR12p", 0x010C0057},
    {"BayerGR14", 0x01100109},       {"BayerGR16", 0x0110002E},       {"BayerGR8", 0x01080008},
    {"BayerRG10", 0x0110000D},       {"BayerRG10p", 0x010A0058},      {"BayerRG12", 0x01100011},
    {"BayerRG12p", 0x010C0059},      {"BayerRG14", 0x0110010A},       {"BayerRG16", 0x0110002F},
    {"BayerRG8", 0x01080009},        {"Mono10", 0x01100003},          {"Mono10Packed", 0x010C0004},
    {"Mono10p", 0x010A0046},         {"Mono12", 0x01100005},          {"Mono12Packed", 0x010C0006},
    {"Mono12p", 0x010C0047},         {"Mono14", 0x01100025},          {"Mono14p", 0x010E0104},
    {"Mono16", 0x01100007},          {"Mono8", 0x01080001},           {"RGB10", 0x02300018},
    {"RGB10_Planar", 0x02300022},    {"RGB10p", 0x021E005C},          {"RGB12", 0x0230001A},
    {"RGB12_Planar", 0x02300023},    {"RGB12p", 0x0224005D},          {"RGB14", 0x0230005E},
    {"RGB16", 0x02300033},           {"RGB16_Planar", 0x02300024},    {"RGB8", 0x02180014},
    {"RGB8_Planar", 0x02180021},     {"RGBa10", 0x0240005F},          {"RGBa12", 0x02400061},
    {"RGBa14", 0x02400063},          {"RGBa16", 0x02400064},          {"RGBa8", 0x02200016},
    {"YCbCr601_422_10", 0x0220008D}, {"YCbCr601_422_12", 0x0220008F}, {"YCbCr601_422_8", 0x0210003E},
    {"YCbCr709_422_10", 0x02200095}, {"YCbCr709_422_12", 0x02200097}, {"YCbCr709_422_8", 0x02100041},
    {"YUV411_8_UYYVYY", 0x020C001E}, {"YUV422_8", 0x02100032},        {"YUV8_UYV", 0x02180020}};

TEST(PixelFormats, HaveTheirNamesAndNumbersInPfnc)
{
    std::map<std::string, uint32_t> offered;
    for (const auto& format : pixel_formats())
        offered.emplace(format.name, format.pfnc_code);
    EXPECT_EQ(pfnc_values, offered);
}

TEST(PixelFormats, HaveTheNumberOfColorsThatTheirCodeNames)
{
    for (const auto& format : pixel_formats()) {
        const bool is_single = format.colors == zvsim::Colors::mono || format.is_bayer();
        EXPECT_EQ(is_single ? 1U : 2U, format.pfnc_code >> 24U) << format.name;
    }
}

TEST(PixelFormats, AreNumberedOnceByCoaxpress)
{
    std::set<uint32_t> codes;
    for (const auto& format : pixel_formats()) {
        if (format.coaxpress_code != 0) {
            EXPECT_TRUE(codes.insert(format.coaxpress_code).second) << format.name;
        }
    }
    EXPECT_EQ(48U, codes.size());
}

TEST(PixelFormats, HaveWholeMosaicsInAStep)
{
    for (const auto& format : pixel_formats()) {
        if (format.is_bayer()) {
            EXPECT_EQ(0U, format.step_x() % 2) << format.name;
            EXPECT_EQ(2U, format.step_y()) << format.name;
        }
    }
}

TEST(PixelFormats, AreFoundByName)
{
    for (const auto& format : pixel_formats())
        EXPECT_EQ(&format, zvsim::find_pixel_format(format.name));
    EXPECT_EQ(nullptr, zvsim::find_pixel_format("Mono9"));
}

} // namespace
