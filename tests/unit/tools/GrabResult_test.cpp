#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "TemporaryFolder.h"
#include "examples.h"
#include "support.h"
#include "zvgentl/GrabResult.h"
#include "zvgentl/Progress.h"

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
        std::vector<std::uint8_t> pixels = stamped_pixels(i);
        if (i < damaged)
            pixels.back() ^= 1U;
        result.count.add(frame_with(i, pixels));
    }
    result.seconds = 2;
    return result;
}

} // namespace

TEST(GrabResult, CountsTheIntervalsBetweenFramesForTheRate)
{
    EXPECT_DOUBLE_EQ(5, grabbed({}, 11).rate(2).value());
    EXPECT_FALSE(grabbed({}, 1).rate(2));
    EXPECT_FALSE(grabbed({}, 11).rate(0));
}

TEST(GrabResult, HasAnExitCodeAndAnEnding)
{
    const struct {
        Outcome outcome;
        std::uint64_t damaged;
        int code;
        const char* text;
    } cases[] = {
        {Outcome::complete, 0, 0, "all 10 checksums are right\n"},
        {Outcome::complete, 1, 1, "1 of 10 FRAMES ARE DAMAGED"},
        {Outcome::timed_out, 0, 1, "--timeout sets how long to wait.\n"},
        {Outcome::interrupted, 0, 143, "Interrupted: stopped cleanly.\n"},
        {Outcome::failed, 0, 1, "Failed: the disk is full\n"},
        {Outcome::interrupted, 1, 1, "1 of 10 FRAMES ARE DAMAGED"},
    };
    for (const auto& row : cases) {
        GrabResult result = grabbed({}, 10, row.damaged);
        result.outcome = row.outcome;
        result.interrupted_code = 143;
        result.problem = "the disk is full";
        EXPECT_EQ(row.code, result.exit_code()) << row.text;
        EXPECT_THAT(to_text(result), HasSubstr(row.text));
    }
}

TEST(GrabResultText, HasNoControlCharactersOfTheDevice)
{
    GrabResult result = grabbed({}, 1);
    result.vendor = "A\nSaved";
    result.model = "\xC2\x9B"
                   "2J";
    EXPECT_THAT(to_text(result), HasSubstr("A\\nSaved \\x9B2J"));
}

TEST(GrabResult, IsIncompleteWhenFramesAreLost)
{
    GrabOptions options;
    for (const bool must_fail : {false, true}) {
        options.fail_on_loss = must_fail;
        GrabResult result = grabbed(options, 3);
        result.finish();
        EXPECT_EQ(Outcome::complete, result.outcome);
        EXPECT_EQ(0, result.exit_code());
        result.count.add(frame_with(7, stamped_pixels(7)));
        result.finish();
        EXPECT_EQ(Outcome::incomplete, result.outcome);
        EXPECT_EQ(must_fail ? 1 : 0, result.exit_code());
        EXPECT_THAT(to_text(result),
                    HasSubstr("Incomplete: 4 frames were lost between the first and the last"));
    }
}

TEST(GrabResult, FailsWhenLossMustBeKnownAndIsNot)
{
    GrabOptions options;
    options.mode = StreamMode::cyclic;
    GrabResult result(options);
    result.count.add(frame_with(0, {}));
    EXPECT_EQ(0, result.exit_code());
    result.options.fail_on_loss = true;
    EXPECT_EQ(1, result.exit_code());
    EXPECT_THAT(to_text(result), HasSubstr("whether frames were lost is not known"));
}

TEST(GrabResult, HasTimedOutWithoutFrames)
{
    GrabOptions options;
    options.duration_s = 2;
    GrabResult result(options);
    result.finish();
    EXPECT_EQ(Outcome::timed_out, result.outcome);
    EXPECT_THAT(to_text(result), HasSubstr("No frame arrived within 2000 ms"));
}

TEST(GrabResult, CountsFramesThatTheProducerCallsIncomplete)
{
    GrabResult result = grabbed({}, 3);
    const auto pixels = stamped_pixels(3);
    Frame frame = frame_with(3, pixels);
    frame.is_incomplete = true;
    EXPECT_EQ(FrameState::damaged, result.count.add(frame));
    EXPECT_EQ(1U, result.count.damaged());
    EXPECT_EQ(1, result.exit_code());
    EXPECT_THAT(to_text(result), HasSubstr("1 of 4 FRAMES ARE DAMAGED: 1 are incomplete"));
}

TEST(GrabResultText, SaysWhereTheLossIsReadFromAndHasNoGoalWithoutEnd)
{
    GrabOptions options;
    options.frames = 0;
    EXPECT_THAT(to_text(grabbed(options, 7)),
                testing::AllOf(HasSubstr("0 (from the frame ids)"), HasSubstr("Delivered  7 frames in")));
    options.mode = StreamMode::cyclic;
    EXPECT_THAT(to_text(grabbed(options, 10)), HasSubstr("0 (from the frame counter in the pixels)"));
    options.verify = false;
    EXPECT_THAT(to_text(grabbed(options, 10)),
                HasSubstr("unknown: frame counters are not read (--no-verify)"));
}

TEST(Progress, IsSilentWhenNobodyWatches)
{
    const TemporaryFolder folder;
    const auto file = folder / "errors";
    {
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(file.string().c_str(), "w"),
                                                                     std::fclose);
        Progress progress(stream.get(), 10);
        progress.show(5, 0);
    }
    EXPECT_EQ("", read_text(file));
}

} // namespace zvgentl::test
