#include "api/info_rows.h"

#include <ostream>

namespace zvtest {

namespace {

constexpr size_t announced_size = 5000;
constexpr uint64_t timestamp = 0xFEDCBA9876543210U;
constexpr uint64_t queued_frame_id = 0x8000000000000007U;
int owner;

Calls device_name_call(const Asked&) { return {call("ZV_DeviceDisplayName", 1)}; }
Calls transport_call(const Asked&) { return {call("ZV_DeviceInfo", 1, 3)}; }

const std::vector<InfoRow> producer_rows = {
    {"ID", 0, INFO_DATATYPE_STRING, "GenTL_1.5"},
    {"VENDOR", 1, INFO_DATATYPE_STRING, "ZEVA Electronics Ltd."},
    {"MODEL", 2, INFO_DATATYPE_STRING, "GenTL Producer"},
    {"VERSION", 3, INFO_DATATYPE_STRING, "6.3.3"},
    {"TLTYPE", 4, INFO_DATATYPE_STRING, "Mixed"},
    {"NAME", 5, INFO_DATATYPE_STRING, "ZVGRLibGenTL.cti"},
    {"DISPLAYNAME", 7, INFO_DATATYPE_STRING, "ZEVA Electronics GenTL Producer"},
    {"CHAR_ENCODING", 8, INFO_DATATYPE_INT32, 0},
};

std::vector<InfoRow> library_rows()
{
    std::vector<InfoRow> rows = producer_rows;
    rows[4].line = "GCGetInfo - TL Type=Mixed";
    rows.push_back({"GENTL_VER_MAJOR", 9, INFO_DATATYPE_UINT32, 1});
    rows.push_back({"GENTL_VER_MINOR", 10, INFO_DATATYPE_UINT32, 5});
    return rows;
}

const std::vector<InfoRow> interface_rows = {
    {"ID", 0, INFO_DATATYPE_STRING, "FG1"},
    {"DISPLAYNAME", 1, INFO_DATATYPE_STRING, "Left grabber", device_name_call},
    {"TLTYPE", 2, INFO_DATATYPE_STRING, "CLHS", transport_call},
};

const std::vector<InfoRow> device_rows = {
    {"ID", 0, INFO_DATATYPE_STRING, "Device11"},
    {"VENDOR", 1, INFO_DATATYPE_STRING, "Vendor of cameras"},
    {"MODEL", 2, INFO_DATATYPE_STRING, "Model X"},
    {"TLTYPE", 3, INFO_DATATYPE_STRING, "CLHS", transport_call},
    {"DISPLAYNAME", 4, INFO_DATATYPE_STRING, "Model X"},
    {"ACCESS_STATUS", 5, INFO_DATATYPE_INT32, DEVICE_ACCESS_STATUS_READWRITE},
    {"USER_DEFINED_NAME", 6, INFO_DATATYPE_STRING, "Model X"},
    {"SERIAL_NUMBER", 7, INFO_DATATYPE_STRING, "SN-0042"},
    {"VERSION", 8, INFO_DATATYPE_STRING, "1.2.3"},
    {"TIMESTAMP_FREQUENCY", 9, INFO_DATATYPE_UINT64, 25000000},
};

const std::vector<InfoRow> stream_rows = {
    {"ID", 0, INFO_DATATYPE_STRING, "Stream110"},
    {"NUM_DELIVERED", 1, INFO_DATATYPE_UINT64, 3},
    {"NUM_UNDERRUN", 2, INFO_DATATYPE_UINT64, 0},
    {"NUM_ANNOUNCED", 3, INFO_DATATYPE_SIZET, 6},
    {"NUM_QUEUED", 4, INFO_DATATYPE_SIZET, 2},
    {"NUM_AWAIT_DELIVERY", 5, INFO_DATATYPE_SIZET, 3},
    {"NUM_STARTED", 6, INFO_DATATYPE_UINT64, 0},
    {"PAYLOAD_SIZE", 7, INFO_DATATYPE_SIZET, 0x123456789AU,
     [](const Asked& asked) -> Calls {
         return {call("ZVGR_StreamGetInfo", asked.stream, zv_stream_payload_now)};
     }},
    {"IS_GRABBING", 8, INFO_DATATYPE_BOOL8, 1,
     [](const Asked& asked) -> Calls {
         return {call("ZVGR_GetGrabberValueEnum", asked.camera, "CameraChannelState")};
     }},
    {"DEFINES_PAYLOADSIZE", 9, INFO_DATATYPE_BOOL8, 1},
    {"TLTYPE", 10, INFO_DATATYPE_STRING, "CLHS", transport_call},
    {"NUM_CHUNKS_MAX", 11, INFO_DATATYPE_SIZET, 0},
    {"BUF_ANNOUNCE_MIN", 12, INFO_DATATYPE_SIZET, 4},
    {"BUF_ALIGNMENT", 13, INFO_DATATYPE_SIZET, 64,
     [](const Asked& asked) -> Calls {
         return {call("ZVGR_StreamGetInfo", asked.stream, zv_stream_buffer_alignment)};
     }},
};

const std::vector<InfoRow> buffer_rows = {
    {"BASE", 0, INFO_DATATYPE_PTR, [](const Asked& asked) { return asked.memory; }},
    {"SIZE", 1, INFO_DATATYPE_SIZET, announced_size},
    {"USER_PTR", 2, INFO_DATATYPE_PTR, [](const Asked& asked) { return asked.user; }},
    {"TIMESTAMP", 3, INFO_DATATYPE_UINT64, timestamp},
    {"NEW_DATA", 4, INFO_DATATYPE_BOOL8, 1},
    {"IS_QUEUED", 5, INFO_DATATYPE_BOOL8, 0},
    {"IS_ACQUIRING", 6, INFO_DATATYPE_BOOL8, 0},
    {"IS_INCOMPLETE", 7, INFO_DATATYPE_BOOL8, 0},
    {"TLTYPE", 8, INFO_DATATYPE_STRING, "CLHS", transport_call},
    {"SIZE_FILLED", 9, INFO_DATATYPE_SIZET, announced_size},
    {"WIDTH", 10, INFO_DATATYPE_SIZET, 640},
    {"HEIGHT", 11, INFO_DATATYPE_SIZET, 960},
    {"XOFFSET", 12, INFO_DATATYPE_SIZET, 8},
    {"YOFFSET", 13, INFO_DATATYPE_SIZET, 0xFFFFFFFFFFFFFFF0U},
    {"XPADDING", 14, INFO_DATATYPE_SIZET, 0},
    {"YPADDING", 15, INFO_DATATYPE_SIZET, 0},
    {"FRAMEID", 16, INFO_DATATYPE_UINT64,
     [](const Asked& asked) { return asked.mode == Mode::queued ? queued_frame_id : 1; }},
    {"IMAGEPRESENT", 17, INFO_DATATYPE_BOOL8, 1},
    {"IMAGEOFFSET", 18, INFO_DATATYPE_SIZET, 0},
    {"PAYLOADTYPE", 19, INFO_DATATYPE_SIZET, 1},
    {"PIXELFORMAT", 20, INFO_DATATYPE_UINT64, 0x01080001},
    {"PIXELFORMAT_NAMESPACE", 21, INFO_DATATYPE_UINT64, 4},
    {"DELIVERED_IMAGEHEIGHT", 22, INFO_DATATYPE_SIZET, 960},
    {"PIXEL_ENDIANNESS", 26, INFO_DATATYPE_INT32, 1},
    {"DATA_SIZE", 27, INFO_DATATYPE_SIZET, announced_size},
    {"DATA_LARGER_THAN_BUFFER", 29, INFO_DATATYPE_BOOL8, 0},
    {"CONTAINS_CHUNKDATA", 30, INFO_DATATYPE_BOOL8, 0},
};

const std::vector<InfoRow> buffer_part_rows = {
    {"BASE", 0, INFO_DATATYPE_PTR, [](const Asked& asked) { return asked.memory; }},
    {"DATA_SIZE", 1, INFO_DATATYPE_SIZET, announced_size},
};

const std::vector<InfoRow> event_rows = {
    {"EVENT_TYPE", 0, INFO_DATATYPE_INT32, 1},          {"NUM_IN_QUEUE", 1, INFO_DATATYPE_SIZET, 2},
    {"NUM_FIRED", 2, INFO_DATATYPE_UINT64, 3},          {"SIZE_MAX", 3, INFO_DATATYPE_SIZET, 16},
    {"INFO_DATA_SIZE_MAX", 4, INFO_DATATYPE_SIZET, 16},
};

const std::vector<InfoRow> event_data_rows = {
    {"ID", 0, INFO_DATATYPE_STRING,
     [](const Asked& asked) { return "Event0x" + hex(reinterpret_cast<uintptr_t>(asked.event)); }},
    {"NUMID", 2, INFO_DATATYPE_UINT64, [](const Asked& asked) { return asked.event; }},
};

// The flags also of ports that can only be read.
const std::vector<InfoRow> port_rows = {
    {"VENDOR", 1, INFO_DATATYPE_STRING, "ZEVA Electronics Ltd."},
    {"MODEL", 2, INFO_DATATYPE_STRING, "GenTL Producer"},
    {"TLTYPE", 3, INFO_DATATYPE_STRING, "Mixed"},
    {"MODULE", 4, INFO_DATATYPE_STRING, [](const Asked& asked) { return asked.port_kind; }},
    {"LITTLE_ENDIAN", 5, INFO_DATATYPE_BOOL8, 1},
    {"BIG_ENDIAN", 6, INFO_DATATYPE_BOOL8, 1},
    {"ACCESS_READ", 7, INFO_DATATYPE_BOOL8, 1},
    {"ACCESS_WRITE", 8, INFO_DATATYPE_BOOL8, 1},
    {"ACCESS_NA", 9, INFO_DATATYPE_BOOL8, 0},
    {"ACCESS_NI", 10, INFO_DATATYPE_BOOL8, 0},
    {"VERSION", 11, INFO_DATATYPE_STRING, "1.0"},
    {"PORTNAME", 12, INFO_DATATYPE_STRING, "Device"},
};

std::string url_of(const Asked& asked)
{
    return asked.port_kind == "TLSystem"   ? "Local:ZV_SystemGenTL.xml;88888888;d3f"
           : asked.port_kind == "TLBuffer" ? "Local:ZV_BufferGenTL.zip;88888888;280"
                                           : "Local:Camera.xml;1000;2a";
}

Calls url_calls(const Asked& asked)
{
    if (asked.port_kind == "TLSystem" || asked.port_kind == "TLBuffer")
        return {};
    const bool is_of_grabber = asked.port_kind == "TLInterface" || asked.port_kind == "TLDevice";
    return {call("ZVGR_GetXmlUrl", is_of_grabber ? asked.grabber : asked.camera, any(), 260)};
}

const std::vector<InfoRow> url_rows = {
    {"URL", 0, INFO_DATATYPE_STRING, url_of, url_calls, "GCGetPortURLInfo URL={url}"},
};

InfoQuery query_of(const char* function, const char* enter, const std::vector<InfoRow>& rows,
                   std::vector<int32_t> unknown_commands, decltype(InfoQuery::ask) ask,
                   const Habits& habits = {})
{
    unknown_commands.insert(unknown_commands.end(), {1000, -1, INT32_MIN, INT32_MAX});
    return {function, enter, "Exit " + std::string(function), rows, unknown_commands, ask, habits};
}

std::vector<InfoQuery> module_queries()
{
    const std::vector<Mode> both_modes{Mode::queued, Mode::cyclic};
    std::vector<InfoQuery> queries = {
        query_of("GCGetInfo", "Enter GCGetInfo, info= {command}", library_rows(), {11, 12},
                 [](const Asked&, int32_t command, auto... out) { return GCGetInfo(command, out...); },
                 {Priority::information, NumberLines::too_small}),
        query_of(
            "TLGetInfo", "Enter TLGetInfo, handle=0x{tl}, info={command}", producer_rows, {9, 10, 11},
            [](const Asked& of, int32_t command, auto... out) { return TLGetInfo(of.tl, command, out...); },
            {Priority::information, NumberLines::written}),
        query_of("TLGetInterfaceInfo", "Enter TLGetInterfaceInfo, hTL=0x{tl}, info={command}", interface_rows,
                 {3, 4},
                 [](const Asked& of, int32_t command, auto... out) {
                     return TLGetInterfaceInfo(of.tl, "FG1", command, out...);
                 },
                 {Priority::information, NumberLines::none, NoRoom::too_small}),
        query_of("IFGetInfo", "Enter IFGetInfo info= {command} ", interface_rows, {3, 4},
                 [](const Asked& of, int32_t command, auto... out) {
                     return IFGetInfo(of.iface, command, out...);
                 }),
        query_of("IFGetDeviceInfo", "Enter IFGetDeviceInfo handle=0x{iface}, info={command} ", device_rows,
                 {10, 11},
                 [](const Asked& of, int32_t command, auto... out) {
                     return IFGetDeviceInfo(of.iface, "Device11", command, out...);
                 },
                 {Priority::information, NumberLines::too_small}),
        query_of(
            "DevGetInfo", "Enter DevGetInfo, handle=0x{dev} info= {command} ", device_rows, {10, 11},
            [](const Asked& of, int32_t command, auto... out) { return DevGetInfo(of.dev, command, out...); },
            {Priority::information, NumberLines::too_small}),
        query_of(
            "DSGetInfo", "Enter DSGetInfo, stream handle=0x{ds}, iInfoCmd={command}", stream_rows, {14, 15},
            [](const Asked& of, int32_t command, auto... out) { return DSGetInfo(of.ds, command, out...); },
            {Priority::debug, NumberLines::both, NoRoom::malformed, both_modes}),
        query_of(
            "DSGetBufferInfo",
            "Enter DSGetBufferInfo, info={command}, stream handle=0x{low ds}, buffer handle=0x{low buffer}",
            buffer_rows, {23, 24, 25, 28, 31, 32},
            [](const Asked& of, int32_t command, auto... out) {
                return DSGetBufferInfo(of.ds, of.buffer, command, out...);
            },
            {Priority::trace, NumberLines::too_small, NoRoom::malformed, both_modes}),
        query_of("DSGetBufferPartInfo", "Enter DSGetBufferPartInfo", buffer_part_rows, {2, 3, 11},
                 [](const Asked& of, int32_t command, auto... out) {
                     return DSGetBufferPartInfo(of.ds, of.buffer, 0, command, out...);
                 },
                 {Priority::debug, NumberLines::none, NoRoom::too_small, both_modes}),
        query_of("EventGetInfo", "Enter EventGetInfo, handle=0x{low event}, info={command}", event_rows, {5},
                 [](const Asked& of, int32_t command, auto... out) {
                     return EventGetInfo(of.event, command, out...);
                 },
                 {Priority::debug}),
        query_of("EventGetDataInfo", "Enter EventGetDataInfo, handle=0x{low event}, info={command}",
                 event_data_rows, {3},
                 [](const Asked& of, int32_t command, auto... out) {
                     return EventGetDataInfo(of.event, nullptr, 0, command, out...);
                 },
                 {Priority::debug}),
    };
    queries[0].exit = "Exit GCGetInfo, info= {command}";
    queries[0].unknown_line = "info="; // no blank, unlike every other query
    queries[3].exit = "Exit IFGetInfo fgHandle={grabber}, info= {command} ";
    queries[4].exit = "Exit IFGetDeviceInfo, device id=1, info= {command} ";
    queries.back().clears_size_for_unknown_commands = false;
    return queries;
}

std::vector<InfoQuery> port_queries(const char* kind)
{
    std::vector<InfoQuery> queries = {
        query_of("GCGetPortInfo", "Enter GCGetPortInfo, info={command}, buffer size={size}", port_rows, {13},
                 [](const Asked& of, int32_t command, auto... out) {
                     return GCGetPortInfo(of.port, command, out...);
                 }),
        query_of("GCGetPortURLInfo",
                 "Enter GCGetPortURLInfo, handle=0x{port}, URL index=0, info={command}, size={size}",
                 url_rows, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11},
                 [](const Asked& of, int32_t command, auto... out) {
                     return GCGetPortURLInfo(of.port, 0, command, out...);
                 }),
    };
    queries.front().exit = "Exit GCGetPortInfo, handle={kind}, info= {command}";
    queries.back().accepted = "Get URL info for device type {kind}";
    for (InfoQuery& query : queries)
        query.port_kind = kind;
    return queries;
}

std::vector<InfoQuery> every_query()
{
    std::vector<InfoQuery> queries = module_queries();
    for (const char* const kind :
         {"TLSystem", "TLInterface", "TLDevice", "Device", "TLDataStream", "TLBuffer"}) {
        for (const InfoQuery& query : port_queries(kind))
            queries.push_back(query);
    }
    return queries;
}

} // namespace

