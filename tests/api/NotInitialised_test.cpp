#include <fstream>
#include <set>

#include "api/module_calls.h"

// What every exported function but GCInitLib does outside of GCInitLib and GCCloseLib: it writes its enter
// line, if it has one at that point, and refuses.

namespace zvtest {

namespace {

void* const some_handle = reinterpret_cast<void*>(0x1234);
constexpr const char* handle_digits = "0000000000001234";

using Out = ModuleOutputs;

SINGLE_CHUNK_DATA* chunks_of(Out& out) { return reinterpret_cast<SINGLE_CHUNK_DATA*>(out.text.data()); }
PORT_REGISTER_STACK_ENTRY* entries_of(Out& out)
{
    return reinterpret_cast<PORT_REGISTER_STACK_ENTRY*>(out.text.data());
}

struct GuardedFunction {
    const char* name;
    Priority traffic;  // of the enter line
    std::string enter; // empty: none before the guard
    GC_ERROR (*call)(Out& out);
};

std::ostream& operator<<(std::ostream& stream, const GuardedFunction& function)
{
    return stream << function.name;
}

const auto information = Priority::information;
const auto debug = Priority::debug;
const auto trace = Priority::trace;

const std::string handle_text = std::string("handle=0x") + handle_digits;

const std::vector<GuardedFunction> library_and_port_functions = {
    {"GCCloseLib", information, "Enter GCCloseLib", [](Out&) { return GCCloseLib(); }},
    {"GCGetInfo", information, "Enter GCGetInfo, info= 0",
     [](Out& out) { return GCGetInfo(TL_INFO_ID, &out.type, out.text.data(), &out.size); }},
    {"GCGetLastError", debug, "Enter GCGetLastError",
     [](Out& out) { return GCGetLastError(&out.type, out.text.data(), &out.size); }},
    {"GCReadPort", trace, "Enter with " + handle_text + ", address=0xabcdef",
     [](Out& out) { return GCReadPort(some_handle, 0xABCDEF, out.text.data(), &out.size); }},
    {"GCWritePort", trace, "Enter with " + handle_text + ", address=0xABCDEF, size=64, data=-1515870811",
     [](Out& out) { return GCWritePort(some_handle, 0xABCDEF, out.text.data(), &out.size); }},
    {"GCReadPortStacked", debug, "Enter GCReadPortStacked",
     [](Out& out) { return GCReadPortStacked(some_handle, entries_of(out), &out.size); }},
    {"GCWritePortStacked", debug, "Enter GCWritePortStacked",
     [](Out& out) { return GCWritePortStacked(some_handle, entries_of(out), &out.size); }},
    {"GCGetPortURL", information, "Enter GCGetPortURL, port " + handle_text,
     [](Out& out) { return GCGetPortURL(some_handle, out.text.data(), &out.size); }},
    {"GCGetNumPortURLs", information, "Enter GCGetNumPortURLs, " + handle_text,
     [](Out& out) { return GCGetNumPortURLs(some_handle, &out.number); }},
    {"GCGetPortURLInfo", information,
     "Enter GCGetPortURLInfo, " + handle_text + ", URL index=0, info=0, size=64",
     [](Out& out) {
         return GCGetPortURLInfo(some_handle, 0, URL_INFO_URL, &out.type, out.text.data(), &out.size);
     }},
    {"GCGetPortInfo", information, "Enter GCGetPortInfo, info=0, buffer size=64",
     [](Out& out) {
         return GCGetPortInfo(some_handle, PORT_INFO_ID, &out.type, out.text.data(), &out.size);
     }},
};

const std::vector<GuardedFunction> event_functions = {
    {"GCRegisterEvent", information, "Enter GCRegisterEvent, source " + handle_text + ", event type=1",
     [](Out& out) { return GCRegisterEvent(some_handle, EVENT_NEW_BUFFER, &out.handle); }},
    {"GCUnregisterEvent", information, "Enter GCUnregisterEvent, source " + handle_text + ", event id= 1",
     [](Out&) { return GCUnregisterEvent(some_handle, EVENT_NEW_BUFFER); }},
    {"EventGetData", trace, "", // looks at its handle before it enters, and at the library before that
     [](Out& out) { return EventGetData(some_handle, out.text.data(), &out.size, GENTL_INFINITE); }},
    {"EventGetDataInfo", debug, "Enter EventGetDataInfo, handle=0x1234, info=0",
     [](Out& out) {
         return EventGetDataInfo(some_handle, nullptr, 0, EVENT_DATA_ID, &out.type, out.text.data(),
                                 &out.size);
     }},
    {"EventGetInfo", debug, "Enter EventGetInfo, handle=0x1234, info=0",
     [](Out& out) {
         return EventGetInfo(some_handle, EVENT_EVENT_TYPE, &out.type, out.text.data(), &out.size);
     }},
    {"EventFlush", information, "Enter EventFlush", [](Out&) { return EventFlush(some_handle); }},
    {"EventKill", information, std::string("Enter EventKill, event handle=0x") + handle_digits,
     [](Out&) { return EventKill(some_handle); }},
};

const std::vector<GuardedFunction> data_stream_functions = {
    {"DSAnnounceBuffer", debug,
     "Enter DSAnnounceBuffer, stream handle=0x1234, requested buffer=0x5678, size=16, private=0x9",
     [](Out& out) {
         return DSAnnounceBuffer(some_handle, reinterpret_cast<void*>(0x5678), 16, reinterpret_cast<void*>(9),
                                 &out.handle);
     }},
    {"DSAllocAndAnnounceBuffer", debug,
     "Enter DSAllocAndAnnounceBuffer, stream handle=0x1234, size=16, private=0x9",
     [](Out& out) {
         return DSAllocAndAnnounceBuffer(some_handle, 16, reinterpret_cast<void*>(9), &out.handle);
     }},
    {"DSFlushQueue", debug,
     std::string("Enter DSFlushQueue, stream handle=0x") + handle_digits + ", operation=0",
     [](Out&) { return DSFlushQueue(some_handle, ACQ_QUEUE_INPUT_TO_OUTPUT); }},
    {"DSStartAcquisition", information,
     "Enter DSStartAcquisition, stream handle=0x1234, flags=0x0, frames=-1",
     [](Out&) { return DSStartAcquisition(some_handle, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE); }},
    {"DSStopAcquisition", information, "Enter DSStopAcquisition, flags=0x0",
     [](Out&) { return DSStopAcquisition(some_handle, ACQ_STOP_FLAGS_DEFAULT); }},
    {"DSGetInfo", debug, std::string("Enter DSGetInfo, stream handle=0x") + handle_digits + ", iInfoCmd=0",
     [](Out& out) { return DSGetInfo(some_handle, STREAM_INFO_ID, &out.type, out.text.data(), &out.size); }},
    {"DSGetBufferID", information, "Enter DSGetBufferID",
     [](Out& out) { return DSGetBufferID(some_handle, 0, &out.handle); }},
    {"DSClose", information, "Enter DSClose", [](Out&) { return DSClose(some_handle); }},
    {"DSRevokeBuffer", information,
     "Enter DSRevokeBuffer, stream handle=0x1234, buffer handle=0x1234, user buffer=0xA5A5A5A5",
     [](Out& out) { return DSRevokeBuffer(some_handle, some_handle, &out.handle, &out.handle); }},
    {"DSQueueBuffer", trace, "Enter DSQueueBuffer, stream handle=0x1234, buffer handle=0x1234",
     [](Out&) { return DSQueueBuffer(some_handle, some_handle); }},
    {"DSGetBufferInfo", trace, "Enter DSGetBufferInfo, info=0, stream handle=0x1234, buffer handle=0x1234",
     [](Out& out) {
         return DSGetBufferInfo(some_handle, some_handle, BUFFER_INFO_BASE, &out.type, out.text.data(),
                                &out.size);
     }},
    {"DSGetBufferChunkData", information, "Enter DSGetBufferChunkData",
     [](Out& out) { return DSGetBufferChunkData(some_handle, some_handle, chunks_of(out), &out.size); }},
    {"DSGetParentDev", information, "Enter DSGetParentDev",
     [](Out& out) { return DSGetParentDev(some_handle, &out.handle); }},
    {"DSGetNumBufferParts", debug, "Enter DSGetNumBufferParts",
     [](Out& out) { return DSGetNumBufferParts(some_handle, some_handle, &out.number); }},
    {"DSGetBufferPartInfo", debug, "Enter DSGetBufferPartInfo",
     [](Out& out) {
         return DSGetBufferPartInfo(some_handle, some_handle, 0, BUFFER_PART_INFO_BASE, &out.type,
                                    out.text.data(), &out.size);
     }},
};

/// The families that have a table already.
class GuardedModuleFunction : public Library, public testing::WithParamInterface<ModuleFunction> {};
class Guarded : public Library, public testing::WithParamInterface<GuardedFunction> {};

const ExpectedLine not_initialised_line = error_line("No preceding call to GCInitLib");

void expect_refused(const GuardedFunction& function)
{
    FakeLoggerLibrary::instance().clear_lines();
    Out out;
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, function.call(out));
    EXPECT_TRUE(out.are_untouched());
    EXPECT_TRUE(FakeGrabberLibrary::instance().calls().empty());
    std::vector<ExpectedLine> lines;
    if (!function.enter.empty())
        lines.push_back({function.traffic, function.enter, function.name, "ZVGRLibGenTL"});
    lines.push_back({Priority::error, not_initialised_line.message, function.name, "ZVGRLibGenTL"});
    EXPECT_TRUE(logged_exactly(lines));
}

TEST_P(Guarded, IsRefusedBeforeGCInitLib) { expect_refused(GetParam()); }

TEST_P(Guarded, IsRefusedAfterGCCloseLib)
{
    ASSERT_EQ(GC_ERR_SUCCESS, GCInitLib());
    ASSERT_EQ(GC_ERR_SUCCESS, GCCloseLib());
    expect_refused(GetParam());
}

INSTANTIATE_TEST_SUITE_P(GC, Guarded, testing::ValuesIn(library_and_port_functions),
                         name_of_row<testing::TestParamInfo<GuardedFunction>>);
INSTANTIATE_TEST_SUITE_P(Event, Guarded, testing::ValuesIn(event_functions),
                         name_of_row<testing::TestParamInfo<GuardedFunction>>);
INSTANTIATE_TEST_SUITE_P(DS, Guarded, testing::ValuesIn(data_stream_functions),
                         name_of_row<testing::TestParamInfo<GuardedFunction>>);

void expect_refused(const ModuleFunction& function)
{
    FakeLoggerLibrary::instance().clear_lines();
    Out out;
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, function.call(some_handle, out));
    EXPECT_TRUE(out.are_untouched());
    EXPECT_TRUE(FakeGrabberLibrary::instance().calls().empty());
    EXPECT_TRUE(logged_exactly(function.lines(some_handle, {not_initialised_line})));
}

