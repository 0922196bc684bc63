#include <functional>

#include "api/DS_calls.h"

// What every function of the stream family refuses: calls before GCInitLib, bad stream handles, and missing
// pointers, which come before the handle.

using namespace zvtest;

namespace {

std::string invalid_handle(const StreamFunction& function)
{
    return std::string(function.name) + " - GC_ERR_INVALID_HANDLE";
}

class UninitialisedStreamFunction : public Library, public testing::WithParamInterface<StreamFunction> {};

TEST_P(UninitialisedStreamFunction, IsRefusedBeforeItsArgumentsAreLookedAt)
{
    StreamOutputs out;
    DS_HANDLE stream = &out;
    BUFFER_HANDLE buffer = &out.value;
    const std::string enter = GetParam().enter(stream, buffer, out);
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GetParam().call(stream, buffer, out));
    EXPECT_TRUE(out.are_untouched());
    EXPECT_LOG_LINES({GetParam().traffic, enter, GetParam().name, "ZVGRLibGenTL"},
                     {Priority::error, "No preceding call to GCInitLib", GetParam().name, "ZVGRLibGenTL"});
}

INSTANTIATE_TEST_SUITE_P(DS, UninitialisedStreamFunction, testing::ValuesIn(stream_functions),
                         name_of_function<testing::TestParamInfo<StreamFunction>>);

class StreamFunctionOnBadHandle : public QueuedStream, public testing::WithParamInterface<StreamFunction> {
protected:
    /// Calls the function and expects it to stop at the handle.
    void expect_refused(DS_HANDLE handle, const std::string& reason, const char* what)
    {
        SCOPED_TRACE(what);
        forget();
        StreamOutputs out;
        const std::string enter = GetParam().enter(handle, known, out);
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, GetParam().call(handle, known, out));
        EXPECT_TRUE(out.are_untouched());
        EXPECT_TRUE(fake.calls().empty());
        EXPECT_LOG_LINES({GetParam().traffic, enter, GetParam().name},
                         {Priority::information, reason, "", "ZVGRLibGenTL"});
    }

    void SetUp() override
    {
        QueuedStream::SetUp();
        known = announce().handle;
        register_event();
    }

    BUFFER_HANDLE known{nullptr};
};

TEST_P(StreamFunctionOnBadHandle, RefusesWhatIsNoStream)
{
    int stranger = 0;
    const std::string reason = invalid_handle(GetParam());
    expect_refused(nullptr, reason, "null");
    expect_refused(all_ones<DS_HANDLE>(), reason, "all ones");
    expect_refused(&stranger, reason, "never given out");
    expect_refused(tl, reason, "the system");
    expect_refused(iface, reason, "an interface");
    expect_refused(dev, reason, "a device");
    expect_refused(port, reason, "a camera");
    expect_refused(known, reason, "a buffer");
    expect_refused(event, reason, "an event");
}

TEST_P(StreamFunctionOnBadHandle, RefusesAStreamThatDSCloseClosed)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    expect_refused(ds, invalid_handle(GetParam()) + ", stream is closed", "closed");
}

TEST_P(StreamFunctionOnBadHandle, RefusesAStreamWhoseDeviceWasClosed)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DevClose(dev));
    expect_refused(ds, invalid_handle(GetParam()) + ", stream is closed", "closed device");
}

TEST_P(StreamFunctionOnBadHandle, RefusesAStreamWhoseInterfaceWasClosed)
{
    ASSERT_EQ(GC_ERR_SUCCESS, IFClose(iface));
    expect_refused(ds, invalid_handle(GetParam()) + ", stream is closed", "closed interface");
}

TEST_P(StreamFunctionOnBadHandle, RefusesAStreamThatLeftTheList)
{
    fake.grabber(0).has_cameras(2);
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    expect_refused(ds, invalid_handle(GetParam()), "dropped device");
}

TEST_P(StreamFunctionOnBadHandle, RefusesAStreamOfAnEarlierSystem)
{
    ASSERT_EQ(GC_ERR_SUCCESS, TLClose(tl));
    expect_refused(ds, invalid_handle(GetParam()), "no system");
    ASSERT_EQ(GC_ERR_SUCCESS, TLOpen(&tl));
    expect_refused(ds, invalid_handle(GetParam()), "another system");
}

