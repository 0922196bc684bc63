#include <functional>
#include <ostream>
#include <set>

#include "support/FailingAllocations.h"
#include "support/fixtures.h"

// No exception crosses the C interface: memory runs out at any allocation of any function, and the grabber
// library throws where it must not.

using namespace zvtest;

namespace {

/// What a call may use: every handle of a running stream.
struct Situation {
    TL_HANDLE tl;
    IF_HANDLE iface;
    DEV_HANDLE dev;
    PORT_HANDLE port;
    DS_HANDLE ds;
    EVENT_HANDLE event;
    BUFFER_HANDLE buffer;
};

struct Outputs {
    INFO_DATATYPE type{INFO_DATATYPE_UNKNOWN};
    char bytes[1024]{};
    size_t size{sizeof bytes};
    void* handle{nullptr};
    uint32_t number{0};
    bool8_t changed{0};
};

using Invocation = std::function<GC_ERROR(const Situation&, Outputs&)>;

struct Row {
    const char* function;
    Invocation invoke;
    Invocation prepare{nullptr}; // what has to happen before, not under the fault

    friend std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.function; }
};

struct ThrowingRow {
    const char* library_function;
    Row call;

    friend std::ostream& operator<<(std::ostream& out, const ThrowingRow& row)
    {
        return out << row.call.function << " in " << row.library_function;
    }
};

template <class Parameter>
std::string name_of_row(const testing::TestParamInfo<Parameter>& info);

template <>
std::string name_of_row(const testing::TestParamInfo<Row>& info)
{
    return info.param.function;
}

template <>
std::string name_of_row(const testing::TestParamInfo<ThrowingRow>& info)
{
    return info.param.call.function;
}

char some_memory[64];

GC_ERROR close_device(const Situation& s, Outputs&) { return DevClose(s.dev); }
GC_ERROR close_stream(const Situation& s, Outputs&) { return DSClose(s.ds); }
GC_ERROR stop(const Situation& s, Outputs&) { return DSStopAcquisition(s.ds, ACQ_STOP_FLAGS_DEFAULT); }
GC_ERROR close_system(const Situation& s, Outputs&) { return TLClose(s.tl); }
GC_ERROR close_library(const Situation&, Outputs&) { return GCCloseLib(); }
GC_ERROR close_interface(const Situation& s, Outputs&) { return IFClose(s.iface); }

GC_ERROR find_another_camera(const Situation&, Outputs&)
{
    FakeGrabberLibrary::instance().grabber(0).has_cameras(2);
    return GC_ERR_SUCCESS;
}

GC_ERROR find_another_grabber(const Situation&, Outputs&)
{
    FakeGrabberLibrary::instance().has_grabbers(3);
    return GC_ERR_SUCCESS;
}

GC_ERROR unregister(const Situation& s, Outputs&) { return GCUnregisterEvent(s.ds, EVENT_NEW_BUFFER); }

