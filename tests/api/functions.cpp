#include "api/Function.h"

#include <algorithm>
#include <ostream>

namespace zvtest {

namespace {

void* const owner = reinterpret_cast<void*>(9);

using H = const Handles&;
using A = Arguments;
using Lines = std::vector<ExpectedLine>;

const auto debug = Priority::debug;
const auto trace = Priority::trace;

Refusal invalid_handle(Lines lines) { return {GC_ERR_INVALID_HANDLE, std::move(lines), std::nullopt}; }

/// How GCGetNumPortURLs and GCGetPortURLInfo answer a handle that names nothing.
Refusal no_url(const std::string& asked, Lines behind)
{
    Lines lines{info_line("Get URL " + asked + " for device type Invalid handle"),
                error_line("case Invalid handle: GC_ERR_NOT_IMPLEMENTED")};
    lines.insert(lines.end(), behind.begin(), behind.end());
    return {GC_ERR_NOT_IMPLEMENTED, std::move(lines), std::nullopt};
}

Refusal no_url_count()
{
    Refusal refusal = no_url("count", {FAILED_WITH(GC_ERR_NOT_IMPLEMENTED)});
    refusal.written_number = 0;
    return refusal;
}

Refusal missing_with_text(const char* text)
{
    return {GC_ERR_INVALID_PARAMETER, {error_line(text), FAILED_WITH(GC_ERR_INVALID_PARAMETER)}, text};
}

const char* const unknown_system = "TLUpdateInterfaceList - GC_ERR_INVALID_HANDLE: invalid system handle";

const std::vector<Needed> type_and_size{Needed::type, Needed::size};
/// What most queries need: also room, where there is a buffer for it.
const std::vector<Needed> all_of_a_query{Needed::type, Needed::size, Needed::room};
const std::vector<Needed> data_and_size{Needed::text, Needed::size};
const std::vector<Needed> entries_and_count{Needed::entries, Needed::size};

Function function(const char* name, Kind kind, const char* enter, GC_ERROR (*call)(A& a))
{
    Function row{name, kind, enter, call};
    row.missing = {GC_ERR_INVALID_PARAMETER, {FAILED_WITH(GC_ERR_INVALID_PARAMETER)}, std::nullopt};
    return row;
}

void close_library(H, A&) { EXPECT_EQ(GC_ERR_SUCCESS, GCCloseLib()); }
void close_system(H handles, A&) { EXPECT_EQ(GC_ERR_SUCCESS, TLClose(handles.tl)); }
void close_interface(H handles, A&) { EXPECT_EQ(GC_ERR_SUCCESS, IFClose(handles.iface)); }
void close_stream(H handles, A&) { EXPECT_EQ(GC_ERR_SUCCESS, DSClose(handles.ds)); }
void stop(H handles, A&) { EXPECT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(handles.ds, ACQ_STOP_FLAGS_DEFAULT)); }
void unregister(H handles, A&) { EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(handles.ds, EVENT_NEW_BUFFER)); }
void find_another_grabber(H, A&) { FakeGrabberLibrary::instance().has_grabbers(3); }
void find_another_camera(H, A&) { FakeGrabberLibrary::instance().grabber(0).has_cameras(2); }
void leave_room_for_one(H, A& a) { *a.size = 1; }
void ask_for_a_strange_device(H, A& a) { a.id = "A device that nobody has ever seen"; }
void leave_a_text(H handles, A&) // as the last error, too long to copy without memory
{
    size_t size = 0;
    EXPECT_EQ(GC_ERR_INVALID_INDEX, IFGetDeviceID(handles.iface, 99, nullptr, &size));
}

} // namespace

