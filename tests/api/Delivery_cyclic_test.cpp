#include <cstring>
#include <string>

#include "api/Delivery_fixtures.h"

// Frames in cyclic mode: the library fills its own ring, and each frame is copied into a queued buffer.

using namespace zvtest;

namespace {

class CyclicDelivery : public Delivering<StreamInMode<Mode::cyclic>> {
protected:
    void frame(uint32_t index, const Frame& content = {}) { fake.deliver_cyclic(stream(), index, content); }

    std::string copy_line(int index, const void* source, const Announced& buffer) const
    {
        return "curr_BuffIndex=" + std::to_string(index) + ", src_BuffPtr=" + hex16(source) +
               ", curr_BuffPtr=" + hex16(buffer.memory.data()) +
               ", curr_BuffSize=" + std::to_string(buffer.memory.size());
    }
};

TEST_F(CyclicDelivery, DropsFramesUntilABufferIsQueued)
{
    for (uint32_t i = 0; i < 4; ++i)
        frame(i);
    const uint64_t before = timestamp(0);
    forget();
    frame(0, Frame{4711, 0, 0, 0x7F});
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_LOG_LINES();
    EXPECT_EQ(4U, num_delivered());
    EXPECT_EQ(0U, num_underrun());
    EXPECT_EQ(before, timestamp(0));
    EXPECT_TRUE(is_filled_with(buffers[0]->memory, 0));
    EXPECT_EQ(4U, num_in_event());
    queue(*buffers[2]);
    frame(0, Frame{42, 0, 0, -1});
    EXPECT_EQ(42U, timestamp(2));
    EXPECT_EQ(5U, num_delivered());
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

// A library keeps 64 MiB beyond the frame readable; what lies behind is nobody's to read.
TEST_F(CyclicDelivery, CopiesNoMoreThanTheLibraryKeepsReadable)
{
    constexpr size_t beyond = size_t{64} << 20U;
    constexpr size_t frame_size = 4096;
    constexpr size_t readable = frame_size + beyond;
    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD));
    fake.stream_info(zv_stream_payload_at_creation, frame_size);
    std::vector<uint8_t> ring(readable, 0x22);
    fake.always("ZVGR_StreamGetPtr").answers_pointer(ring.data());
    std::vector<uint8_t> memory(readable + 100);
    for (const size_t size : {readable - 1, readable, readable + 1, size_t{1} << 40U, size_t{1} << 47U}) {
        SCOPED_TRACE(size);
        std::fill(memory.begin(), memory.end(), uint8_t{0xEE});
        BUFFER_HANDLE handle = nullptr;
        forget();
        ASSERT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(ds, memory.data(), size, nullptr, &handle));
        EXPECT_EQ((Calls{call("ZVGR_StreamGetInfo", stream(), zv_stream_payload_at_creation)}),
                  fake.calls_of("ZVGR_StreamGetInfo"));
        ASSERT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(ds, handle));
        frame(0);
        const size_t copied = std::min(size, readable);
        EXPECT_EQ(0x22, memory[copied - 1]);
        EXPECT_EQ(0xEE, memory[copied]);
        EXPECT_EQ(size, buffer_info<size_t>(handle, BUFFER_INFO_SIZE_FILLED).value) << "as announced";
        ASSERT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, handle, nullptr, nullptr));
    }
}

TEST_F(CyclicDelivery, AsksForTheSizeOfAFrameOnlyWhenItMatters)
{
    forget();
    announce(size_t{64} << 20U);
    EXPECT_EQ(0U, fake.count("ZVGR_StreamGetInfo"));
}

TEST_F(CyclicDelivery, DeliversAnEmptyBuffer)
{
    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD));
    const Announced& buffer = alloc_and_announce(0);
    queue(buffer);
    frame(1);
    EXPECT_EQ(buffer.handle, take().data.BufferHandle);
}

TEST_F(CyclicDelivery, AsksForTheFrameByItsIndexWhoseSignItExtends)
{
    struct Row {
        uint32_t index;
        int printed;
        uint64_t id;
    };
    size_t i = 0;
    for (const Row& row :
         {Row{3, 3, 3}, Row{0xFFFFFFFFU, -1, UINT64_MAX}, Row{0x80000000U, INT32_MIN, 0xFFFFFFFF80000000U},
          Row{0x7FFFFFFFU, INT32_MAX, 0x7FFFFFFFU}}) {
        SCOPED_TRACE(row.printed);
        forget();
        fake.next("ZVGR_StreamGetFrameIndex").answers(row.index);
        frame(0);
        EXPECT_EQ(
            (Calls{call("ZVGR_StreamGetFrameIndex", stream()), call("ZVGR_StreamGetPtr", stream(), row.index),
                   call("ZVGR_StreamGetAux", stream(), row.index)}),
            fake.calls());
        const void* const source = row.index == 3 ? fake.ring_frame(stream(), 3) : nullptr;
        EXPECT_LOG_LINES({Priority::trace, copy_line(row.printed, source, *buffers[i]),
                          "StreamModule::buffer_callback", "StreamModule"});
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
    EXPECT_TRUE(is_new(*buffers[0]));
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

} // namespace
