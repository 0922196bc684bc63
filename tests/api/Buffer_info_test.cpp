#include <limits>
#include <string>
#include <vector>

#include "api/DS_info_rows.h"
#include "api/DS_modes.h"

using namespace zvtest;

namespace {

constexpr size_t size = 5000;
constexpr uint64_t timestamp = 0xFEDCBA9876543210U;
constexpr uint64_t queued_frame_id = 0x8000000000000007U;
int owner;

/// A buffer with a geometry of its own, of a grabber that does not support image ids.
class BufferInfo : public EitherStream {
protected:
    void SetUp() override
    {
        EitherStream::SetUp();
        fake.grabber_int("Width") = 640;
        fake.grabber_int("Height") = 480;
        fake.grabber_int("SegmentsPerBuffer") = 2;
        fake.camera_int("OffsetX") = 8;
        fake.camera_int("OffsetY") = -16;
        fake.camera_enum("PixelFormat") = 0x101;
        buffer = &announce(size, &owner);
        forget();
    }

    void deliver_frame()
    {
        queue(*buffer);
        start();
        deliver(*buffer, Frame{timestamp, queued_frame_id, 0, -1});
    }

    auto asking(BUFFER_INFO_CMD command)
    {
        return [this, command](auto... out) { return DSGetBufferInfo(ds, buffer->handle, command, out...); };
    }

    std::string enter_line(BUFFER_INFO_CMD command, BUFFER_HANDLE handle) const
    {
        return "Enter DSGetBufferInfo, info=" + std::to_string(command) + ", stream handle=0x" + low_hex(ds) +
               ", buffer handle=0x" + low_hex(handle);
    }

    /// Every row that is a number. `is_filled`: after a frame came, else before.
    std::vector<NumberRow> rows(bool is_filled) const
    {
        const uint64_t filled = is_filled ? 1 : 0;
        const uint64_t ring_frame = 0; // the first one of the ring
        const uint64_t frame_id = !is_filled ? 0 : is_queued() ? queued_frame_id : ring_frame;
        return {
            {"BASE", 0, INFO_DATATYPE_PTR, 8, reinterpret_cast<uintptr_t>(buffer->memory.data())},
            {"SIZE", 1, INFO_DATATYPE_SIZET, 8, size},
            {"USER_PTR", 2, INFO_DATATYPE_PTR, 8, reinterpret_cast<uintptr_t>(&owner)},
            {"TIMESTAMP", 3, INFO_DATATYPE_UINT64, 8, is_filled ? timestamp : 0},
            {"NEW_DATA", 4, INFO_DATATYPE_BOOL8, 1, filled},
            {"IS_QUEUED", 5, INFO_DATATYPE_BOOL8, 1, 0},
            {"IS_ACQUIRING", 6, INFO_DATATYPE_BOOL8, 1, 0},
            {"IS_INCOMPLETE", 7, INFO_DATATYPE_BOOL8, 1, 0},
            {"SIZE_FILLED", 9, INFO_DATATYPE_SIZET, 8, size},
            {"WIDTH", 10, INFO_DATATYPE_SIZET, 8, 640},
            {"HEIGHT", 11, INFO_DATATYPE_SIZET, 8, 960},
            {"XOFFSET", 12, INFO_DATATYPE_SIZET, 8, 8},
            {"YOFFSET", 13, INFO_DATATYPE_SIZET, 8, 0xFFFFFFFFFFFFFFF0U},
            {"XPADDING", 14, INFO_DATATYPE_SIZET, 8, 0},
            {"YPADDING", 15, INFO_DATATYPE_SIZET, 8, 0},
            {"FRAMEID", 16, INFO_DATATYPE_UINT64, 8, frame_id},
            {"IMAGEPRESENT", 17, INFO_DATATYPE_BOOL8, 1, filled},
            {"IMAGEOFFSET", 18, INFO_DATATYPE_SIZET, 8, 0},
            {"PAYLOADTYPE", 19, INFO_DATATYPE_SIZET, 8, 1},
            {"PIXELFORMAT", 20, INFO_DATATYPE_UINT64, 8, 0x01080001},
            {"PIXELFORMAT_NAMESPACE", 21, INFO_DATATYPE_UINT64, 8, 4},
            {"DELIVERED_IMAGEHEIGHT", 22, INFO_DATATYPE_SIZET, 8, 960},
            {"PIXEL_ENDIANNESS", 26, INFO_DATATYPE_INT32, 4, 1},
            {"DATA_SIZE", 27, INFO_DATATYPE_SIZET, 8, size},
            {"DATA_LARGER_THAN_BUFFER", 29, INFO_DATATYPE_BOOL8, 1, 0},
            {"CONTAINS_CHUNKDATA", 30, INFO_DATATYPE_BOOL8, 1, 0},
        };
    }

