#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zvgr/FrameStamp.h"

#include "zvgentl/GrabResult.h"

namespace zvgentl::test {

using namespace tool;

namespace {

/// A grab of frames that carry a stamp; `damaged` of them changed on the way.
GrabResult grabbed(const GrabOptions& options, std::uint64_t frames, std::uint64_t damaged = 0)
{
    GrabResult result(options);
    result.interface_id = "FG0";
    result.device_id = "Device00";
    result.buffer_size = 1000;
    result.picture = PictureKind{100, 10, 0x01080001};
    for (std::uint64_t i = 0; i < frames; ++i) {
        std::vector<std::uint8_t> pixels(1000);
        zvgr::write_stamp(pixels.data(), pixels.size(), i);
        if (i < damaged)
            pixels.back() = 1;
        Frame frame;
        frame.id = i;
        frame.data = pixels.data();
        frame.size = pixels.size();
        result.count.add(frame);
    }
    result.seconds = 2;
    return result;
}

bool says(const GrabResult& result, const std::string& text)
{
    return to_text(result).find(text) != std::string::npos;
}

} // namespace

TEST(GrabResult, CountsTheIntervalsBetweenFramesForTheRate)
{
    EXPECT_DOUBLE_EQ(5, grabbed({}, 11).rate(2).value());
}

TEST(GrabResult, KnowsNoRateFromOneFrameOrNoTime)
{
    EXPECT_FALSE(grabbed({}, 1).rate(2));
    EXPECT_FALSE(grabbed({}, 11).rate(0));
}

TEST(GrabResult, SucceedsWhenAllFramesArrived) { EXPECT_EQ(0, grabbed({}, 10).exit_code()); }

TEST(GrabResult, FailsWhenAFrameIsDamaged)
{
    EXPECT_EQ(1, grabbed({}, 10, 1).exit_code());
    EXPECT_TRUE(says(grabbed({}, 10, 1), "1 of 10 FRAMES ARE DAMAGED"));
}

TEST(GrabResult, FailsAfterATimeOutAndSaysWhatToDo)
{
    GrabResult result = grabbed({}, 3);
    result.outcome = Outcome::timed_out;
    EXPECT_EQ(1, result.exit_code());
    EXPECT_TRUE(says(result, "--timeout"));
}

TEST(GrabResult, AnswersAnInterruptionAsShellsExpect)
{
    GrabResult result = grabbed({}, 3);
    result.outcome = Outcome::interrupted;
    EXPECT_EQ(130, result.exit_code());
}

TEST(GrabResult, ReportsDamageEvenWhenInterrupted)
{
    GrabResult result = grabbed({}, 3, 1);
    result.outcome = Outcome::interrupted;
    EXPECT_EQ(1, result.exit_code());
}

TEST(GrabResultText, SaysWhereTheLossIsReadFrom)
{
    EXPECT_TRUE(says(grabbed({}, 10), "0 (from the frame ids)"));
    GrabOptions cyclic;
    cyclic.mode = StreamMode::cyclic;
    EXPECT_TRUE(says(grabbed(cyclic, 10), "0 (from the frame counter in the pixels)"));
    cyclic.verify = false;
    EXPECT_TRUE(says(grabbed(cyclic, 10), "unknown: frame counters are not read (--no-verify)"));
}

TEST(GrabResultText, HasNoGoalWhenGrabbingWithoutEnd)
{
    GrabOptions endless;
    endless.frames = 0;
    EXPECT_TRUE(says(grabbed(endless, 7), "Delivered  7 frames in"));
}

} // namespace zvgentl::test
