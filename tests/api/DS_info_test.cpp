#include <utility>

#include "api/DS_modes.h"

// What is special to DSGetInfo among the info queries: what is counted when, and what comes from the library.

using namespace zvtest;

namespace {

/// Three buffers announced, one of them delivered and one queued again; acquisition runs.
class StreamInfo : public EitherStream {
protected:
    void SetUp() override
    {
        EitherStream::SetUp();
        queue(announce());
        start();
        deliver(*buffers[0]);
        queue(announce());
        announce();
        forget();
    }

    uint64_t num_started() { return stream_info<uint64_t>(STREAM_INFO_NUM_STARTED).value; }
    /// A library call within the delivery of a frame, once the buffer is being filled.
    const char* within_delivery() const { return is_queued() ? "ZVGR_BufferGetInfo" : "ZVGR_StreamGetAux"; }
};

TEST_P(StreamInfo, CountsABufferQueuedAgainDuringItsDeliveryAsStarted)
{
    const Announced& filling = *buffers[1]; // the only one in the input pool
    uint64_t started = 0;
    size_t queued = 1;
    bool8_t is_acquiring = 0;
    fake.on(within_delivery(), [&](const Call&) {
        queue(filling);
        started = num_started();
        queued = num_queued();
        is_acquiring = buffer_info<bool8_t>(filling.handle, BUFFER_INFO_IS_ACQUIRING).value;
    });
    deliver(filling);
    EXPECT_EQ(1U, started);
    EXPECT_EQ(0U, queued);
    EXPECT_EQ(1U, is_acquiring);
    EXPECT_EQ(0U, num_started());
    EXPECT_EQ(1U, num_queued()) << "delivered and queued again";
}

TEST_P(StreamInfo, NeverCountsABufferAsStartedWhileFramesFlow)
{
    uint64_t started = 1;
    fake.on(within_delivery(), [&](const Call&) { started = num_started(); });
    deliver(*buffers[1]);
    EXPECT_EQ(0U, started);
}

TEST_P(StreamInfo, CountsABufferThatWasDeliveredAndQueuedAgainAsQueued)
{
    queue(*buffers[0]);
    EXPECT_EQ(2U, num_queued());
    EXPECT_EQ(0U, num_await_delivery());
}

INSTANTIATE_IN_BOTH_MODES(StreamInfo);

class StreamQuery : public QueuedStream {
protected:
    /// Makes another stream, which reads the settings: the device list is rebuilt.
    void rebuild()
    {
        ASSERT_EQ(GC_ERR_SUCCESS, DevClose(dev));
        fake.grabber(0).has_cameras(m_cameras = 3 - m_cameras);
        ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
        dev = open_device(iface, "Device00");
        ds = open_stream(dev, "Stream000");
    }

    uint64_t payload_size() { return stream_info<size_t>(STREAM_INFO_PAYLOAD_SIZE).value; }
    uint64_t alignment() { return stream_info<size_t>(STREAM_INFO_BUF_ALIGNMENT).value; }
    bool is_grabbing() { return stream_info<bool8_t>(STREAM_INFO_IS_GRABBING).value != 0; }

private:
    uint32_t m_cameras{1};
};

TEST_F(StreamQuery, ReadsNoSettingItself)
{
    settings.set("GenTL.Stream.BufferAllocMin", 9);
    settings.set("GenTL.Stream.StreamPayloadSizeType", 1);
    EXPECT_EQ(4U, stream_info<size_t>(STREAM_INFO_BUF_ANNOUNCE_MIN).value);
    payload_size();
    EXPECT_EQ((Calls{call("ZVGR_StreamGetInfo", stream(), zv_stream_payload_now)}), fake.calls());
    EXPECT_TRUE(settings.reads().empty());
}

TEST_F(StreamQuery, ReportsTheMinimumThatASettingGives)
{
    settings.set("GenTL.Stream.BufferAllocMin", 0xFFFFFFFFU);
    rebuild();
    EXPECT_EQ(0xFFFFFFFFU, stream_info<size_t>(STREAM_INFO_BUF_ANNOUNCE_MIN).value);
}

TEST_F(StreamQuery, AsksForThePayloadSizeThatASettingChooses)
{
    fake.stream_info(zv_stream_payload_at_creation, 111);
    fake.stream_info(zv_stream_payload_now, 222);
    for (const auto& [setting, size] :
         {std::pair{1U, 111U}, {2U, 222U}, {0U, 222U}, {3U, 222U}, {0xFFFFFFFFU, 222U}}) {
        SCOPED_TRACE(setting);
        settings.set("GenTL.Stream.StreamPayloadSizeType", setting);
        rebuild();
        EXPECT_EQ(size, payload_size());
    }
}

TEST_F(StreamQuery, ReportsPayloadSizeZeroWhenTheLibraryFails)
{
    fake.next("ZVGR_StreamGetInfo").answers(any_failure);
    EXPECT_EQ(0U, payload_size());
    EXPECT_TRUE(stream_info<bool8_t>(STREAM_INFO_DEFINES_PAYLOADSIZE).value);
}

TEST_F(StreamQuery, ReportsThePayloadSizeWrittenByACallThatFailed)
{
    fake.stream_info(zv_stream_payload_now, 222);
    fake.next("ZVGR_StreamGetInfo").answers_after_effect(any_failure);
    EXPECT_EQ(222U, payload_size());
}

TEST_F(StreamQuery, ReportsAlignment16WhenTheLibraryFails)
{
    fake.stream_info(zv_stream_buffer_alignment, 4096);
    EXPECT_EQ(4096U, alignment());
    fake.next("ZVGR_StreamGetInfo").answers_after_effect(any_failure);
    EXPECT_EQ(16U, alignment());
    fake.next("ZVGR_StreamGetInfo").answers(0);
    EXPECT_EQ(16U, alignment());
    fake.next("ZVGR_StreamGetInfo").gives(0);
    EXPECT_EQ(0U, alignment());
}

TEST_F(StreamQuery, CallsOnlyOneChannelStateGrabbing)
{
    EXPECT_FALSE(is_grabbing()) << "not available";
    for (const int64_t state : {0, 1, 16, 18, -17}) {
        fake.grabber_enum("CameraChannelState") = state;
        EXPECT_FALSE(is_grabbing()) << state;
    }
    fake.grabber_enum("CameraChannelState") = 17;
    EXPECT_TRUE(is_grabbing());
}

} // namespace