const std::vector<InfoQuery>& info_queries()
{
    static const std::vector<InfoQuery> queries = every_query();
    return queries;
}

Bytes bytes_of(uint64_t number)
{
    Bytes bytes;
    for (int shift = 0; shift < 64; shift += 8)
        bytes.push_back(static_cast<uint8_t>(number >> shift));
    return bytes;
}

Bytes bytes_of(const std::string& text) { return {text.c_str(), text.c_str() + text.size() + 1}; }

Bytes InfoRow::bytes(const Asked& asked) const
{
    Bytes bytes = answer.bytes(asked);
    if (type == INFO_DATATYPE_BOOL8)
        bytes.resize(1);
    else if (type == INFO_DATATYPE_INT32 || type == INFO_DATATYPE_UINT32)
        bytes.resize(4);
    return bytes; // as many as a text has, or the eight of any other number
}

std::string with_handles(std::string text, const Asked& asked, int32_t command, size_t size)
{
    const std::pair<const char*, std::string> replacements[] = {
        {"{tl}", hex16(asked.tl)},
        {"{iface}", hex16(asked.iface)},
        {"{dev}", hex16(asked.dev)},
        {"{ds}", hex16(asked.ds)},
        {"{port}", hex16(asked.port)},
        {"{low ds}", low_hex(asked.ds)},
        {"{low buffer}", low_hex(asked.buffer)},
        {"{low event}", low_hex(asked.event)},
        {"{grabber}", low_hex(asked.grabber)},
        {"{kind}", asked.port_kind},
        {"{url}", url_of(asked)},
        {"{command}", std::to_string(command)},
        {"{size}", std::to_string(size)},
    };
    for (const auto& [name, replacement] : replacements) {
        const size_t place = text.find(name);
        if (place != std::string::npos)
            text.replace(place, std::string(name).size(), replacement);
    }
    return text;
}

