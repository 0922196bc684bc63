#include <atomic>
#include <future>
#include <vector>

#include "system/fixture.h"

// Everything that may happen to a stream at once, from several threads, while frames arrive.

using namespace GenTL;
using namespace zvsystem;

namespace {

constexpr uint64_t frames = 300;

class Threads : public OneCamera {
protected:
    /// Repeats it until end_repeats(), once at least.
    std::future<void> repeat(std::function<void()> turn)
    {
        m_is_over = false;
        return std::async(std::launch::async, [this, turn = std::move(turn)] {
            do
                turn();
            while (!m_is_over);
        });
    }

    void end_repeats() { m_is_over = true; }

private:
    std::atomic<bool> m_is_over{false};
};

INSTANTIATE_TEST_SUITE_P(, Threads, both_modes, testing::PrintToStringParamName());

// Flushes take frames away from the consumer, kills end its waits.
TEST_P(Threads, AskKillAndFlushWhileFramesArrive)
{
    camera.start_and_queue();
    auto asking = repeat([this] {
        for (const auto command :
             {STREAM_INFO_NUM_DELIVERED, STREAM_INFO_NUM_UNDERRUN, STREAM_INFO_NUM_QUEUED,
              STREAM_INFO_NUM_AWAIT_DELIVERY, STREAM_INFO_NUM_STARTED, STREAM_INFO_IS_GRABBING})
            camera.stream_number(command);
        for (const BUFFER_HANDLE buffer : camera.buffers()) {
            for (const auto command : {BUFFER_INFO_TIMESTAMP, BUFFER_INFO_FRAMEID, BUFFER_INFO_NEW_DATA,
                                       BUFFER_INFO_IS_QUEUED, BUFFER_INFO_IS_ACQUIRING})
                camera.buffer_number(buffer, command);
        }
        camera.event_number(EVENT_NUM_IN_QUEUE);
        camera.event_number(EVENT_NUM_FIRED);
    });
    auto killing = repeat([this] { EXPECT_EQ(GC_ERR_SUCCESS, gentl.EventKill(camera.event())); });
    auto flushing = repeat([this] {
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.EventFlush(camera.event()));
        camera.flush(ACQ_QUEUE_UNQUEUED_TO_INPUT);
    });
    // What a flush dropped stays in the output queue until somebody fetches it from there.
    auto recycling = repeat([this] {
        camera.flush(ACQ_QUEUE_OUTPUT_DISCARD);
        camera.flush(ACQ_QUEUE_UNQUEUED_TO_INPUT);
    });

    uint64_t aborted = 0;
    while (aborted < frames) {
        Filled filled{};
        const GC_ERROR code = camera.get(filled, 1000);
        if (code == GC_ERR_ABORT)
            ++aborted;
        else
            EXPECT_TRUE(code == GC_ERR_SUCCESS || code == GC_ERR_TIMEOUT) << code;
    }
    end_repeats();
    asking.get();
    killing.get();
    flushing.get();
    recycling.get();
}

// A frame that the library finishes while the stream stops is not delivered, and its buffer stays where it
// is: so every cycle begins with all buffers queued again.
TEST_P(Threads, StartAndStopWhileConsuming)
{
    std::atomic<uint64_t> received{0};
    for (int cycle = 0; cycle < 5; ++cycle) {
        const uint64_t before = received;
        camera.start_and_queue();
        auto consuming = repeat([this, &received] {
            Filled filled{};
            if (camera.get(filled, 10) != GC_ERR_SUCCESS)
                return;
            const auto stamp = stamp_of(camera, filled.buffer);
            ASSERT_TRUE(stamp);
            EXPECT_TRUE(stamp->checksum_ok);
            ++received;
            camera.queue(filled.buffer);
        });
        EXPECT_TRUE(eventually([&] { return received >= before + 10; }));
        camera.stop();
        end_repeats();
        consuming.get();
        camera.flush(ACQ_QUEUE_ALL_DISCARD);
    }
}

TEST_P(Threads, ReplaceBuffersWhileFramesArrive)
{
    camera.start_and_queue();
    auto replacing = repeat([this] {
        BUFFER_HANDLE buffer = nullptr;
        std::vector<unsigned char> memory(
            static_cast<size_t>(camera.stream_number(STREAM_INFO_PAYLOAD_SIZE)));
        ASSERT_EQ(GC_ERR_SUCCESS,
                  gentl.DSAnnounceBuffer(camera.stream(), memory.data(), memory.size(), nullptr, &buffer));
        camera.queue(buffer);
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.DSRevokeBuffer(camera.stream(), buffer, nullptr, nullptr));
    });
    uint64_t received = 0;
    while (received < frames) {
        const Filled filled = camera.next();
        // A buffer that was revoked since is handed out without its private pointer, and must not be touched.
        if (filled.user == nullptr)
            continue;
        const auto stamp = stamp_of(camera, filled.buffer);
        ASSERT_TRUE(stamp);
        EXPECT_TRUE(stamp->checksum_ok);
        camera.queue(filled.buffer);
        ++received;
    }
    end_repeats();
    replacing.get();
}

TEST_P(Threads, StreamFromTwoCameras)
{
    Camera other(gentl, system->open_interface("FG1"), "Device10");
    other.announce(buffers);
    auto streaming = std::async(std::launch::async, [&other] {
        other.start_and_queue();
        FrameCheck{other}.stream(frames);
        other.close_device();
    });
    camera.start_and_queue();
    FrameCheck{camera}.stream(frames);
    streaming.get();
}

} // namespace
