#include <numeric>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "pictures/Picture.h"
#include "pictures/PixelFormat.h"

namespace zvgentl::test {

using namespace tool;

namespace {

constexpr std::uint64_t mono8 = 0x01080001;
constexpr std::uint64_t mono12 = 0x01100005;
constexpr std::uint64_t rgb8 = 0x02180014;
constexpr std::uint64_t bgr8 = 0x02180015;
constexpr std::uint64_t bgr16 = 0x0230004B;
constexpr std::uint64_t mono12_packed = 0x010C0006;

std::vector<std::uint8_t> counted_bytes(std::size_t size)
{
    std::vector<std::uint8_t> bytes(size);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    return bytes;
}

std::string refusal(const PixelSource& source)
{
    try {
        make_picture(source);
    } catch (const std::runtime_error& reason) {
        return reason.what();
    }
    return "no refusal";
}

} // namespace

TEST(MakePicture, KeepsEveryByteOfAGreyFrame)
{
    const auto bytes = counted_bytes(12);
    const Picture picture = make_picture({bytes.data(), bytes.size(), 4, 3, 0, mono8});
    EXPECT_EQ(4U, picture.width);
    EXPECT_EQ(3U, picture.height);
    EXPECT_EQ(1U, picture.channels);
    EXPECT_EQ(8U, picture.bits);
    EXPECT_EQ(bytes, picture.samples);
}

TEST(MakePicture, KeepsTheValuesOfTwelveBitSamples)
{
    const auto bytes = counted_bytes(8);
    const Picture picture = make_picture({bytes.data(), bytes.size(), 2, 2, 0, mono12});
    EXPECT_EQ(16U, picture.bits);
    EXPECT_EQ(bytes, picture.samples);
}

TEST(MakePicture, LeavesOutThePaddingOfRows)
{
    const auto bytes = counted_bytes(2 * 5 + 3); // the last row may lack its padding
    const Picture picture = make_picture({bytes.data(), bytes.size(), 3, 3, 2, mono8});
    EXPECT_EQ((std::vector<std::uint8_t>{0, 1, 2, 5, 6, 7, 10, 11, 12}), picture.samples);
}

TEST(MakePicture, LeavesOutWhatFollowsTheFrame)
{
    const auto bytes = counted_bytes(100);
    EXPECT_EQ(12U, make_picture({bytes.data(), bytes.size(), 4, 3, 0, mono8}).samples.size());
}

TEST(MakePicture, KeepsRedFirst)
{
    const auto bytes = counted_bytes(6);
    EXPECT_EQ(bytes, make_picture({bytes.data(), bytes.size(), 2, 1, 0, rgb8}).samples);
}

TEST(MakePicture, PutsRedFirstWhenBlueWas)
{
    const auto bytes = counted_bytes(6);
    EXPECT_EQ((std::vector<std::uint8_t>{2, 1, 0, 5, 4, 3}),
              make_picture({bytes.data(), bytes.size(), 2, 1, 0, bgr8}).samples);
}

TEST(MakePicture, PutsWideRedFirstWhenBlueWas)
{
    const auto bytes = counted_bytes(12);
    EXPECT_EQ((std::vector<std::uint8_t>{4, 5, 2, 3, 0, 1, 10, 11, 8, 9, 6, 7}),
              make_picture({bytes.data(), bytes.size(), 2, 1, 0, bgr16}).samples);
}

TEST(MakePicture, NamesAFormatThatItCannotSave)
{
    const auto bytes = counted_bytes(100);
    const std::string text = refusal({bytes.data(), bytes.size(), 4, 3, 0, mono12_packed});
    EXPECT_NE(std::string::npos, text.find("Mono12Packed (0x010C0006)")) << text;
}

TEST(MakePicture, GivesTheNumberOfAFormatThatItDoesNotKnow)
{
    const auto bytes = counted_bytes(100);
    const std::string text = refusal({bytes.data(), bytes.size(), 4, 3, 0, 0x101});
    EXPECT_NE(std::string::npos, text.find("0x00000101")) << text;
}

TEST(MakePicture, RefusesABufferThatIsTooSmallByOneByte)
{
    const auto bytes = counted_bytes(11);
    const std::string text = refusal({bytes.data(), bytes.size(), 4, 3, 0, mono8});
    EXPECT_NE(std::string::npos, text.find("needs 12 bytes, but its buffer holds 11")) << text;
}

TEST(MakePicture, RefusesSizesThatOverflow)
{
    const auto bytes = counted_bytes(16);
    for (const std::size_t side : {std::size_t{0}, std::size_t{1} << 32U, ~std::size_t{0}}) {
        EXPECT_NE("no refusal", refusal({bytes.data(), bytes.size(), side, 1, 0, mono8})) << side;
        EXPECT_NE("no refusal", refusal({bytes.data(), bytes.size(), 1, side, 0, mono8})) << side;
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

TEST(PixelFormatName, KnowsFormatsThatCannotBeSaved)
{
    EXPECT_EQ("YUV422_8", pixel_format_name(0x02100032));
    EXPECT_FALSE(pixel_layout(0x02100032).is_known());
}

TEST(PixelFormatName, ShowsAnUnknownNumberInHexadecimal)
{
    EXPECT_EQ("0x01234567", pixel_format_name(0x01234567));
}

} // namespace zvgentl::test
