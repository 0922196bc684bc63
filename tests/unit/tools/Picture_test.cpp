#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "pictures/Picture.h"
#include "pictures/PixelFormat.h"
#include "support.h"

namespace zvgentl::test {

using namespace tool;

namespace {

constexpr std::uint64_t mono8 = 0x01080001;
constexpr std::uint64_t mono12 = 0x01100005;
constexpr std::uint64_t rgb8 = 0x02180014;
constexpr std::uint64_t bgr8 = 0x02180015;
constexpr std::uint64_t bgr16 = 0x0230004B;
constexpr std::uint64_t mono12_packed = 0x010C0006;
constexpr std::size_t huge = std::size_t{1} << 32U;

using Bytes = std::vector<std::uint8_t>;

Bytes counted_bytes(std::size_t size)
{
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    return bytes;
}

} // namespace

TEST(MakePicture, CopiesRowsWithoutPaddingAndWithRedFirst)
{
    const struct {
        const char* what;
        PixelSource source; // its bytes are 0, 1, 2 and so on
        unsigned channels, bits;
        Bytes samples;
    } cases[] = {
        {"grey", {nullptr, 6, 3, 2, 0, mono8}, 1, 8, {0, 1, 2, 3, 4, 5}},
        {"12 bits", {nullptr, 8, 2, 2, 0, mono12}, 1, 16, {0, 1, 2, 3, 4, 5, 6, 7}},
        {"padding, not behind the last row",
         {nullptr, 13, 3, 3, 2, mono8},
         1,
         8,
         {0, 1, 2, 5, 6, 7, 10, 11, 12}},
        {"more after the frame", {nullptr, 100, 2, 2, 0, mono8}, 1, 8, {0, 1, 2, 3}},
        {"red first", {nullptr, 6, 2, 1, 0, rgb8}, 3, 8, {0, 1, 2, 3, 4, 5}},
        {"blue first", {nullptr, 6, 2, 1, 0, bgr8}, 3, 8, {2, 1, 0, 5, 4, 3}},
        {"blue first, 16 bits", {nullptr, 12, 2, 1, 0, bgr16}, 3, 16, {4, 5, 2, 3, 0, 1, 10, 11, 8, 9, 6, 7}},
    };
    for (const auto& row : cases) {
        const Bytes bytes = counted_bytes(row.source.size);
        PixelSource source = row.source;
        source.data = bytes.data();
        EXPECT_THAT(make_picture(source),
                    testing::FieldsAre(source.width, source.height, row.channels, row.bits, row.samples))
            << row.what;
    }
}

TEST(MakePicture, SaysWhyItRefuses)
{
    const std::pair<PixelSource, const char*> cases[] = {
        {{nullptr, 100, 4, 3, 0, mono12_packed}, "Mono12Packed (0x010C0006)"},
        {{nullptr, 100, 4, 3, 0, 0x101}, "0x00000101"},
        {{nullptr, 11, 4, 3, 0, mono8}, "needs 12 bytes, but its buffer holds 11"},
        {{nullptr, 16, 0, 1, 0, mono8}, "a frame of 0 x 1 pixels cannot be saved"},
        {{nullptr, 16, 1, 0, 0, mono8}, "a frame of 1 x 0 pixels cannot be saved"},
        {{nullptr, 16, huge, 1, 0, mono8}, "a frame of 4294967296 x 1 pixels cannot be saved"},
        {{nullptr, 16, 1, huge, 0, mono8}, "a frame of 1 x 4294967296 pixels cannot be saved"},
        {{nullptr, 16, ~std::size_t{0}, 1, 0, mono8}, " x 1 pixels cannot be saved"},
        {{nullptr, 16, 1, ~std::size_t{0}, 0, mono8}, "a frame of 1 x "},
    };
    for (auto [source, reason] : cases) {
        const Bytes bytes = counted_bytes(source.size);
        source.data = bytes.data();
        EXPECT_THAT(error_of([&source = source] { make_picture(source); }), HasSubstr(reason));
    }
}

TEST(PixelLayout, FitsTheBitsPerPixelInEveryCode)
{
    // The second byte of a PFNC code is the number of bits that a pixel takes.
    unsigned known = 0;
    for (std::uint64_t top : {0x01080000U, 0x01100000U, 0x02180000U, 0x02200000U, 0x02300000U, 0x02400000U})
        for (std::uint64_t id = 0; id < 0x200; ++id) {
            const PixelLayout layout = pixel_layout(top + id);
            if (!layout.is_known())
                continue;
            ++known;
            EXPECT_EQ((top >> 16U) & 0xFFU, layout.channels * layout.bytes_per_sample * 8)
                << pixel_format_name(top + id);
        }
    EXPECT_EQ(40U, known);
}

TEST(PixelFormatName, IsTheNumberInHexadecimalUnlessTheFormatIsKnown)
{
    EXPECT_EQ("YUV422_8", pixel_format_name(0x02100032));
    EXPECT_FALSE(pixel_layout(0x02100032).is_known());
    EXPECT_EQ("0x01234567", pixel_format_name(0x01234567));
}

} // namespace zvgentl::test
