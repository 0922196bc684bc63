#include <cstdint>

#include "Port_fixtures.h"

// GCReadPort, GCWritePort and their stacked forms: what they check before any register is touched.

namespace zvtest {

namespace {

ExpectedLine line(Priority priority, const std::string& message, const char* function)
{
    return {priority, message, function, "ZVGRLibGenTL"};
}

ExpectedLine not_opened(const char* function)
{
    return line(Priority::error, "No preceding call to GCInitLib", function);
}

/// Four bytes of register data, read or to be written.
struct Data {
    uint8_t bytes[4]{0x12, 0x34, 0x56, 0x78};
    size_t size{sizeof bytes};
};

ExpectedLine read_entered(PORT_HANDLE port, uint64_t address)
{
    return line(Priority::trace, "Enter with handle=0x" + hex16(port) + ", address=0x" + hex(address),
                "GCReadPort");
}

class GCReadPort : public OpenPorts {
protected:
    GC_ERROR read(PORT_HANDLE handle, void* buffer, size_t* size, uint64_t address = 0x1000)
    {
        return GenTL::GCReadPort(handle, address, buffer, size);
    }
    Data data;
};

TEST_F(GCReadPort, RefusesANullHandleSilentlyBeforeItLooksAtPointers)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, read(nullptr, nullptr, nullptr));
    EXPECT_LOG_LINES(read_entered(nullptr, 0x1000));
}

TEST_F(GCReadPort, RefusesMissingPointersBeforeItLooksForTheHandle)
{
    for (const PORT_HANDLE handle : {tl, static_cast<PORT_HANDLE>(this)}) {
        for (const auto& [buffer, size] : {std::pair<void*, size_t*>{nullptr, &data.size},
                                           {all_ones<void*>(), &data.size},
                                           {data.bytes, nullptr},
                                           {data.bytes, all_ones<size_t*>()}}) {
            forget();
            EXPECT_EQ(GC_ERR_INVALID_PARAMETER, read(handle, buffer, size));
            EXPECT_LOG_LINES(read_entered(handle, 0x1000),
                             port_error_exit("GCReadPort", "GC_ERR_INVALID_PARAMETER", -1009));
        }
    }
    EXPECT_EQ(4U, data.size);
}

TEST_F(GCReadPort, RefusesHandlesThatNameNothing)
{
    for (const PORT_HANDLE handle : {static_cast<PORT_HANDLE>(this), all_ones<PORT_HANDLE>(), event}) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, read(handle, data.bytes, &data.size));
        EXPECT_EQ(4U, data.size);
        EXPECT_EQ(0x12, data.bytes[0]);
        EXPECT_LOG_LINES(read_entered(handle, 0x1000),
                         line(Priority::debug, "GC_ERR_INVALID_HANDLE", "GCReadPort"));
    }
}

// The write has a limit of 32 bits, the read has none.
TEST_F(GCReadPort, LogsTheWholeAddress)
{
    read(nullptr, data.bytes, &data.size, 0x123456789ABCDEF0);
    EXPECT_LOG_LINES(read_entered(nullptr, 0x123456789ABCDEF0));
}

class GCWritePort : public OpenPorts {
protected:
    GC_ERROR write(PORT_HANDLE handle, const void* buffer, size_t* size, uint64_t address = 0x1000)
    {
        return GenTL::GCWritePort(handle, address, buffer, size);
    }
    static ExpectedLine entered(PORT_HANDLE handle, const std::string& address, size_t size, int word)
    {
        return line(Priority::trace,
                    "Enter with handle=0x" + hex16(handle) + ", address=0x" + address +
                        ", size=" + std::to_string(size) + ", data=" + std::to_string(word),
                    "GCWritePort");
    }
    Data data;
};

TEST_F(GCWritePort, ChecksPointersFirst)
{
    ASSERT_EQ(GC_ERR_SUCCESS, GCCloseLib());
    for (const auto& [buffer, size] : {std::pair<const void*, size_t*>{nullptr, &data.size},
                                       {all_ones<void*>(), &data.size},
                                       {data.bytes, nullptr},
                                       {data.bytes, all_ones<size_t*>()}}) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, write(nullptr, buffer, size));
        EXPECT_LOG_LINES(port_error_exit("GCWritePort", "GC_ERR_INVALID_PARAMETER", -1009));
    }
    EXPECT_EQ(4U, data.size);
}

TEST_F(GCWritePort, RefusesLongAddressesBeforeItLooksAtTheHandle)
{
    for (const PORT_HANDLE handle : {tl, static_cast<PORT_HANDLE>(nullptr)}) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_ADDRESS, write(handle, data.bytes, &data.size, 0x100000000));
        EXPECT_LOG_LINES(entered(handle, "0", 4, 0x12345678));
    }
}

