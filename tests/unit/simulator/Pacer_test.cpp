#include "simulator/Pacer.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using zvsim::Clock;
using zvsim::Frame;
using zvsim::Pacer;

const Clock::time_point start{1000s};
constexpr uint64_t start_ticks = uint64_t{1000} * 25000000;

TEST(Pacer, GivesFrameNItsTimeWhateverTheDelay)
{
    Pacer pacer{{25}, start};
    for (uint64_t frame = 0; frame < 100; ++frame) {
        EXPECT_EQ(start + 40ms * frame, pacer.due());
        const Frame taken = pacer.take(start + 40ms * frame + 13ms);
        EXPECT_EQ(frame, taken.id);
        EXPECT_EQ(start_ticks + 1000000 * frame, taken.timestamp);
    }
}

TEST(Pacer, KeepsRatesThatDoNotDivideASecond)
{
    Pacer pacer{{3}, start};
    Frame frame{};
    for (int taken = 0; taken <= 30000; ++taken)
        frame = pacer.take(pacer.due());
    EXPECT_EQ(30000U, frame.id);
    EXPECT_EQ(start_ticks + uint64_t{10000} * 25000000, frame.timestamp);
}

TEST(Pacer, CatchesUpWithinASecond)
{
    Pacer pacer{{10}, start};
    EXPECT_EQ(0U, pacer.take(start).id);
    for (uint64_t frame = 1; frame <= 11; ++frame)
        EXPECT_EQ(frame, pacer.take(start + 1100ms).id);
}

TEST(Pacer, SkipsFramesWhenItIsMoreThanASecondBehind)
{
    Pacer pacer{{10}, start};
    EXPECT_EQ(0U, pacer.take(start).id);
    const Frame frame = pacer.take(start + 1150ms);
    EXPECT_EQ(11U, frame.id);
    EXPECT_EQ(start_ticks + 11 * 2500000, frame.timestamp);
    EXPECT_EQ(start + 1200ms, pacer.due());
}

TEST(Pacer, FreeRunningTakesEveryFrameWhenItIsAsked)
{
    Pacer pacer{{0}, start};
    EXPECT_TRUE(pacer.is_free_running());
    EXPECT_EQ(start, pacer.due());
    EXPECT_EQ(start_ticks + 1, pacer.take(start + 40ns).timestamp);
    const Frame frame = pacer.take(start + 100s);
    EXPECT_EQ(1U, frame.id);
    EXPECT_EQ(start_ticks + uint64_t{100} * 25000000, frame.timestamp);
    EXPECT_EQ(start, pacer.due());
}

} // namespace
