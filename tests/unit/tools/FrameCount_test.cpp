#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "examples.h"
#include "zvgentl/FrameCount.h"

namespace zvgentl::test {

using namespace tool;

namespace {

using Stamps = FrameCount::Stamps;

void add_ids(FrameCount& count, const std::vector<std::uint64_t>& ids)
{
    const std::vector<std::uint8_t> plain(100, 7);
    for (const std::uint64_t id : ids)
        count.add(frame_with(id, plain));
}

/// As cyclic mode delivers them: the id is a place in a ring of four.
void add_counters(FrameCount& count, const std::vector<std::uint64_t>& counters)
{
    for (const std::uint64_t counter : counters)
        count.add(frame_with(counter % 4, stamped_pixels(counter)));
}

} // namespace

TEST(Sequence, CountsWhatIsMissingLateAndRepeated)
{
    const struct {
        const char* what;
        std::vector<std::uint64_t> numbers;
        std::uint64_t missing, late, repeated;
    } cases[] = {
        {"a row that begins anywhere", {1000, 1001, 1002}, 0, 0, 0},
        {"every number in a gap", {0, 1, 4, 5, 9}, 5, 0, 0},
        {"a late number is not missing", {0, 5, 2}, 3, 1, 0},
        {"late numbers at both ends of a gap", {0, 5, 1, 4, 3, 2}, 0, 4, 0},
        {"a number that came again", {0, 1, 1, 4, 3, 3, 0}, 1, 1, 3},
        {"a number below the first", {10, 11, 3, 12}, 0, 0, 1},
        {"a jump to the highest number", {0, ~std::uint64_t{0}}, ~std::uint64_t{0} - 1, 0, 0},
    };
    for (const auto& row : cases) {
        Sequence sequence;
        for (const std::uint64_t number : row.numbers)
            sequence.add(number);
        EXPECT_EQ(row.missing, sequence.missing()) << row.what;
        EXPECT_EQ(row.late, sequence.late()) << row.what;
        EXPECT_EQ(row.repeated, sequence.repeated()) << row.what;
    }
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

TEST(FrameCount, ReadsTheLossFromIdsInQueuedModeAndFromThePixelsInCyclicMode)
{
    using Numbers = std::vector<std::uint64_t>;
    const struct {
        const char* what;
        StreamMode mode;
        Stamps stamps;
        Numbers ids;      // of frames without a stamp
        Numbers counters; // of frames with one
        LossSource source;
        std::optional<std::uint64_t> lost;
    } cases[] = {
        {"ids", StreamMode::queued, Stamps::checked, {0, 1, 3, 6}, {}, LossSource::frame_ids, 3},
        {"places in a ring", StreamMode::cyclic, Stamps::checked, {0, 1, 3, 0}, {}, LossSource::unknown, {}},
        {"counters", StreamMode::cyclic, Stamps::checked, {}, {7, 8, 11}, LossSource::frame_counter, 2},
        {"ignored stamps", StreamMode::cyclic, Stamps::ignored, {}, {7, 8, 11}, LossSource::unknown, {}},
        {"no frame yet", StreamMode::queued, Stamps::checked, {}, {}, LossSource::unknown, {}},
        {"no numbers", StreamMode::queued, Stamps::checked, {0, 0, 0}, {}, LossSource::unknown, {}},
    };
    for (const auto& row : cases) {
        FrameCount count(row.mode, row.stamps);
        add_ids(count, row.ids);
        add_counters(count, row.counters);
        EXPECT_EQ(row.ids.size() + row.counters.size(), count.delivered()) << row.what;
        EXPECT_EQ(row.source, count.loss_source()) << row.what;
        EXPECT_EQ(row.lost, count.lost()) << row.what;
        EXPECT_EQ(row.stamps == Stamps::checked ? row.counters.size() : 0U, count.stamped()) << row.what;
        EXPECT_EQ(0U, count.damaged() + count.repeated()) << row.what;
    }
}

TEST(FrameCount, CountsChangedFramesAndThoseThatLackTheStampOfOthersAsDamaged)
{
    FrameCount count(StreamMode::queued, Stamps::checked);
    auto pixels = stamped_pixels(0);
    count.add(frame_with(0, pixels));
    pixels.back() ^= 1U;
    count.add(frame_with(1, pixels));
    EXPECT_EQ(1U, count.damaged());
    add_ids(count, {2});
    EXPECT_EQ(2U, count.damaged());
}

} // namespace zvgentl::test
