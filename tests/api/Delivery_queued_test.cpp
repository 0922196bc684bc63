#include <string>

#include "api/Delivery_fixtures.h"

// Frames in queued mode: the library fills the announced buffers and reports each one.

using namespace zvtest;

namespace {

class QueuedDelivery : public Delivering<StreamInMode<Mode::queued>> {
protected:
    static ExpectedLine callback_line(uint64_t handle, const char* flag, uint64_t delivered)
    {
        return {Priority::trace,
                "stream callback for handle 0x" + hex(handle) + ", m_AcquisitionFlag=" + flag +
                    ", m_StreamDeliveredBuffers=" + std::to_string(delivered),
                "StreamModule::stream_buffer_callback", "StreamModule"};
    }

    static ExpectedLine frame_line(uint64_t handle, const std::string& id)
    {
        return {Priority::trace, "New buffer handle 0x" + hex(handle) + " with " + id,
                "StreamModule::stream_buffer_callback", "StreamModule"};
    }

    ExpectedLine event_line(uint64_t handle) const
    {
        return {Priority::trace, "add buffer handle 0x" + hex(handle) + " to event " + hex16(event),
                "StreamModule::stream_buffer_callback", "StreamModule"};
    }

    /// Opens the stream again, on a grabber that says this about image ids, and starts it with one buffer.
    void reopen_with_image_id_support(int64_t support)
    {
        EXPECT_EQ(GC_ERR_SUCCESS, DSClose(ds));
        fake.grabber_int("FW_Dma_Capable_FrameImageId_Imp") = support;
        ds = open_stream(dev, "Stream000");
        buffers.clear();
        queue(announce());
        register_event();
        start();
        forget();
    }
};

TEST_F(QueuedDelivery, AsksForTimestampAndFrameIdAndLogsTheLow32BitsOfTheLatter)
{
    const uint64_t first = buffers[0]->library;
    const uint64_t second = buffers[1]->library;
    deliver(*buffers[0], Frame{1, 7, 0, -1});
    EXPECT_EQ((Calls{call("ZVGR_BufferGetInfo", first, zv_buffer_timestamp),
                     call("ZVGR_BufferGetInfo", first, zv_buffer_frame_id)}),
              fake.calls());
    EXPECT_LOG_LINES(callback_line(first, "true", 0), frame_line(first, "FrameId 7"), event_line(first));

    EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(ds, EVENT_NEW_BUFFER));
    forget();
    deliver(*buffers[1], Frame{1, 0x8000000500000006U, 0, -1});
    EXPECT_LOG_LINES(callback_line(second, "true", 1), frame_line(second, "FrameId 6"));
    EXPECT_EQ(0x8000000500000006U, frame_id(1));
}

TEST_F(QueuedDelivery, AsksForTheImageIdWhereTheGrabberSupportsIt)
{
    constexpr uint64_t image_id = 0xF000000000000034U;
    for (const int64_t support : {int64_t{1}, int64_t{0}, int64_t{2}, int64_t{-1}, int64_t{0x100000001}}) {
        SCOPED_TRACE(support);
        reopen_with_image_id_support(support);
        const uint64_t handle = buffers[0]->library;
        deliver(*buffers[0], Frame{99, 12, image_id, -1});
        const uint32_t asked = support == 1 ? zv_buffer_image_id : zv_buffer_frame_id;
        EXPECT_EQ((Calls{call("ZVGR_BufferGetInfo", handle, zv_buffer_timestamp),
                         call("ZVGR_BufferGetInfo", handle, asked)}),
                  fake.calls());
        EXPECT_LOG_LINES(
            callback_line(handle, "true", 0),
            frame_line(handle, support == 1 ? "ImageId " + std::to_string(image_id) : "FrameId 12"),
            event_line(handle));
        EXPECT_EQ(support == 1 ? image_id : 12, frame_id(0));
        EXPECT_EQ(99U, timestamp(0));
    }
}

TEST_F(QueuedDelivery, ReadsAsZeroWhatTheLibraryDoesNotSet)
{
    deliver(*buffers[0], Frame{777, 12, 0, -1});
    fake.always("ZVGR_BufferGetInfo").answers(any_failure);
    deliver(*buffers[0], Frame{778, 13, 0, -1});
    EXPECT_EQ(0U, timestamp(0));
    EXPECT_EQ(0U, frame_id(0));
    EXPECT_TRUE(logged(frame_line(buffers[0]->library, "FrameId 0")));
    EXPECT_EQ(2U, num_delivered());
}

TEST_F(QueuedDelivery, DeliversABufferOfAnyQueue)
{
    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD));
    deliver(*buffers[0]);
    deliver(*buffers[0]); // and one that was not fetched yet
    EXPECT_EQ(1U, num_await_delivery());
    EXPECT_EQ(2U, num_delivered());
    EXPECT_EQ(2U, num_in_event());
}

TEST_F(QueuedDelivery, WarnsOfAHandleThatIsNotOneOfItsBuffers)
{
    const uint64_t of_earlier_stream = buffers[0]->library;
    reopen_with_image_id_support(0);
    const Announced& revoked = announce();
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, revoked.handle, nullptr, nullptr));
    for (const uint64_t handle : {uint64_t{0xABCDEF0123456789U}, of_earlier_stream, revoked.library}) {
        forget();
        fake.deliver_queued_to(stream(), handle);
        EXPECT_EQ(Calls{}, fake.calls());
        EXPECT_LOG_LINES(callback_line(handle, "true", 0),
                         {Priority::warning,
                          "stream handle 0x" + hex(handle) + " wasn't found in m_StreamBufferMap",
                          "StreamModule::stream_buffer_callback", "StreamModule"});
        EXPECT_EQ(0U, num_delivered());
    }
    deliver(*buffers[0]);
    EXPECT_EQ(1U, num_delivered()) << "and goes on";
}

TEST_F(QueuedDelivery, EndsWithTheHandleZeroUntilTheNextStart)
{
    deliver(*buffers[0]);
    forget();
    fake.deliver_queued_to(stream(), 0);
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_LOG_LINES(callback_line(0, "true", 1));
    deliver(*buffers[1]);
    fake.deliver_queued_to(stream(), 0);
    EXPECT_LOG_LINES(callback_line(0, "true", 1), callback_line(buffers[1]->library, "false", 1),
                     callback_line(0, "false", 1));
    EXPECT_EQ(1U, num_delivered()) << "the count stays";
    EXPECT_FALSE(is_new(*buffers[1]));
    EXPECT_EQ(3U, num_queued());

    stop();
    start();
    deliver(*buffers[1]);
    EXPECT_EQ(1U, num_delivered());
}

} // namespace
