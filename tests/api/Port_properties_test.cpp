#include <cstdint>
#include <vector>

#include "Port_fixtures.h"

namespace zvtest {

namespace {

/// What every port answers alike.
struct TextRow {
    PORT_INFO_CMD command;
    const char* text;
};
constexpr TextRow texts[] = {
    {PORT_INFO_VENDOR, "ZEVA Electronics Ltd."},
    {PORT_INFO_MODEL, "GenTL Producer"},
    {PORT_INFO_TLTYPE, "Mixed"},
    {PORT_INFO_VERSION, "1.0"},
    {PORT_INFO_PORTNAME, "Device"},
};

struct FlagRow {
    PORT_INFO_CMD command;
    int value;
};
// Also for the ports that can only be read, and of both byte orders.
constexpr FlagRow flags[] = {
    {PORT_INFO_LITTLE_ENDIAN, 1}, {PORT_INFO_BIG_ENDIAN, 1}, {PORT_INFO_ACCESS_READ, 1},
    {PORT_INFO_ACCESS_WRITE, 1},  {PORT_INFO_ACCESS_NA, 0},  {PORT_INFO_ACCESS_NI, 0},
};

class PortInformation : public OpenPorts {
protected:
    template <class T>
    Info<T> ask(PORT_HANDLE handle, PORT_INFO_CMD command, size_t room = default_room)
    {
        return query<T>(room, [&](auto... out) { return GCGetPortInfo(handle, command, out...); });
    }
    /// An ID, asked for with a type.
    template <class T>
    Info<T> id(PORT_HANDLE handle, INFO_DATATYPE form, size_t room = default_room)
    {
        return query<T>(room, [&](INFO_DATATYPE* type, void* buffer, size_t* size) {
            *type = form;
            return GCGetPortInfo(handle, PORT_INFO_ID, type, buffer, size);
        });
    }
    std::string id_of(const Port& asked) const
    {
        const std::string kind = asked.kind;
        return kind == "TLSystem"       ? "System0"
               : kind == "TLInterface"  ? "FG0"
               : kind == "TLDevice"     ? "Device00"
               : kind == "Device"       ? "Camera00"
               : kind == "TLDataStream" ? "Stream000"
                                        : "Buffer0x" + hex(buffers[0]->library);
    }
    static ExpectedLine line(Priority priority, const std::string& message)
    {
        return {priority, message, "GCGetPortInfo", "ZVGRLibGenTL"};
    }
    static ExpectedLine entered(int command, size_t size)
    {
        return line(Priority::information, "Enter GCGetPortInfo, info=" + std::to_string(command) +
                                               ", buffer size=" + std::to_string(size));
    }
    static ExpectedLine left(const std::string& kind, int command)
    {
        return line(Priority::information,
                    "Exit GCGetPortInfo, handle=" + kind + ", info= " + std::to_string(command));
    }
};

TEST_F(PortInformation, HasTheSameTextsForEveryPort)
{
    for (const Port& asked : ports()) {
        for (const TextRow& row : texts) {
            forget();
            const auto answer = ask<std::string>(asked.handle, row.command, 100);
            EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
            EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
            EXPECT_EQ(row.text, answer.value);
            EXPECT_EQ(answer.value.size() + 1, answer.size);
            EXPECT_LOG_LINES(entered(row.command, 100), left(asked.kind, row.command));
        }
    }
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(PortInformation, NamesTheKindOfModule)
{
    for (const Port& asked : ports())
        EXPECT_EQ(asked.kind, ask<std::string>(asked.handle, PORT_INFO_MODULE).value);
}

TEST_F(PortInformation, HasTheSameFlagsForEveryPort)
{
    for (const Port& asked : ports()) {
        for (const FlagRow& row : flags) {
            forget();
            const auto answer = ask<uint8_t>(asked.handle, row.command, 4);
            EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
            EXPECT_EQ(INFO_DATATYPE_BOOL8, answer.type);
            EXPECT_EQ(row.value, answer.value);
            EXPECT_EQ(1U, answer.size);
            EXPECT_EQ(0xA5, answer.bytes[1]) << "one byte alone is written";
            EXPECT_LOG_LINES(entered(row.command, 4), left(asked.kind, row.command));
        }
    }
}

TEST_F(PortInformation, TellsSizes)
{
    for (const TextRow& row : texts) {
        const auto answer = size_query([&](auto... out) { return GCGetPortInfo(ds, row.command, out...); });
        EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
        EXPECT_EQ(std::string(row.text).size() + 1, answer.size);
    }
    for (const FlagRow& row : flags) {
        const auto answer = size_query([&](auto... out) { return GCGetPortInfo(ds, row.command, out...); });
        EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
        EXPECT_EQ(INFO_DATATYPE_BOOL8, answer.type);
        EXPECT_EQ(1U, answer.size);
    }
}

TEST_F(PortInformation, LogsTheEndOfASizeQuery)
{
    size_t size = 0;
    INFO_DATATYPE type = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, GCGetPortInfo(tl, PORT_INFO_PORTNAME, &type, nullptr, &size));
    EXPECT_LOG_LINES(entered(PORT_INFO_PORTNAME, 0), left("TLSystem", PORT_INFO_PORTNAME));
}

TEST_F(PortInformation, TakesABufferOfAllOnesAsNone)
{
    size_t size = 0;
    INFO_DATATYPE type = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, GCGetPortInfo(tl, PORT_INFO_PORTNAME, &type, all_ones<void*>(), &size));
    EXPECT_EQ(7U, size);
}

TEST_F(PortInformation, CopiesATextInPartWhenThereIsTooLittleRoom)
{
    struct Row {
        size_t room;
        GC_ERROR code;
        std::string problem;
    };
    for (const Row& row :
         {Row{6, GC_ERR_INVALID_PARAMETER,
              "GCGetPortInfo - GC_ERR_INVALID_PARAMETER: buffer size too small to contain NULL "
              "termination (6/7)"},
          Row{3, GC_ERR_BUFFER_TOO_SMALL,
              "GCGetPortInfo - GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold data (3/7)"}}) {
        forget();
        const auto answer = ask<std::string>(port, PORT_INFO_PORTNAME, row.room);
        EXPECT_EQ(row.code, answer.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
        EXPECT_EQ(row.room, answer.size);
        EXPECT_EQ('D', answer.bytes[0]);
        EXPECT_LOG_LINES(entered(PORT_INFO_PORTNAME, row.room), line(Priority::error, row.problem),
                         line(Priority::error, "Exit, Returning error ret (0x" +
                                                   low_hex(static_cast<uint64_t>(row.code)) + ")"));
        EXPECT_EQ(row.problem, last_error());
    }
}

TEST_F(PortInformation, GivesAnIdInTheFormOfTheIncomingType)
{
    for (const Port& asked : ports()) {
        SCOPED_TRACE(asked.kind);
        forget();
        const auto text = id<std::string>(asked.handle, INFO_DATATYPE_STRING, 100);
        EXPECT_EQ(GC_ERR_SUCCESS, text.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, text.type);
        EXPECT_EQ(id_of(asked), text.value);
        EXPECT_LOG_LINES(entered(PORT_INFO_ID, 100), left(asked.kind, PORT_INFO_ID));

        const auto flag = id<uint8_t>(asked.handle, INFO_DATATYPE_BOOL8, 4);
        EXPECT_EQ(GC_ERR_SUCCESS, flag.code);
        EXPECT_EQ(INFO_DATATYPE_BOOL8, flag.type);
        EXPECT_EQ(1U, flag.size);
        EXPECT_EQ(0, flag.value);
        EXPECT_EQ(0xA5, flag.bytes[1]);
    }
}

TEST_F(PortInformation, GivesAnIdInNoOtherForm)
{
    for (const INFO_DATATYPE form : {0, 2, 5, 6, 8, 10, 12, 1000, -1}) {
        forget();
        const auto answer = id<std::string>(iface, form, 100);
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, answer.code);
        EXPECT_EQ(form, answer.type);
        EXPECT_EQ(0U, answer.size);
        EXPECT_EQ(0xA5, answer.bytes[0]);
        EXPECT_LOG_LINES(entered(PORT_INFO_ID, 100));
    }
}

TEST_F(PortInformation, TellsTheSizeOfAnIdInItsForm)
{
    INFO_DATATYPE type = INFO_DATATYPE_STRING;
    size_t size = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, GCGetPortInfo(iface, PORT_INFO_ID, &type, nullptr, &size));
    EXPECT_EQ(4U, size);
    type = INFO_DATATYPE_BOOL8;
    EXPECT_EQ(GC_ERR_SUCCESS, GCGetPortInfo(iface, PORT_INFO_ID, &type, nullptr, &size));
    EXPECT_EQ(1U, size);
    type = INFO_DATATYPE_PTR;
    EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, GCGetPortInfo(iface, PORT_INFO_ID, &type, nullptr, &size));
    EXPECT_EQ(0U, size);
}

