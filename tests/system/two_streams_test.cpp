#include <future>
#include <string>

#include "system/fixture.h"

// Two cameras at once: of one grabber, and of grabbers with different protocols.

using namespace GenTL;
using namespace zvsystem;

namespace {

constexpr uint64_t frames = 300;
constexpr size_t buffers = 6;

class TwoStreams : public InBothModes {
protected:
    std::future<void> stream_in_background(const Camera& camera)
    {
        return std::async(std::launch::async, [&camera] {
            camera.start_and_queue();
            FrameCheck check(camera);
            stream(camera, check, frames);
            camera.stop();
        });
    }

    void expect_both_stream(const Camera& one, const Camera& other)
    {
        auto first = stream_in_background(one);
        auto second = stream_in_background(other);
        first.get();
        second.get();
    }
};
INSTANTIATE_TEST_SUITE_P(, TwoStreams, both_modes, testing::PrintToStringParamName());

TEST_P(TwoStreams, OfOneGrabberRunAtOnce)
{
    const IF_HANDLE iface = system->open_interface("FG0");
    Camera one(gentl, iface, "Device00");
    Camera other(gentl, iface, "Device01");
    one.announce(buffers);
    other.announce(buffers);
    EXPECT_NE(one.stream_number(STREAM_INFO_PAYLOAD_SIZE), other.stream_number(STREAM_INFO_PAYLOAD_SIZE));
    expect_both_stream(one, other);
}

TEST_P(TwoStreams, OfTwoProtocolsRunAtOnce)
{
    Camera coaxpress(gentl, system->open_interface("FG0"), "Device00");
    Camera camera_link_hs(gentl, system->open_interface("FG1"), "Device10");
    coaxpress.announce(buffers);
    camera_link_hs.announce(buffers);
    expect_both_stream(coaxpress, camera_link_hs);
}

TEST_P(TwoStreams, DoNotDisturbEachOther)
{
    const IF_HANDLE iface = system->open_interface("FG0");
    Camera lasting(gentl, iface, "Device00");
    lasting.announce(buffers);
    lasting.start_and_queue();
    FrameCheck check(lasting);
    for (int round = 0; round < 3; ++round) {
        Camera passing(gentl, iface, "Device01");
        passing.announce(buffers);
        passing.start_and_queue();
        FrameCheck passing_check(passing);
        for (int i = 0; i < 20; ++i) {
            stream(lasting, check, 1);
            stream(passing, passing_check, 1);
        }
        passing.close_device(); // without a stop
        stream(lasting, check, 20);
    }
}

// One camera in each mode: the mode is chosen when a stream is opened.
TEST_F(LoadedProducer, StreamsInBothModesAtOnce)
{
    const IF_HANDLE iface = system->open_interface("FG0");
    m_surroundings.set_mode(Mode::queued);
    Camera queued(gentl, iface, "Device00");
    m_surroundings.set_mode(Mode::cyclic);
    Camera cyclic(gentl, iface, "Device01");
    queued.announce(buffers);
    cyclic.announce(buffers);
    queued.start_and_queue();
    cyclic.start_and_queue();
    FrameCheck queued_check(queued);
    FrameCheck cyclic_check(cyclic);
    constexpr uint64_t ring_frames = 4;
    uint64_t largest_queued_id = 0;
    for (uint64_t i = 0; i < 50; ++i) {
        const Filled of_queue = queued.next();
        queued_check.expect_next(of_queue);
        largest_queued_id = queued.buffer_number(of_queue.buffer, BUFFER_INFO_FRAMEID);
        queued.queue(of_queue.buffer);
        const Filled of_ring = cyclic.next();
        cyclic_check.expect_good(of_ring);
        EXPECT_LT(cyclic.buffer_number(of_ring.buffer, BUFFER_INFO_FRAMEID), ring_frames);
        cyclic.queue(of_ring.buffer);
    }
    EXPECT_GE(largest_queued_id, ring_frames);
}

} // namespace
