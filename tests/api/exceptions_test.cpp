#include <ostream>
#include <utility>

#include "api/Function.h"
#include "support/FailingAllocations.h"

// No exception crosses the C interface: memory runs out at any allocation of any function, and the grabber
// library throws where it must not.

namespace zvtest {

namespace {

/// Everything is open and running.
class Faulted : public RunningQueuedStream {
protected:
    Handles handles() const { return {tl, iface, dev, port, ds, buffers[0]->handle, event}; }

    static void prepare(const Function& function, const Handles& handles, Arguments& a)
    {
        if (function.prepare != nullptr)
            function.prepare(handles, a);
    }

    /// The same situation, made again.
    void again()
    {
        TearDown();
        buffers.clear();
        SetUp();
    }
};

class WithoutMemory : public Faulted, public testing::WithParamInterface<Function> {};

bool is_code_of_the_producer(GC_ERROR code)
{
    return code == GC_ERR_SUCCESS || (code <= GC_ERR_ERROR && code >= GC_ERR_INVALID_INDEX);
}

TEST_P(WithoutMemory, AnswersACodeWhicheverAllocationFails)
{
    bool struck = true;
    for (long n = 1; struck && n < 1000; ++n) {
        fake.allow_stale_handles();
        Arguments a(GetParam(), handles());
        prepare(GetParam(), handles(), a);
        GC_ERROR code = GC_ERR_CUSTOM_ID;
        {
            const auto faults = FailingAllocations::nth(n);
            code = GetParam().call(a);
            struck = faults.struck();
        }
        EXPECT_TRUE(is_code_of_the_producer(code)) << code << " when allocation " << n << " failed";
        again();
    }
    EXPECT_FALSE(struck);
}

INSTANTIATE_TEST_SUITE_P(EveryFunction, WithoutMemory, testing::ValuesIn(functions),
                         name_of_function<testing::TestParamInfo<Function>>);

/// A function, what makes it call a library function, and that function, which throws.
struct ThrowingCall {
    const char* function;
    const char* library_function;
    void (*change)(const Handles& handles, Arguments& a){nullptr};
};

std::ostream& operator<<(std::ostream& out, const ThrowingCall& row) { return out << row.function; }

using H = const Handles&;
using A = Arguments;

void ask_for_the_transport_type(H, A& a) { a.command = INTERFACE_INFO_TLTYPE; }
void ask_for_the_devices_transport_type(H, A& a) { a.command = DEVICE_INFO_TLTYPE; }

/// Functions that cannot throw while they close what is there are not here: destructors end a program that
/// throws.
const ThrowingCall throwing_calls[] = {
    {"TLUpdateInterfaceList", "ZV_DeviceScan"},
    {"TLGetInterfaceInfo", "ZV_DeviceDisplayName"},
    {"TLOpenInterface", "ZVGR_Open"},
    {"IFGetInfo", "ZV_DeviceInfo", ask_for_the_transport_type},
    {"IFGetDeviceInfo", "ZV_DeviceInfo", ask_for_the_devices_transport_type},
    {"DevGetInfo", "ZV_DeviceInfo", ask_for_the_devices_transport_type},
    {"IFUpdateDeviceList", "ZVGR_UpdateCameraList"},
    {"IFOpenDevice", "ZVGR_CameraOpen2",
     [](H handles, A& a) {
         EXPECT_EQ(GC_ERR_SUCCESS, DevClose(handles.dev));
         a.id = "Device00";
     }},
    {"DevClose", "ZVGR_CameraClose"},
    {"DevOpenDataStream", "ZVGR_StreamCreate"},
    {"DSAnnounceBuffer", "ZVGR_BufferAnnounce"},
    {"DSAllocAndAnnounceBuffer", "ZVGR_BufferAllocAndAnnounce"},
    {"DSRevokeBuffer", "ZVGR_BufferRevoke"},
    {"DSQueueBuffer", "ZVGR_BufferToQueue"},
    {"DSFlushQueue", "ZVGR_BufferToQueue"},
    {"DSStartAcquisition", "ZVGR_CameraStartAcquire_GenTL"},
    {"DSStopAcquisition", "ZVGR_CameraStopAcquire_GenTL"},
    {"DSGetInfo", "ZVGR_StreamGetInfo", [](H, A& a) { a.command = STREAM_INFO_PAYLOAD_SIZE; }},
    {"GCReadPort", "ZVGR_CameraReadReg"},
    {"GCWritePort", "ZVGR_GrabberWriteReg", [](H handles, A& a) { a.handle = handles.dev; }},
    {"GCReadPortStacked", "ZVGR_GrabberReadReg", [](H handles, A& a) { a.handle = handles.iface; }},
    {"GCWritePortStacked", "ZVGR_CameraWriteReg", [](H handles, A& a) { a.handle = handles.ds; }},
    {"GCGetPortURL", "ZVGR_GetXmlUrl"},
    {"GCGetPortURLInfo", "ZVGR_GetXmlUrl"},
};

class WithAThrowingLibrary : public Faulted, public testing::WithParamInterface<ThrowingCall> {};

TEST_P(WithAThrowingLibrary, AnswersTheGeneralError)
{
    const Function& function = function_named(GetParam().function);
    Arguments a(function, handles());
    prepare(function, handles(), a);
    if (GetParam().change != nullptr)
        GetParam().change(handles(), a);
    bool has_thrown = false;
    fake.on(GetParam().library_function, [&](const Call&) {
        if (!std::exchange(has_thrown, true))
            throw 1;
    });
    forget();
    EXPECT_EQ(GC_ERR_ERROR, function.call(a));
    EXPECT_TRUE(has_thrown);
    EXPECT_LOGGED(Priority::error, "Exit, Returning error GC_ERR_ERROR (0xFFFFFC17), unknown exception",
                  function.name);
}

INSTANTIATE_TEST_SUITE_P(EveryCaller, WithAThrowingLibrary, testing::ValuesIn(throwing_calls),
                         testing::PrintToStringParamName());

TEST_F(Faulted, NamesTheExceptionThatItCaught)
{
    const Function& function = function_named("GCGetInfo");
    Arguments a(function, handles());
    GC_ERROR code = GC_ERR_SUCCESS;
    log.set_level(Priority::error); // so that the first allocation is the function's own
    {
        const auto faults = FailingAllocations::nth(1);
        code = function.call(a);
    }
    EXPECT_EQ(GC_ERR_ERROR, code);
    EXPECT_LOG_LINES({Priority::error,
                      "Exit, Returning error GC_ERR_ERROR (0xFFFFFC17), exception: std::bad_alloc",
                      "GCGetInfo"});
}

const ExpectedLine lost_frame{Priority::error,
                              "A frame was lost: its delivery ran out of memory or failed in the runtime",
                              "StreamModule::deliver_from_library", "StreamModule"};

TEST_F(RunningQueuedStream, LosesAFrameWhoseDeliveryThrows)
{
    fake.on("ZVGR_BufferGetInfo", [](const Call&) { throw 1; });
    deliver(*buffers[0]);
    EXPECT_TRUE(logged(lost_frame));
}

TEST_F(RunningCyclicStream, LosesAFrameWhoseDeliveryThrows)
{
    fake.on("ZVGR_StreamGetAux", [](const Call&) { throw 1; });
    deliver(*buffers[0]);
    EXPECT_TRUE(logged(lost_frame));
}

} // namespace

} // namespace zvtest