const Row every_function[] = {
    {"GCInitLib", [](const Situation&, Outputs&) { return GCInitLib(); }, close_library},
    {"GCCloseLib", close_library},
    {"GCGetInfo",
     [](const Situation&, Outputs& o) { return GCGetInfo(TL_INFO_DISPLAYNAME, &o.type, o.bytes, &o.size); }},
    {"GCGetLastError", [](const Situation&, Outputs& o) { return GCGetLastError(&o.type, o.bytes, &o.size); },
     [](const Situation& s, Outputs& o) { // leaves a text that needs memory
         IFGetDeviceID(s.iface, 99, o.bytes, &o.size);
         return GC_ERR_SUCCESS;
     }},
    {"TLOpen", [](const Situation&, Outputs& o) { return TLOpen(&o.handle); }, close_system},
    {"TLClose", close_system},
    {"TLGetInfo", [](const Situation& s,
                     Outputs& o) { return TLGetInfo(s.tl, TL_INFO_DISPLAYNAME, &o.type, o.bytes, &o.size); }},
    {"TLGetNumInterfaces",
     [](const Situation& s, Outputs& o) { return TLGetNumInterfaces(s.tl, &o.number); }},
    {"TLGetInterfaceID",
     [](const Situation& s, Outputs& o) {
         o.size = 1;
         return TLGetInterfaceID(s.tl, 0, o.bytes, &o.size);
     }},
    {"TLGetInterfaceInfo",
     [](const Situation& s, Outputs& o) {
         return TLGetInterfaceInfo(s.tl, "FG0", INTERFACE_INFO_DISPLAYNAME, &o.type, o.bytes, &o.size);
     }},
    {"TLOpenInterface",
     [](const Situation& s, Outputs& o) { return TLOpenInterface(s.tl, "FG0", &o.handle); }, close_interface},
    {"TLUpdateInterfaceList",
     [](const Situation& s, Outputs& o) { return TLUpdateInterfaceList(s.tl, &o.changed, 0); },
     find_another_grabber},
    {"IFGetNumDevices", [](const Situation& s, Outputs& o) { return IFGetNumDevices(s.iface, &o.number); }},
    {"IFGetDeviceID",
     [](const Situation& s, Outputs& o) { return IFGetDeviceID(s.iface, 99, o.bytes, &o.size); }},
    {"IFUpdateDeviceList",
     [](const Situation& s, Outputs& o) { return IFUpdateDeviceList(s.iface, &o.changed, 0); },
     find_another_camera},
    {"IFGetDeviceInfo",
     [](const Situation& s, Outputs& o) {
         return IFGetDeviceInfo(s.iface, "Device00", DEVICE_INFO_MODEL, &o.type, o.bytes, &o.size);
     }},
    {"IFClose", close_interface},
    {"IFGetInfo",
     [](const Situation& s, Outputs& o) {
         return IFGetInfo(s.iface, INTERFACE_INFO_DISPLAYNAME, &o.type, o.bytes, &o.size);
     }},
    {"IFOpenDevice",
     [](const Situation& s, Outputs& o) {
         return IFOpenDevice(s.iface, "A device that nobody has ever seen", DEVICE_ACCESS_CONTROL, &o.handle);
     }},
    {"IFGetParentTL", [](const Situation& s, Outputs& o) { return IFGetParentTL(s.iface, &o.handle); }},
    {"DevGetPort", [](const Situation& s, Outputs& o) { return DevGetPort(s.dev, &o.handle); }},
    {"DevClose", close_device},
    {"DevGetParentIF", [](const Situation& s, Outputs& o) { return DevGetParentIF(s.dev, &o.handle); }},
    {"DevGetNumDataStreams",
     [](const Situation& s, Outputs& o) { return DevGetNumDataStreams(s.dev, &o.number); }},
    {"DevGetDataStreamID",
     [](const Situation& s, Outputs& o) { return DevGetDataStreamID(s.dev, 1, o.bytes, &o.size); }},
    {"DevOpenDataStream",
     [](const Situation& s, Outputs& o) { return DevOpenDataStream(s.dev, "Stream000", &o.handle); },
     close_stream},
    {"DevGetInfo",
     [](const Situation& s, Outputs& o) {
         return DevGetInfo(s.dev, DEVICE_INFO_MODEL, &o.type, o.bytes, &o.size);
     }},
    {"DSAnnounceBuffer",
     [](const Situation& s, Outputs& o) {
         return DSAnnounceBuffer(s.ds, some_memory, sizeof some_memory, nullptr, &o.handle);
     }},
    {"DSAllocAndAnnounceBuffer",
     [](const Situation& s, Outputs& o) {
         return DSAllocAndAnnounceBuffer(s.ds, sizeof some_memory, nullptr, &o.handle);
     }},
    {"DSRevokeBuffer",
     [](const Situation& s, Outputs& o) { return DSRevokeBuffer(s.ds, s.buffer, &o.handle, nullptr); }},
    {"DSQueueBuffer", [](const Situation& s, Outputs&) { return DSQueueBuffer(s.ds, s.buffer); }},
    {"DSFlushQueue",
     [](const Situation& s, Outputs&) { return DSFlushQueue(s.ds, ACQ_QUEUE_INPUT_TO_OUTPUT); }},
    {"DSGetBufferID", [](const Situation& s, Outputs& o) { return DSGetBufferID(s.ds, 0, &o.handle); }},
    {"DSClose", close_stream},
    {"DSGetParentDev", [](const Situation& s, Outputs& o) { return DSGetParentDev(s.ds, &o.handle); }},
    {"DSStartAcquisition",
     [](const Situation& s, Outputs&) { return DSStartAcquisition(s.ds, ACQ_START_FLAGS_DEFAULT, 1); }, stop},
    {"DSStopAcquisition", stop},
    {"DSGetInfo", [](const Situation& s,
                     Outputs& o) { return DSGetInfo(s.ds, STREAM_INFO_ID, &o.type, o.bytes, &o.size); }},
    {"DSGetBufferInfo",
     [](const Situation& s, Outputs& o) {
         return DSGetBufferInfo(s.ds, s.buffer, BUFFER_INFO_TLTYPE, &o.type, o.bytes, &o.size);
     }},
    {"DSGetNumBufferParts",
     [](const Situation& s, Outputs& o) { return DSGetNumBufferParts(s.ds, s.buffer, &o.number); }},
    {"DSGetBufferPartInfo",
     [](const Situation& s, Outputs& o) {
         return DSGetBufferPartInfo(s.ds, s.buffer, 0, BUFFER_PART_INFO_BASE, &o.type, o.bytes, &o.size);
     }},
    {"DSGetBufferChunkData",
     [](const Situation& s, Outputs& o) { return DSGetBufferChunkData(s.ds, s.buffer, nullptr, &o.size); }},
    {"GCRegisterEvent",
     [](const Situation& s, Outputs& o) { return GCRegisterEvent(s.ds, EVENT_NEW_BUFFER, &o.handle); },
     unregister},
    {"GCUnregisterEvent", unregister},
    {"EventGetData",
     [](const Situation& s, Outputs& o) { return EventGetData(s.event, o.bytes, &o.size, 0); }},
    {"EventGetDataInfo",
     [](const Situation& s, Outputs& o) {
         return EventGetDataInfo(s.event, nullptr, 0, EVENT_DATA_ID, &o.type, o.bytes, &o.size);
     }},
    {"EventGetInfo",
     [](const Situation& s, Outputs& o) {
         return EventGetInfo(s.event, EVENT_NUM_FIRED, &o.type, o.bytes, &o.size);
     }},
    {"EventFlush", [](const Situation& s, Outputs&) { return EventFlush(s.event); }},
    {"EventKill", [](const Situation& s, Outputs&) { return EventKill(s.event); }},
    {"GCReadPort",
     [](const Situation& s, Outputs& o) {
         o.size = 4;
         return GCReadPort(s.port, 0, o.bytes, &o.size);
     }},
    {"GCWritePort",
     [](const Situation& s, Outputs& o) {
         o.size = 4;
         return GCWritePort(s.port, 0, o.bytes, &o.size);
     }},
    {"GCReadPortStacked",
     [](const Situation& s, Outputs& o) {
         PORT_REGISTER_STACK_ENTRY entry = {0, o.bytes, 4};
         o.size = 1;
         return GCReadPortStacked(s.port, &entry, &o.size);
     }},
    {"GCWritePortStacked",
     [](const Situation& s, Outputs& o) {
         PORT_REGISTER_STACK_ENTRY entry = {0, o.bytes, 4};
         o.size = 1;
         return GCWritePortStacked(s.port, &entry, &o.size);
     }},
    {"GCGetPortURL", [](const Situation& s, Outputs& o) { return GCGetPortURL(s.port, o.bytes, &o.size); }},
    {"GCGetNumPortURLs", [](const Situation& s, Outputs& o) { return GCGetNumPortURLs(s.port, &o.number); }},
    {"GCGetPortURLInfo",
     [](const Situation& s, Outputs& o) {
         return GCGetPortURLInfo(s.port, 0, URL_INFO_URL, &o.type, o.bytes, &o.size);
     }},
    {"GCGetPortInfo",
     [](const Situation& s, Outputs& o) {
         return GCGetPortInfo(s.port, PORT_INFO_VENDOR, &o.type, o.bytes, &o.size);
     }},
};