TEST_F(GCWritePort, LooksAtTheHandleForTheLastAddress)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, write(nullptr, data.bytes, &data.size, 0xFFFFFFFF));
    EXPECT_LOGGED(entered(nullptr, "FFFFFFFF", 4, 0x12345678));
}

TEST_F(GCWritePort, RefusesHandlesThatNameNothing)
{
    for (const PORT_HANDLE handle : strangers()) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, write(handle, data.bytes, &data.size));
        EXPECT_EQ(4U, data.size);
        EXPECT_LOG_LINES(entered(handle, "1000", 4, 0x12345678),
                         line(Priority::error, "GCWritePort - GC_ERR_INVALID_HANDLE", "GCWritePort"),
                         port_error_exit("GCWritePort", "GC_ERR_INVALID_HANDLE", -1006));
    }
}

TEST_F(GCWritePort, LogsTheFirstFourBytesAsABigEndianWord)
{
    struct Row {
        size_t size;
        int word;
    };
    constexpr Row rows[] = {{0, 0}, {1, 0x12000000}, {3, 0x12345600}, {4, 0x12345678}, {6, 0x12345678}};
    const uint8_t bytes[] = {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC};
    for (const Row& row : rows) {
        // A buffer of exactly this size, so that a read beyond it is found.
        const std::vector<uint8_t> exact(bytes, bytes + row.size);
        size_t size = row.size;
        forget();
        write(nullptr, row.size == 0 ? bytes : exact.data(), &size);
        EXPECT_LOGGED(entered(nullptr, "1000", row.size, row.word));
    }
}

TEST_F(GCWritePort, LogsAWordAboveTheSignedRangeAsNegative)
{
    const uint8_t bytes[] = {0xFF, 0xFF, 0xFF, 0xFE};
    size_t size = sizeof bytes;
    write(nullptr, bytes, &size);
    EXPECT_LOGGED(entered(nullptr, "1000", 4, -2));
}

// A consumer's pointer is not read for a line that nobody wants.
TEST_F(GCWritePort, DoesNotReadItsDataBelowTrace)
{
    log.set_level(Priority::debug);
    size_t size = 4;
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, write(nullptr, reinterpret_cast<const void*>(uintptr_t{16}), &size));
}

class StackedPorts : public OpenPorts {
protected:
    uint8_t bytes[4]{};
    PORT_REGISTER_STACK_ENTRY entry{0x1000, bytes, sizeof bytes};
    size_t count{1};
};

class GCReadPortStacked : public StackedPorts {
protected:
    const ExpectedLine entered{line(Priority::debug, "Enter GCReadPortStacked", "GCReadPortStacked")};
};

TEST_F(GCReadPortStacked, RefusesMissingPointersSilentlyBeforeItLooksAtTheHandle)
{
    for (const auto& [entries, number] : {std::pair<PORT_REGISTER_STACK_ENTRY*, size_t*>{nullptr, &count},
                                          {all_ones<PORT_REGISTER_STACK_ENTRY*>(), &count},
                                          {&entry, nullptr},
                                          {&entry, all_ones<size_t*>()}}) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, GenTL::GCReadPortStacked(nullptr, entries, number));
        EXPECT_LOG_LINES(entered);
    }
}

TEST_F(GCReadPortStacked, RefusesHandlesThatNameNothing)
{
    for (const PORT_HANDLE handle : strangers()) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCReadPortStacked(handle, &entry, &count));
        EXPECT_EQ(1U, count);
        EXPECT_LOG_LINES(
            entered, line(Priority::error, "GCReadPortStacked - GC_ERR_INVALID_HANDLE", "GCReadPortStacked"));
    }
}

class GCWritePortStacked : public StackedPorts {
protected:
    const ExpectedLine entered{line(Priority::debug, "Enter GCWritePortStacked", "GCWritePortStacked")};
};

TEST_F(GCWritePortStacked, RefusesANullHandleSilentlyBeforeItLooksAtPointers)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCWritePortStacked(nullptr, nullptr, nullptr));
    EXPECT_LOG_LINES(entered);
}

TEST_F(GCWritePortStacked, RefusesMissingPointersSilently)
{
    for (const auto& [entries, number] : {std::pair<PORT_REGISTER_STACK_ENTRY*, size_t*>{nullptr, &count},
                                          {all_ones<PORT_REGISTER_STACK_ENTRY*>(), &count},
                                          {&entry, nullptr},
                                          {&entry, all_ones<size_t*>()}}) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, GenTL::GCWritePortStacked(this, entries, number));
        EXPECT_LOG_LINES(entered);
    }
}

