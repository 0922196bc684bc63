#include <string>

#include "api/Delivery_fixtures.h"

// Frames in either mode.

using namespace zvtest;

namespace {

class Delivery : public Delivering<EitherStream> {};

TEST_P(Delivery, FillsABufferAndHandsItToTheEvent)
{
    const size_t i = is_queued() ? 2 : 0; // in queued mode the library chooses
    deliver(*buffers[i], Frame{777, 12, 0, 0x3C});
    EXPECT_TRUE(is_filled_with(buffers[i]->memory, 0x3C));
    EXPECT_TRUE(is_filled_with(buffers[1]->memory, 0));
    EXPECT_TRUE(is_new(*buffers[i]));
    EXPECT_FALSE(is_new(*buffers[1]));
    EXPECT_EQ(777U, timestamp(i));
    EXPECT_EQ(is_queued() ? 12U : 0U, frame_id(i));
    EXPECT_EQ(1U, num_delivered());
    EXPECT_EQ(1U, num_await_delivery());
    EXPECT_EQ(3U, num_queued());
    EXPECT_EQ(1U, num_in_event());
    const Taken taken = take();
    EXPECT_EQ(GC_ERR_SUCCESS, taken.code);
    EXPECT_EQ(buffers[i]->handle, taken.data.BufferHandle);
}

TEST_P(Delivery, FiresOnlyTheNewBufferEventAndNeedsNone)
{
    EVENT_HANDLE remote = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &remote));
    EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(ds, EVENT_NEW_BUFFER));
    deliver(*buffers[0]);
    EXPECT_EQ(1U, num_delivered());
    EXPECT_EQ(1U, num_await_delivery());
    EXPECT_TRUE(is_new(*buffers[0]));
    register_event(); // after the other one
    deliver(*buffers[1]);
    EXPECT_EQ(1U, event_info<uint64_t>(EVENT_NUM_FIRED).value);
    event = remote;
    EXPECT_EQ(0U, event_info<uint64_t>(EVENT_NUM_FIRED).value);
}

TEST_P(Delivery, IgnoresFramesOfAnIdleStreamSilentlyInCyclicMode)
{
    stop();
    forget();
    for (const uint64_t time : {1U, 2U})
        deliver(*buffers[0], Frame{time, 0, 0, -1});
    EXPECT_EQ(Calls{}, fake.calls());
    const std::string line = "stream callback for handle 0x" + hex(buffers[0]->library) +
                             ", m_AcquisitionFlag=false, m_StreamDeliveredBuffers=0";
    if (is_queued())
        EXPECT_LOG_LINES({Priority::trace, line}, {Priority::trace, line});
    else
        EXPECT_LOG_LINES();
    EXPECT_EQ(0U, num_delivered());
    EXPECT_EQ(is_queued() ? 0U : 2U, num_underrun());
    EXPECT_FALSE(is_new(*buffers[0]));
    EXPECT_EQ(4U, num_queued());
    EXPECT_EQ(0U, num_in_event());
}

TEST_P(Delivery, FillsMemoryThatTheConsumerDidNotAllocate)
{
    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD));
    const Announced& buffer = alloc_and_announce(100);
    queue(buffer);
    deliver(buffer, Frame{0, 0, 0, 0x66});
    EXPECT_EQ(buffer.handle, take().data.BufferHandle);
    const auto* const memory = buffer_info<const uint8_t*>(buffer.handle, BUFFER_INFO_BASE).value;
    EXPECT_EQ(0x66, memory[0]);
    EXPECT_EQ(0x66, memory[99]);
}

TEST_P(Delivery, CountsAFrameOnceTheLibraryHasDescribedIt)
{
    uint64_t delivered = 1;
    uint64_t entries = 1;
    bool is_new_meanwhile = true;
    fake.on(within_delivery(), [&](const Call&) {
        delivered = num_delivered();
        entries = num_in_event();
        is_new_meanwhile = is_new(*buffers[0]);
    });
    deliver(*buffers[0]);
    EXPECT_EQ(0U, delivered);
    EXPECT_EQ(0U, entries);
    EXPECT_FALSE(is_new_meanwhile);
}

TEST_P(Delivery, TakesTheBufferBeforeTheLibraryIsAsked)
{
    bool is_queued_meanwhile = true;
    bool is_acquiring_meanwhile = false;
    fake.on(is_queued() ? "ZVGR_BufferGetInfo" : "ZVGR_StreamGetFrameIndex", [&](const Call&) {
        is_queued_meanwhile = is_in_input_pool(*buffers[0]);
        is_acquiring_meanwhile = is_acquiring(*buffers[0]);
    });
    deliver(*buffers[0]);
    EXPECT_FALSE(is_queued_meanwhile);
    EXPECT_EQ(is_queued(), is_acquiring_meanwhile) << "in cyclic mode, filling starts with the copy";
}

INSTANTIATE_IN_BOTH_MODES(Delivery);

} // namespace
