#include <string>
#include <utility>
#include <vector>

#include "modules/StreamModule.h"
#include "unit/modules/Module_fixtures.h"

using namespace zvtest;
using zvgentl::BufferModule;
using zvgentl::EventList;
using zvgentl::LogThrottle;
using zvgentl::RevokeOutcome;
using zvgentl::StreamMode;
using zvgentl::StreamModule;

namespace {

const ExpectedLine cyclic_failure = {Priority::warning, "ZVGR_CameraCallbackRegister failed",
                                     "StreamModule::connect", "StreamModule"};
const ExpectedLine queued_failure = {Priority::warning, "ZVGR_StreamBufferCallbackRegister failed",
                                     "StreamModule::connect", "StreamModule"};

class StreamConnection : public CameraStream {
protected:
    uint32_t grabber() const { return fake.grabber_handle(0); }

    static ExpectedLine connect_line(uint32_t handle, const char* type)
    {
        return {Priority::information, "Connect callback for stream=0x" + hex(handle) + ", type=" + type,
                "StreamModule::connect", "StreamModule"};
    }
    ExpectedLine image_id_line(const char* value) const
    {
        return {Priority::information,
                "Is ZV_STREAM_BUFFER_INFO_IMAGEID supported for grabber 0x" + low_hex(uint64_t{grabber()}) +
                    ": " + value,
                "StreamModule::connect", "StreamModule"};
    }
    static ExpectedLine success_line(uint32_t handle)
    {
        return {Priority::information, "Successful callback connect for stream=0x" + hex(handle),
                "StreamModule::connect", "StreamModule"};
    }
    Call image_id_query() const
    {
        return call("ZVGR_GetGrabberValueInt", grabber(), "FW_Dma_Capable_FrameImageId_Imp");
    }
};

TEST_F(StreamConnection, IsMissingAtFirst)
{
    EXPECT_FALSE(stream->is_Open());
    EXPECT_EQ(ZV_NO_HANDLE, stream->get_Handle());
    EXPECT_FALSE(stream->is_Acquiring());
    EXPECT_EQ("Stream000", stream->getId());
    EXPECT_EQ(camera, stream->get_Camera());
}

TEST_F(StreamConnection, RegistersTheStreamOrTheCamera)
{
    fake.grabber_int("FW_Dma_Capable_FrameImageId_Imp") = -5;
    const uint32_t queued = connect(StreamMode::queued);
    EXPECT_EQ(
        (Calls{image_id_query(), call("ZVGR_StreamBufferCallbackRegister", queued, any(), stream.get())}),
        fake.calls());
    EXPECT_LOG_LINES(connect_line(queued, "Queued"), image_id_line("-5"), success_line(queued));
    EXPECT_TRUE(stream->is_Open());
    EXPECT_EQ(queued, stream->get_Handle());
    stream->close();

    const uint32_t cyclic = connect(StreamMode::cyclic);
    EXPECT_EQ((Calls{image_id_query(),
                     call("ZVGR_CameraCallbackRegister", camera->get_CameraHandle(), any(), stream.get())}),
              fake.calls());
    EXPECT_LOG_LINES(connect_line(cyclic, "Cyclic"), image_id_line("-5"), success_line(cyclic));
    stream->close();

    const uint32_t neither = library_stream(StreamMode::queued);
    forget();
    stream->connect(neither, static_cast<StreamMode>(2));
    EXPECT_EQ(Calls{image_id_query()}, fake.calls());
    EXPECT_LOG_LINES(connect_line(neither, "Cyclic"), image_id_line("-5"), success_line(neither));
    EXPECT_TRUE(stream->is_Open());
}

TEST_F(StreamConnection, NeedsACameraInCyclicModeAlone)
{
    make_stream(nullptr);
    const uint32_t cyclic = connect(StreamMode::cyclic);
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_LOG_LINES(connect_line(cyclic, "Cyclic"), cyclic_failure);
    EXPECT_TRUE(stream->is_Open()) << "but delivers nothing";

    make_stream(nullptr);
    const uint32_t queued = connect(StreamMode::queued);
    EXPECT_EQ((Calls{call("ZVGR_StreamBufferCallbackRegister", queued, any(), stream.get())}), fake.calls());
    EXPECT_LOG_LINES(connect_line(queued, "Queued"), success_line(queued));
}

TEST_F(StreamConnection, SaysWhenTheLibraryRefusesTheCallback)
{
    struct Row {
        StreamMode mode;
        const char* function;
        const char* name;
        ExpectedLine failure;
    };
    for (const Row& row :
         {Row{StreamMode::cyclic, "ZVGR_CameraCallbackRegister", "Cyclic", cyclic_failure},
          Row{StreamMode::queued, "ZVGR_StreamBufferCallbackRegister", "Queued", queued_failure}}) {
        fake.next(row.function).answers(any_failure);
        const uint32_t handle = connect(row.mode);
        EXPECT_LOG_LINES(connect_line(handle, row.name), image_id_line("9223372036854775807"), row.failure);
        EXPECT_TRUE(stream->is_Open());
        EXPECT_FALSE(fake.has_callback(handle));
        EXPECT_TRUE(stream->start(0)) << "it can still be started";
        stream->close();
    }
}

TEST_F(StreamConnection, TakesOnlyOneStatusForSuccess)
{
    for (const uint32_t status : {0U, 1U, 0x2FFFU, 0x3001U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(status);
        const uint32_t handle = library_stream(StreamMode::queued);
        forget();
        fake.next("ZVGR_StreamBufferCallbackRegister").answers_after_effect(status);
        stream->connect(handle, StreamMode::queued);
        EXPECT_EQ(1U, times_logged(queued_failure.message));
        stream->close();
    }
}

TEST_F(StreamConnection, ForwardsTheLibrarysCallbacksToTheStream)
{
    const uint32_t cyclic = connect(StreamMode::cyclic);
    fake.deliver_cyclic(cyclic, 0);
    fake.deliver_cyclic(cyclic, 1);
    EXPECT_EQ(2, stream->get_Underruns());
    stream->close();

    const uint32_t queued = connect(StreamMode::queued);
    forget();
    fake.deliver_queued_to(queued, 0x1234);
    EXPECT_EQ(1U, times_logged("stream callback for handle 0x1234, m_AcquisitionFlag=false, "
                               "m_StreamDeliveredBuffers=0"));
}

TEST_F(StreamConnection, AsksTheGrabberAboutImageIdsEachTime)
{
    fake.grabber_int("FW_Dma_Capable_FrameImageId_Imp") = 1;
    connect(StreamMode::queued);
    stream->close();
    fake.grabber_int("FW_Dma_Capable_FrameImageId_Imp") = 0;
    connect(StreamMode::queued);
    EXPECT_EQ(1U, fake.count("ZVGR_GetGrabberValueInt"));
    EXPECT_EQ(1U, times_logged(image_id_line("0").message));
}

class StreamSettings : public CameraStream {};

TEST_F(StreamSettings, AreReadWhenTheStreamIsMade)
{
    make_stream(camera);
    EXPECT_EQ(
        (std::vector<SettingsRead>{plain_read("GenTL.Stream.StreamPayloadSizeType", 2,
                                              "1-Old stream size at creation time,2-dynamic stream size"),
                                   plain_read("GenTL.Stream.BufferAllocMin", 4),
                                   plain_read("GenTL.Stream.SignaledEventMode", 1)}),
        settings.reads());
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_EQ(4U, stream->get_BufferAllocMin());
}

TEST_F(StreamSettings, TakeAnyNumberButZeroForSignalledEvents)
{
    for (const uint32_t setting : {0U, 1U, 2U, 0xFFFFFFFFU}) {
        settings.set("GenTL.Stream.SignaledEventMode", setting);
        make_stream(camera);
        EXPECT_EQ(setting != 0, stream->is_SignaledEventMode()) << setting;
    }
}

class StreamClosing : public CameraStream {};

TEST_F(StreamClosing, DeletesTheLibraryStreamOnce)
{
    stream->close(); // which never opened
    EXPECT_EQ(Calls{}, fake.calls());
    const uint32_t handle = connect(StreamMode::queued);
    forget();
    stream->close();
    stream->close();
    EXPECT_FALSE(stream->is_Open());
    stream.reset();
    EXPECT_EQ((Calls{call("ZVGR_StreamDelete", handle)}), fake.calls());
    EXPECT_LOG_LINES();
}

TEST_F(StreamClosing, HappensWhenAnOpenStreamIsDestroyed)
{
    const uint32_t handle = connect(StreamMode::cyclic);
    forget();
    stream.reset();
    EXPECT_EQ((Calls{call("ZVGR_StreamDelete", handle)}), fake.calls());
}

TEST_F(StreamClosing, LeavesTheLibraryAloneOnceAbandoned)
{
    connect(StreamMode::queued);
    forget();
    stream->abandon();
    stream.reset();
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_LOG_LINES();
}

TEST_F(StreamClosing, EmptiesPoolAndEventsAndEndsWaitsAndTheAcquisition)
{
    connect(StreamMode::queued);
    ASSERT_NE(nullptr, stream->new_buffer(nullptr, 64, nullptr));
    ASSERT_EQ(EventList::Registration::made, stream->get_Events().add(*stream, GenTL::EVENT_NEW_BUFFER));
    const zvgentl::EventRef event = stream->get_Events().find(GenTL::EVENT_NEW_BUFFER);
    ASSERT_TRUE(stream->start(0));
    stream->close();
    EXPECT_EQ(0U, stream->get_Buffers().size());
    EXPECT_FALSE(stream->get_Events().find(GenTL::EVENT_NEW_BUFFER));
    EXPECT_FALSE(stream->is_Acquiring());
    GenTL::EVENT_NEW_BUFFER_DATA datum = {};
    EXPECT_EQ(GenTL::GC_ERR_ABORT, event->get_event_data(&datum, GENTL_INFINITE));
}

class StreamThrottle : public CameraStream {};

TEST_F(StreamThrottle, FollowsTheAcquisition)
{
    const auto is_due = [this] { return stream->is_log_due("EventGetData", LogThrottle::Mark::yes); };
    connect(StreamMode::queued);
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(is_due());
        EXPECT_TRUE(is_due());
        ASSERT_TRUE(stream->start(0));
        EXPECT_TRUE(is_due());
        EXPECT_FALSE(is_due());
        stream->stop();
    }
}

class StreamDelivery : public CameraStream {};

TEST_F(StreamDelivery, AsksForTheFrameOfTheStreamThatTheCallbackNames)
{
    connect(StreamMode::cyclic);
    const uint32_t other = library_stream(StreamMode::cyclic);
    BufferModule* const buffer = stream->new_buffer(nullptr, 64, nullptr);
    ASSERT_NE(nullptr, buffer);
    buffer->set_Queue(zvgentl::BUFFER_QUEUE_TYPE::INPUT);
    ASSERT_TRUE(stream->start(0));
    forget();
    stream->buffer_callback(other);
    EXPECT_EQ((Calls{call("ZVGR_StreamGetFrameIndex", other), call("ZVGR_StreamGetPtr", other, 0),
                     call("ZVGR_StreamGetAux", other, 0)}),
              fake.calls());
    EXPECT_EQ(1, stream->get_Delivered());
    EXPECT_EQ(uint32_t{zv_success}, ZVGR_StreamDelete(other));
}

TEST_F(StreamDelivery, StaysIdleWhenTheLibraryRefusesTheStart)
{
    connect(StreamMode::queued);
    fake.next("ZVGR_CameraStartAcquire_GenTL").answers(any_failure);
    EXPECT_FALSE(stream->start(5));
    EXPECT_FALSE(stream->is_Acquiring());
}

TEST_F(StreamDelivery, EndsWithTheHandleZeroOnlyWhileItRuns)
{
    connect(StreamMode::queued);
    stream->stream_buffer_callback(0);
    ASSERT_TRUE(stream->start(0));
    EXPECT_TRUE(stream->is_Acquiring());
    stream->stream_buffer_callback(0);
    EXPECT_FALSE(stream->is_Acquiring());
}

class StreamBuffers : public CameraStream {};

TEST_F(StreamBuffers, AreRevokedByAddressAndHaveTheirPrivatePointerUntilThen)
{
    connect(StreamMode::queued);
    int owner = 0;
    BufferModule* const buffer = stream->new_buffer(nullptr, 64, &owner);
    ASSERT_NE(nullptr, buffer);
    EXPECT_EQ(&owner, stream->private_of(buffer));
    forget();
    EXPECT_EQ(RevokeOutcome::not_in_pool, stream->revoke(&owner, 7));
    EXPECT_EQ(RevokeOutcome::not_in_pool, stream->revoke(nullptr, 0));
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_EQ(RevokeOutcome::revoked, stream->revoke(buffer, buffer->get_GrabberHandle()));
    EXPECT_EQ(0U, stream->get_Buffers().size());
    EXPECT_EQ(nullptr, stream->private_of(buffer));
    EXPECT_EQ(nullptr, stream->private_of(nullptr));
}

TEST(StreamNames, AreThoseOfTheLogLines)
{
    EXPECT_STREQ("Cyclic", name_of(StreamMode::cyclic));
    EXPECT_STREQ("Queued", name_of(StreamMode::queued));
    for (const auto& [operation, name] : {std::pair{0, "ACQ_QUEUE_INPUT_TO_OUTPUT"},
                                          {1, "ACQ_QUEUE_OUTPUT_DISCARD"},
                                          {2, "ACQ_QUEUE_ALL_TO_INPUT"},
                                          {3, "ACQ_QUEUE_UNQUEUED_TO_INPUT"},
                                          {4, "ACQ_QUEUE_ALL_DISCARD"},
                                          {1000, "FLUSH ALL EVENTS"},
                                          {5, "UNSUPPORTED BUFFER QUEUE OPERATION 5"},
                                          {INT32_MIN, "UNSUPPORTED BUFFER QUEUE OPERATION -2147483648"}})
        EXPECT_EQ(name, zvgentl::queue_operation_name(operation));
}

} // namespace