    Announced* buffer{nullptr};
};

TEST_P(BufferInfo, HandsOverEveryNumberOfANewBuffer)
{
    for (const NumberRow& row : rows(false))
        expect_number(row, asking(row.command));
}

TEST_P(BufferInfo, HandsOverEveryNumberOfADeliveredBuffer)
{
    deliver_frame();
    for (const NumberRow& row : rows(true))
        expect_number(row, asking(row.command));
}

TEST_P(BufferInfo, TellsAQueuedBuffer)
{
    EXPECT_EQ(0, buffer_info<bool8_t>(buffer->handle, BUFFER_INFO_IS_QUEUED).value);
    queue(*buffer);
    EXPECT_EQ(1, buffer_info<bool8_t>(buffer->handle, BUFFER_INFO_IS_QUEUED).value);
}

TEST_P(BufferInfo, KeepsTheFrameOfABufferThatIsQueuedAgain)
{
    deliver_frame();
    queue(*buffer);
    EXPECT_EQ(1, buffer_info<bool8_t>(buffer->handle, BUFFER_INFO_NEW_DATA).value);
    EXPECT_EQ(timestamp, buffer_info<uint64_t>(buffer->handle, BUFFER_INFO_TIMESTAMP).value);
}

TEST_P(BufferInfo, TellsABufferThatIsBeingFilled)
{
    bool8_t is_acquiring = 0;
    bool8_t is_new = 1;
    const char* const within = is_queued() ? "ZVGR_BufferGetInfo" : "ZVGR_StreamGetAux";
    fake.on(within, [&](const Call&) {
        is_acquiring = buffer_info<bool8_t>(buffer->handle, BUFFER_INFO_IS_ACQUIRING).value;
        is_new = buffer_info<bool8_t>(buffer->handle, BUFFER_INFO_NEW_DATA).value;
    });
    deliver_frame();
    EXPECT_EQ(1, is_acquiring);
    EXPECT_EQ(0, is_new);
}

TEST_P(BufferInfo, CallsNobodyAndLogsEntryAndExitOnly)
{
    for (const NumberRow& row : rows(false)) {
        SCOPED_TRACE(row.name);
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, query<uint64_t>(row.width, asking(row.command)).code);
        EXPECT_EQ(Calls{}, fake.calls());
        EXPECT_LOG_LINES({Priority::trace, enter_line(row.command, buffer->handle), "DSGetBufferInfo"},
                         {Priority::trace, "Exit DSGetBufferInfo", "DSGetBufferInfo"});
    }
}

TEST_P(BufferInfo, LogsEveryCallOfAnAcquisition)
{
    deliver_frame();
    forget();
    for (int i = 0; i < 3; ++i)
        buffer_info<size_t>(buffer->handle, BUFFER_INFO_SIZE);
    EXPECT_EQ(3U, times_logged(enter_line(BUFFER_INFO_SIZE, buffer->handle)));
    EXPECT_EQ(3U, times_logged("Exit DSGetBufferInfo"));
}

TEST_P(BufferInfo, LogsABufferThatIsTooSmallForANumber)
{
    const std::string before = last_error();
    for (const NumberRow& row : rows(false)) {
        if (row.width == 1)
            continue; // room 0 is refused before
        forget();
        expect_too_small(row, asking(row.command));
        EXPECT_LOG_LINES({Priority::trace, enter_line(row.command, buffer->handle)},
                         {Priority::error, too_small_line(row), "DSGetBufferInfo"},
                         {Priority::error, "Exit, Returning error GC_ERR_BUFFER_TOO_SMALL (0xFFFFFC08)",
                          "DSGetBufferInfo"});
    }
    EXPECT_EQ(before, last_error());
}

