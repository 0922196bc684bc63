#include <algorithm>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "zvgr/FrameStamp.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes plain_frame(size_t size)
{
    Bytes frame(size);
    std::iota(frame.begin(), frame.end(), static_cast<unsigned char>(7));
    return frame;
}

Bytes stamped_frame(size_t size, uint64_t counter = 5)
{
    Bytes frame = plain_frame(size);
    EXPECT_TRUE(zvgr::write_stamp(frame.data(), size, counter));
    return frame;
}

/// Expects a stamp with that counter.
void expect_stamp(const Bytes& frame, size_t size, uint64_t counter, bool is_whole)
{
    const auto stamp = zvgr::read_stamp(frame.data(), size);
    ASSERT_TRUE(stamp);
    EXPECT_EQ(counter, stamp->counter);
    EXPECT_EQ(is_whole, stamp->checksum_ok);
}

bool is_whole(const Bytes& frame) { return zvgr::read_stamp(frame.data(), frame.size())->checksum_ok; }

TEST(FrameStamp, GivesTheCounterBackAlsoFromALargerBuffer)
{
    expect_stamp(stamped_frame(1000, 0x123456789ABCDEF0), 1000, 0x123456789ABCDEF0, true);
    Bytes buffer = stamped_frame(300, 6);
    buffer.resize(500, 0x5A);
    expect_stamp(buffer, buffer.size(), 6, true);
}

TEST(FrameStamp, IsLaidOutAsDocumented)
{
    const Bytes frame = stamped_frame(40, 0x0102);
    const Bytes expected{'Z', 'V', 'F', 'S', 1, 0, 0, 0, 2, 1, 0, 0, 0, 0, 0, 0, 40, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(expected, Bytes(frame.begin(), frame.begin() + 24));
    EXPECT_EQ(7 + 32, frame[32]);
}

TEST(FrameStamp, NoticesEveryChangedBit)
{
    for (const size_t size : {32U, 33U, 63U, 64U, 65U, 131U}) {
        Bytes frame = stamped_frame(size);
        for (size_t bit = 8 * zvgr::frame_stamp_size; bit < 8 * size; ++bit) {
            frame[bit / 8] = static_cast<unsigned char>(frame[bit / 8] ^ 1U << bit % 8);
            EXPECT_FALSE(is_whole(frame)) << size << " bytes, bit " << bit;
            frame[bit / 8] = static_cast<unsigned char>(frame[bit / 8] ^ 1U << bit % 8);
        }
        EXPECT_TRUE(is_whole(frame));
    }
}

TEST(FrameStamp, NoticesAChangedCounterSizeOrChecksumAndExchangedBlocks)
{
    for (const size_t at : {8U, 15U, 16U, 24U, 31U}) {
        Bytes frame = stamped_frame(100);
        ++frame[at];
        EXPECT_FALSE(is_whole(frame)) << "byte " << at;
    }
    Bytes impossible = stamped_frame(100);
    impossible[16] = 31; // smaller than the stamp
    EXPECT_FALSE(is_whole(impossible));
    Bytes exchanged = stamped_frame(32 + 64); // no two bytes of it are the same
    std::swap_ranges(exchanged.begin() + 32, exchanged.begin() + 64, exchanged.begin() + 64);
    EXPECT_FALSE(is_whole(exchanged));
}

TEST(FrameStamp, OfAFrameThatLacksItsEndGivesTheCounterOnly)
{
    expect_stamp(stamped_frame(500, 6), 499, 6, false);
    Bytes cut = plain_frame(100);
    ASSERT_TRUE(zvgr::write_stamp_of_cut_frame(cut.data(), cut.size(), 500, 8));
    expect_stamp(cut, cut.size(), 8, false);
}

TEST(FrameStamp, IsNotFoundWhereThereIsNone)
{
    EXPECT_FALSE(zvgr::read_stamp(plain_frame(100).data(), 100));
    EXPECT_FALSE(zvgr::read_stamp(nullptr, 100));
    Bytes frame = stamped_frame(100);
    EXPECT_FALSE(zvgr::read_stamp(frame.data(), 31));
    ++frame[4];
    EXPECT_FALSE(zvgr::read_stamp(frame.data(), frame.size())) << "an unknown version";
}

TEST(FrameStamp, IsNotWrittenToAFrameThatIsTooSmall)
{
    Bytes frame = plain_frame(31);
    EXPECT_FALSE(zvgr::write_stamp(frame.data(), frame.size(), 1));
    EXPECT_FALSE(zvgr::write_stamp_of_cut_frame(frame.data(), frame.size(), 100, 1));
    EXPECT_FALSE(zvgr::write_stamp(nullptr, 100, 1));
    EXPECT_FALSE(zvgr::write_stamp_of_cut_frame(nullptr, 100, 200, 1));
    EXPECT_EQ(plain_frame(31), frame);
}

} // namespace
