#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "zvgr/FrameStamp.h"

namespace {

std::vector<unsigned char> frame_of(size_t size)
{
    std::vector<unsigned char> frame(size);
    std::iota(frame.begin(), frame.end(), static_cast<unsigned char>(7));
    return frame;
}

TEST(FrameStamp, GivesTheCounterBack)
{
    auto frame = frame_of(1000);
    ASSERT_TRUE(zvgr::write_stamp(frame.data(), frame.size(), 0x123456789ABCDEF0));
    const auto stamp = zvgr::read_stamp(frame.data(), frame.size());
    ASSERT_TRUE(stamp);
    EXPECT_EQ(0x123456789ABCDEF0U, stamp->counter);
    EXPECT_TRUE(stamp->checksum_ok);
}

TEST(FrameStamp, IsLaidOutAsDocumented)
{
    auto frame = frame_of(40);
    ASSERT_TRUE(zvgr::write_stamp(frame.data(), frame.size(), 0x0102));
    const std::vector<unsigned char> beginning(frame.begin(), frame.begin() + 24);
    const std::vector<unsigned char> expected{'Z', 'V', 'F', 'S', 1,  0, 0, 0, 2, 1, 0, 0,
                                              0,   0,   0,   0,   40, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(expected, beginning);
    EXPECT_EQ(static_cast<unsigned char>(7 + 32), frame[32]);
}

TEST(FrameStamp, NoticesEveryChangedBit)
{
    for (const size_t size : {32U, 33U, 63U, 64U, 65U, 131U}) {
        auto frame = frame_of(size);
        ASSERT_TRUE(zvgr::write_stamp(frame.data(), frame.size(), 99));
        for (size_t bit = 8 * zvgr::frame_stamp_size; bit < 8 * size; ++bit) {
            frame[bit / 8] = static_cast<unsigned char>(frame[bit / 8] ^ 1U << bit % 8);
            EXPECT_FALSE(zvgr::read_stamp(frame.data(), size)->checksum_ok) << size << " bytes, bit " << bit;
            frame[bit / 8] = static_cast<unsigned char>(frame[bit / 8] ^ 1U << bit % 8);
        }
        EXPECT_TRUE(zvgr::read_stamp(frame.data(), size)->checksum_ok);
    }
}

TEST(FrameStamp, NoticesAChangedCounterAndChecksum)
{
    for (const size_t at : {8U, 15U, 24U, 31U}) {
        auto frame = frame_of(100);
        ASSERT_TRUE(zvgr::write_stamp(frame.data(), frame.size(), 5));
        ++frame[at];
        EXPECT_FALSE(zvgr::read_stamp(frame.data(), frame.size())->checksum_ok) << "byte " << at;
    }
}

TEST(FrameStamp, NoticesExchangedBlocks)
{
    auto frame = frame_of(32 + 64);
    for (size_t at = 0; at < 32; ++at)
        frame[64 + at] = static_cast<unsigned char>(200 + at);
    ASSERT_TRUE(zvgr::write_stamp(frame.data(), frame.size(), 5));
    std::swap_ranges(frame.begin() + 32, frame.begin() + 64, frame.begin() + 64);
    EXPECT_FALSE(zvgr::read_stamp(frame.data(), frame.size())->checksum_ok);
}

TEST(FrameStamp, ReadsAFrameInALargerBuffer)
{
    auto buffer = frame_of(500);
    ASSERT_TRUE(zvgr::write_stamp(buffer.data(), 300, 6));
    EXPECT_TRUE(zvgr::read_stamp(buffer.data(), buffer.size())->checksum_ok);
}

TEST(FrameStamp, ReportsAFrameThatLacksItsEnd)
{
    auto frame = frame_of(500);
    ASSERT_TRUE(zvgr::write_stamp(frame.data(), frame.size(), 6));
    const auto stamp = zvgr::read_stamp(frame.data(), 499);
    ASSERT_TRUE(stamp);
    EXPECT_EQ(6U, stamp->counter);
    EXPECT_FALSE(stamp->checksum_ok);
}

TEST(FrameStamp, OfACutFrameGivesTheCounterOnly)
{
    auto frame = frame_of(100);
    ASSERT_TRUE(zvgr::write_stamp_of_cut_frame(frame.data(), frame.size(), 500, 8));
    const auto stamp = zvgr::read_stamp(frame.data(), frame.size());
    ASSERT_TRUE(stamp);
    EXPECT_EQ(8U, stamp->counter);
    EXPECT_FALSE(stamp->checksum_ok);
}

TEST(FrameStamp, IsNotFoundWhereThereIsNone)
{
    auto frame = frame_of(100);
    EXPECT_FALSE(zvgr::read_stamp(frame.data(), frame.size()));
    EXPECT_FALSE(zvgr::read_stamp(nullptr, 100));
    ASSERT_TRUE(zvgr::write_stamp(frame.data(), frame.size(), 1));
    EXPECT_FALSE(zvgr::read_stamp(frame.data(), 31));
    ++frame[4];
    EXPECT_FALSE(zvgr::read_stamp(frame.data(), frame.size())) << "a version that is not known";
}

TEST(FrameStamp, ReportsASizeThatCannotBe)
{
    auto frame = frame_of(100);
    ASSERT_TRUE(zvgr::write_stamp(frame.data(), frame.size(), 1));
    frame[16] = 31;
    EXPECT_FALSE(zvgr::read_stamp(frame.data(), frame.size())->checksum_ok);
}

TEST(FrameStamp, IsNotWrittenToAFrameThatIsTooSmall)
{
    auto frame = frame_of(31);
    const auto before = frame;
    EXPECT_FALSE(zvgr::write_stamp(frame.data(), frame.size(), 1));
    EXPECT_FALSE(zvgr::write_stamp_of_cut_frame(frame.data(), frame.size(), 100, 1));
    EXPECT_FALSE(zvgr::write_stamp(nullptr, 100, 1));
    EXPECT_FALSE(zvgr::write_stamp_of_cut_frame(nullptr, 100, 200, 1));
    EXPECT_EQ(before, frame);
}

} // namespace