TEST_P(BufferInfo, NamesTheTransportOfItsGrabber)
{
    const char* const names[] = {"CXP", "CLHS", "GEV", "CXP"};
    for (uint32_t protocol = 0; protocol < 4; ++protocol) {
        fake.grabber(0).has_protocol(protocol);
        const auto type = buffer_info<std::string>(buffer->handle, BUFFER_INFO_TLTYPE);
        EXPECT_EQ(INFO_DATATYPE_STRING, type.type);
        EXPECT_EQ(names[protocol], type.value);
    }
    EXPECT_EQ((Calls(4, call("ZV_DeviceInfo", 0, 3))), fake.calls());
    EXPECT_EQ(sizeof "CXP", size_query(asking(BUFFER_INFO_TLTYPE)).size);
}

TEST_P(BufferInfo, CutsATextThatDoesNotFit)
{
    const auto cut = buffer_info<std::string>(buffer->handle, BUFFER_INFO_TLTYPE, 2);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, cut.code);
    EXPECT_EQ(INFO_DATATYPE_STRING, cut.type);
    EXPECT_EQ(2U, cut.size);
    const std::string text =
        "DSGetBufferInfo - GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold data (2/4)";
    EXPECT_LOGGED(Priority::error, text, "DSGetBufferInfo");
    EXPECT_LOGGED(Priority::error, "Exit, Returning error ret (0xFFFFFC08)", "DSGetBufferInfo");
    EXPECT_EQ(text, last_error());
}

TEST_P(BufferInfo, RefusesRoomForATextWithoutItsZero)
{
    const auto cut = buffer_info<std::string>(buffer->handle, BUFFER_INFO_TLTYPE, 3);
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, cut.code);
    EXPECT_EQ(3U, cut.size);
    EXPECT_EQ("DSGetBufferInfo - GC_ERR_INVALID_PARAMETER: buffer size too small to contain NULL "
              "termination (3/4)",
              last_error());
}

TEST_P(BufferInfo, RefusesAnUnknownCommand)
{
    for (const BUFFER_INFO_CMD command :
         {23, 24, 25, 28, 31, 32, 1000, -1, std::numeric_limits<int32_t>::min(),
          std::numeric_limits<int32_t>::max()}) {
        SCOPED_TRACE(command);
        forget();
        const auto info = buffer_info<uint64_t>(buffer->handle, command);
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, info.code);
        EXPECT_EQ(0U, info.size);
        EXPECT_TRUE(is_untouched(info.type));
        EXPECT_TRUE(is_untouched(info.value));
        EXPECT_LOG_LINES({Priority::trace, enter_line(command, buffer->handle)},
                         {Priority::error, "info= " + std::to_string(command), "DSGetBufferInfo"},
                         {Priority::error, "Exit, Returning error GC_ERR_NOT_IMPLEMENTED (0xFFFFFC15)",
                          "DSGetBufferInfo"});
    }
}

TEST_P(BufferInfo, RefusesAHandleThatIsNoBufferOfTheStream)
{
    register_event();
    const Announced& revoked = announce();
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, revoked.handle, nullptr, nullptr));
    int stranger = 0;
    for (const BUFFER_HANDLE handle :
         {BUFFER_HANDLE{nullptr}, all_ones<BUFFER_HANDLE>(), BUFFER_HANDLE{&stranger}, BUFFER_HANDLE{ds},
          BUFFER_HANDLE{event}, revoked.handle}) {
        SCOPED_TRACE(hex16(handle));
        forget();
        const auto info = buffer_info<uint64_t>(handle, 99); // before the command is looked at
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, info.code);
        EXPECT_EQ(8U, info.size);
        EXPECT_TRUE(is_untouched(info.type));
        EXPECT_TRUE(is_untouched(info.value));
        EXPECT_LOG_LINES(
            {Priority::trace, enter_line(99, handle)},
            {Priority::error, "invalid buffer handle " + hex16(handle), "DSGetBufferInfo"},
            {Priority::error, "Exit, Returning error GC_ERR_INVALID_HANDLE (0xFFFFFC12)", "DSGetBufferInfo"});
    }
}

INSTANTIATE_IN_BOTH_MODES(BufferInfo);

class BufferInfoOfTwoStreams : public TwoStreams {};

TEST_F(BufferInfoOfTwoStreams, RefusesABufferOfTheOther)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, buffer_info<size_t>(announce_on_other(), BUFFER_INFO_SIZE).code);
}

} // namespace
