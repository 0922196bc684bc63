#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "support/fixtures.h"

// Frames in cyclic mode: the library fills a ring of its own, each frame is copied into a queued buffer.

using namespace zvtest;

namespace {

class CyclicDelivery : public RunningCyclicStream {
protected:
    uint64_t num_delivered() { return stream_info<uint64_t>(STREAM_INFO_NUM_DELIVERED).value; }
    uint64_t num_underrun() { return stream_info<uint64_t>(STREAM_INFO_NUM_UNDERRUN).value; }
    size_t num_await_delivery() { return stream_info<size_t>(STREAM_INFO_NUM_AWAIT_DELIVERY).value; }
    uint64_t timestamp(size_t i)
    {
        return buffer_info<uint64_t>(buffers[i]->handle, BUFFER_INFO_TIMESTAMP).value;
    }
    uint64_t frame_id(size_t i)
    {
        return buffer_info<uint64_t>(buffers[i]->handle, BUFFER_INFO_FRAMEID).value;
    }
    bool is_new(size_t i)
    {
        return buffer_info<bool8_t>(buffers[i]->handle, BUFFER_INFO_NEW_DATA).value != 0;
    }

    void frame(uint32_t index, const Frame& content = {}) { fake.deliver_cyclic(stream(), index, content); }

    bool is_filled_with(const std::vector<uint8_t>& memory, uint8_t value) const
    {
        return std::all_of(memory.begin(), memory.end(), [value](uint8_t byte) { return byte == value; });
    }

    std::string copy_line(int index, const void* source, const Announced& buffer) const
    {
        return "curr_BuffIndex=" + std::to_string(index) + ", src_BuffPtr=" + hex16(source) +
               ", curr_BuffPtr=" + hex16(buffer.memory.data()) +
               ", curr_BuffSize=" + std::to_string(buffer.memory.size());
    }
};

TEST_F(CyclicDelivery, CopiesTheFrameIntoTheFirstQueuedBuffer)
{
    frame(2, Frame{777, 0, 0, 0x3C});
    EXPECT_TRUE(is_filled_with(buffers[0]->memory, 0x3C));
    EXPECT_TRUE(is_filled_with(buffers[1]->memory, 0));
    EXPECT_TRUE(is_new(0));
    EXPECT_EQ(777U, timestamp(0));
    EXPECT_EQ(2U, frame_id(0));
    EXPECT_EQ(1U, num_delivered());
    EXPECT_EQ(1U, num_await_delivery());
}

TEST_F(CyclicDelivery, AsksTheLibraryForIndexMemoryAndRecord)
{
    frame(3);
    EXPECT_EQ((Calls{call("ZVGR_StreamGetFrameIndex", stream()), call("ZVGR_StreamGetPtr", stream(), 3),
                     call("ZVGR_StreamGetAux", stream(), 3)}),
              fake.calls());
}

TEST_F(CyclicDelivery, LogsOneLinePerFrame)
{
    frame(1);
    EXPECT_LOG_LINES({Priority::trace, copy_line(1, fake.ring_frame(stream(), 1), *buffers[0]),
                      "StreamModule::buffer_callback", "StreamModule"});
}

TEST_F(CyclicDelivery, HandsTheBufferToTheEvent)
{
    frame(0);
    EXPECT_EQ(1U, event_info<size_t>(EVENT_NUM_IN_QUEUE).value);
    const Taken taken = take();
    EXPECT_EQ(GC_ERR_SUCCESS, taken.code);
    EXPECT_EQ(buffers[0]->handle, taken.data.BufferHandle);
}

TEST_F(CyclicDelivery, ChoosesBuffersByAnnouncementNotByQueueing)
{
    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD));
    queue(*buffers[2]);
    queue(*buffers[1]);
    frame(0);
    frame(1);
    EXPECT_EQ(buffers[1]->handle, take().data.BufferHandle);
    EXPECT_EQ(buffers[2]->handle, take().data.BufferHandle);
}

TEST_F(CyclicDelivery, FillsABufferAgainOnlyWhenItIsQueuedAgain)
{
    for (uint32_t i = 0; i < 4; ++i)
        frame(i);
    queue(*buffers[2]);
    frame(0, Frame{42, 0, 0, -1});
    EXPECT_EQ(42U, timestamp(2));
    EXPECT_EQ(5U, num_delivered());
}

TEST_F(CyclicDelivery, DropsAFrameWithoutAQueuedBuffer)
{
    for (uint32_t i = 0; i < 4; ++i)
        frame(i);
    ASSERT_EQ(4U, num_delivered());
    const uint64_t before = timestamp(0);
    forget();
    frame(0, Frame{4711, 0, 0, 0x7F});
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_LOG_LINES();
    EXPECT_EQ(4U, num_delivered());
    EXPECT_EQ(0U, num_underrun());
    EXPECT_EQ(before, timestamp(0));
    EXPECT_TRUE(is_filled_with(buffers[0]->memory, 0));
    EXPECT_EQ(4U, event_info<size_t>(EVENT_NUM_IN_QUEUE).value);
}