std::ostream& operator<<(std::ostream& out, const InfoCase& asked)
{
    if (asked.query->habits.modes.size() > 1)
        out << asked.mode << '_';
    out << asked.query->function << asked.query->port_kind;
    return asked.row == nullptr ? out : out << '_' << asked.row->name;
}

void EverythingDescribed::SetUp()
{
    OpenSystem::SetUp();
    if (HasFatalFailure())
        return;
    fake.has_grabbers(3);
    fake.set_xml_url("Local:Camera.xml;1000;2a");
    fake.grabber(1).is_named("Left grabber").has_protocol(1).has_cameras(2);
    fake.grabber(1).camera(1).vendor("Vendor of cameras").model("Model X").serial("SN-0042").version("1.2.3");
    iface = open_interface("FG1");
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    dev = open_device(iface, "Device11");
    ASSERT_EQ(GC_ERR_SUCCESS, DevGetPort(dev, &port));

    fake.grabber_int("FW_Dma_Capable_QueuedBuffers_Imp") = is_queued() ? 1 : 0;
    fake.allow_handle("ZVGR_BufferToQueue", 0); // in cyclic mode
    fake.allow_handle("ZVGR_BufferRevoke", 0);
    ds = open_stream(dev, "Stream110");
    fake.stream_info(zv_stream_payload_at_creation, 111);
    fake.stream_info(zv_stream_payload_now, 0x123456789AU);
    fake.stream_info(zv_stream_buffer_alignment, 64);
    fake.grabber_enum(fake.camera_handle(1, 1), "CameraChannelState") = zv_channel_grabbing;
    fake.grabber_int("Width") = 640;
    fake.grabber_int("Height") = 480;
    fake.grabber_int("SegmentsPerBuffer") = 2;
    fake.camera_int("OffsetX") = 8;
    fake.camera_int("OffsetY") = -16;
    fake.camera_enum("PixelFormat") = 0x101;
    for (int i = 0; i < 6; ++i)
        announce(announced_size, &owner);
    for (size_t i = 0; i < 5; ++i)
        queue(*buffers[i]);
    register_event();
    start();
    for (size_t i = 0; i < 3; ++i)
        deliver(*buffers[i], Frame{timestamp, queued_frame_id, 0, -1});
    EXPECT_EQ(buffers[0]->handle, take().data.BufferHandle);
    forget();

    const Announced& buffer = *buffers[1];
    asked = {tl,
             iface,
             dev,
             ds,
             buffer.handle,
             event,
             nullptr,
             info().port_kind,
             GetParam().mode,
             buffer.memory.data(),
             &owner,
             fake.grabber_handle(1),
             fake.camera_handle(1, 1),
             stream()};
    for (const auto& [kind, handle] : {std::pair<std::string, void*>{"TLSystem", tl},
                                       {"TLInterface", iface},
                                       {"TLDevice", dev},
                                       {"Device", port},
                                       {"TLDataStream", ds},
                                       {"TLBuffer", buffer.handle}}) {
        if (kind == asked.port_kind)
            asked.port = handle;
    }
}

} // namespace zvtest
