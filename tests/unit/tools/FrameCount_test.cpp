#include <initializer_list>
#include <vector>

#include <gtest/gtest.h>

#include "zvgr/FrameStamp.h"

#include "zvgentl/FrameCount.h"

namespace zvgentl::test {

using namespace tool;

namespace {

using Stamps = FrameCount::Stamps;

Sequence sequence_of(std::initializer_list<std::uint64_t> numbers)
{
    Sequence sequence;
    for (const std::uint64_t number : numbers)
        sequence.add(number);
    return sequence;
}

Frame frame_with(std::uint64_t id, const std::vector<std::uint8_t>& pixels)
{
    Frame frame;
    frame.id = id;
    frame.data = pixels.data();
    frame.size = pixels.size();
    return frame;
}

void add_ids(FrameCount& count, std::initializer_list<std::uint64_t> ids)
{
    const std::vector<std::uint8_t> plain(100, 7);
    for (const std::uint64_t id : ids)
        count.add(frame_with(id, plain));
}

std::vector<std::uint8_t> stamped_pixels(std::uint64_t counter)
{
    std::vector<std::uint8_t> pixels(100, 7);
    zvgr::write_stamp(pixels.data(), pixels.size(), counter);
    return pixels;
}

/// As cyclic mode delivers them: the id is a place in a ring of four.
void add_counters(FrameCount& count, std::initializer_list<std::uint64_t> counters)
{
    for (const std::uint64_t counter : counters)
        count.add(frame_with(counter % 4, stamped_pixels(counter)));
}

} // namespace

TEST(Sequence, MissesNothingInARowThatBeginsAnywhere)
{
    const Sequence sequence = sequence_of({1000, 1001, 1002});
    EXPECT_EQ(0U, sequence.missing());
    EXPECT_EQ(0U, sequence.late());
    EXPECT_EQ(0U, sequence.repeated());
}

TEST(Sequence, CountsEveryNumberInAGap) { EXPECT_EQ(5U, sequence_of({0, 1, 4, 5, 9}).missing()); }

TEST(Sequence, TakesALateNumberOffTheMissingOnes)
{
    const Sequence sequence = sequence_of({0, 5, 2});
    EXPECT_EQ(3U, sequence.missing());
    EXPECT_EQ(1U, sequence.late());
    EXPECT_EQ(0U, sequence.repeated());
}

TEST(Sequence, RecognisesLateNumbersAtBothEndsOfAGap)
{
    const Sequence sequence = sequence_of({0, 5, 1, 4, 3, 2});
    EXPECT_EQ(0U, sequence.missing());
    EXPECT_EQ(4U, sequence.late());
}

TEST(Sequence, CountsANumberThatCameAgain)
{
    const Sequence sequence = sequence_of({0, 1, 1, 4, 3, 3, 0});
    EXPECT_EQ(1U, sequence.missing());
    EXPECT_EQ(1U, sequence.late());
    EXPECT_EQ(3U, sequence.repeated());
}

TEST(Sequence, DoesNotCallANumberBelowTheFirstMissing)
{
    const Sequence sequence = sequence_of({10, 11, 3, 12});
    EXPECT_EQ(0U, sequence.missing());
    EXPECT_EQ(1U, sequence.repeated());
}

TEST(Sequence, CountsOnWhenTheOldestGapsAreForgotten)
{
    Sequence sequence;
    constexpr std::uint64_t frames = 20000;
    for (std::uint64_t i = 0; i < frames; ++i)
        sequence.add(i * 2);
    EXPECT_EQ(frames - 1, sequence.missing());
    sequence.add(2 * frames - 3); // the youngest gap is still known
    EXPECT_EQ(frames - 2, sequence.missing());
}

TEST(Sequence, SurvivesAJumpToTheHighestNumber)
{
    EXPECT_EQ(~std::uint64_t{0} - 1, sequence_of({0, ~std::uint64_t{0}}).missing());
}

TEST(FrameCount, ReadsTheLossFromIdsInQueuedMode)
{
    FrameCount count(StreamMode::queued, Stamps::checked);
    add_ids(count, {0, 1, 3, 6});
    EXPECT_EQ(4U, count.delivered());
    EXPECT_EQ(LossSource::frame_ids, count.loss_source());
    EXPECT_EQ(std::uint64_t{3}, count.lost());
}

TEST(FrameCount, DoesNotMistakeRingPlacesForIdsInCyclicMode)
{
    FrameCount count(StreamMode::cyclic, Stamps::checked);
    add_ids(count, {0, 1, 3, 0});
    EXPECT_EQ(LossSource::unknown, count.loss_source());
    EXPECT_EQ(std::nullopt, count.lost());
}

TEST(FrameCount, ReadsTheLossFromThePixelsInCyclicMode)
{
    FrameCount count(StreamMode::cyclic, Stamps::checked);
    add_counters(count, {7, 8, 11});
    EXPECT_EQ(LossSource::frame_counter, count.loss_source());
    EXPECT_EQ(std::uint64_t{2}, count.lost());
    EXPECT_EQ(3U, count.stamped());
    EXPECT_EQ(0U, count.damaged());
}

TEST(FrameCount, KnowsNoLossInCyclicModeWhenStampsAreIgnored)
{
    FrameCount count(StreamMode::cyclic, Stamps::ignored);
    add_counters(count, {7, 8, 11});
    EXPECT_EQ(std::nullopt, count.lost());
    EXPECT_EQ(0U, count.stamped());
}

TEST(FrameCount, KnowsNoLossBeforeTheFirstFrame)
{
    EXPECT_EQ(std::nullopt, FrameCount(StreamMode::queued, Stamps::checked).lost());
}

TEST(FrameCount, KnowsNoLossWhenTheLibraryDoesNotNumberItsFrames)
{
    FrameCount count(StreamMode::queued, Stamps::checked);
    add_ids(count, {0, 0, 0});
    EXPECT_EQ(std::nullopt, count.lost());
    EXPECT_EQ(0U, count.repeated());
}

TEST(FrameCount, FindsAFrameWithOneChangedByte)
{
    FrameCount count(StreamMode::queued, Stamps::checked);
    auto pixels = stamped_pixels(0);
    count.add(frame_with(0, pixels));
    pixels.back() ^= 1U;
    count.add(frame_with(1, pixels));
    EXPECT_EQ(1U, count.damaged());
}

TEST(FrameCount, CountsAFrameWithoutStampAsDamagedWhenOthersHaveOne)
{
    FrameCount count(StreamMode::queued, Stamps::checked);
    add_counters(count, {0});
    add_ids(count, {1});
    EXPECT_EQ(1U, count.damaged());
}

TEST(FrameCount, ExpectsNoStampOfACameraThatWritesNone)
{
    FrameCount count(StreamMode::queued, Stamps::checked);
    add_ids(count, {0, 1});
    EXPECT_EQ(0U, count.damaged());
}

} // namespace zvgentl::test