TEST_F(CyclicDelivery, CountsFramesOfAnIdleStreamAsUnderruns)
{
    stop();
    forget();
    frame(0, Frame{1, 0, 0, 0x11});
    frame(1, Frame{2, 0, 0, 0x11});
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_LOG_LINES();
    EXPECT_EQ(2U, num_underrun());
    EXPECT_EQ(0U, num_delivered());
    EXPECT_FALSE(is_new(0));
    EXPECT_EQ(4U, stream_info<size_t>(STREAM_INFO_NUM_QUEUED).value);
    EXPECT_EQ(0U, event_info<size_t>(EVENT_NUM_IN_QUEUE).value);
}

TEST_F(CyclicDelivery, CountsFramesThatNobodyIsToldOf)
{
    EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(ds, EVENT_NEW_BUFFER));
    frame(0);
    EXPECT_EQ(1U, num_delivered());
    EXPECT_EQ(1U, num_await_delivery());
    EXPECT_TRUE(is_new(0));
}

TEST_F(CyclicDelivery, TellsNoOtherEvent)
{
    EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(ds, EVENT_NEW_BUFFER));
    EXPECT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &event));
    frame(0);
    EXPECT_EQ(0U, event_info<uint64_t>(EVENT_NUM_FIRED).value);
}

TEST_F(CyclicDelivery, TellsAnEventRegisteredBehindAnotherOne)
{
    EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(ds, EVENT_NEW_BUFFER));
    EVENT_HANDLE remote = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &remote));
    register_event();
    frame(0);
    EXPECT_EQ(1U, event_info<uint64_t>(EVENT_NUM_FIRED).value);
}

TEST_F(CyclicDelivery, CopiesTheAnnouncedSize)
{
    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD));
    std::vector<uint8_t> memory(300, 0xEE);
    BUFFER_HANDLE handle = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(ds, memory.data() + 100, 100, nullptr, &handle));
    ASSERT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(ds, handle));
    frame(0, Frame{0, 0, 0, 0x22});
    std::vector<uint8_t> expected(300, 0xEE);
    std::fill(expected.begin() + 100, expected.begin() + 200, uint8_t{0x22});
    EXPECT_EQ(expected, memory);
}

TEST_F(CyclicDelivery, CopiesBeyondTheFrameIntoALargerBuffer)
{
    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD));
    std::memset(fake.ring_frame(stream(), 1), 0x44, ring_frame_bytes);
    const Announced& buffer = announce(ring_frame_bytes + 1000);
    queue(buffer);
    frame(0, Frame{0, 0, 0, 0x33});
    EXPECT_EQ(0x33, buffer.memory[ring_frame_bytes - 1]);
    EXPECT_EQ(0x44, buffer.memory[ring_frame_bytes]);
    EXPECT_EQ(0x44, buffer.memory.back());
    EXPECT_EQ(ring_frame_bytes + 1000, buffer_info<size_t>(buffer.handle, BUFFER_INFO_SIZE_FILLED).value);
}

TEST_F(CyclicDelivery, CopiesIntoMemoryThatTheBufferAllocated)
{
    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD));
    const Announced& buffer = alloc_and_announce(100);
    queue(buffer);
    frame(0, Frame{0, 0, 0, 0x66});
    const auto* const memory = buffer_info<const uint8_t*>(buffer.handle, BUFFER_INFO_BASE).value;
    EXPECT_EQ(0x66, memory[0]);
    EXPECT_EQ(0x66, memory[99]);
}

TEST_F(CyclicDelivery, DeliversAnEmptyBuffer)
{
    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD));
    const Announced& buffer = alloc_and_announce(0);
    queue(buffer);
    frame(1);
    EXPECT_EQ(buffer.handle, take().data.BufferHandle);
}

TEST_F(CyclicDelivery, ExtendsTheSignOfTheFrameIndex)
{
    struct Row {
        uint32_t index;
        const char* printed;
        uint64_t id;
    };
    size_t i = 0;
    for (const Row& row :
         {Row{0xFFFFFFFFU, "-1", UINT64_MAX}, Row{0x80000000U, "-2147483648", 0xFFFFFFFF80000000U},
          Row{0x7FFFFFFFU, "2147483647", 0x7FFFFFFFU}}) {
        SCOPED_TRACE(row.printed);
        forget();
        fake.next("ZVGR_StreamGetFrameIndex").answers(row.index);
        frame(0);
        EXPECT_EQ(
            (Calls{call("ZVGR_StreamGetFrameIndex", stream()), call("ZVGR_StreamGetPtr", stream(), row.index),
                   call("ZVGR_StreamGetAux", stream(), row.index)}),
            fake.calls());
        EXPECT_LOGGED(Priority::trace, std::string("curr_BuffIndex=") + row.printed +
                                           ", src_BuffPtr=0000000000000000, curr_BuffPtr=" +
                                           hex16(buffers[i]->memory.data()) + ", curr_BuffSize=4096");
        EXPECT_EQ(row.id, frame_id(i++));
    }
}