TEST_P(GuardedModuleFunction, IsRefusedBeforeGCInitLib) { expect_refused(GetParam()); }

TEST_P(GuardedModuleFunction, IsRefusedAfterGCCloseLib)
{
    ASSERT_EQ(GC_ERR_SUCCESS, GCInitLib());
    ASSERT_EQ(GC_ERR_SUCCESS, GCCloseLib());
    expect_refused(GetParam());
}

/// TLOpen takes no handle and so stands in no table.
const std::vector<ModuleFunction> opening_functions = {
    {"TLOpen", [](void*, Out& out) { return TLOpen(&out.handle); },
     [](void*) { return std::string("Enter TLOpen"); }},
};

INSTANTIATE_TEST_SUITE_P(TLOpen, GuardedModuleFunction, testing::ValuesIn(opening_functions),
                         name_of_row<testing::TestParamInfo<ModuleFunction>>);
INSTANTIATE_TEST_SUITE_P(TL, GuardedModuleFunction, testing::ValuesIn(system_functions),
                         name_of_row<testing::TestParamInfo<ModuleFunction>>);
INSTANTIATE_TEST_SUITE_P(IF, GuardedModuleFunction, testing::ValuesIn(interface_functions),
                         name_of_row<testing::TestParamInfo<ModuleFunction>>);
