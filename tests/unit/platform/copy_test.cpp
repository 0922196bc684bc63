#include <algorithm>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "platform/copy.h"

using platform::avoidable_cache;
using platform::copy_frame;
using platform::CopyKind;
using platform::LastCopy;

namespace {

/// Bytes that differ from their neighbours, a line further and a page further.
std::vector<uint8_t> picture(size_t size)
{
    std::vector<uint8_t> bytes(size);
    uint32_t state = 12345;
    for (uint8_t& value : bytes) {
        state = state * 1664525U + 1013904223U;
        value = static_cast<uint8_t>(state >> 24U);
    }
    return bytes;
}

class CopiedFrame : public testing::TestWithParam<CopyKind> {};

// From and to every place in a line, and with every rest of a line at the end.
TEST_P(CopiedFrame, IsTheSameByteForByteAndNothingElseIsWritten)
{
    constexpr size_t line = 64;
    constexpr uint8_t untouched = 0xEE;
    const std::vector<uint8_t> source = picture(8 * line);
    for (size_t size = 0; size <= 5 * line + 1; size += size < 2 * line ? 1 : 13) {
        for (size_t from = 0; from < line; from += 5) {
            for (size_t to = 0; to < line; ++to) {
                std::vector<uint8_t> destination(8 * line, untouched);
                std::vector<uint8_t> expected = destination;
                const auto* const first = source.data() + from;
                std::copy(first, first + size, expected.begin() + static_cast<ptrdiff_t>(line + to));
                copy_frame(destination.data() + line + to, first, size, GetParam());
                ASSERT_EQ(expected, destination) << size << " bytes from " << from << " to " << to;
            }
        }
    }
}

// AddressSanitizer notices a byte that is read or written beyond either.
TEST_P(CopiedFrame, StaysWithinItsMemory)
{
    for (const size_t size : {size_t{1}, size_t{63}, size_t{64}, size_t{4097}, (size_t{1} << 20U) + 7}) {
        const std::vector<uint8_t> source = picture(size);
        std::vector<uint8_t> destination(size);
        copy_frame(destination.data(), source.data(), size, GetParam());
        EXPECT_EQ(source, destination) << size;
    }
}

INSTANTIATE_TEST_SUITE_P(BothWays, CopiedFrame,
                         testing::Values(CopyKind::through_caches, CopyKind::around_caches));

/// Frames in turn into some buffers, which are the same memory: only how long ago each was filled counts.
class FramesInTurn : public testing::Test {
protected:
    CopyKind fill(LastCopy& buffer)
    {
        return copy_frame(m_destination.data(), m_source.data(), m_source.size(), buffer);
    }
    void fill_others(size_t count)
    {
        for (size_t i = 0; i < count; ++i) {
            LastCopy other;
            fill(other);
        }
    }

    const CopyKind when_gone{avoidable_cache() != 0 ? CopyKind::around_caches : CopyKind::through_caches};
    static constexpr size_t eighths{8};

    std::vector<uint8_t> m_source =
        picture(std::max<size_t>(avoidable_cache(), size_t{1} << 20U) / eighths + 1);
    std::vector<uint8_t> m_destination = std::vector<uint8_t>(m_source.size());
};

TEST_F(FramesInTurn, GoThroughTheCachesIntoABufferThatIsStillThere)
{
    LastCopy buffer;
    fill(buffer);
    EXPECT_EQ(CopyKind::through_caches, fill(buffer));
    fill_others(eighths / 2 - 2);
    EXPECT_EQ(CopyKind::through_caches, fill(buffer));
}

TEST_F(FramesInTurn, GoAroundTheCachesIntoABufferThatIsGoneFromThem)
{
    LastCopy buffer;
    fill(buffer);
    fill_others(eighths / 2 - 1);
    EXPECT_EQ(when_gone, fill(buffer));
    EXPECT_EQ(m_source, m_destination);
    EXPECT_EQ(CopyKind::through_caches, fill(buffer)) << "right after that";
}

TEST_F(FramesInTurn, GoThroughTheCachesWhenTheirConsumerFindsThemThere)
{
    LastCopy buffer;
    fill(buffer);
    fill_others(eighths);
    EXPECT_EQ(CopyKind::through_caches,
              copy_frame(m_destination.data(), m_source.data(), m_source.size() - 2, buffer));
}

} // namespace