TEST_F(CyclicDelivery, DeliversWithoutCopyingWhenTheFrameHasNoMemory)
{
    std::fill(buffers[0]->memory.begin(), buffers[0]->memory.end(), uint8_t{0x99});
    fake.next("ZVGR_StreamGetPtr").answers_pointer(nullptr);
    frame(1, Frame{555, 0, 0, 0x22});
    EXPECT_TRUE(is_filled_with(buffers[0]->memory, 0x99));
    EXPECT_LOG_LINES({Priority::trace, copy_line(1, nullptr, *buffers[0])});
    EXPECT_EQ(555U, timestamp(0));
    EXPECT_TRUE(is_new(0));
    EXPECT_EQ(1U, num_delivered());
    EXPECT_EQ(buffers[0]->handle, take().data.BufferHandle);
}

TEST_F(CyclicDelivery, HasTimestampZeroWhenTheRecordIsRefused)
{
    frame(0, Frame{555, 0, 0, 0x22});
    ASSERT_EQ(555U, timestamp(0));
    queue(*buffers[0]);
    fake.next("ZVGR_StreamGetAux").answers(any_failure);
    frame(1, Frame{556, 0, 0, 0x23});
    EXPECT_EQ(0U, timestamp(0));
    EXPECT_EQ(1U, frame_id(0));
    EXPECT_TRUE(is_filled_with(buffers[0]->memory, 0x23));
    EXPECT_EQ(2U, num_delivered());
}

TEST_F(CyclicDelivery, TakesTheTimestampOfARecordEvenIfTheStatusIsBad)
{
    fake.next("ZVGR_StreamGetAux").answers_after_effect(any_failure);
    frame(1, Frame{0xFFFFFFFFFFFFFFFEU, 0, 0, -1});
    EXPECT_EQ(0xFFFFFFFFFFFFFFFEU, timestamp(0));
}

TEST_F(CyclicDelivery, TakesTheBufferBeforeTheFrameIsLookedAt)
{
    bool is_queued_meanwhile = true;
    bool8_t is_acquiring = 1;
    fake.on("ZVGR_StreamGetFrameIndex", [&](const Call&) {
        is_queued_meanwhile = buffer_info<bool8_t>(buffers[0]->handle, BUFFER_INFO_IS_QUEUED).value != 0;
        is_acquiring = buffer_info<bool8_t>(buffers[0]->handle, BUFFER_INFO_IS_ACQUIRING).value;
    });
    frame(0);
    EXPECT_FALSE(is_queued_meanwhile);
    EXPECT_EQ(0, is_acquiring) << "filling starts with the copy";
}

TEST_F(CyclicDelivery, IsNotCountedBeforeTheRecordIsRead)
{
    uint64_t delivered = 1;
    size_t in_event = 1;
    fake.on("ZVGR_StreamGetAux", [&](const Call&) {
        delivered = num_delivered();
        in_event = event_info<size_t>(EVENT_NUM_IN_QUEUE).value;
    });
    frame(0);
    EXPECT_EQ(0U, delivered);
    EXPECT_EQ(0U, in_event);
}

TEST_F(CyclicDelivery, GoesOnForManyRounds)
{
    for (uint32_t i = 0; i < 100; ++i) {
        frame(i % 4, Frame{i + 1, 0, 0, static_cast<int>(i)});
        const Taken taken = take();
        ASSERT_EQ(GC_ERR_SUCCESS, taken.code);
        ASSERT_EQ(buffers[0]->handle, taken.data.BufferHandle);
        ASSERT_EQ(static_cast<uint8_t>(i), buffers[0]->memory[4095]);
        ASSERT_EQ(i + 1, timestamp(0));
        queue(*buffers[0]);
    }
    EXPECT_EQ(100U, num_delivered());
    EXPECT_EQ(0U, num_underrun());
}

TEST_F(CyclicDelivery, DeliversWithoutTheQueueLocksToo)
{
    settings.set("GenTL.Buffer.SerializeBufferType", 0);
    settings.set("GenTL.Event.SerializeStreamEvent", 0);
    EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(ds, EVENT_NEW_BUFFER));
    register_event();
    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD));
    queue(announce());
    frame(0);
    EXPECT_EQ(buffers[4]->handle, take().data.BufferHandle);
}

} // namespace