INSTANTIATE_TEST_SUITE_P(Dev, GuardedModuleFunction, testing::ValuesIn(device_functions),
                         name_of_row<testing::TestParamInfo<ModuleFunction>>);

class NotInitialised : public Library {};

TEST_F(NotInitialised, TheTablesHoldEveryExportedFunctionButGCInitLib)
{
    std::set<std::string> tested{"GCInitLib"};
    for (const auto* table : {&library_and_port_functions, &event_functions, &data_stream_functions}) {
        for (const GuardedFunction& function : *table)
            tested.insert(function.name);
    }
    for (const auto* table :
         {&opening_functions, &system_functions, &interface_functions, &device_functions}) {
        for (const ModuleFunction& function : *table)
            tested.insert(function.name);
    }

    std::set<std::string> exported;
    std::ifstream list(ZV_EXPORT_LIST);
    for (std::string word; list >> word;) {
        if (word.front() != '"' && word != "LIBRARY" && word != "EXPORTS")
            exported.insert(word);
    }
    EXPECT_EQ(57U, exported.size());
    EXPECT_EQ(exported, tested);
}

TEST_F(NotInitialised, GCWritePortLooksAtItsPointersFirst)
{
    const uint32_t word = 0;
    size_t size = sizeof word;
    for (const void* no_data : {static_cast<const void*>(nullptr), all_ones<const void*>()}) {
        log.clear_lines();
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, GCWritePort(some_handle, 0, no_data, &size));
        EXPECT_LOG_LINES(FAILED_WITH(GC_ERR_INVALID_PARAMETER));
    }
    for (size_t* no_size : {static_cast<size_t*>(nullptr), all_ones<size_t*>()}) {
        log.clear_lines();
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, GCWritePort(some_handle, 0, &word, no_size));
        EXPECT_LOG_LINES(FAILED_WITH(GC_ERR_INVALID_PARAMETER));
    }
}

TEST_F(NotInitialised, EnterLinesReadNoPointerThatIsMissing)
{
    size_t* const no_size = all_ones<size_t*>();
    INFO_DATATYPE type = 0;
    char text[8] = {};
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, TLGetInterfaceID(some_handle, 0, text, no_size));
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, IFGetDeviceID(some_handle, 0, text, no_size));
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, DevGetDataStreamID(some_handle, 0, text, no_size));
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GCGetPortURLInfo(some_handle, 0, 0, &type, text, no_size));
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GCGetPortInfo(some_handle, 0, &type, text, no_size));
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED,
              DSRevokeBuffer(some_handle, some_handle, all_ones<void**>(), all_ones<void**>()));
    for (const char* no_id : {static_cast<const char*>(nullptr), all_ones<const char*>()}) {
        log.clear_lines();
        DS_HANDLE stream = nullptr;
        EXPECT_EQ(GC_ERR_NOT_INITIALIZED, DevOpenDataStream(some_handle, no_id, &stream));
        EXPECT_LOG_LINES(info_line("Enter DevOpenDataStream, sDataStreamID="), not_initialised_line);
    }
}

} // namespace

} // namespace zvtest
