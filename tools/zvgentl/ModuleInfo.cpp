#include "zvgentl/ModuleInfo.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include <fmt/core.h>

#include "genapi/Feature.h"
#include "genapi/values.h"
#include "gentl/Error.h"
#include "gentl/texts.h"
#include "zvgentl/TextTable.h"

namespace zvgentl::tool {

using namespace GenTL;

namespace {

constexpr std::size_t largest_answer = std::size_t{1} << 20U; // no command answers with more
constexpr std::size_t most_bytes_shown = 64;

struct CommandName {
    std::int32_t command;
    const char* name;
};

constexpr CommandName system_commands[] = {
    {TL_INFO_ID, "TL_INFO_ID"},
    {TL_INFO_VENDOR, "TL_INFO_VENDOR"},
    {TL_INFO_MODEL, "TL_INFO_MODEL"},
    {TL_INFO_VERSION, "TL_INFO_VERSION"},
    {TL_INFO_TLTYPE, "TL_INFO_TLTYPE"},
    {TL_INFO_NAME, "TL_INFO_NAME"},
    {TL_INFO_PATHNAME, "TL_INFO_PATHNAME"},
    {TL_INFO_DISPLAYNAME, "TL_INFO_DISPLAYNAME"},
    {TL_INFO_CHAR_ENCODING, "TL_INFO_CHAR_ENCODING"},
    {TL_INFO_GENTL_VER_MAJOR, "TL_INFO_GENTL_VER_MAJOR"},
    {TL_INFO_GENTL_VER_MINOR, "TL_INFO_GENTL_VER_MINOR"},
};

constexpr CommandName interface_commands[] = {
    {INTERFACE_INFO_ID, "INTERFACE_INFO_ID"},
    {INTERFACE_INFO_DISPLAYNAME, "INTERFACE_INFO_DISPLAYNAME"},
    {INTERFACE_INFO_TLTYPE, "INTERFACE_INFO_TLTYPE"},
};

constexpr CommandName device_commands[] = {
    {DEVICE_INFO_ID, "DEVICE_INFO_ID"},
    {DEVICE_INFO_VENDOR, "DEVICE_INFO_VENDOR"},
    {DEVICE_INFO_MODEL, "DEVICE_INFO_MODEL"},
    {DEVICE_INFO_TLTYPE, "DEVICE_INFO_TLTYPE"},
    {DEVICE_INFO_DISPLAYNAME, "DEVICE_INFO_DISPLAYNAME"},
    {DEVICE_INFO_ACCESS_STATUS, "DEVICE_INFO_ACCESS_STATUS"},
    {DEVICE_INFO_USER_DEFINED_NAME, "DEVICE_INFO_USER_DEFINED_NAME"},
    {DEVICE_INFO_SERIAL_NUMBER, "DEVICE_INFO_SERIAL_NUMBER"},
    {DEVICE_INFO_VERSION, "DEVICE_INFO_VERSION"},
    {DEVICE_INFO_TIMESTAMP_FREQUENCY, "DEVICE_INFO_TIMESTAMP_FREQUENCY"},
};

constexpr CommandName stream_commands[] = {
    {STREAM_INFO_ID, "STREAM_INFO_ID"},
    {STREAM_INFO_NUM_DELIVERED, "STREAM_INFO_NUM_DELIVERED"},
    {STREAM_INFO_NUM_UNDERRUN, "STREAM_INFO_NUM_UNDERRUN"},
    {STREAM_INFO_NUM_ANNOUNCED, "STREAM_INFO_NUM_ANNOUNCED"},
    {STREAM_INFO_NUM_QUEUED, "STREAM_INFO_NUM_QUEUED"},
    {STREAM_INFO_NUM_AWAIT_DELIVERY, "STREAM_INFO_NUM_AWAIT_DELIVERY"},
    {STREAM_INFO_NUM_STARTED, "STREAM_INFO_NUM_STARTED"},
    {STREAM_INFO_PAYLOAD_SIZE, "STREAM_INFO_PAYLOAD_SIZE"},
    {STREAM_INFO_IS_GRABBING, "STREAM_INFO_IS_GRABBING"},
    {STREAM_INFO_DEFINES_PAYLOADSIZE, "STREAM_INFO_DEFINES_PAYLOADSIZE"},
    {STREAM_INFO_TLTYPE, "STREAM_INFO_TLTYPE"},
    {STREAM_INFO_NUM_CHUNKS_MAX, "STREAM_INFO_NUM_CHUNKS_MAX"},
    {STREAM_INFO_BUF_ANNOUNCE_MIN, "STREAM_INFO_BUF_ANNOUNCE_MIN"},
    {STREAM_INFO_BUF_ALIGNMENT, "STREAM_INFO_BUF_ALIGNMENT"},
};

constexpr CommandName buffer_commands[] = {
    {BUFFER_INFO_BASE, "BUFFER_INFO_BASE"},
    {BUFFER_INFO_SIZE, "BUFFER_INFO_SIZE"},
    {BUFFER_INFO_USER_PTR, "BUFFER_INFO_USER_PTR"},
    {BUFFER_INFO_TIMESTAMP, "BUFFER_INFO_TIMESTAMP"},
    {BUFFER_INFO_NEW_DATA, "BUFFER_INFO_NEW_DATA"},
    {BUFFER_INFO_IS_QUEUED, "BUFFER_INFO_IS_QUEUED"},
    {BUFFER_INFO_IS_ACQUIRING, "BUFFER_INFO_IS_ACQUIRING"},
    {BUFFER_INFO_IS_INCOMPLETE, "BUFFER_INFO_IS_INCOMPLETE"},
    {BUFFER_INFO_TLTYPE, "BUFFER_INFO_TLTYPE"},
    {BUFFER_INFO_SIZE_FILLED, "BUFFER_INFO_SIZE_FILLED"},
    {BUFFER_INFO_WIDTH, "BUFFER_INFO_WIDTH"},
    {BUFFER_INFO_HEIGHT, "BUFFER_INFO_HEIGHT"},
    {BUFFER_INFO_XOFFSET, "BUFFER_INFO_XOFFSET"},
    {BUFFER_INFO_YOFFSET, "BUFFER_INFO_YOFFSET"},
    {BUFFER_INFO_XPADDING, "BUFFER_INFO_XPADDING"},
    {BUFFER_INFO_YPADDING, "BUFFER_INFO_YPADDING"},
    {BUFFER_INFO_FRAMEID, "BUFFER_INFO_FRAMEID"},
    {BUFFER_INFO_IMAGEPRESENT, "BUFFER_INFO_IMAGEPRESENT"},
    {BUFFER_INFO_IMAGEOFFSET, "BUFFER_INFO_IMAGEOFFSET"},
    {BUFFER_INFO_PAYLOADTYPE, "BUFFER_INFO_PAYLOADTYPE"},
    {BUFFER_INFO_PIXELFORMAT, "BUFFER_INFO_PIXELFORMAT"},
    {BUFFER_INFO_PIXELFORMAT_NAMESPACE, "BUFFER_INFO_PIXELFORMAT_NAMESPACE"},
    {BUFFER_INFO_DELIVERED_IMAGEHEIGHT, "BUFFER_INFO_DELIVERED_IMAGEHEIGHT"},
    {BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE, "BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE"},
    {BUFFER_INFO_CHUNKLAYOUTID, "BUFFER_INFO_CHUNKLAYOUTID"},
    {BUFFER_INFO_FILENAME, "BUFFER_INFO_FILENAME"},
    {BUFFER_INFO_PIXEL_ENDIANNESS, "BUFFER_INFO_PIXEL_ENDIANNESS"},
    {BUFFER_INFO_DATA_SIZE, "BUFFER_INFO_DATA_SIZE"},
    {BUFFER_INFO_TIMESTAMP_NS, "BUFFER_INFO_TIMESTAMP_NS"},
    {BUFFER_INFO_DATA_LARGER_THAN_BUFFER, "BUFFER_INFO_DATA_LARGER_THAN_BUFFER"},
    {BUFFER_INFO_CONTAINS_CHUNKDATA, "BUFFER_INFO_CONTAINS_CHUNKDATA"},
};

constexpr CommandName part_commands[] = {
    {BUFFER_PART_INFO_BASE, "BUFFER_PART_INFO_BASE"},
    {BUFFER_PART_INFO_DATA_SIZE, "BUFFER_PART_INFO_DATA_SIZE"},
    {BUFFER_PART_INFO_DATA_TYPE, "BUFFER_PART_INFO_DATA_TYPE"},
    {BUFFER_PART_INFO_DATA_FORMAT, "BUFFER_PART_INFO_DATA_FORMAT"},
    {BUFFER_PART_INFO_DATA_FORMAT_NAMESPACE, "BUFFER_PART_INFO_DATA_FORMAT_NAMESPACE"},
    {BUFFER_PART_INFO_WIDTH, "BUFFER_PART_INFO_WIDTH"},
    {BUFFER_PART_INFO_HEIGHT, "BUFFER_PART_INFO_HEIGHT"},
    {BUFFER_PART_INFO_XOFFSET, "BUFFER_PART_INFO_XOFFSET"},
    {BUFFER_PART_INFO_YOFFSET, "BUFFER_PART_INFO_YOFFSET"},
    {BUFFER_PART_INFO_XPADDING, "BUFFER_PART_INFO_XPADDING"},
    {BUFFER_PART_INFO_SOURCE_ID, "BUFFER_PART_INFO_SOURCE_ID"},
    {BUFFER_PART_INFO_DELIVERED_IMAGEHEIGHT, "BUFFER_PART_INFO_DELIVERED_IMAGEHEIGHT"},
};

constexpr CommandName port_commands[] = {
    {PORT_INFO_ID, "PORT_INFO_ID"},
    {PORT_INFO_VENDOR, "PORT_INFO_VENDOR"},
    {PORT_INFO_MODEL, "PORT_INFO_MODEL"},
    {PORT_INFO_TLTYPE, "PORT_INFO_TLTYPE"},
    {PORT_INFO_MODULE, "PORT_INFO_MODULE"},
    {PORT_INFO_LITTLE_ENDIAN, "PORT_INFO_LITTLE_ENDIAN"},
    {PORT_INFO_BIG_ENDIAN, "PORT_INFO_BIG_ENDIAN"},
    {PORT_INFO_ACCESS_READ, "PORT_INFO_ACCESS_READ"},
    {PORT_INFO_ACCESS_WRITE, "PORT_INFO_ACCESS_WRITE"},
    {PORT_INFO_ACCESS_NA, "PORT_INFO_ACCESS_NA"},
    {PORT_INFO_ACCESS_NI, "PORT_INFO_ACCESS_NI"},
    {PORT_INFO_VERSION, "PORT_INFO_VERSION"},
    {PORT_INFO_PORTNAME, "PORT_INFO_PORTNAME"},
};

constexpr CommandName url_commands[] = {
    {URL_INFO_URL, "URL_INFO_URL"},
    {URL_INFO_SCHEMA_VER_MAJOR, "URL_INFO_SCHEMA_VER_MAJOR"},
    {URL_INFO_SCHEMA_VER_MINOR, "URL_INFO_SCHEMA_VER_MINOR"},
    {URL_INFO_FILE_VER_MAJOR, "URL_INFO_FILE_VER_MAJOR"},
    {URL_INFO_FILE_VER_MINOR, "URL_INFO_FILE_VER_MINOR"},
    {URL_INFO_FILE_VER_SUBMINOR, "URL_INFO_FILE_VER_SUBMINOR"},
    {URL_INFO_FILE_SHA1_HASH, "URL_INFO_FILE_SHA1_HASH"},
    {URL_INFO_FILE_REGISTER_ADDRESS, "URL_INFO_FILE_REGISTER_ADDRESS"},
    {URL_INFO_FILE_SIZE, "URL_INFO_FILE_SIZE"},
    {URL_INFO_SCHEME, "URL_INFO_SCHEME"},
    {URL_INFO_FILENAME, "URL_INFO_FILENAME"},
};

constexpr CommandName type_names[] = {
    {INFO_DATATYPE_STRING, "STRING"},   {INFO_DATATYPE_STRINGLIST, "STRINGLIST"},
    {INFO_DATATYPE_INT16, "INT16"},     {INFO_DATATYPE_UINT16, "UINT16"},
    {INFO_DATATYPE_INT32, "INT32"},     {INFO_DATATYPE_UINT32, "UINT32"},
    {INFO_DATATYPE_INT64, "INT64"},     {INFO_DATATYPE_UINT64, "UINT64"},
    {INFO_DATATYPE_FLOAT64, "FLOAT64"}, {INFO_DATATYPE_PTR, "PTR"},
    {INFO_DATATYPE_BOOL8, "BOOL8"},     {INFO_DATATYPE_SIZET, "SIZET"},
    {INFO_DATATYPE_BUFFER, "BUFFER"},   {INFO_DATATYPE_PTRDIFF, "PTRDIFF"},
};

std::string type_name(INFO_DATATYPE type)
{
    for (const CommandName& row : type_names)
        if (row.command == type)
            return row.name;
    return fmt::format("type {}", type);
}

/// The bytes as a value of that type; nothing if there are too few of them.
template <class Value>
std::string number_text(const std::vector<unsigned char>& bytes)
{
    Value value{};
    if (bytes.size() < sizeof value)
        return {};
    std::memcpy(&value, bytes.data(), sizeof value);
    return fmt::format("{}", value);
}

std::string pointer_text(const std::vector<unsigned char>& bytes)
{
    std::uintptr_t value = 0;
    if (bytes.size() < sizeof value)
        return {};
    std::memcpy(&value, bytes.data(), sizeof value);
    return fmt::format("{:#x}", value);
}

/// Texts end with a zero byte, lists of them with two.
std::string list_text(const std::vector<unsigned char>& bytes)
{
    std::vector<std::string> texts(1);
    for (const unsigned char byte : bytes)
        if (byte != 0)
            texts.back() += static_cast<char>(byte);
        else
            texts.emplace_back();
    while (!texts.empty() && texts.back().empty())
        texts.pop_back();
    return joined(texts, ", ");
}

std::string value_text(INFO_DATATYPE type, const std::vector<unsigned char>& bytes)
{
    switch (type) {
    case INFO_DATATYPE_STRING:
        return {bytes.begin(), std::find(bytes.begin(), bytes.end(), 0)};
    case INFO_DATATYPE_STRINGLIST:
        return list_text(bytes);
    case INFO_DATATYPE_INT16:
        return number_text<std::int16_t>(bytes);
    case INFO_DATATYPE_UINT16:
        return number_text<std::uint16_t>(bytes);
    case INFO_DATATYPE_INT32:
        return number_text<std::int32_t>(bytes);
    case INFO_DATATYPE_UINT32:
        return number_text<std::uint32_t>(bytes);
    case INFO_DATATYPE_INT64:
    case INFO_DATATYPE_PTRDIFF:
        return number_text<std::int64_t>(bytes);
    case INFO_DATATYPE_UINT64:
    case INFO_DATATYPE_SIZET:
        return number_text<std::uint64_t>(bytes);
    case INFO_DATATYPE_FLOAT64: {
        double value = 0;
        if (bytes.size() < sizeof value)
            return {};
        std::memcpy(&value, bytes.data(), sizeof value);
        return to_text(Value(value));
    }
    case INFO_DATATYPE_BOOL8:
        return bytes.empty() ? "" : bytes[0] != 0 ? "true" : "false";
    case INFO_DATATYPE_PTR:
        return pointer_text(bytes);
    default:
        return bytes_text(bytes);
    }
}

std::vector<unsigned char> ask(const Producer& producer, const char* function, const InfoQuery& query,
                               INFO_DATATYPE& type)
{
    std::size_t size = 0;
    producer.check(query(&type, nullptr, &size), function);
    if (size > largest_answer)
        throw std::runtime_error(fmt::format("{} wants to answer with {} bytes", function, size));
    std::vector<unsigned char> bytes(std::max(size, std::size_t{1})); // a pointer that is not null
    producer.check(query(&type, bytes.data(), &size), function);
    bytes.resize(std::min(size, bytes.size()));
    return bytes;
}

/// Asks all commands of a table. `query` takes the command, then the output arguments.
template <std::size_t count, class Query>
void add_entries(const Producer& producer, const char* function, const CommandName (&rows)[count],
                 const Query& query, std::vector<InfoEntry>& entries)
{
    for (const CommandName& row : rows)
        entries.push_back(read_info(producer, function, row.name, row.command,
                                    [&](INFO_DATATYPE* type, void* buffer, std::size_t* size) {
                                        return query(row.command, type, buffer, size);
                                    }));
}

void add_port(const Producer& producer, PORT_HANDLE handle, std::vector<InfoEntry>& entries)
{
    const Functions& call = producer.functions();
    add_entries(
        producer, "GCGetPortInfo", port_commands,
        [&](auto command, auto... output) { return call.GCGetPortInfo(handle, command, output...); },
        entries);
    add_entries(
        producer, "GCGetPortURLInfo", url_commands,
        [&](auto command, auto... output) { return call.GCGetPortURLInfo(handle, 0, command, output...); },
        entries);
}

/// What can be asked before a system is open.
ModuleInfo producer_info(const Producer& producer)
{
    ModuleInfo module{"producer", {}};
    add_entries(
        producer, "GCGetInfo", system_commands,
        [&](auto command, auto... output) { return producer.functions().GCGetInfo(command, output...); },
        module.entries);
    return module;
}

ModuleInfo system_info(const System& system)
{
    const Producer& producer = system.producer();
    const Functions& call = producer.functions();
    ModuleInfo module{"system", {}};
    add_entries(
        producer, "TLGetInfo", system_commands,
        [&](auto command, auto... output) { return call.TLGetInfo(system.handle(), command, output...); },
        module.entries);
    add_port(producer, system.handle(), module.entries);
    return module;
}

ModuleInfo interface_info(const Interface& iface)
{
    const Producer& producer = iface.producer();
    const Functions& call = producer.functions();
    ModuleInfo module{"interface", {}};
    add_entries(
        producer, "IFGetInfo", interface_commands,
        [&](auto command, auto... output) { return call.IFGetInfo(iface.handle(), command, output...); },
        module.entries);
    add_port(producer, iface.handle(), module.entries);
    return module;
}

ModuleInfo device_info(const Device& device)
{
    const Producer& producer = device.producer();
    const Functions& call = producer.functions();
    ModuleInfo module{"device", {}};
    add_entries(
        producer, "DevGetInfo", device_commands,
        [&](auto command, auto... output) { return call.DevGetInfo(device.handle(), command, output...); },
        module.entries);
    add_port(producer, device.handle(), module.entries);
    return module;
}

ModuleInfo stream_info(const Stream& stream)
{
    const Producer& producer = stream.producer();
    const Functions& call = producer.functions();
    ModuleInfo module{"stream", {}};
    add_entries(
        producer, "DSGetInfo", stream_commands,
        [&](auto command, auto... output) { return call.DSGetInfo(stream.handle(), command, output...); },
        module.entries);
    add_port(producer, stream.handle(), module.entries);
    return module;
}

ModuleInfo buffer_info(const Stream& stream, BUFFER_HANDLE buffer)
{
    const Producer& producer = stream.producer();
    const Functions& call = producer.functions();
    ModuleInfo module{"buffer", {}};
    add_entries(
        producer, "DSGetBufferInfo", buffer_commands,
        [&](auto command, auto... output) {
            return call.DSGetBufferInfo(stream.handle(), buffer, command, output...);
        },
        module.entries);
    add_entries(
        producer, "DSGetBufferPartInfo", part_commands,
        [&](auto command, auto... output) {
            return call.DSGetBufferPartInfo(stream.handle(), buffer, 0, command, output...);
        },
        module.entries);
    add_port(producer, buffer, module.entries);
    return module;
}

} // namespace

InfoEntry read_info(const Producer& producer, const char* function, const char* name, std::int32_t command,
                    const InfoQuery& query)
{
    InfoEntry entry{function, name, command, {}, {}, {}, {}};
    try {
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        entry.bytes = ask(producer, function, query, type);
        entry.type = type_name(type);
        entry.value = value_text(type, entry.bytes);
    } catch (const Error& reason) {
        entry.problem = error_name(reason.code());
    } catch (const std::exception& reason) {
        entry.problem = reason.what();
    }
    return entry;
}

std::vector<ModuleInfo> read_modules(const OpenPort& port)
{
    std::vector<ModuleInfo> modules{producer_info(port.system().producer()), system_info(port.system())};
    if (port.iface() != nullptr)
        modules.push_back(interface_info(*port.iface()));
    if (port.device() != nullptr) {
        modules.push_back(device_info(*port.device()));
        modules.push_back({"remote", {}});
        add_port(port.device()->producer(), port.device()->remote_port(), modules.back().entries);
    }
    if (port.stream() != nullptr)
        modules.push_back(stream_info(*port.stream()));
    if (port.stream() != nullptr && port.port().handle() != port.stream()->handle())
        modules.push_back(buffer_info(*port.stream(), port.port().handle()));
    return modules;
}

std::string to_text(const std::vector<ModuleInfo>& modules, RawBytes raw)
{
    std::string text;
    for (const ModuleInfo& module : modules) {
        text += (text.empty() ? "" : "\n") + module.module + "\n";
        std::vector<std::vector<std::string>> rows;
        for (const InfoEntry& entry : module.entries) {
            std::vector<std::string> row{entry.name, std::to_string(entry.command), entry.type,
                                         entry.problem.empty() ? entry.value : entry.problem};
            if (raw == RawBytes::shown && entry.problem.empty()) {
                const std::size_t shown = std::min(entry.bytes.size(), most_bytes_shown);
                row.push_back(bytes_text({entry.bytes.begin(),
                                          entry.bytes.begin() + static_cast<std::ptrdiff_t>(shown)}) +
                              (shown < entry.bytes.size() ? " ..." : ""));
            }
            rows.push_back(std::move(row));
        }
        text += table_text(rows, "  ");
    }
    return text;
}

} // namespace zvgentl::tool