TEST_F(PortInformation, CopiesAnIdInPartWhenThereIsTooLittleRoom)
{
    const auto answer = id<std::string>(dev, INFO_DATATYPE_STRING, 3);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, answer.code);
    EXPECT_EQ(3U, answer.size);
    EXPECT_EQ("Dev", std::string(answer.bytes.begin(), answer.bytes.begin() + 3));
    EXPECT_EQ("GCGetPortInfo - GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold data (3/9)",
              last_error());
}

TEST_F(PortInformation, EndsWithThePortName)
{
    for (const Port& asked : ports()) {
        for (const PORT_INFO_CMD command : {13, 1000, -1, INT32_MIN, INT32_MAX}) {
            forget();
            const auto answer = ask<std::string>(asked.handle, command, 100);
            EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, answer.code);
            EXPECT_TRUE(is_untouched(answer.type));
            EXPECT_EQ(0U, answer.size);
            EXPECT_EQ(0xA5, answer.bytes[0]);
            EXPECT_LOG_LINES(entered(command, 100), line(Priority::error, "info= " + std::to_string(command)),
                             port_error_exit("GCGetPortInfo", "GC_ERR_NOT_IMPLEMENTED", -1003));
        }
    }
}

class CyclicPortInformation : public CyclicStream {};

// In this mode the library knows no buffers, which all have the number 0 then.
TEST_F(CyclicPortInformation, GivesEveryBufferTheSameId)
{
    const BUFFER_HANDLE buffer = announce().handle;
    char text[100];
    size_t size = sizeof text;
    INFO_DATATYPE type = INFO_DATATYPE_STRING;
    EXPECT_EQ(GC_ERR_SUCCESS, GCGetPortInfo(buffer, PORT_INFO_ID, &type, text, &size));
    EXPECT_STREQ("Buffer0x0", text);
}

} // namespace

} // namespace zvtest
