#include "api/Delivery_fixtures.h"

// Frames in either mode.

using namespace zvtest;

namespace {

class Delivery : public Delivering<Running<EitherStream>> {
protected:
    void register_again()
    {
        EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(ds, EVENT_NEW_BUFFER));
        register_event();
    }
};

TEST_P(Delivery, FillsABufferAndHandsItToTheEvent)
{
    deliver(*buffers[0], Frame{777, 0, 0, 0x3C});
    EXPECT_TRUE(is_filled_with(buffers[0]->memory, 0x3C));
    EXPECT_TRUE(is_filled_with(buffers[1]->memory, 0));
    EXPECT_TRUE(is_new(0));
    EXPECT_FALSE(is_new(1));
    EXPECT_EQ(777U, timestamp(0));
    EXPECT_EQ(1U, num_delivered());
    EXPECT_EQ(1U, num_await_delivery());
    EXPECT_EQ(3U, num_queued());
    EXPECT_EQ(1U, in_event());
    const Taken taken = take();
    EXPECT_EQ(GC_ERR_SUCCESS, taken.code);
    EXPECT_EQ(buffers[0]->handle, taken.data.BufferHandle);
}

TEST_P(Delivery, CountsFramesThatNoEventIsRegisteredFor)
{
    EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(ds, EVENT_NEW_BUFFER));
    deliver(*buffers[0]);
    EXPECT_EQ(1U, num_delivered());
    EXPECT_EQ(1U, num_await_delivery());
    EXPECT_TRUE(is_new(0));
}

TEST_P(Delivery, FiresNoOtherEvent)
{
    EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(ds, EVENT_NEW_BUFFER));
    EXPECT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &event));
    deliver(*buffers[0]);
    EXPECT_EQ(0U, event_info<uint64_t>(EVENT_NUM_FIRED).value);
}

TEST_P(Delivery, FiresAnEventRegisteredBehindAnotherOne)
{
    EVENT_HANDLE remote = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &remote));
    register_again();
    deliver(*buffers[0]);
    EXPECT_EQ(1U, event_info<uint64_t>(EVENT_NUM_FIRED).value);
}

TEST_P(Delivery, IgnoresFramesOfAnIdleStream)
{
    stop();
    forget();
    for (const uint64_t time : {1U, 2U})
        deliver(*buffers[0], Frame{time, 0, 0, -1});
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_EQ(0U, num_delivered());
    EXPECT_EQ(is_queued() ? 0U : 2U, num_underrun());
    EXPECT_FALSE(is_new(0));
    EXPECT_EQ(4U, num_queued());
    EXPECT_EQ(0U, in_event());
}

TEST_P(Delivery, GoesOnForManyRounds)
{
    const Announced& buffer = *buffers[0];
    for (uint64_t i = 0; i < 100; ++i) {
        deliver(buffer, Frame{i + 1, i + 5, 0, static_cast<int>(i)});
        const Taken taken = take();
        ASSERT_EQ(GC_ERR_SUCCESS, taken.code);
        ASSERT_EQ(buffer.handle, taken.data.BufferHandle);
        ASSERT_EQ(static_cast<uint8_t>(i), buffer.memory[4095]);
        ASSERT_EQ(i + 1, timestamp(0));
        ASSERT_EQ(is_queued() ? i + 5 : i % 4, frame_id(0));
        queue(buffer);
    }
    EXPECT_EQ(100U, num_delivered());
    EXPECT_EQ(0U, num_underrun());
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

TEST_P(Delivery, IsNotCountedBeforeTheLibraryHasDescribedTheFrame)
{
    uint64_t delivered = 1;
    uint64_t entries = 1;
    fake.on(is_queued() ? "ZVGR_BufferGetInfo" : "ZVGR_StreamGetAux", [&](const Call&) {
        delivered = num_delivered();
        entries = in_event();
    });
    deliver(*buffers[0]);
    EXPECT_EQ(0U, delivered);
    EXPECT_EQ(0U, entries);
}

TEST_P(Delivery, TakesTheBufferBeforeTheLibraryIsAsked)
{
    bool is_queued_meanwhile = true;
    bool is_acquiring_meanwhile = false;
    fake.on(is_queued() ? "ZVGR_BufferGetInfo" : "ZVGR_StreamGetFrameIndex", [&](const Call&) {
        is_queued_meanwhile = is_in_input_pool(0);
        is_acquiring_meanwhile = is_acquiring(0);
    });
    deliver(*buffers[0]);
    EXPECT_FALSE(is_queued_meanwhile);
    EXPECT_EQ(is_queued(), is_acquiring_meanwhile) << "in cyclic mode, filling starts with the copy";
}

TEST_P(Delivery, WorksWithoutTheQueueLocksToo)
{
    settings.set("GenTL.Buffer.SerializeBufferType", 0);
    settings.set("GenTL.Event.SerializeStreamEvent", 0);
    register_again();
    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD));
    queue(announce());
    deliver(*buffers[4]);
    EXPECT_EQ(buffers[4]->handle, take().data.BufferHandle);
}

INSTANTIATE_IN_BOTH_MODES(Delivery);

} // namespace
