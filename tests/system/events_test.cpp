#include <atomic>
#include <future>
#include <vector>

#include "system/fixture.h"

// Waiting for frames while somebody kills, flushes or closes.

using namespace GenTL;
using namespace zvsystem;

namespace {

constexpr size_t buffers = 6;

/// A consumer that waits without limit, on a thread of its own.
class Waiter {
public:
    explicit Waiter(const Camera& camera)
        : m_code(std::async(std::launch::async, [this, &camera] {
              m_thread = this_thread();
              return camera.get(m_filled, GENTL_INFINITE);
          }))
    {
        // This thread holds no lock while it looks, so what the other sleeps on is the event.
        EXPECT_TRUE(eventually([this] { return m_thread != 0 && is_asleep(m_thread); }));
    }

    GC_ERROR code() { return m_code.get(); }
    const Filled& filled() const { return m_filled; } // after code()

private:
    std::atomic<pid_t> m_thread{0};
    Filled m_filled{};
    std::future<GC_ERROR> m_code;
};

class WhileWaiting : public InBothModes {
protected:
    void SetUp() override
    {
        camera.emplace(gentl, system->open_interface("FG0"), "Device00");
        camera->announce(buffers);
    }

    std::optional<Camera> camera;
};
INSTANTIATE_TEST_SUITE_P(, WhileWaiting, both_modes, testing::PrintToStringParamName());

TEST_P(WhileWaiting, AKillEndsTheWait)
{
    camera->start(); // and no buffer to fill
    Waiter waiter(*camera);
    ASSERT_EQ(GC_ERR_SUCCESS, gentl.EventKill(camera->event()));
    EXPECT_EQ(GC_ERR_ABORT, waiter.code());

    camera->queue_all(); // one kill ends one wait
    FrameCheck check(*camera);
    stream(*camera, check, 20);
}

TEST_P(WhileWaiting, AFlushOfTheEventDoesNotEndTheWait)
{
    camera->start();
    Waiter waiter(*camera);
    ASSERT_EQ(GC_ERR_SUCCESS, gentl.EventFlush(camera->event()));
    camera->queue_all();
    EXPECT_EQ(GC_ERR_SUCCESS, waiter.code());

    FrameCheck check(*camera);
    check.expect_good(waiter.filled());
    camera->queue(waiter.filled().buffer);
    stream(*camera, check, 20);
}

TEST_P(WhileWaiting, AFlushOfTheQueuesDoesNotEndTheWait)
{
    camera->start();
    Waiter waiter(*camera);
    camera->flush(ACQ_QUEUE_OUTPUT_DISCARD);
    camera->flush(ACQ_QUEUE_ALL_DISCARD);
    camera->flush(ACQ_QUEUE_UNQUEUED_TO_INPUT);
    EXPECT_EQ(GC_ERR_SUCCESS, waiter.code());

    FrameCheck check(*camera);
    check.expect_good(waiter.filled());
    camera->queue(waiter.filled().buffer);
    stream(*camera, check, 20);
}

// Buffers that were moved to the output queue are there for the next who asks; nobody is woken for them.
TEST_P(WhileWaiting, MovedBuffersWaitForTheNextCall)
{
    camera->queue_all();
    Waiter waiter(*camera);
    camera->flush(ACQ_QUEUE_INPUT_TO_OUTPUT);
    for (size_t i = 0; i < buffers; ++i) {
        Filled filled{};
        EXPECT_EQ(GC_ERR_SUCCESS, camera->get(filled, 0));
        EXPECT_EQ(camera->buffers()[i], filled.buffer);
    }
    ASSERT_EQ(GC_ERR_SUCCESS, gentl.EventKill(camera->event()));
    EXPECT_EQ(GC_ERR_ABORT, waiter.code());
}

TEST_P(WhileWaiting, AStopDoesNotEndTheWait)
{
    camera->start();
    Waiter waiter(*camera);
    camera->stop();
    camera->start_and_queue();
    EXPECT_EQ(GC_ERR_SUCCESS, waiter.code());
}

TEST_P(WhileWaiting, UnregisteringEndsEveryWait)
{
    Waiter one(*camera);
    Waiter other(*camera);
    ASSERT_EQ(GC_ERR_SUCCESS, gentl.GCUnregisterEvent(camera->stream(), EVENT_NEW_BUFFER));
    EXPECT_EQ(GC_ERR_ABORT, one.code());
    EXPECT_EQ(GC_ERR_ABORT, other.code());
}

TEST_P(WhileWaiting, ClosingTheAcquiringStreamEndsEveryWait)
{
    camera->start();
    Waiter one(*camera);
    Waiter other(*camera);
    camera->close_stream();
    EXPECT_EQ(GC_ERR_ABORT, one.code());
    EXPECT_EQ(GC_ERR_ABORT, other.code());
}

TEST_P(WhileWaiting, ClosingTheDeviceEndsTheWait)
{
    camera->start();
    Waiter waiter(*camera);
    camera->close_device();
    EXPECT_EQ(GC_ERR_ABORT, waiter.code());
}

TEST_P(WhileWaiting, ClosingTheInterfaceEndsTheWait)
{
    camera->start();
    Waiter waiter(*camera);
    IF_HANDLE iface = nullptr;
    ASSERT_EQ(GC_ERR_RESOURCE_IN_USE, gentl.TLOpenInterface(system->handle(), "FG0", &iface));
    ASSERT_EQ(GC_ERR_SUCCESS, gentl.IFClose(iface));
    EXPECT_EQ(GC_ERR_ABORT, waiter.code());
    camera->abandon();
}

} // namespace
