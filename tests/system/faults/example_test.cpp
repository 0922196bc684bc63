#include "system/fixture.h"

// The example of a configuration with faults, as its page promises it.

using namespace GenTL;
using namespace zvsystem;

TEST(FaultExample, LosesAndDamagesWhatItsPageSays)
{
    constexpr uint64_t frames = 500;
    surroundings_in(Mode::queued);
    const GrabberFile file{contents(ZV_FAULT_EXAMPLE)};
    const Producer producer{producer_file};
    const System system{producer.functions()};
    Camera camera{producer.functions(), system.open_interface("FG0"), "Device00"};
    camera.announce(8);
    camera.start_and_queue(frames);
    uint64_t lost = 0;
    uint64_t damaged = 0;
    uint64_t next = 0;
    for (uint64_t i = 0; i < frames; ++i) {
        const Filled filled = camera.next();
        const auto stamp = stamp_of(camera, filled.buffer);
        damaged += stamp && stamp->checksum_ok ? 0 : 1;
        const uint64_t id = camera.buffer_number(filled.buffer, BUFFER_INFO_FRAMEID);
        lost += id - next;
        next = id + 1;
        camera.queue(filled.buffer);
    }
    camera.stop();
    EXPECT_EQ(503u, lost);
    EXPECT_EQ(3u, damaged);
}