// Functions that cannot throw while they close what is there are not here: destructors end a program that
// throws.
const ThrowingRow every_function_that_calls_the_library[] = {
    {"ZV_DeviceScan",
     {"TLUpdateInterfaceList",
      [](const Situation& s, Outputs& o) { return TLUpdateInterfaceList(s.tl, &o.changed, 0); }}},
    {"ZV_DeviceDisplayName",
     {"TLGetInterfaceInfo",
      [](const Situation& s, Outputs& o) {
          return TLGetInterfaceInfo(s.tl, "FG0", INTERFACE_INFO_DISPLAYNAME, &o.type, o.bytes, &o.size);
      }}},
    {"ZVGR_Open",
     {"TLOpenInterface",
      [](const Situation& s, Outputs& o) { return TLOpenInterface(s.tl, "FG0", &o.handle); },
      close_interface}},
    {"ZV_DeviceInfo",
     {"IFGetInfo",
      [](const Situation& s, Outputs& o) {
          return IFGetInfo(s.iface, INTERFACE_INFO_TLTYPE, &o.type, o.bytes, &o.size);
      }}},
    {"ZV_DeviceInfo",
     {"IFGetDeviceInfo",
      [](const Situation& s, Outputs& o) {
          return IFGetDeviceInfo(s.iface, "Device00", DEVICE_INFO_TLTYPE, &o.type, o.bytes, &o.size);
      }}},
    {"ZV_DeviceInfo",
     {"DevGetInfo",
      [](const Situation& s, Outputs& o) {
          return DevGetInfo(s.dev, DEVICE_INFO_TLTYPE, &o.type, o.bytes, &o.size);
      }}},
    {"ZVGR_UpdateCameraList",
     {"IFUpdateDeviceList",
      [](const Situation& s, Outputs& o) { return IFUpdateDeviceList(s.iface, &o.changed, 0); }}},
    {"ZVGR_CameraOpen2",
     {"IFOpenDevice",
      [](const Situation& s, Outputs& o) {
          return IFOpenDevice(s.iface, "Device00", DEVICE_ACCESS_CONTROL, &o.handle);
      },
      close_device}},
    {"ZVGR_CameraClose", {"DevClose", close_device}},
    {"ZVGR_StreamCreate",
     {"DevOpenDataStream",
      [](const Situation& s, Outputs& o) { return DevOpenDataStream(s.dev, "Stream000", &o.handle); },
      close_stream}},
    {"ZVGR_BufferAnnounce",
     {"DSAnnounceBuffer",
      [](const Situation& s, Outputs& o) {
          return DSAnnounceBuffer(s.ds, some_memory, sizeof some_memory, nullptr, &o.handle);
      }}},
    {"ZVGR_BufferAllocAndAnnounce",
     {"DSAllocAndAnnounceBuffer",
      [](const Situation& s, Outputs& o) { return DSAllocAndAnnounceBuffer(s.ds, 8, nullptr, &o.handle); }}},
    {"ZVGR_BufferRevoke",
     {"DSRevokeBuffer",
      [](const Situation& s, Outputs&) { return DSRevokeBuffer(s.ds, s.buffer, nullptr, nullptr); }}},
    {"ZVGR_BufferToQueue",
     {"DSQueueBuffer", [](const Situation& s, Outputs&) { return DSQueueBuffer(s.ds, s.buffer); }}},
    {"ZVGR_BufferToQueue",
     {"DSFlushQueue",
      [](const Situation& s, Outputs&) { return DSFlushQueue(s.ds, ACQ_QUEUE_INPUT_TO_OUTPUT); }}},
    {"ZVGR_CameraStartAcquire_GenTL",
     {"DSStartAcquisition",
      [](const Situation& s, Outputs&) { return DSStartAcquisition(s.ds, ACQ_START_FLAGS_DEFAULT, 1); }}},
    {"ZVGR_CameraStopAcquire_GenTL", {"DSStopAcquisition", stop}},
    {"ZVGR_StreamGetInfo",
     {"DSGetInfo",
      [](const Situation& s, Outputs& o) {
          return DSGetInfo(s.ds, STREAM_INFO_PAYLOAD_SIZE, &o.type, o.bytes, &o.size);
      }}},
    {"ZVGR_CameraReadReg",
     {"GCReadPort", [](const Situation& s, Outputs& o) { return GCReadPort(s.port, 0, o.bytes, &o.size); }}},
    {"ZVGR_GrabberWriteReg",
     {"GCWritePort", [](const Situation& s, Outputs& o) { return GCWritePort(s.dev, 0, o.bytes, &o.size); }}},
    {"ZVGR_GrabberReadReg",
     {"GCReadPortStacked",
      [](const Situation& s, Outputs& o) {
          PORT_REGISTER_STACK_ENTRY entry = {0, o.bytes, 4};
          return GCReadPortStacked(s.iface, &entry, &o.size);
      }}},
    {"ZVGR_CameraWriteReg",
     {"GCWritePortStacked",
      [](const Situation& s, Outputs& o) {
          PORT_REGISTER_STACK_ENTRY entry = {0, o.bytes, 4};
          return GCWritePortStacked(s.ds, &entry, &o.size);
      }}},
    {"ZVGR_GetXmlUrl",
     {"GCGetPortURL", [](const Situation& s, Outputs& o) { return GCGetPortURL(s.port, o.bytes, &o.size); }}},
    {"ZVGR_GetXmlUrl",
     {"GCGetPortURLInfo",
      [](const Situation& s, Outputs& o) {
          return GCGetPortURLInfo(s.port, 0, URL_INFO_URL, &o.type, o.bytes, &o.size);
      }}},
};

