#include <string>

#include "system/fixture.h"

// The example of a configuration with faults, as its page promises it.

using namespace GenTL;
using namespace zvsystem;

namespace {

struct Outcome {
    uint64_t lost{0};
    uint64_t damaged{0};
};

/// Grabs frames of the first camera with the example and another line.
Outcome grab(uint64_t frames, const std::string& line)
{
    surroundings_in(Mode::queued);
    const GrabberFile file{contents(ZV_FAULT_EXAMPLE) + line + "\n"};
    const Producer producer{producer_file};
    const System system{producer.functions()};
    Camera camera{producer.functions(), system.open_interface("FG0"), "Device00"};
    camera.announce(8);
    camera.start_and_queue(frames);
    Outcome outcome;
    uint64_t next = 0;
    for (uint64_t i = 0; i < frames; ++i) {
        const Filled filled = camera.next();
        const auto stamp = stamp_of(camera, filled.buffer);
        outcome.damaged += stamp && stamp->checksum_ok ? 0 : 1;
        const uint64_t id = camera.buffer_number(filled.buffer, BUFFER_INFO_FRAMEID);
        outcome.lost += id - next;
        next = id + 1;
        camera.queue(filled.buffer);
    }
    camera.stop();
    return outcome;
}

TEST(FaultExample, LosesAndDamagesWhatItsPageSays)
{
    const Outcome outcome = grab(500, "");
    EXPECT_EQ(503u, outcome.lost);
    EXPECT_EQ(3u, outcome.damaged);
}

TEST(FaultExample, WritesTheSameLogInEveryRun)
{
    const auto log = surroundings().folder() / "calls.log";
    grab(60, "call_log: " + log.string());
    const std::string first = contents(log);
    EXPECT_NE(std::string::npos, first.find("fault frame-corrupted"));
    for (int run = 0; run < 3; ++run) {
        grab(60, "call_log: " + log.string());
        EXPECT_EQ(first, contents(log));
    }
}

} // namespace