TEST_F(GCWritePortStacked, RefusesHandlesThatNameNothing)
{
    for (const PORT_HANDLE handle : {static_cast<PORT_HANDLE>(this), all_ones<PORT_HANDLE>(), event}) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCWritePortStacked(handle, &entry, &count));
        EXPECT_EQ(1U, count);
        EXPECT_LOG_LINES(entered, line(Priority::error, "GCWritePortStacked - GC_ERR_INVALID_HANDLE",
                                       "GCWritePortStacked"));
    }
}

/// Access through the port of a closed module.
class ClosedPortAccess : public ClosedPorts {
protected:
    Data data;
    PORT_REGISTER_STACK_ENTRY entry{0x1000, data.bytes, sizeof data.bytes};
    size_t count{1};
};

TEST_F(ClosedPortAccess, IsRefusedLikeAnUnknownHandle)
{
    for (const PORT_HANDLE handle : closed_ports()) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCReadPort(handle, 0, data.bytes, &data.size));
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCWritePort(handle, 0, data.bytes, &data.size));
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCReadPortStacked(handle, &entry, &count));
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCWritePortStacked(handle, &entry, &count));
        EXPECT_LOGGED(line(Priority::debug, "GC_ERR_INVALID_HANDLE", "GCReadPort"));
        EXPECT_NOT_LOGGED("GC_ERR_INVALID_HANDLE, grabber is closed");
        EXPECT_LOGGED(line(Priority::error, "GCWritePort - GC_ERR_INVALID_HANDLE", "GCWritePort"));
        EXPECT_LOGGED(
            line(Priority::error, "GCReadPortStacked - GC_ERR_INVALID_HANDLE", "GCReadPortStacked"));
        EXPECT_LOGGED(
            line(Priority::error, "GCWritePortStacked - GC_ERR_INVALID_HANDLE", "GCWritePortStacked"));
    }
    EXPECT_TRUE(fake.calls().empty());
}

class PortsWithoutSystem : public OpenLibrary {
protected:
    Data data;
    PORT_REGISTER_STACK_ENTRY entry{0x1000, data.bytes, sizeof data.bytes};
    size_t count{1};
};

TEST_F(PortsWithoutSystem, AreNotRead)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCReadPort(this, 0, nullptr, nullptr));
    EXPECT_LOG_LINES(read_entered(this, 0));
}

TEST_F(PortsWithoutSystem, AreNotReadStacked)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCReadPortStacked(this, &entry, &count));
    EXPECT_LOGGED(line(Priority::error, "GCReadPortStacked - GC_ERR_INVALID_HANDLE", "GCReadPortStacked"));
}

TEST_F(PortsWithoutSystem, AreNotWritten)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCWritePort(this, 0, data.bytes, &data.size));
    EXPECT_LOGGED(line(Priority::error, "GCWritePort - GC_ERR_INVALID_HANDLE", "GCWritePort"));
}

TEST_F(PortsWithoutSystem, AreNotWrittenStacked)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCWritePortStacked(this, nullptr, nullptr));
    EXPECT_LOG_LINES(line(Priority::debug, "Enter GCWritePortStacked", "GCWritePortStacked"));
}

class PortAccessBeforeInitialisation : public Library {
protected:
    Data data;
    PORT_REGISTER_STACK_ENTRY entry{0x1000, data.bytes, sizeof data.bytes};
    size_t count{1};
};

TEST_F(PortAccessBeforeInitialisation, DoesNotRead)
{
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GenTL::GCReadPort(this, 0, data.bytes, &data.size));
    EXPECT_EQ(4U, data.size);
    EXPECT_LOG_LINES(read_entered(this, 0), not_opened("GCReadPort"));
}

TEST_F(PortAccessBeforeInitialisation, DoesNotReadStacked)
{
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GenTL::GCReadPortStacked(this, &entry, &count));
    EXPECT_LOG_LINES(line(Priority::debug, "Enter GCReadPortStacked", "GCReadPortStacked"),
                     not_opened("GCReadPortStacked"));
}

TEST_F(PortAccessBeforeInitialisation, DoesNotWrite)
{
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GenTL::GCWritePort(this, 0x100000000, data.bytes, &data.size));
    EXPECT_LOG_LINES(line(Priority::trace,
                          "Enter with handle=0x" + hex16(this) + ", address=0x0, size=4, data=305419896",
                          "GCWritePort"),
                     not_opened("GCWritePort"));
}

TEST_F(PortAccessBeforeInitialisation, DoesNotWriteStacked)
{
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GenTL::GCWritePortStacked(nullptr, nullptr, nullptr));
    EXPECT_LOG_LINES(line(Priority::debug, "Enter GCWritePortStacked", "GCWritePortStacked"),
                     not_opened("GCWritePortStacked"));
}

} // namespace

} // namespace zvtest