class Faulted : public RunningQueuedStream {
protected:
    Situation situation() const { return {tl, iface, dev, port, ds, event, buffers[0]->handle}; }

    void prepare(const Row& row, Outputs& outputs)
    {
        if (row.prepare) {
            EXPECT_EQ(GC_ERR_SUCCESS, row.prepare(situation(), outputs));
        }
        outputs.size = sizeof outputs.bytes;
    }

    /// The same situation, made anew.
    void again()
    {
        TearDown();
        buffers.clear();
        SetUp();
    }
};

class WithoutMemory : public Faulted, public testing::WithParamInterface<Row> {};
class WithAThrowingLibrary : public Faulted, public testing::WithParamInterface<ThrowingRow> {};

bool is_code_of_the_producer(GC_ERROR code)
{
    return code == GC_ERR_SUCCESS || (code <= GC_ERR_ERROR && code >= GC_ERR_INVALID_INDEX);
}

} // namespace

TEST_P(WithoutMemory, AnswersACodeWhicheverAllocationFails)
{
    fake.allow_stale_handles();
    bool struck = true;
    for (long n = 1; struck && n < 1000; ++n) {
        Outputs outputs;
        prepare(GetParam(), outputs);
        const Situation handles = situation();
        GC_ERROR code = GC_ERR_CUSTOM_ID;
        {
            const auto faults = FailingAllocations::nth(n);
            code = GetParam().invoke(handles, outputs);
            struck = faults.struck();
        }
        EXPECT_TRUE(is_code_of_the_producer(code)) << code << " when allocation " << n << " failed";
        again();
        fake.allow_stale_handles();
    }
    EXPECT_FALSE(struck);
}

