#include "support/process/SleepingThread.h"
#include "system/fixture.h"

// Frames from the software cameras to the consumer, every byte of them.

using namespace GenTL;
using namespace zvsystem;

namespace {

/// The first frame of an acquisition whose buffers were queued before it started: one that comes before the
/// start has returned is lost, and its buffer with it. If all were, they are queued again.
Filled first_frame(const Camera& camera)
{
    Filled filled{};
    EXPECT_TRUE(eventually([&] {
        if (camera.get(filled, 1000) == GC_ERR_SUCCESS)
            return true;
        if (camera.stream_number(STREAM_INFO_NUM_DELIVERED) == 0)
            camera.queue_all();
        return false;
    }));
    return filled;
}

bool is_grabbing(const Camera& camera) { return camera.stream_number(STREAM_INFO_IS_GRABBING) != 0; }

using Streaming = OneCamera;
INSTANTIATE_TEST_SUITE_P(, Streaming, both_modes, testing::PrintToStringParamName());

TEST_P(Streaming, DeliversAThousandIntactFramesIntoMemoryOfEitherSide)
{
    constexpr uint64_t frames = 1000;
    camera.announce(buffers, Memory::of_consumer);
    camera.start_and_queue();
    FrameCheck check(camera);
    uint64_t last_timestamp = 0;
    for (uint64_t i = 0; i < frames; ++i) {
        const Filled filled = camera.next();
        if (GetParam() == Mode::queued)
            check.expect_next(filled); // a free-running camera waits for buffers
        else
            check.expect_good(filled);
        const uint64_t timestamp = camera.buffer_number(filled.buffer, BUFFER_INFO_TIMESTAMP);
        EXPECT_GT(timestamp, last_timestamp);
        last_timestamp = timestamp;
        camera.queue(filled.buffer);
    }
    EXPECT_GE(camera.stream_number(STREAM_INFO_NUM_DELIVERED), frames);
    camera.stop();
}

TEST_P(Streaming, StartsAndStopsThreeTimes)
{
    for (int cycle = 0; cycle < 3; ++cycle) {
        FrameCheck check(camera); // the counter starts again
        camera.queue_all();
        camera.start();
        const Filled first = first_frame(camera);
        check.expect_good(first);
        camera.queue(first.buffer);
        check.stream(100);
        EXPECT_TRUE(is_grabbing(camera));
        camera.stop();
        EXPECT_FALSE(is_grabbing(camera));
        EXPECT_EQ(0u, camera.stream_number(STREAM_INFO_NUM_DELIVERED));
        camera.flush(ACQ_QUEUE_ALL_DISCARD);
        EXPECT_EQ(0u, camera.event_number(EVENT_NUM_IN_QUEUE));
    }
}

TEST_P(Streaming, EndsByItselfAfterTheRequestedFramesAndStartsAgain)
{
    constexpr uint64_t requested = buffers;
    uint64_t received = 0;
    uint64_t fired_before = 0;
    // In cyclic mode a frame that finds no buffer counts as well, so there may be fewer.
    while (received == 0) {
        camera.start_and_queue(requested);
        ASSERT_TRUE(eventually([&] { return !is_grabbing(camera); }));
        camera.stop(); // the last notice of the end may still be on its way
        received = camera.event_number(EVENT_NUM_FIRED) - fired_before;
        fired_before += received;
    }
    if (GetParam() == Mode::queued)
        EXPECT_EQ(requested, received);
    else
        EXPECT_LE(received, requested);

    FrameCheck check(camera);
    for (uint64_t i = 0; i < received; ++i)
        check.expect_good(camera.next());
    Filled filled{};
    EXPECT_EQ(GC_ERR_TIMEOUT, camera.get(filled, 0));
    EXPECT_EQ(fired_before, camera.event_number(EVENT_NUM_FIRED));

    camera.flush(ACQ_QUEUE_ALL_DISCARD);
    camera.start_and_queue();
    FrameCheck{camera}.stream(20);
}

// A consumer that waits without limit goes on waiting, whatever else is done to the stream.
TEST_P(Streaming, EndsAWaitWithAFrameAfterFlushesAndAStop)
{
    camera.start(); // without a buffer to fill
    Filled filled{};
    GC_ERROR code = GC_ERR_ERROR;
    SleepingThread waiter{[&] { code = camera.get(filled, GENTL_INFINITE); }};
    EXPECT_EQ(GC_ERR_SUCCESS, gentl.EventFlush(camera.event()));
    camera.flush(ACQ_QUEUE_OUTPUT_DISCARD);
    camera.flush(ACQ_QUEUE_ALL_DISCARD);
    camera.stop();
    camera.start_and_queue();
    waiter.join();
    ASSERT_EQ(GC_ERR_SUCCESS, code);

    FrameCheck check(camera);
    check.expect_good(filled);
    camera.queue(filled.buffer);
    check.stream(20);
}

class SlowConsumer : public InBothModes {
protected:
    SlowConsumer() { Surroundings::set_frame_rate("1000"); }
    ~SlowConsumer() override { Surroundings::set_frame_rate("0"); }
};
INSTANTIATE_TEST_SUITE_P(, SlowConsumer, both_modes, testing::PrintToStringParamName());

TEST_P(SlowConsumer, ReceivesIntactFrames)
{
    constexpr size_t buffers = 8;
    Camera camera(gentl, system->open_interface("FG0"), "Device00");
    camera.announce(buffers);
    camera.start_and_queue();
    FrameCheck check(camera);
    for (int round = 0; round < 5; ++round) {
        // Meanwhile the camera goes on and finds no buffer.
        ASSERT_TRUE(eventually([&] { return camera.event_number(EVENT_NUM_IN_QUEUE) == buffers; }));
        for (size_t i = 0; i < buffers; ++i)
            check.expect_good(camera.next());
        camera.queue_all();
    }
}

} // namespace
