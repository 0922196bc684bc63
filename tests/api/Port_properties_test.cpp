#include <cstdint>

#include "Port_fixtures.h"

// What is special to GCGetPortInfo among the info queries: the ID, which is given in the form that the
// consumer left in the type.

namespace zvtest {

namespace {

class PortInformation : public OpenPorts {
protected:
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
    static ExpectedLine entered(int command, size_t size)
    {
        return info_line("Enter GCGetPortInfo, info=" + std::to_string(command) +
                         ", buffer size=" + std::to_string(size));
    }
};

TEST_F(PortInformation, GivesAnIdInTheFormOfTheIncomingType)
{
    for (const Port& asked : ports()) {
        SCOPED_TRACE(asked.kind);
        forget();
        const auto text = id<std::string>(asked.handle, INFO_DATATYPE_STRING, 100);
        EXPECT_EQ(GC_ERR_SUCCESS, text.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, text.type);
        EXPECT_EQ(id_of(asked), text.value);
        EXPECT_LOG_LINES(entered(PORT_INFO_ID, 100),
                         info_line("Exit GCGetPortInfo, handle=" + std::string(asked.kind) + ", info= 0"));

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

TEST_F(PortInformation, GivesTheSizeOfAnIdInItsForm)
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

// Lines print 32 bits of a size, here none that are set; the room is all of it.
TEST_F(PortInformation, IsGivenIntoRoomsBeyond32Bits)
{
    char text[100];
    size_t size = 0x100000000;
    INFO_DATATYPE type = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, GCGetPortInfo(tl, PORT_INFO_MODULE, &type, text, &size));
    EXPECT_EQ(9U, size);
    EXPECT_STREQ("TLSystem", text);
    EXPECT_LOGGED(entered(PORT_INFO_MODULE, 0));
}

class CyclicPortInformation : public CyclicStream {};

// In this mode the library does not know the buffers, so all of them have the number 0.
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