INSTANTIATE_TEST_SUITE_P(EveryFunction, WithoutMemory, testing::ValuesIn(every_function), name_of_row<Row>);

TEST_P(WithAThrowingLibrary, AnswersTheGeneralError)
{
    Outputs outputs;
    prepare(GetParam().call, outputs);
    bool has_thrown = false;
    fake.on(GetParam().library_function, [&](const Call&) {
        if (!std::exchange(has_thrown, true))
            throw 1;
    });
    forget();
    EXPECT_EQ(GC_ERR_ERROR, GetParam().call.invoke(situation(), outputs));
    EXPECT_TRUE(has_thrown);
    EXPECT_LOGGED(Priority::error, "Exit, Returning error GC_ERR_ERROR (0xFFFFFC17), unknown exception",
                  GetParam().call.function);
}

INSTANTIATE_TEST_SUITE_P(EveryCaller, WithAThrowingLibrary,
                         testing::ValuesIn(every_function_that_calls_the_library), name_of_row<ThrowingRow>);

TEST(EveryFunction, StandsInTheTableOnce)
{
    std::set<std::string> names;
    for (const Row& row : every_function)
        names.insert(row.function);
    EXPECT_EQ(57U, names.size());
    EXPECT_EQ(57U, std::size(every_function));
}

TEST_F(RunningQueuedStream, NamesTheExceptionThatItCaught)
{
    Outputs outputs;
    GC_ERROR code = GC_ERR_SUCCESS;
    log.set_level(Priority::error); // so that the first allocation is the function's own
    {
        const auto faults = FailingAllocations::nth(1);
        code = GCGetInfo(TL_INFO_DISPLAYNAME, &outputs.type, outputs.bytes, &outputs.size);
    }
    EXPECT_EQ(GC_ERR_ERROR, code);
    EXPECT_LOG_LINES({Priority::error,
                      "Exit, Returning error GC_ERR_ERROR (0xFFFFFC17), exception: std::bad_alloc",
                      "GCGetInfo"});
}

TEST_F(RunningQueuedStream, LosesAFrameWhoseDeliveryThrows)
{
    fake.on("ZVGR_BufferGetInfo", [](const Call&) { throw 1; });
    deliver(*buffers[0]);
    EXPECT_LOGGED(Priority::error,
                  "A frame was lost: its delivery ran out of memory or failed in the runtime",
                  "StreamModule::deliver_from_library", "StreamModule");
}

TEST_F(RunningCyclicStream, LosesAFrameWhoseDeliveryThrows)
{
    fake.on("ZVGR_StreamGetAux", [](const Call&) { throw 1; });
    deliver(*buffers[0]);
    EXPECT_LOGGED(Priority::error,
                  "A frame was lost: its delivery ran out of memory or failed in the runtime",
                  "StreamModule::deliver_from_library", "StreamModule");
}
