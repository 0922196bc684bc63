#include <gtest/gtest.h>

#include "unit/simulator/decode.h"

// The decoder of the tests, against bytes written by hand from the pictures in the standards.

namespace {

using zvsim_test::decode;
using Bytes = std::vector<unsigned char>;
using Samples = std::vector<uint32_t>;

Samples samples_of(const char* format, size_t width, const Bytes& bytes)
{
    return decode(format, width, 1, bytes.data(), bytes.size()).samples;
}

TEST(Decode, TakesUnpackedSamplesFromLittleEndianWords)
{
    EXPECT_EQ((Samples{0x12, 0x34}), samples_of("Mono8", 2, {0x12, 0x34}));
    EXPECT_EQ((Samples{0x3A5, 0x001}), samples_of("BayerRG10", 2, {0xA5, 0x03, 0x01, 0x00}));
    EXPECT_EQ((Samples{0xBEEF}), samples_of("Mono16", 1, {0xEF, 0xBE}));
}

TEST(Decode, SeesBitsBeyondTheSample) { EXPECT_EQ((Samples{0x8001}), samples_of("Mono12", 1, {0x01, 0x80})); }

TEST(Decode, FillsBytesFromTheLowestBit)
{
    // 0x001, 0x3FF, 0x000, 0x200 in 10 bits each
    EXPECT_EQ((Samples{0x001, 0x3FF, 0x000, 0x200}),
              samples_of("Mono10p", 4, {0x01, 0xFC, 0x0F, 0x00, 0x80}));
    EXPECT_EQ((Samples{0x321, 0x654}), samples_of("Mono12p", 2, {0x21, 0x43, 0x65}));
    EXPECT_EQ((Samples{0x321, 0x654, 0x987, 0xCBA}),
              samples_of("BayerGB12p", 4, {0x21, 0x43, 0x65, 0x87, 0xA9, 0xCB}));
    EXPECT_EQ((Samples{0x321, 0x654, 0x987, 0xCBA, 0xFED, 0x210}),
              samples_of("RGB12p", 2, {0x21, 0x43, 0x65, 0x87, 0xA9, 0xCB, 0xED, 0x0F, 0x21}));
}

TEST(Decode, TakesTheLowBitsOfAPairFromTheMiddleByte)
{
    EXPECT_EQ((Samples{0x123, 0x456}), samples_of("Mono12Packed", 2, {0x12, 0x63, 0x45}));
    EXPECT_EQ((Samples{0x3FD, 0x002}), samples_of("Mono10Packed", 2, {0xFF, 0x21, 0x00}));
}

TEST(Decode, FindsTheChannelsOfAColor)
{
    EXPECT_EQ((Samples{1, 2, 3, 4, 5, 6}), samples_of("RGB8", 2, {1, 2, 3, 4, 5, 6}));
    EXPECT_EQ((Samples{1, 3, 5, 2, 4, 6}), samples_of("RGB8_Planar", 2, {1, 2, 3, 4, 5, 6}));
    EXPECT_EQ((Samples{0x101, 2, 3, 0x3FF}), samples_of("RGBa10", 1, {1, 1, 2, 0, 3, 0, 0xFF, 3}));
}

TEST(Decode, GivesSharedChromaToEveryPixel)
{
    EXPECT_EQ((Samples{10, 20, 30, 11, 20, 30}), samples_of("YUV422_8", 2, {10, 20, 11, 30}));
    EXPECT_EQ((Samples{10, 20, 30, 11, 20, 30, 12, 20, 30, 13, 20, 30}),
              samples_of("YUV411_8_UYYVYY", 4, {20, 10, 11, 30, 12, 13}));
    EXPECT_EQ((Samples{10, 20, 30}), samples_of("YUV8_UYV", 1, {20, 10, 30}));
    EXPECT_EQ((Samples{0x10A, 2, 3, 0x10B, 2, 3}),
              samples_of("YCbCr709_422_12", 2, {0x0A, 1, 2, 0, 0x0B, 1, 3, 0}));
}

TEST(Decode, RefusesAFrameThatIsTooShort)
{
    EXPECT_THROW(samples_of("Mono12p", 2, {0, 0}), std::out_of_range);
}

} // namespace
