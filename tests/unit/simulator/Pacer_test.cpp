#include <algorithm>

#include <gtest/gtest.h>

#include "simulator/Pacer.h"

namespace {

using namespace std::chrono_literals;
using namespace zvsim;

const Clock::time_point start{1000s};

/// What is taken: the number of the frame, and the time of its stamp since the start.
using Taken = std::pair<uint64_t, std::chrono::nanoseconds>;

Taken take(Pacer& pacer, std::chrono::nanoseconds at)
{
    const Frame frame = pacer.take(start + at);
    return {frame.id, std::chrono::nanoseconds{frame.timestamp * 40} - start.time_since_epoch()};
}

std::chrono::nanoseconds due(const Pacer& pacer) { return pacer.due() - start; }

TEST(Pacer, GivesFrameNItsTimeWhateverTheDelay)
{
    Pacer pacer{{25}, start};
    for (uint64_t frame = 0; frame < 100; ++frame) {
        EXPECT_EQ(40ms * frame, due(pacer));
        EXPECT_EQ(Taken(frame, 40ms * frame), take(pacer, 40ms * frame + 13ms));
    }
}

TEST(Pacer, KeepsRatesThatDoNotDivideASecond)
{
    Pacer pacer{{3}, start};
    for (int taken = 0; taken < 30000; ++taken)
        pacer.take(pacer.due());
    EXPECT_EQ(Taken(30000, 10000s), take(pacer, due(pacer)));
}

TEST(Pacer, CatchesUpWithinASecondAndElseSkipsFrames)
{
    for (const auto& [late, next] : {std::pair{1100ms, 1U}, {1150ms, 11U}}) {
        Pacer pacer{{10}, start};
        take(pacer, 0s);
        EXPECT_EQ(Taken(next, 100ms * next), take(pacer, late));
        EXPECT_EQ(100ms * (next + 1), due(pacer));
    }
}

TEST(Pacer, FreeRunningTakesEveryFrameWhenItIsAsked)
{
    Pacer pacer{{0}, start};
    EXPECT_TRUE(pacer.is_free_running());
    EXPECT_EQ(0s, due(pacer));
    EXPECT_EQ(Taken(0, 40ns), take(pacer, 40ns));
    EXPECT_EQ(Taken(1, 100s), take(pacer, 100s));
    EXPECT_EQ(0s, due(pacer));
}

TEST(Pacer, ANewRateBeginsAtTheLastFrame)
{
    Pacer pacer{{10}, start};
    take(pacer, 0s);
    take(pacer, 100ms);
    pacer.set_pace({50}, start + 110ms);
    EXPECT_EQ(120ms, due(pacer));
    EXPECT_EQ(Taken(2, 120ms), take(pacer, 120ms));
    EXPECT_EQ(140ms, due(pacer));
    EXPECT_EQ(Taken(3, 140ms), take(pacer, 145ms));
}

TEST(Pacer, ANewRateBeginsNowWhenItsFirstFrameIsOverdue)
{
    Pacer pacer{{0.01}, start};
    take(pacer, 0s);
    pacer.set_pace({10}, start + 50s);
    EXPECT_EQ(50s, due(pacer));
    EXPECT_EQ(Taken(1, 50s), take(pacer, 50s)) << "nothing is skipped";
    EXPECT_EQ(50s + 100ms, due(pacer));
}

TEST(Pacer, ANewRateBeforeTheFirstFrameAndTheSameRateLeaveTheNextTimeAlone)
{
    Pacer pacer{{10}, start};
    pacer.set_pace({100}, start - 20ms);
    EXPECT_EQ(0s, due(pacer));
    take(pacer, 0s);
    EXPECT_EQ(10ms, due(pacer));
    pacer.set_pace({100}, start + 30s);
    EXPECT_EQ(10ms, due(pacer));
}

TEST(Pacer, AfterANewRateItSkipsWhatIsMoreThanASecondOld)
{
    Pacer pacer{{1}, start};
    take(pacer, 0s);
    pacer.set_pace({10}, start + 50ms);
    EXPECT_EQ(100ms, due(pacer));
    EXPECT_EQ(1U, take(pacer, 100ms).first);
    EXPECT_EQ(21U, take(pacer, 2100ms).first);
}

TEST(Pacer, TriggeredFramesHappenWhenTheyAreTakenAndTheRateComesBackAfterThem)
{
    Pacer pacer{{10, true}, start};
    EXPECT_FALSE(pacer.is_free_running());
    EXPECT_EQ(0s, due(pacer));
    EXPECT_EQ(Taken(0, 1us), take(pacer, 1us));
    EXPECT_EQ(Taken(1, 100s), take(pacer, 100s));
    pacer.set_pace({10}, start + 100s + 20ms);
    EXPECT_EQ(100s + 100ms, due(pacer));
    EXPECT_EQ(2U, take(pacer, 100s + 100ms).first);
}

TEST(Pacer, ARateThatComesWithoutAnyTriggerBeginsNow)
{
    Pacer pacer{{10, true}, start};
    pacer.set_pace({10}, start + 30s);
    EXPECT_EQ(30s, due(pacer));
    EXPECT_EQ(0U, take(pacer, 30s).first);
}

TEST(Pacer, JitterMakesFramesLateAndNeverEarlyTheSameInEveryRun)
{
    Pacer pacer{{10}, start, 30ms};
    Pacer again{{10}, start, 30ms};
    std::chrono::nanoseconds latest{0};
    for (uint64_t frame = 0; frame < 1000; ++frame) {
        const std::chrono::nanoseconds late = due(pacer) - 100ms * static_cast<int>(frame);
        ASSERT_GE(late, 0ms);
        ASSERT_LE(late, 30ms);
        ASSERT_EQ(pacer.due(), again.due());
        latest = std::max(latest, late);
        EXPECT_EQ(Taken(frame, 100ms * frame), take(pacer, due(pacer)));
        again.take(again.due());
    }
    EXPECT_GT(latest, 25ms);
}

} // namespace
