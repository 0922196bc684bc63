#include <string>
#include <tuple>

#include "system/fixture.h"

// Frames from the software cameras to the consumer, every byte of them.

using namespace GenTL;
using namespace zvsystem;

namespace {

constexpr uint64_t many_frames = 1000;
constexpr size_t buffers = 8;
constexpr uint64_t ring_frames = 4; // of the cyclic mode

/// The first frame of an acquisition whose buffers were queued before it started: one that comes before the
/// start has returned is lost, and its buffer with it. If all were, they are queued again.
Filled first_frame(const Camera& camera)
{
    Filled filled{};
    const bool has_come = eventually([&] {
        if (camera.get(filled, 1000) == GC_ERR_SUCCESS)
            return true;
        if (camera.stream_number(STREAM_INFO_NUM_DELIVERED) == 0)
            camera.queue_all();
        return false;
    });
    EXPECT_TRUE(has_come);
    return filled;
}

class Buffers : public testing::TestWithParam<std::tuple<Mode, Memory>> {
protected:
    static Mode set(Mode mode)
    {
        surroundings().set_mode(mode);
        return mode;
    }

    const Mode m_mode{set(std::get<Mode>(GetParam()))};
    const Memory m_memory{std::get<Memory>(GetParam())};
    Producer producer{producer_file};
    System system{producer.functions()};
};

std::string name_of_buffers(const testing::TestParamInfo<std::tuple<Mode, Memory>>& info)
{
    return testing::PrintToString(std::get<Mode>(info.param)) +
           testing::PrintToString(std::get<Memory>(info.param));
}

INSTANTIATE_TEST_SUITE_P(, Buffers,
                         testing::Combine(both_modes,
                                          testing::Values(Memory::of_consumer, Memory::of_producer)),
                         name_of_buffers);

TEST_P(Buffers, ReceiveAThousandFramesWhole)
{
    Camera camera(producer.functions(), system.open_interface("FG0"), "Device00");
    camera.announce(buffers, m_memory);
    ASSERT_EQ(uint64_t{640 * 480}, camera.stream_number(STREAM_INFO_PAYLOAD_SIZE));
    camera.start_and_queue();

    FrameCheck check(camera);
    uint64_t last_timestamp = 0;
    for (uint64_t i = 0; i < many_frames; ++i) {
        const Filled filled = camera.next();
        if (m_mode == Mode::queued)
            check.expect_next(filled); // a free-running camera waits for buffers
        else
            check.expect_good(filled);
        const uint64_t timestamp = camera.buffer_number(filled.buffer, BUFFER_INFO_TIMESTAMP);
        EXPECT_GT(timestamp, last_timestamp);
        last_timestamp = timestamp;
        camera.queue(filled.buffer);
    }
    EXPECT_GE(camera.stream_number(STREAM_INFO_NUM_DELIVERED), many_frames);
    camera.stop();
}

TEST_P(Buffers, MayBeLargerThanAFrame)
{
    constexpr size_t extra = size_t{1} << 20U;
    Camera camera(producer.functions(), system.open_interface("FG0"), "Device01");
    camera.announce(buffers, m_memory, extra);
    camera.start_and_queue();
    FrameCheck check(camera);
    stream(camera, check, 20);
}

TEST_P(Buffers, ComeBackWithTheirOwnPrivatePointer)
{
    Camera camera(producer.functions(), system.open_interface("FG0"), "Device00");
    camera.announce(buffers, m_memory);
    camera.start_and_queue();
    for (size_t i = 0; i < 2 * buffers; ++i) {
        const Filled filled = camera.next();
        size_t position = 0;
        while (position < buffers && camera.buffers()[position] != filled.buffer)
            ++position;
        ASSERT_LT(position, buffers) << "a buffer that was never announced";
        EXPECT_EQ(Camera::user_pointer(position), filled.user);
        camera.queue(filled.buffer);
    }
}

class Streaming : public InBothModes {};
INSTANTIATE_TEST_SUITE_P(, Streaming, both_modes, testing::PrintToStringParamName());

// In queued mode frame ids count frames, in cyclic mode they name a place in the ring.
TEST_P(Streaming, TellsTheFrameIdsOfItsMode)
{
    Camera camera(gentl, system->open_interface("FG0"), "Device00");
    camera.announce(buffers);
    camera.start_and_queue();
    for (uint64_t i = 0; i < 3 * ring_frames; ++i) {
        const Filled filled = camera.next();
        const auto stamp = stamp_of(camera, filled.buffer);
        ASSERT_TRUE(stamp);
        const uint64_t id = camera.buffer_number(filled.buffer, BUFFER_INFO_FRAMEID);
        EXPECT_EQ(GetParam() == Mode::queued ? stamp->counter : stamp->counter % ring_frames, id);
        camera.queue(filled.buffer);
    }
}

TEST_P(Streaming, StampsTrueTicksOf25Megahertz)
{
    constexpr uint64_t frames_per_second = 1000;
    constexpr uint64_t ticks_per_frame = 25'000'000 / frames_per_second;
    const FrameRate rate(std::to_string(frames_per_second));
    system.emplace(gentl);
    Camera camera(gentl, system->open_interface("FG0"), "Device00");
    camera.announce(buffers);
    camera.start_and_queue();

    uint64_t first_counter = 0;
    uint64_t first_timestamp = 0;
    for (int i = 0; i < 50; ++i) {
        const Filled filled = camera.next();
        const auto stamp = stamp_of(camera, filled.buffer);
        ASSERT_TRUE(stamp);
        const uint64_t timestamp = camera.buffer_number(filled.buffer, BUFFER_INFO_TIMESTAMP);
        if (i == 0) {
            first_counter = stamp->counter;
            first_timestamp = timestamp;
        }
        // Each time is cut to whole ticks.
        const uint64_t due = first_timestamp + (stamp->counter - first_counter) * ticks_per_frame;
        EXPECT_LE(timestamp, due + 1);
        EXPECT_GE(timestamp + 1, due);
        camera.queue(filled.buffer);
    }
}

TEST_P(Streaming, StartsAndStopsThreeTimes)
{
    Camera camera(gentl, system->open_interface("FG0"), "Device00");
    camera.announce(buffers);
    for (int cycle = 0; cycle < 3; ++cycle) {
        FrameCheck check(camera); // the counter begins anew
        camera.queue_all();
        camera.start();
        const Filled first = first_frame(camera);
        check.expect_good(first);
        camera.queue(first.buffer);
        stream(camera, check, 100);
        EXPECT_EQ(1u, camera.stream_number(STREAM_INFO_IS_GRABBING));
        camera.stop();
        EXPECT_EQ(0u, camera.stream_number(STREAM_INFO_IS_GRABBING));
        EXPECT_EQ(0u, camera.stream_number(STREAM_INFO_NUM_DELIVERED));
        camera.flush(ACQ_QUEUE_ALL_DISCARD);
        EXPECT_EQ(0u, camera.event_number(EVENT_NUM_IN_QUEUE));
    }
}

TEST_P(Streaming, DiscardsWhatTheConsumerDoesNotWant)
{
    Camera camera(gentl, system->open_interface("FG0"), "Device00");
    camera.announce(buffers);
    camera.start_and_queue();
    ASSERT_TRUE(eventually([&] { return camera.event_number(EVENT_NUM_IN_QUEUE) == buffers; }));
    camera.flush(ACQ_QUEUE_OUTPUT_DISCARD);
    EXPECT_EQ(0u, camera.event_number(EVENT_NUM_IN_QUEUE));
    camera.flush(ACQ_QUEUE_UNQUEUED_TO_INPUT);
    FrameCheck check(camera);
    stream(camera, check, 3 * buffers);
}

// ---- A requested number of frames ----

TEST_P(Streaming, EndsByItselfAfterTheRequestedFrames)
{
    constexpr uint64_t requested = 25;
    Camera camera(gentl, system->open_interface("FG0"), "Device00");
    camera.announce(requested);
    uint64_t received = 0;
    uint64_t fired_before = 0;
    // In cyclic mode a frame that finds no buffer counts all the same, so there may be fewer.
    while (received == 0) {
        camera.start_and_queue(requested);
        ASSERT_TRUE(eventually([&] { return camera.stream_number(STREAM_INFO_IS_GRABBING) == 0; }));
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
}

TEST_P(Streaming, StartsAgainAfterAnEndByItself)
{
    Camera camera(gentl, system->open_interface("FG0"), "Device00");
    camera.announce(buffers);
    for (int cycle = 0; cycle < 3; ++cycle) {
        camera.start_and_queue(3);
        ASSERT_TRUE(eventually([&] { return camera.stream_number(STREAM_INFO_IS_GRABBING) == 0; }));
        camera.stop(); // the last notice of the end may still be on its way
    }
    camera.flush(ACQ_QUEUE_ALL_DISCARD);
    camera.start_and_queue();
    FrameCheck check(camera);
    stream(camera, check, 20);
}

// ---- Late frames and late consumers ----

class LateFrames : public InBothModes {};
INSTANTIATE_TEST_SUITE_P(, LateFrames, both_modes, testing::PrintToStringParamName());

TEST_P(LateFrames, CanBeFetchedAfterTheStop)
{
    Camera camera(gentl, system->open_interface("FG0"), "Device00");
    camera.announce(buffers);
    camera.start_and_queue();
    ASSERT_TRUE(eventually([&] { return camera.event_number(EVENT_NUM_IN_QUEUE) == buffers; }));
    camera.stop();

    FrameCheck check(camera);
    for (size_t i = 0; i < buffers; ++i)
        check.expect_good(camera.next());
    Filled filled{};
    EXPECT_EQ(GC_ERR_TIMEOUT, camera.get(filled, 0));
}

TEST_P(LateFrames, DoNotComeAfterTheStop)
{
    const IF_HANDLE iface = system->open_interface("FG0");
    Camera camera(gentl, iface, "Device00");
    Camera clock(gentl, iface, "Device01");
    camera.announce(buffers);
    clock.announce(buffers);
    camera.start_and_queue();
    FrameCheck check(camera);
    stream(camera, check, 20);
    camera.stop();

    const uint64_t fired = camera.event_number(EVENT_NUM_FIRED);
    const uint64_t underruns = camera.stream_number(STREAM_INFO_NUM_UNDERRUN);
    camera.queue_all();
    clock.start_and_queue(); // its frames are the time in which none of ours may come
    FrameCheck clock_check(clock);
    stream(clock, clock_check, 100);
    EXPECT_EQ(fired, camera.event_number(EVENT_NUM_FIRED));
    EXPECT_EQ(0u, camera.stream_number(STREAM_INFO_NUM_DELIVERED));
    EXPECT_EQ(underruns, camera.stream_number(STREAM_INFO_NUM_UNDERRUN));
}

TEST_P(LateFrames, OfASlowConsumerAreStillWhole)
{
    const FrameRate rate("1000");
    system.emplace(gentl);
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

TEST_P(LateFrames, OfRevokedBuffersHarmNobody)
{
    Camera camera(gentl, system->open_interface("FG0"), "Device00");
    FrameCheck check(camera);
    camera.announce(buffers, Memory::of_consumer);
    camera.start_and_queue();
    for (int round = 0; round < 20; ++round) {
        stream(camera, check, 10);
        camera.revoke_all(); // while the camera writes into them
        EXPECT_EQ(0u, camera.stream_number(STREAM_INFO_NUM_ANNOUNCED));
        ASSERT_EQ(GC_ERR_SUCCESS, gentl.EventFlush(camera.event()));
        camera.announce(buffers, Memory::of_consumer);
        camera.queue_all();
    }
    stream(camera, check, 10);
}

} // namespace
