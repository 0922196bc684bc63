#include <atomic>
#include <future>
#include <string>
#include <tuple>

#include "system/fixture.h"

// A consumer that waits for a frame without limit goes on waiting, whatever else is done to the stream.

using namespace GenTL;
using namespace zvsystem;

namespace {

struct Interference {
    const char* name;
    void (*interfere)(const Functions& gentl, const Camera& camera);
};

std::ostream& operator<<(std::ostream& out, const Interference& row) { return out << row.name; }

const Interference interferences[] = {
    {"FlushOfTheEvent",
     [](const Functions& gentl, const Camera& camera) {
         EXPECT_EQ(GC_ERR_SUCCESS, gentl.EventFlush(camera.event()));
         camera.queue_all();
     }},
    {"FlushOfTheQueues",
     [](const Functions& /*gentl*/, const Camera& camera) {
         camera.flush(ACQ_QUEUE_OUTPUT_DISCARD);
         camera.flush(ACQ_QUEUE_ALL_DISCARD);
         camera.flush(ACQ_QUEUE_UNQUEUED_TO_INPUT);
     }},
    {"Stop",
     [](const Functions& /*gentl*/, const Camera& camera) {
         camera.stop();
         camera.start_and_queue();
     }},
};

class WhileWaiting : public LoadedProducer,
                     public testing::WithParamInterface<std::tuple<Mode, Interference>> {
protected:
    WhileWaiting() : LoadedProducer(std::get<Mode>(GetParam())) { camera.announce(6); }

    Camera camera{gentl, system->open_interface("FG0"), "Device00"};
};

TEST_P(WhileWaiting, TheWaitEndsWithAFrame)
{
    camera.start(); // without a buffer to fill
    std::atomic<pid_t> waiter{0};
    Filled filled{};
    auto code = std::async(std::launch::async, [&] {
        waiter = this_thread();
        return camera.get(filled, GENTL_INFINITE);
    });
    // This thread holds no lock while it looks, so what the other sleeps on is the event.
    EXPECT_TRUE(eventually([&] { return waiter != 0 && is_asleep(waiter); }));
    std::get<Interference>(GetParam()).interfere(gentl, camera);
    ASSERT_EQ(GC_ERR_SUCCESS, code.get());

    FrameCheck check(camera);
    check.expect_good(filled);
    camera.queue(filled.buffer);
    check.stream(20);
}

std::string name_of(const testing::TestParamInfo<std::tuple<Mode, Interference>>& info)
{
    return std::get<Interference>(info.param).name + testing::PrintToString(std::get<Mode>(info.param));
}

INSTANTIATE_TEST_SUITE_P(, WhileWaiting, testing::Combine(both_modes, testing::ValuesIn(interferences)),
                         name_of);

} // namespace
