#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "api/DS_info_rows.h"
#include "api/DS_modes.h"

using namespace zvtest;

namespace {

/// Three buffers announced, one of them delivered and one queued again; acquisition runs.
class StreamInfo : public EitherStream {
protected:
    void SetUp() override
    {
        EitherStream::SetUp();
        fake.stream_info(zv_stream_payload_at_creation, 111);
        fake.stream_info(zv_stream_payload_now, 0x123456789AU);
        fake.stream_info(zv_stream_buffer_alignment, 64);
        fake.grabber_enum(camera(), "CameraChannelState") = zv_channel_grabbing;
        queue(announce());
        start();
        deliver(*buffers[0]);
        queue(announce());
        announce();
        forget();
    }

    auto asking(STREAM_INFO_CMD command)
    {
        return [this, command](auto... out) { return DSGetInfo(ds, command, out...); };
    }
};

const NumberRow stream_rows[] = {
    {"NUM_DELIVERED", STREAM_INFO_NUM_DELIVERED, INFO_DATATYPE_UINT64, 8, 1},
    {"NUM_UNDERRUN", STREAM_INFO_NUM_UNDERRUN, INFO_DATATYPE_UINT64, 8, 0},
    {"NUM_ANNOUNCED", STREAM_INFO_NUM_ANNOUNCED, INFO_DATATYPE_SIZET, 8, 3},
    {"NUM_QUEUED", STREAM_INFO_NUM_QUEUED, INFO_DATATYPE_SIZET, 8, 1},
    {"NUM_AWAIT_DELIVERY", STREAM_INFO_NUM_AWAIT_DELIVERY, INFO_DATATYPE_SIZET, 8, 1},
    {"NUM_STARTED", STREAM_INFO_NUM_STARTED, INFO_DATATYPE_UINT64, 8, 0},
    {"PAYLOAD_SIZE", STREAM_INFO_PAYLOAD_SIZE, INFO_DATATYPE_SIZET, 8, 0x123456789AU},
    {"IS_GRABBING", STREAM_INFO_IS_GRABBING, INFO_DATATYPE_BOOL8, 1, 1},
    {"DEFINES_PAYLOADSIZE", STREAM_INFO_DEFINES_PAYLOADSIZE, INFO_DATATYPE_BOOL8, 1, 1},
    {"NUM_CHUNKS_MAX", STREAM_INFO_NUM_CHUNKS_MAX, INFO_DATATYPE_SIZET, 8, 0},
    {"BUF_ANNOUNCE_MIN", STREAM_INFO_BUF_ANNOUNCE_MIN, INFO_DATATYPE_SIZET, 8, 4},
    {"BUF_ALIGNMENT", STREAM_INFO_BUF_ALIGNMENT, INFO_DATATYPE_SIZET, 8, 64},
};

std::string name_of_type(INFO_DATATYPE type)
{
    return type == INFO_DATATYPE_BOOL8 ? "BOOL8" : type == INFO_DATATYPE_UINT64 ? "UINT64" : "SIZET";
}

TEST_P(StreamInfo, HandsOverEveryNumber)
{
    for (const NumberRow& row : stream_rows)
        expect_number(row, asking(row.command));
}

TEST_P(StreamInfo, LogsEveryNumberThatItWrites)
{
    for (const NumberRow& row : stream_rows) {
        SCOPED_TRACE(row.name);
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, query<uint64_t>(row.width, asking(row.command)).code);
        EXPECT_LOG_LINES(
            {Priority::debug,
             "Enter DSGetInfo, stream handle=0x" + hex16(ds) + ", iInfoCmd=" + std::to_string(row.command)},
            {Priority::debug,
             "Type INFO_DATATYPE_" + name_of_type(row.type) + ": value=" + std::to_string(row.value),
             "DSGetInfo", "ZVGRLibGenTL"},
            {Priority::debug, "Exit DSGetInfo", "DSGetInfo", "ZVGRLibGenTL"});
    }
}

TEST_P(StreamInfo, LogsNoNumberInASizeQuery)
{
    for (const NumberRow& row : stream_rows) {
        SCOPED_TRACE(row.name);
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, size_query(asking(row.command)).code);
        EXPECT_EQ(2U, log.lines().size());
        EXPECT_LOGGED(Priority::debug, "Exit DSGetInfo");
    }
}

