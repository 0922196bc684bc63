#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "modules/StreamModule.h"
#include "modules/handles.h"
#include "unit/modules/Module_fixtures.h"

// What no exported function can bring about, and what a stream asks the settings and the library for.

using namespace zvtest;
using zvgentl::BufferModule;
using zvgentl::RevokeOutcome;
using zvgentl::StreamMode;

namespace {

class StreamConnection : public CameraStream {
protected:
    static ExpectedLine line(const std::string& message)
    {
        return {Priority::information, message, "StreamModule::connect", "StreamModule"};
    }
    static ExpectedLine connecting(uint32_t handle, const std::string& mode)
    {
        return line("Connect callback for stream=0x" + hex(handle) + ", type=" + mode);
    }
    static ExpectedLine connected(uint32_t handle)
    {
        return line("Successful callback connect for stream=0x" + hex(handle));
    }
    static ExpectedLine failure(const std::string& function)
    {
        return {Priority::warning, function + " failed", "StreamModule::connect", "StreamModule"};
    }
};

TEST_F(StreamConnection, NeedsACameraOnlyInCyclicMode)
{
    make_stream(nullptr);
    const uint32_t cyclic = connect(StreamMode::cyclic);
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_LOG_LINES(connecting(cyclic, "Cyclic"), failure("ZVGR_CameraCallbackRegister"));
    EXPECT_TRUE(stream->is_Open()) << "but delivers nothing";

    make_stream(nullptr);
    const uint32_t queued = connect(StreamMode::queued);
    EXPECT_EQ((Calls{call("ZVGR_StreamBufferCallbackRegister", queued, any(), stream.get())}), fake.calls());
    EXPECT_LOG_LINES(connecting(queued, "Queued"), connected(queued));
}

TEST_F(StreamConnection, WarnsWhenTheLibraryRefusesTheCallback)
{
    for (const auto& [mode, name, function] :
         {std::tuple{StreamMode::cyclic, "Cyclic", "ZVGR_CameraCallbackRegister"},
          {StreamMode::queued, "Queued", "ZVGR_StreamBufferCallbackRegister"}}) {
        fake.next(function).answers(any_failure);
        const uint32_t handle = connect(mode);
        EXPECT_LOG_LINES(connecting(handle, name),
                         line("Is ZV_STREAM_BUFFER_INFO_IMAGEID supported for grabber 0x" +
                              low_hex(uint64_t{grabber()}) + ": 9223372036854775807"),
                         failure(function));
        EXPECT_TRUE(stream->is_Open());
        EXPECT_TRUE(stream->start(0)) << "it can still be started";
        stream->close();
    }
}

TEST_F(StreamConnection, RegistersNothingInAnUnknownMode)
{
    const uint32_t handle = library_stream(StreamMode::queued);
    forget();
    stream->connect(handle, static_cast<StreamMode>(2));
    EXPECT_EQ((Calls{call("ZVGR_GetGrabberValueInt", grabber(), "FW_Dma_Capable_FrameImageId_Imp")}),
              fake.calls());
    EXPECT_TRUE(logged(connecting(handle, "Cyclic")));
}

class Stream : public CameraStream {};

TEST_F(Stream, ReadsItsSettingsWhenItIsMade)
{
    make_stream(camera);
    EXPECT_EQ(
        (std::vector<SettingsRead>{plain_read("GenTL.Stream.StreamPayloadSizeType", 2,
                                              "1-Old stream size at creation time,2-dynamic stream size"),
                                   plain_read("GenTL.Stream.BufferAllocMin", 4),
                                   plain_read("GenTL.Stream.SignaledEventMode", 1)}),
        settings.reads());
    EXPECT_EQ(Calls{}, fake.calls());
    settings.set("GenTL.Stream.BufferAllocMin", 9);
    EXPECT_EQ(4U, stream->get_BufferAllocMin());
    make_stream(camera);
    EXPECT_EQ(9U, stream->get_BufferAllocMin());
}

TEST_F(Stream, SignalsEventsForAnySettingButZero)
{
    for (const uint32_t setting : {0U, 1U, 2U, 0xFFFFFFFFU}) {
        settings.set("GenTL.Stream.SignaledEventMode", setting);
        make_stream(camera);
        EXPECT_EQ(setting != 0, stream->is_SignaledEventMode()) << setting;
    }
}

TEST_F(Stream, AsksForThePayloadSizeThatASettingChooses)
{
    fake.stream_info(zv_stream_payload_at_creation, 111);
    fake.stream_info(zv_stream_payload_now, 222);
    for (const auto& [setting, size] :
         {std::pair{1U, 111U}, {2U, 222U}, {0U, 222U}, {3U, 222U}, {0xFFFFFFFFU, 222U}}) {
        settings.set("GenTL.Stream.StreamPayloadSizeType", setting);
        make_stream(camera);
        connect(StreamMode::queued);
        settings.set("GenTL.Stream.StreamPayloadSizeType", 3 - setting);
        EXPECT_EQ(size, stream->get_PayloadSize()) << setting;
    }
}

TEST_F(Stream, HasPayloadSizeZeroUnlessTheLibraryWritesOne)
{
    connect(StreamMode::queued);
    fake.stream_info(zv_stream_payload_now, 222);
    fake.next("ZVGR_StreamGetInfo").answers(any_failure);
    EXPECT_EQ(0U, stream->get_PayloadSize());
    fake.next("ZVGR_StreamGetInfo").answers_after_effect(any_failure);
    EXPECT_EQ(222U, stream->get_PayloadSize());
}

TEST_F(Stream, HasAlignment16WhenTheLibraryFails)
{
    connect(StreamMode::queued);
    fake.stream_info(zv_stream_buffer_alignment, 4096);
    EXPECT_EQ(4096U, stream->get_Alignment());
    fake.next("ZVGR_StreamGetInfo").answers_after_effect(any_failure);
    EXPECT_EQ(16U, stream->get_Alignment());
    fake.next("ZVGR_StreamGetInfo").answers(0);
    EXPECT_EQ(16U, stream->get_Alignment());
    fake.next("ZVGR_StreamGetInfo").gives(0);
    EXPECT_EQ(0U, stream->get_Alignment());
}

TEST_F(Stream, GrabsInOnlyOneStateOfItsChannel)
{
    EXPECT_FALSE(stream->is_Grabbing()) << "not available";
    for (const int64_t state : {0, 1, 16, 17, 18, -17}) {
        fake.grabber_enum("CameraChannelState") = state;
        EXPECT_EQ(state == 17, stream->is_Grabbing()) << state;
    }
}

TEST_F(Stream, IsDeletedInTheLibraryOnce)
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

TEST_F(Stream, LeavesTheLibraryAloneOnceAbandoned)
{
    connect(StreamMode::queued);
    forget();
    stream->abandon();
    stream.reset();
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_LOG_LINES();
}

TEST_F(Stream, AsksForTheFrameOfTheStreamThatTheCallbackNames)
{
    connect(StreamMode::cyclic);
    const uint32_t other = library_stream(StreamMode::cyclic);
    BufferModule* const buffer = stream->new_buffer(nullptr, 64, nullptr);
    ASSERT_NE(nullptr, buffer);
    stream->get_Buffers().queue(buffer, *zvgentl::buffer_index.find(buffer));
    ASSERT_TRUE(stream->start(0));
    forget();
    stream->buffer_callback(other);
    EXPECT_EQ((Calls{call("ZVGR_StreamGetFrameIndex", other), call("ZVGR_StreamGetPtr", other, 0),
                     call("ZVGR_StreamGetAux", other, 0)}),
              fake.calls());
    EXPECT_EQ(1, stream->get_Delivered());
    EXPECT_EQ(uint32_t{zv_success}, ZVGR_StreamDelete(other));
}

TEST_F(Stream, RevokesNothingThatIsNotInItsPool)
{
    connect(StreamMode::queued);
    forget();
    EXPECT_EQ(RevokeOutcome::not_in_pool, stream->revoke(this, 7));
    EXPECT_EQ(RevokeOutcome::not_in_pool, stream->revoke(nullptr, 0));
    EXPECT_EQ(Calls{}, fake.calls());
}

} // namespace
