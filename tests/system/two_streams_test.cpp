#include "system/fixture.h"

// Two cameras of one grabber at once. system_threads has cameras of different grabbers.

using namespace GenTL;
using namespace zvsystem;

namespace {

constexpr size_t buffers = 6;

class TwoStreams : public InBothModes {
protected:
    GrabberFile grabbers{R"(grabbers:
  - name: Two cameras
    cameras:
      - {serial: A, sensor_width: 160, sensor_height: 120}
      - {serial: B, sensor_width: 96, sensor_height: 64}
)"};
    const IF_HANDLE iface{system->open_interface("FG0")};
};
INSTANTIATE_TEST_SUITE_P(, TwoStreams, both_modes, testing::PrintToStringParamName());

TEST_P(TwoStreams, DoNotDisturbEachOther)
{
    Camera lasting(gentl, iface, "Device00");
    EXPECT_EQ(uint64_t{160 * 120}, lasting.stream_number(STREAM_INFO_PAYLOAD_SIZE));
    lasting.announce(buffers);
    lasting.start_and_queue();
    FrameCheck check(lasting);
    for (int round = 0; round < 3; ++round) {
        Camera passing(gentl, iface, "Device01");
        EXPECT_EQ(uint64_t{96 * 64}, passing.stream_number(STREAM_INFO_PAYLOAD_SIZE));
        passing.announce(buffers);
        passing.start_and_queue();
        FrameCheck passing_check(passing);
        for (int i = 0; i < 20; ++i) {
            check.stream(1);
            passing_check.stream(1);
        }
        passing.close_device(); // without a stop
        check.stream(20);
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
