#include <algorithm>

#include <gtest/gtest.h>

#include "simulator/Pacer.h"

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

TEST(Pacer, ANewRateBeginsAtTheLastFrame)
{
    Pacer pacer{{10}, start};
    pacer.take(start);
    pacer.take(start + 100ms);
    pacer.set_pace({50}, start + 110ms);
    EXPECT_EQ(start + 120ms, pacer.due());
    EXPECT_EQ(2U, pacer.take(start + 120ms).id);
    EXPECT_EQ(start + 140ms, pacer.due());
    EXPECT_EQ(start_ticks + 3500000, pacer.take(start + 145ms).timestamp);
}

TEST(Pacer, ANewRateBeginsNowWhenItsFirstFrameShouldHaveHappened)
{
    Pacer pacer{{0.01}, start};
    EXPECT_EQ(0U, pacer.take(start).id);
    pacer.set_pace({10}, start + 50s);
    EXPECT_EQ(start + 50s, pacer.due());
    const Frame frame = pacer.take(start + 50s);
    EXPECT_EQ(1U, frame.id) << "nothing is skipped";
    EXPECT_EQ(start_ticks + uint64_t{50} * 25000000, frame.timestamp);
    EXPECT_EQ(start + 50s + 100ms, pacer.due());
}

TEST(Pacer, ANewRateBeforeTheFirstFrameLeavesItsTimeAlone)
{
    Pacer pacer{{10}, start};
    pacer.set_pace({100}, start - 20ms);
    EXPECT_EQ(start, pacer.due());
    pacer.take(start);
    EXPECT_EQ(start + 10ms, pacer.due());
}

TEST(Pacer, TheSameRateChangesNothing)
{
    Pacer pacer{{10}, start};
    pacer.take(start);
    pacer.set_pace({10}, start + 30s);
    EXPECT_EQ(start + 100ms, pacer.due());
}

TEST(Pacer, AfterANewRateItSkipsWhatIsMoreThanASecondOld)
{
    Pacer pacer{{1}, start};
    pacer.take(start);
    pacer.set_pace({10}, start + 50ms);
    EXPECT_EQ(start + 100ms, pacer.due());
    EXPECT_EQ(1U, pacer.take(start + 100ms).id);
    EXPECT_EQ(21U, pacer.take(start + 2100ms).id);
}

TEST(Pacer, TriggeredFramesHappenWhenTheyAreTaken)
{
    Pacer pacer{{10, true}, start};
    EXPECT_FALSE(pacer.is_free_running());
    EXPECT_EQ(start, pacer.due());
    EXPECT_EQ(start_ticks + 25, pacer.take(start + 1us).timestamp);
    EXPECT_EQ(1U, pacer.take(start + 100s).id);
}

TEST(Pacer, TheRateComesBackAfterTriggers)
{
    Pacer pacer{{10, true}, start};
    pacer.take(start + 3s);
    pacer.set_pace({10}, start + 3s + 20ms);
    EXPECT_EQ(start + 3s + 100ms, pacer.due());
    EXPECT_EQ(1U, pacer.take(start + 3s + 100ms).id);
}

TEST(Pacer, ARateThatComesWithoutAnyTriggerBeginsNow)
{
    Pacer pacer{{10, true}, start};
    pacer.set_pace({10}, start + 30s);
    EXPECT_EQ(start + 30s, pacer.due());
    EXPECT_EQ(0U, pacer.take(start + 30s).id);
}

TEST(Pacer, JitterMakesFramesLateAndNeverEarly)
{
    Pacer pacer{{10}, start, 30ms};
    Pacer again{{10}, start, 30ms};
    Clock::duration latest{0};
    for (uint64_t frame = 0; frame < 1000; ++frame) {
        const Clock::time_point punctual = start + 100ms * frame;
        const Clock::duration late = pacer.due() - punctual;
        ASSERT_GE(late, 0ms);
        ASSERT_LE(late, 30ms);
        ASSERT_EQ(pacer.due(), again.due()) << "every run is the same";
        latest = std::max(latest, late);
        EXPECT_EQ(start_ticks + 2500000 * frame, pacer.take(pacer.due()).timestamp);
        again.take(again.due());
    }
    EXPECT_GT(latest, 25ms);
}

} // namespace