INSTANTIATE_TEST_SUITE_P(DS, StreamFunctionOnBadHandle, testing::ValuesIn(stream_checking_functions()),
                         name_of_function<testing::TestParamInfo<StreamFunction>>);

/// A call with one output missing, on any stream handle.
struct MissingPointer {
    const char* name; // the test's
    const char* function;
    GC_ERROR (*call)(DS_HANDLE stream, BUFFER_HANDLE buffer, StreamOutputs& out);
    bool is_silent; // else the exit line follows
};

std::ostream& operator<<(std::ostream& out, const MissingPointer& row) { return out << row.name; }

uint8_t pixels[64];

const MissingPointer missing_pointers[] = {
    {"DSAnnounceBuffer_null_memory", "DSAnnounceBuffer",
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs& out) {
         return DSAnnounceBuffer(stream, nullptr, sizeof pixels, nullptr, &out.buffer);
     },
     true},
    {"DSAnnounceBuffer_all_ones_memory", "DSAnnounceBuffer",
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs& out) {
         return DSAnnounceBuffer(stream, all_ones<void*>(), sizeof pixels, nullptr, &out.buffer);
     },
     true},
    {"DSAnnounceBuffer_null_output", "DSAnnounceBuffer",
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs&) {
         return DSAnnounceBuffer(stream, pixels, sizeof pixels, nullptr, nullptr);
     },
     true},
    {"DSAnnounceBuffer_all_ones_output", "DSAnnounceBuffer",
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs&) {
         return DSAnnounceBuffer(stream, pixels, sizeof pixels, nullptr, all_ones<BUFFER_HANDLE*>());
     },
     true},
    {"DSAllocAndAnnounceBuffer_null", "DSAllocAndAnnounceBuffer",
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs&) {
         return DSAllocAndAnnounceBuffer(stream, 64, nullptr, nullptr);
     },
     true},
    {"DSAllocAndAnnounceBuffer_all_ones", "DSAllocAndAnnounceBuffer",
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs&) {
         return DSAllocAndAnnounceBuffer(stream, 64, nullptr, all_ones<BUFFER_HANDLE*>());
     },
     true},
    {"DSGetBufferID_null", "DSGetBufferID",
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs&) { return DSGetBufferID(stream, 0, nullptr); }, true},
    {"DSGetBufferID_all_ones", "DSGetBufferID",
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs&) {
         return DSGetBufferID(stream, 0, all_ones<BUFFER_HANDLE*>());
     },
     true},
    {"DSGetParentDev_null", "DSGetParentDev",
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs&) { return DSGetParentDev(stream, nullptr); }, true},
    {"DSGetParentDev_all_ones", "DSGetParentDev",
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs&) {
         return DSGetParentDev(stream, all_ones<DEV_HANDLE*>());
     },
     true},
    {"DSGetNumBufferParts_null", "DSGetNumBufferParts",
     [](DS_HANDLE stream, BUFFER_HANDLE buffer, StreamOutputs&) {
         return DSGetNumBufferParts(stream, buffer, nullptr);
     },
     true},
    {"DSGetNumBufferParts_all_ones", "DSGetNumBufferParts",
     [](DS_HANDLE stream, BUFFER_HANDLE buffer, StreamOutputs&) {
         return DSGetNumBufferParts(stream, buffer, all_ones<uint32_t*>());
     },
     true},
    {"DSStartAcquisition_no_frames", "DSStartAcquisition",
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs&) {
         return DSStartAcquisition(stream, ACQ_START_FLAGS_DEFAULT, 0);
     },
     true},
    {"DSGetInfo_null_type", "DSGetInfo",
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs& out) {
         return DSGetInfo(stream, STREAM_INFO_ID, nullptr, out.value.data(), &out.size);
     },
     false},
    {"DSGetInfo_all_ones_type", "DSGetInfo",
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs& out) {
         return DSGetInfo(stream, STREAM_INFO_ID, all_ones<INFO_DATATYPE*>(), out.value.data(), &out.size);
     },
     false},
    {"DSGetInfo_null_size", "DSGetInfo",
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs& out) {
         return DSGetInfo(stream, STREAM_INFO_ID, &out.type, out.value.data(), nullptr);
     },
     false},
    {"DSGetInfo_all_ones_size", "DSGetInfo",
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs& out) {
         return DSGetInfo(stream, STREAM_INFO_ID, &out.type, out.value.data(), all_ones<size_t*>());
     },
     false},
    {"DSGetBufferInfo_null_type", "DSGetBufferInfo",
     [](DS_HANDLE stream, BUFFER_HANDLE buffer, StreamOutputs& out) {
         return DSGetBufferInfo(stream, buffer, BUFFER_INFO_SIZE, nullptr, out.value.data(), &out.size);
     },
     false},
    {"DSGetBufferInfo_all_ones_type", "DSGetBufferInfo",
     [](DS_HANDLE stream, BUFFER_HANDLE buffer, StreamOutputs& out) {
         return DSGetBufferInfo(stream, buffer, BUFFER_INFO_SIZE, all_ones<INFO_DATATYPE*>(),
                                out.value.data(), &out.size);
     },
     false},
    {"DSGetBufferInfo_null_size", "DSGetBufferInfo",
     [](DS_HANDLE stream, BUFFER_HANDLE buffer, StreamOutputs& out) {
         return DSGetBufferInfo(stream, buffer, BUFFER_INFO_SIZE, &out.type, out.value.data(), nullptr);
     },
     false},
    {"DSGetBufferInfo_all_ones_size", "DSGetBufferInfo",
     [](DS_HANDLE stream, BUFFER_HANDLE buffer, StreamOutputs& out) {
         return DSGetBufferInfo(stream, buffer, BUFFER_INFO_SIZE, &out.type, out.value.data(),
                                all_ones<size_t*>());
     },
     false},
};

