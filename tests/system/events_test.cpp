#include <atomic>
#include <future>

#include "system/fixture.h"

// A consumer that waits for a frame without limit goes on waiting, whatever else is done to the stream.

using namespace GenTL;
using namespace zvsystem;

namespace {

using AWait = OneCamera;
INSTANTIATE_TEST_SUITE_P(, AWait, both_modes, testing::PrintToStringParamName());

TEST_P(AWait, EndsWithAFrameAfterFlushesAndAStop)
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
    EXPECT_EQ(GC_ERR_SUCCESS, gentl.EventFlush(camera.event()));
    camera.flush(ACQ_QUEUE_OUTPUT_DISCARD);
    camera.flush(ACQ_QUEUE_ALL_DISCARD);
    camera.stop();
    camera.start_and_queue();
    ASSERT_EQ(GC_ERR_SUCCESS, code.get());

    FrameCheck check(camera);
    check.expect_good(filled);
    camera.queue(filled.buffer);
    check.stream(20);
}

} // namespace
