#include <stdexcept>

#include <gtest/gtest.h>

#include "unit/simulator/expected_picture.h"

// The decoder of the tests, against bytes written by hand from the pictures in the standards.

namespace {

struct Row {
    const char* format;
    size_t width;
    std::vector<unsigned char> bytes;
    std::vector<uint32_t> samples;
};

const Row rows[] = {
    // Samples without packing are little-endian words, and bits beyond the sample show.
    {"Mono8", 2, {0x12, 0x34}, {0x12, 0x34}},
    {"BayerRG10", 2, {0xA5, 0x03, 0x01, 0x00}, {0x3A5, 0x001}},
    {"Mono16", 1, {0xEF, 0xBE}, {0xBEEF}},
    {"Mono12", 1, {0x01, 0x80}, {0x8001}},
    // Packed ones fill bytes from the lowest bit.
    {"Mono10p", 4, {0x01, 0xFC, 0x0F, 0x00, 0x80}, {0x001, 0x3FF, 0x000, 0x200}},
    {"Mono12p", 2, {0x21, 0x43, 0x65}, {0x321, 0x654}},
    {"BayerGB12p", 4, {0x21, 0x43, 0x65, 0x87, 0xA9, 0xCB}, {0x321, 0x654, 0x987, 0xCBA}},
    {"RGB12p",
     2,
     {0x21, 0x43, 0x65, 0x87, 0xA9, 0xCB, 0xED, 0x0F, 0x21},
     {0x321, 0x654, 0x987, 0xCBA, 0xFED, 0x210}},
    // The low bits of a pair are in the middle byte.
    {"Mono12Packed", 2, {0x12, 0x63, 0x45}, {0x123, 0x456}},
    {"Mono10Packed", 2, {0xFF, 0x21, 0x00}, {0x3FD, 0x002}},
    // Channels of a colour.
    {"RGB8", 2, {1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 6}},
    {"RGB8_Planar", 2, {1, 2, 3, 4, 5, 6}, {1, 3, 5, 2, 4, 6}},
    {"RGBa10", 1, {1, 1, 2, 0, 3, 0, 0xFF, 3}, {0x101, 2, 3, 0x3FF}},
    // Shared chroma belongs to every pixel.
    {"YUV422_8", 2, {10, 20, 11, 30}, {10, 20, 30, 11, 20, 30}},
    {"YUV411_8_UYYVYY", 4, {20, 10, 11, 30, 12, 13}, {10, 20, 30, 11, 20, 30, 12, 20, 30, 13, 20, 30}},
    {"YUV8_UYV", 1, {20, 10, 30}, {10, 20, 30}},
    {"YCbCr709_422_12", 2, {0x0A, 1, 2, 0, 0x0B, 1, 3, 0}, {0x10A, 2, 3, 0x10B, 2, 3}},
};

TEST(Decode, FindsTheSamplesOfEveryLayout)
{
    for (const Row& row : rows) {
        EXPECT_EQ(row.samples,
                  zvsim_test::decode(row.format, row.width, 1, row.bytes.data(), row.bytes.size()).samples)
            << row.format;
        EXPECT_THROW(zvsim_test::decode(row.format, row.width, 1, row.bytes.data(), row.bytes.size() - 1),
                     std::out_of_range)
            << row.format;
    }
}

} // namespace