class StreamFunctionWithoutPointer : public QueuedStream, public testing::WithParamInterface<MissingPointer> {
protected:
    void expect_refused(DS_HANDLE stream, BUFFER_HANDLE buffer)
    {
        forget();
        StreamOutputs out;
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, GetParam().call(stream, buffer, out));
        EXPECT_TRUE(out.are_untouched());
        EXPECT_TRUE(fake.calls().empty());
        EXPECT_EQ(GetParam().is_silent ? 1U : 2U, log.lines().size())
            << "the enter line alone, or an exit line";
        if (!GetParam().is_silent) {
            EXPECT_LOGGED(Priority::error, "Exit, Returning error GC_ERR_INVALID_PARAMETER (0xFFFFFC0F)",
                          GetParam().function);
        }
    }
};

TEST_P(StreamFunctionWithoutPointer, IsRefused)
{
    const Announced& buffer = announce();
    expect_refused(ds, buffer.handle);
}

TEST_P(StreamFunctionWithoutPointer, IsRefusedBeforeTheStreamHandleIsChecked)
{
    expect_refused(nullptr, nullptr);
}

INSTANTIATE_TEST_SUITE_P(DS, StreamFunctionWithoutPointer, testing::ValuesIn(missing_pointers),
                         name_of_function<testing::TestParamInfo<MissingPointer>>);

class EmptyRoom : public QueuedStream {};

TEST_F(EmptyRoom, IsRefusedByBothInfoQueriesBeforeHandleAndCommand)
{
    StreamOutputs out;
    out.size = 0;
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, DSGetInfo(nullptr, 99, &out.type, out.value.data(), &out.size));
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER,
              DSGetBufferInfo(nullptr, nullptr, 99, &out.type, out.value.data(), &out.size));
    EXPECT_EQ(0U, out.size);
    EXPECT_TRUE(is_untouched(out.type));
    EXPECT_EQ(2U, times_logged("Exit, Returning error GC_ERR_INVALID_PARAMETER (0xFFFFFC0F)"));
}

TEST_F(EmptyRoom, IsASizeQueryWithAnAllOnesBuffer)
{
    StreamOutputs out;
    out.size = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, DSGetInfo(ds, STREAM_INFO_ID, &out.type, all_ones<void*>(), &out.size));
    EXPECT_EQ(INFO_DATATYPE_STRING, out.type);
    EXPECT_EQ(sizeof "Stream000", out.size);
}

} // namespace