TEST_P(StreamInfo, LogsABufferThatIsTooSmallForANumber)
{
    const std::string before = last_error();
    for (const NumberRow& row : stream_rows) {
        if (row.width == 1)
            continue; // room 0 is refused before
        forget();
        expect_too_small(row, asking(row.command));
        EXPECT_LOG_LINES(
            {Priority::debug,
             "Enter DSGetInfo, stream handle=0x" + hex16(ds) + ", iInfoCmd=" + std::to_string(row.command)},
            {Priority::error, too_small_line(row), "DSGetInfo"},
            {Priority::error, "Exit, Returning error GC_ERR_BUFFER_TOO_SMALL (0xFFFFFC08)", "DSGetInfo"});
    }
    EXPECT_EQ(before, last_error());
}

TEST_P(StreamInfo, HandsOverTheTexts)
{
    const auto id = stream_info<std::string>(STREAM_INFO_ID);
    EXPECT_EQ(GC_ERR_SUCCESS, id.code);
    EXPECT_EQ(INFO_DATATYPE_STRING, id.type);
    EXPECT_EQ("Stream000", id.value);
    EXPECT_EQ(sizeof "Stream000", size_query(asking(STREAM_INFO_ID)).size);

    const auto type = stream_info<std::string>(STREAM_INFO_TLTYPE);
    EXPECT_EQ(INFO_DATATYPE_STRING, type.type);
    EXPECT_EQ("CXP", type.value);
    EXPECT_EQ(sizeof "CXP", size_query(asking(STREAM_INFO_TLTYPE)).size);
}

TEST_P(StreamInfo, CutsATextThatDoesNotFit)
{
    const auto cut = stream_info<std::string>(STREAM_INFO_ID, 4);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, cut.code);
    EXPECT_EQ(INFO_DATATYPE_STRING, cut.type);
    EXPECT_EQ(4U, cut.size);
    EXPECT_EQ("Stre", std::string(cut.bytes.begin(), cut.bytes.begin() + 4));
    const std::string text =
        "DSGetInfo - GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold data (4/10)";
    EXPECT_LOGGED(Priority::error, text, "DSGetInfo");
    EXPECT_LOGGED(Priority::error, "Exit, Returning error ret (0xFFFFFC08)", "DSGetInfo");
    EXPECT_NOT_LOGGED("Exit DSGetInfo");
    EXPECT_EQ(text, last_error());
}

TEST_P(StreamInfo, RefusesRoomForATextWithoutItsZero)
{
    const auto cut = stream_info<std::string>(STREAM_INFO_ID, 9);
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, cut.code);
    EXPECT_EQ(9U, cut.size);
    EXPECT_EQ("Stream000", std::string(cut.bytes.begin(), cut.bytes.begin() + 9));
    const std::string text =
        "DSGetInfo - GC_ERR_INVALID_PARAMETER: buffer size too small to contain NULL termination (9/10)";
    EXPECT_LOGGED(Priority::error, "Exit, Returning error ret (0xFFFFFC0F)", "DSGetInfo");
    EXPECT_EQ(text, last_error());
}

TEST_P(StreamInfo, RefusesAnUnknownCommand)
{
    for (const STREAM_INFO_CMD command :
         {14, 15, 1000, -1, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}) {
        SCOPED_TRACE(command);
        forget();
        const auto info = stream_info<uint64_t>(command);
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, info.code);
        EXPECT_EQ(0U, info.size);
        EXPECT_TRUE(is_untouched(info.type));
        EXPECT_TRUE(is_untouched(info.value));
        EXPECT_LOG_LINES(
            {Priority::debug,
             "Enter DSGetInfo, stream handle=0x" + hex16(ds) + ", iInfoCmd=" + std::to_string(command)},
            {Priority::error, "info= " + std::to_string(command), "DSGetInfo"},
            {Priority::error, "Exit, Returning error GC_ERR_NOT_IMPLEMENTED (0xFFFFFC15)", "DSGetInfo"});
        EXPECT_EQ(Calls{}, fake.calls());
    }
}

TEST_P(StreamInfo, AsksTheLibraryOnlyForWhatItCannotKnow)
{
    for (const NumberRow& row : stream_rows) {
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, query<uint64_t>(row.width, asking(row.command)).code);
        Calls expected;
        if (row.command == STREAM_INFO_PAYLOAD_SIZE)
            expected = {call("ZVGR_StreamGetInfo", stream(), zv_stream_payload_now)};
        else if (row.command == STREAM_INFO_BUF_ALIGNMENT)
            expected = {call("ZVGR_StreamGetInfo", stream(), zv_stream_buffer_alignment)};
        else if (row.command == STREAM_INFO_IS_GRABBING)
            expected = {call("ZVGR_GetGrabberValueEnum", camera(), "CameraChannelState")};
        EXPECT_EQ(expected, fake.calls()) << row.name;
    }
}