const std::vector<Function> functions = {
    // The library.
    function("GCInitLib", Kind::none, "Enter GCInitLib", [](A&) { return GCInitLib(); }).after(close_library),
    function("GCCloseLib", Kind::none, "Enter GCCloseLib", [](A&) { return GCCloseLib(); }),
    function("GCGetInfo", Kind::none, "Enter GCGetInfo, info= 7",
             [](A& a) { return GCGetInfo(a.command, a.type, a.text, a.size); })
        .with_command(TL_INFO_DISPLAYNAME)
        .needs(all_of_a_query, Order::before_handle),
    function("GCGetLastError", Kind::none, "Enter GCGetLastError",
             [](A& a) { return GCGetLastError(a.type, a.text, a.size); })
        .at(debug)
        .needs_silently({Needed::code, Needed::size}, Order::before_handle)
        .after(leave_a_text),

    // Ports.
    function("GCReadPort", Kind::port, "Enter with handle=0x{handle16}, address=0xabcdef",
             [](A& a) { return GCReadPort(a.handle, 0xABCDEF, a.text, a.size); })
        .at(trace)
        .with_room(4)
        .needs(data_and_size, Order::behind_null_handle)
        .answers_handle(HandleState::null, invalid_handle({}))
        .answers_handle(HandleState::without_system, invalid_handle({}))
        .answers_handle(HandleState::unknown, invalid_handle({{debug, "GC_ERR_INVALID_HANDLE"}})),
    function("GCWritePort", Kind::port,
             "Enter with handle=0x{handle16}, address=0xABCDEF, size={size}, data=-1515870811",
             [](A& a) { return GCWritePort(a.handle, 0xABCDEF, a.text, a.size); })
        .at(trace)
        .with_room(4)
        .needs(data_and_size, Order::first)
        .answers_handle(HandleState::unknown,
                        invalid_handle({error_line("GCWritePort - GC_ERR_INVALID_HANDLE"),
                                        FAILED_WITH(GC_ERR_INVALID_HANDLE)})),
    function("GCReadPortStacked", Kind::port, "Enter GCReadPortStacked",
             [](A& a) { return GCReadPortStacked(a.handle, a.entries, a.size); })
        .at(debug)
        .with_room(1)
        .needs_silently(entries_and_count, Order::before_handle)
        .answers_handle(HandleState::unknown,
                        invalid_handle({error_line("GCReadPortStacked - GC_ERR_INVALID_HANDLE")})),
    function("GCWritePortStacked", Kind::port, "Enter GCWritePortStacked",
             [](A& a) { return GCWritePortStacked(a.handle, a.entries, a.size); })
        .at(debug)
        .with_room(1)
        .needs_silently(entries_and_count, Order::behind_null_handle)
        .answers_handle(HandleState::null, invalid_handle({}))
        .answers_handle(HandleState::without_system, invalid_handle({}))
        .answers_handle(HandleState::unknown,
                        invalid_handle({error_line("GCWritePortStacked - GC_ERR_INVALID_HANDLE")})),
    function("GCGetPortURL", Kind::port, "Enter GCGetPortURL, port handle=0x{handle16}",
             [](A& a) { return GCGetPortURL(a.handle, a.text, a.size); })
        .needs({Needed::size}, Order::before_handle)
        .answers_handle(HandleState::unknown, {GC_ERR_NOT_IMPLEMENTED,
                                               {error_line("case Invalid handle: GC_ERR_NOT_IMPLEMENTED")},
                                               std::nullopt}),
    function("GCGetNumPortURLs", Kind::port, "Enter GCGetNumPortURLs, handle=0x{handle16}",
             [](A& a) { return GCGetNumPortURLs(a.handle, a.number); })
        .needs_silently({Needed::number}, Order::before_handle)
        .answers_handle(HandleState::unknown, no_url_count()),
    function("GCGetPortURLInfo", Kind::port,
             "Enter GCGetPortURLInfo, handle=0x{handle16}, URL index=0, info=0, size={size}",
             [](A& a) { return GCGetPortURLInfo(a.handle, 0, a.command, a.type, a.text, a.size); })
        .with_command(URL_INFO_URL)
        .needs(all_of_a_query, Order::before_handle)
        .answers_handle(HandleState::unknown, no_url("info", {FAILED_WITH(GC_ERR_NOT_IMPLEMENTED)})),
    function("GCGetPortInfo", Kind::port, "Enter GCGetPortInfo, info=1, buffer size={size}",
             [](A& a) { return GCGetPortInfo(a.handle, a.command, a.type, a.text, a.size); })
        .with_command(PORT_INFO_VENDOR)
        .needs(all_of_a_query, Order::before_handle)
        .answers_handle(HandleState::unknown, invalid_handle({})),

    // Events.
    function("GCRegisterEvent", Kind::source,
             "Enter GCRegisterEvent, source handle=0x{handle16}, event type=1",
             [](A& a) { return GCRegisterEvent(a.handle, EVENT_NEW_BUFFER, a.handle_out); })
        .needs({Needed::handle}, Order::behind_null_handle)
        .answers_handle(HandleState::null, invalid_handle({}))
        .answers_handle(HandleState::unknown,
                        invalid_handle({error_line("Request not implemented for handle=Invalid handle"),
                                        FAILED_WITH(GC_ERR_INVALID_HANDLE)}))
        .after(unregister),
    function("GCUnregisterEvent", Kind::source,
             "Enter GCUnregisterEvent, source handle=0x{handle16}, event id= 1",
             [](A& a) { return GCUnregisterEvent(a.handle, EVENT_NEW_BUFFER); })
        .answers_handle(HandleState::unknown, invalid_handle({})),
    function("EventGetData", Kind::event,
             "Enter EventGetData, handle=0x{handle32}, buffer size={size}, timeout=0 ms",
             [](A& a) { return EventGetData(a.handle, a.text, a.size, 0); })
        .at(debug)
        .entering_late()
        .needs({Needed::size}, Order::behind_handle),
    function("EventGetDataInfo", Kind::event, "Enter EventGetDataInfo, handle=0x{handle32}, info=0",
             [](A& a) { return EventGetDataInfo(a.handle, nullptr, 0, a.command, a.type, a.text, a.size); })
        .at(debug)
        .with_command(EVENT_DATA_ID)
        .needs(all_of_a_query, Order::before_handle),
    function("EventGetInfo", Kind::event, "Enter EventGetInfo, handle=0x{handle32}, info=2",
             [](A& a) { return EventGetInfo(a.handle, a.command, a.type, a.text, a.size); })
        .at(debug)
        .with_command(EVENT_NUM_FIRED)
        .needs(all_of_a_query, Order::before_handle),
    function("EventFlush", Kind::event, "Enter EventFlush", [](A& a) { return EventFlush(a.handle); }),
    function("EventKill", Kind::event, "Enter EventKill, event handle=0x{handle16}",
             [](A& a) { return EventKill(a.handle); }),

    // The system.
    function("TLOpen", Kind::none, "Enter TLOpen", [](A& a) { return TLOpen(a.handle_out); })
        .needs_silently({Needed::handle}, Order::before_handle)
        .after(close_system),
    function("TLClose", Kind::system, "Enter TLClose", [](A& a) { return TLClose(a.handle); }),
    function("TLGetInfo", Kind::system, "Enter TLGetInfo, handle=0x{handle16}, info=7",
             [](A& a) { return TLGetInfo(a.handle, a.command, a.type, a.text, a.size); })
        .with_command(TL_INFO_DISPLAYNAME)
        .needs(all_of_a_query, Order::behind_handle),
    function("TLGetNumInterfaces", Kind::system, "Enter TLGetNumInterfaces",
             [](A& a) { return TLGetNumInterfaces(a.handle, a.number); })
        .needs_silently({Needed::number}, Order::behind_handle),
    function("TLGetInterfaceID", Kind::system,
             "Enter TLGetInterfaceID, handle=0x{handle16}, index=0, size={size}",
             [](A& a) { return TLGetInterfaceID(a.handle, 0, a.text, a.size); })
        .needs({Needed::size}, Order::behind_handle)
        .after(leave_room_for_one),
    function("TLGetInterfaceInfo", Kind::system, "Enter TLGetInterfaceInfo, hTL=0x{handle16}, info=1",
             [](A& a) { return TLGetInterfaceInfo(a.handle, a.id, a.command, a.type, a.text, a.size); })
        .with_command(INTERFACE_INFO_DISPLAYNAME)
        .needs({Needed::id, Needed::type, Needed::size}, Order::behind_handle),
    function("TLOpenInterface", Kind::system, "Enter TLOpenInterface",
             [](A& a) { return TLOpenInterface(a.handle, a.id, a.handle_out); })
        .timed()
        .needs({Needed::id, Needed::handle}, Order::behind_handle)
        .after(close_interface),
    function("TLUpdateInterfaceList", Kind::system, "Enter TLUpdateInterfaceList",
             [](A& a) { return TLUpdateInterfaceList(a.handle, a.changed, 0); })
        .answers_handle(HandleState::unknown,
                        {GC_ERR_INVALID_HANDLE, {info_line(unknown_system)}, unknown_system})
        .after(find_another_grabber),

    // Interfaces.
    function("IFClose", Kind::iface, "Enter IFClose", [](A& a) { return IFClose(a.handle); }),
    function("IFGetInfo", Kind::iface, "Enter IFGetInfo info= 1 ",
             [](A& a) { return IFGetInfo(a.handle, a.command, a.type, a.text, a.size); })
        .with_command(INTERFACE_INFO_DISPLAYNAME)
        .needs(all_of_a_query, Order::before_handle),
    function("IFGetNumDevices", Kind::iface, "Enter IFGetNumDevices",
             [](A& a) { return IFGetNumDevices(a.handle, a.number); })
        .needs_silently({Needed::number}, Order::before_handle),
    function("IFGetDeviceID", Kind::iface, "Enter IFGetDeviceID, handle=0x{handle16}, index=99, size={size}",
             [](A& a) { return IFGetDeviceID(a.handle, 99, a.text, a.size); })
        .needs({Needed::size}, Order::before_handle)
        .answers_missing(missing_with_text("GC_ERR_INVALID_PARAMETER: piSize invalid parameter")),
    function("IFUpdateDeviceList", Kind::iface, "Enter IFUpdateDeviceList",
             [](A& a) { return IFUpdateDeviceList(a.handle, a.changed, 0); })
        .timed()
        .after(find_another_camera),
    function("IFGetDeviceInfo", Kind::iface, "Enter IFGetDeviceInfo handle=0x{handle16}, info=2 ",
             [](A& a) { return IFGetDeviceInfo(a.handle, a.id, a.command, a.type, a.text, a.size); })
        .with_command(DEVICE_INFO_MODEL)
        .needs({Needed::id, Needed::type, Needed::size, Needed::room}, Order::before_handle),
    function("IFOpenDevice", Kind::iface, "Enter IFOpenDevice handle = 0x{handle16}, flags=0x4",
             [](A& a) { return IFOpenDevice(a.handle, a.id, DEVICE_ACCESS_EXCLUSIVE, a.handle_out); })
        .timed()
        .needs({Needed::id, Needed::handle}, Order::before_handle)
        .after(ask_for_a_strange_device),
    function("IFGetParentTL", Kind::iface, "Enter IFGetParentTL",
             [](A& a) { return IFGetParentTL(a.handle, a.handle_out); })
        .needs_silently({Needed::handle}, Order::before_handle),

    // Devices.
    function("DevGetPort", Kind::device, "Enter DevGetPort, handle=0x{handle16}",
             [](A& a) { return DevGetPort(a.handle, a.handle_out); })
        .needs_silently({Needed::handle}, Order::before_handle),
    function("DevGetNumDataStreams", Kind::device, "Enter DevGetNumDataStreams, handle=0x{handle16}",
             [](A& a) { return DevGetNumDataStreams(a.handle, a.number); })
        .needs_silently({Needed::number}, Order::before_handle),
    function("DevGetDataStreamID", Kind::device,
             "Enter DevGetDataStreamID, handle=0x{handle16}, index=1, size={size}",
             [](A& a) { return DevGetDataStreamID(a.handle, 1, a.text, a.size); })
        .needs_silently({Needed::size}, Order::before_handle),
    function("DevOpenDataStream", Kind::device, "Enter DevOpenDataStream, sDataStreamID={id}",
             [](A& a) { return DevOpenDataStream(a.handle, a.id, a.handle_out); })
        .needs({Needed::id, Needed::handle}, Order::before_handle)
        .after(close_stream),
    function("DevGetInfo", Kind::device, "Enter DevGetInfo, handle=0x{handle16} info= 2 ",
             [](A& a) { return DevGetInfo(a.handle, a.command, a.type, a.text, a.size); })
        .with_command(DEVICE_INFO_MODEL)
        .needs(all_of_a_query, Order::before_handle),
    function("DevClose", Kind::device, "Enter DevClose", [](A& a) { return DevClose(a.handle); }),
    function("DevGetParentIF", Kind::device, "Enter DevGetParentIF",
             [](A& a) { return DevGetParentIF(a.handle, a.handle_out); })
        .needs_silently({Needed::handle}, Order::before_handle),

    // Streams and buffers.
    function("DSAnnounceBuffer", Kind::stream,
             "Enter DSAnnounceBuffer, stream handle=0x{handle32}, requested buffer=0x{memory32}, size=64, "
             "private=0x9",
             [](A& a) { return DSAnnounceBuffer(a.handle, a.memory, 64, owner, a.handle_out); })
        .at(debug)
        .needs_silently({Needed::memory, Needed::handle}, Order::before_handle),
    function("DSAllocAndAnnounceBuffer", Kind::stream,
             "Enter DSAllocAndAnnounceBuffer, stream handle=0x{handle32}, size=128, private=0x9",
             [](A& a) { return DSAllocAndAnnounceBuffer(a.handle, 128, owner, a.handle_out); })
        .at(debug)
        .needs_silently({Needed::handle}, Order::before_handle),
    function("DSFlushQueue", Kind::stream, "Enter DSFlushQueue, stream handle=0x{handle16}, operation=0",
             [](A& a) { return DSFlushQueue(a.handle, ACQ_QUEUE_INPUT_TO_OUTPUT); })
        .at(debug),
    function("DSStartAcquisition", Kind::stream,
             "Enter DSStartAcquisition, stream handle=0x{handle32}, flags=0x1F, frames={frames}",
             [](A& a) { return DSStartAcquisition(a.handle, 0x1F, a.frames); })
        .needs_silently({Needed::frames}, Order::before_handle)
        .after(stop),
    function("DSStopAcquisition", Kind::stream, "Enter DSStopAcquisition, flags=0x2E",
             [](A& a) { return DSStopAcquisition(a.handle, 0x2E); }),
    function("DSGetInfo", Kind::stream, "Enter DSGetInfo, stream handle=0x{handle16}, iInfoCmd=0",
             [](A& a) { return DSGetInfo(a.handle, a.command, a.type, a.text, a.size); })
        .at(debug)
        .with_command(STREAM_INFO_ID)
        .needs(all_of_a_query, Order::before_handle),
    function("DSGetBufferID", Kind::stream, "Enter DSGetBufferID",
             [](A& a) { return DSGetBufferID(a.handle, 0, a.handle_out); })
        .needs_silently({Needed::handle}, Order::before_handle),
    function("DSClose", Kind::stream, "Enter DSClose", [](A& a) { return DSClose(a.handle); }),
    function("DSRevokeBuffer", Kind::stream,
             "Enter DSRevokeBuffer, stream handle=0x{handle32}, buffer handle=0x{buffer32}, user "
             "buffer=0xA5A5A5A5",
             [](A& a) { return DSRevokeBuffer(a.handle, a.buffer, a.handle_out, a.user_out); })
        .answers_buffer(invalid_handle({FAILED_WITH(GC_ERR_INVALID_HANDLE)})),
    function("DSQueueBuffer", Kind::stream,
             "Enter DSQueueBuffer, stream handle=0x{handle32}, buffer handle=0x{buffer32}",
             [](A& a) { return DSQueueBuffer(a.handle, a.buffer); })
        .at(trace)
        .answers_buffer(
            invalid_handle({error_line("DSQueueBuffer - GC_ERR_INVALID_HANDLE: invalid buffer handle")})),
    function("DSGetBufferInfo", Kind::stream,
             "Enter DSGetBufferInfo, info=8, stream handle=0x{handle32}, buffer handle=0x{buffer32}",
             [](A& a) { return DSGetBufferInfo(a.handle, a.buffer, a.command, a.type, a.text, a.size); })
        .at(trace)
        .with_command(BUFFER_INFO_TLTYPE)
        .needs(all_of_a_query, Order::before_handle)
        .answers_buffer(invalid_handle(
            {error_line("invalid buffer handle {buffer16}"), FAILED_WITH(GC_ERR_INVALID_HANDLE)})),
    function("DSGetBufferChunkData", Kind::none, "Enter DSGetBufferChunkData",
             [](A& a) { return DSGetBufferChunkData(a.handle, a.buffer, nullptr, a.size); }),
    function("DSGetParentDev", Kind::stream, "Enter DSGetParentDev",
             [](A& a) { return DSGetParentDev(a.handle, a.handle_out); })
        .needs_silently({Needed::handle}, Order::before_handle),
    function("DSGetNumBufferParts", Kind::stream, "Enter DSGetNumBufferParts",
             [](A& a) { return DSGetNumBufferParts(a.handle, a.buffer, a.number); })
        .at(debug)
        .needs_silently({Needed::number}, Order::before_handle),
    function(
        "DSGetBufferPartInfo", Kind::stream, "Enter DSGetBufferPartInfo",
        [](A& a) { return DSGetBufferPartInfo(a.handle, a.buffer, 0, a.command, a.type, a.text, a.size); })
        .at(debug)
        .with_command(BUFFER_PART_INFO_BASE)
        .needs(type_and_size, Order::behind_handle)
        .answers_buffer(invalid_handle({info_line("DSGetBufferPartInfo - GC_ERR_INVALID_HANDLE")})),
};

const Function& function_named(const std::string& name)
{
    const auto found = std::find_if(functions.begin(), functions.end(),
                                    [&name](const Function& row) { return row.name == name; });
    return *found;
}

std::ostream& operator<<(std::ostream& out, const Function& function) { return out << function.name; }

} // namespace zvtest