TEST_P(StreamInfo, CountsABufferQueuedAgainDuringItsDeliveryAsStarted)
{
    const Announced& filling = *buffers[1]; // the only one in the input pool
    uint64_t num_started = 0;
    size_t queued = 1;
    bool8_t is_acquiring = 0;
    const char* const within = is_queued() ? "ZVGR_BufferGetInfo" : "ZVGR_StreamGetAux";
    fake.on(within, [&](const Call&) {
        queue(filling);
        num_started = stream_info<uint64_t>(STREAM_INFO_NUM_STARTED).value;
        queued = num_queued();
        is_acquiring = buffer_info<bool8_t>(filling.handle, BUFFER_INFO_IS_ACQUIRING).value;
    });
    deliver(filling);
    EXPECT_EQ(1U, num_started);
    EXPECT_EQ(0U, queued);
    EXPECT_EQ(1U, is_acquiring);
    EXPECT_EQ(0U, stream_info<uint64_t>(STREAM_INFO_NUM_STARTED).value);
    EXPECT_EQ(1U, num_queued()) << "delivered and queued again";
}

TEST_P(StreamInfo, NeverCountsABufferAsStartedWhileFramesFlow)
{
    uint64_t num_started = 1;
    const char* const within = is_queued() ? "ZVGR_BufferGetInfo" : "ZVGR_StreamGetAux";
    fake.on(within, [&](const Call&) { num_started = stream_info<uint64_t>(STREAM_INFO_NUM_STARTED).value; });
    deliver(*buffers[1]);
    EXPECT_EQ(0U, num_started);
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
    /// Makes the stream anew: settings are read when a list is rebuilt.
    void rebuild()
    {
        ASSERT_EQ(GC_ERR_SUCCESS, DevClose(dev));
        fake.grabber(0).has_cameras(m_cameras = 3 - m_cameras);
        ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
        dev = open_device(iface, "Device00");
        ds = open_stream(dev, "Stream000");
    }

    std::string transport_type() { return stream_info<std::string>(STREAM_INFO_TLTYPE).value; }
    uint64_t payload_size() { return stream_info<size_t>(STREAM_INFO_PAYLOAD_SIZE).value; }
    uint64_t alignment() { return stream_info<size_t>(STREAM_INFO_BUF_ALIGNMENT).value; }
    bool is_grabbing() { return stream_info<bool8_t>(STREAM_INFO_IS_GRABBING).value != 0; }

private:
    uint32_t m_cameras{1};
};

TEST_F(StreamQuery, ReadsItsSettingsOnceWhenTheStreamIsMade)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DevClose(dev));
    fake.grabber(0).has_cameras(0);
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    fake.grabber(0).has_cameras(1);
    forget();
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    EXPECT_EQ(
        (std::vector<SettingsRead>{plain_read("GenTL.Stream.StreamPayloadSizeType", 2,
                                              "1-Old stream size at creation time,2-dynamic stream size"),
                                   plain_read("GenTL.Stream.BufferAllocMin", 4),
                                   plain_read("GenTL.Stream.SignaledEventMode", 1)}),
        settings.reads());
}

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

TEST_F(StreamQuery, NamesTheTransportOfItsGrabber)
{
    fake.grabber(0).has_protocol(1);
    EXPECT_EQ("CLHS", transport_type());
    fake.grabber(0).has_protocol(2);
    EXPECT_EQ("GEV", transport_type());
    for (const uint32_t protocol : {0U, 3U, 0xFFFFFFFFU}) {
        fake.grabber(0).has_protocol(protocol);
        EXPECT_EQ("CXP", transport_type()) << protocol;
    }
}

TEST_F(StreamQuery, AsksForTheTransportByTheInterfacesPosition)
{
    transport_type();
    EXPECT_EQ((Calls{call("ZV_DeviceInfo", 0, 3)}), fake.calls());
    fake.grabber(0).has_protocol(1);
    fake.next("ZV_DeviceInfo").answers(any_failure);
    EXPECT_EQ("CXP", transport_type());
}

} // namespace
