#include <cstdint>
#include <vector>

#include "Port_fixtures.h"

// GCReadPort: which registers it reads, and how it passes on what the library answers.

namespace zvtest {

namespace {

constexpr uint64_t description = 0x88888888;

class ReadingPorts : public OpenPorts {
protected:
    void SetUp() override
    {
        OpenPorts::SetUp();
        if (HasFatalFailure())
            return;
        set_registers(fake.grabber(0).registers, {0x12, 0x34, 0x56, 0x78, 0x9A});
        set_registers(fake.grabber(0).camera(0).registers, {0xFF, 0xFF, 0xFF, 0xFE, 0x01});
    }

    static void set_registers(Registers& registers, const std::vector<uint8_t>& bytes)
    {
        for (size_t i = 0; i < bytes.size(); ++i)
            registers[0x1000 + i] = bytes[i];
    }
    static ExpectedLine entered(PORT_HANDLE handle, uint64_t address)
    {
        return {Priority::trace, "Enter with handle=0x" + hex16(handle) + ", address=0x" + hex(address)};
    }
    static ExpectedLine left(uint64_t address, size_t size, int word)
    {
        return {Priority::trace, "Exit GCReadPort, address=0x" + low_hex(address) +
                                     ", size=" + std::to_string(size) + ", data=" + std::to_string(word)};
    }
    /// What a module that serves its own memory says of an address outside.
    std::vector<ExpectedLine> unsupported(PORT_HANDLE handle, uint64_t address, size_t asked) const
    {
        const std::string unit = handle == tl ? "SystemModule" : "BufferModule";
        return {
            entered(handle, address),
            {Priority::error,
             "Unsupported port read for address 0x" + hex(address) + " with size " + std::to_string(asked),
             unit + "::ReadPort", unit},
            {Priority::error, "Exit, Returning error GC_ERR_INVALID_ADDRESS (0xFFFFFC09)",
             unit + "::ReadPort", unit}};
    }

    uint8_t data[8]{};
    size_t size{4};
};

TEST_F(ReadingPorts, AsksTheLibraryForTheRegistersOfGrabberOrCamera)
{
    for (const LibraryPort& asked : library_ports()) {
        SCOPED_TRACE(asked.kind);
        forget();
        size = 4;
        EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(asked.handle, 0x1000, data, &size));
        const std::string function = "ZVGR_" + asked.side + "ReadReg";
        EXPECT_EQ((Calls{call(function.c_str(), asked.library, 0x1000, data, 4)}), fake.calls());
        EXPECT_EQ(4U, size);
        const bool of_grabber = asked.side == "Grabber";
        EXPECT_EQ(of_grabber ? 0x12 : 0xFF, data[0]);
        EXPECT_EQ(of_grabber ? 0x78 : 0xFE, data[3]);
        EXPECT_EQ(0, data[4]);
        EXPECT_LOG_LINES(entered(asked.handle, 0x1000), left(0x1000, 4, of_grabber ? 0x12345678 : -2));
    }
}

TEST_F(ReadingPorts, PassesAddressesOnWhole)
{
    for (const uint64_t address : {uint64_t{0x100000000}, uint64_t{0x123456789ABCDEF0}, UINT64_MAX - 3}) {
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(port, address, data, &size));
        EXPECT_EQ((Calls{call("ZVGR_CameraReadReg", camera(), address, data, 4)}), fake.calls());
        EXPECT_LOG_LINES(entered(port, address), left(address, 4, 0));
    }
}

TEST_F(ReadingPorts, AsksForTheLowHalfOfTheSizeAndReportsTheLibrarysAnswer)
{
    for (const LibraryPort& asked : library_ports()) {
        const std::string function = "ZVGR_" + asked.side + "ReadReg";
        forget();
        size = 0x100000004;
        fake.next(function).gives(3);
        EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(asked.handle, 0x1000, data, &size));
        EXPECT_EQ((Calls{call(function.c_str(), asked.library, 0x1000, data, 4)}), fake.calls());
        EXPECT_EQ(3U, size) << asked.kind;
    }
}

TEST_F(ReadingPorts, ReadsNothingForSizeZero)
{
    size = 0;
    data[0] = 0x55;
    EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(iface, 0x1000, data, &size));
    EXPECT_EQ((Calls{call("ZVGR_GrabberReadReg", grabber(), 0x1000, data, 0)}), fake.calls());
    EXPECT_EQ(0U, size);
    EXPECT_EQ(0x55, data[0]);
    EXPECT_LOG_LINES(entered(iface, 0x1000), left(0x1000, 0, 0));
}

TEST_F(ReadingPorts, LogsTheFirstFourBytesAsABigEndianWord)
{
    struct Row {
        size_t size;
        int word;
    };
    constexpr Row rows[] = {{1, 0x12000000}, {3, 0x12345600}, {4, 0x12345678}, {5, 0x12345678}};
    for (const Row& row : rows) {
        std::vector<uint8_t> exact(row.size); // so that a read beyond it is found
        size = row.size;
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(iface, 0x1000, exact.data(), &size));
        EXPECT_LOG_LINES(entered(iface, 0x1000), left(0x1000, row.size, row.word));
    }
}

TEST_F(ReadingPorts, LogsNoByteBeyondTheSizeAskedFor)
{
    std::vector<uint8_t> exact = {0x11, 0x22};
    size = exact.size();
    fake.next("ZVGR_GrabberReadReg").gives(100);
    EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(iface, 0x1000, exact.data(), &size));
    EXPECT_EQ(100U, size);
    EXPECT_LOG_LINES(entered(iface, 0x1000), left(0x1000, 100, 0x11220000));
}

// A consumer's buffer is not read for a line that is not written.
TEST_F(ReadingPorts, DoesNotReadItsDataBelowTrace)
{
    log.set_level(Priority::debug);
    void* const unreadable = reinterpret_cast<void*>(uintptr_t{16});
    fake.next("ZVGR_GrabberReadReg").gives(4);
    EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(iface, 0x1000, unreadable, &size));
    EXPECT_LOG_LINES();
}

TEST_F(ReadingPorts, IsDeniedWhenTheLibraryRefuses)
{
    const std::string before = last_error();
    for (const LibraryPort& asked : library_ports()) {
        for (const uint32_t status : {0U, any_failure, 0xFFFFFFFFU}) {
            SCOPED_TRACE(asked.kind);
            fake.next("ZVGR_" + asked.side + "ReadReg").answers(status);
            forget();
            size = 0x100000004;
            EXPECT_EQ(GC_ERR_ACCESS_DENIED, GCReadPort(asked.handle, 0x1000, data, &size));
            EXPECT_EQ(0x100000004U, size);
            EXPECT_LOG_LINES(entered(asked.handle, 0x1000), {Priority::debug, "GC_ERR_ACCESS_DENIED"});
            EXPECT_EQ(before, last_error());
        }
    }
    EXPECT_EQ(0, data[0]);
}

/// A port that serves its description itself.
struct Description {
    PORT_HANDLE handle;
    size_t length;
    const char* start;
    int word; // the first four bytes, big-endian
};

class ReadingDescriptions : public ReadingPorts {
protected:
    std::vector<Description> descriptions() const
    {
        return {{tl, 3391, "<?xm", 0x3C3F786D}, {buffers[0]->handle, 640, "PK\3\4", 0x504B0304}};
    }
};

TEST_F(ReadingDescriptions, DoesNotInvolveTheLibrary)
{
    for (const Description& asked : descriptions()) {
        std::vector<uint8_t> bytes(asked.length + 1, 0xA5);
        for (const size_t room : {bytes.size(), SIZE_MAX}) {
            forget();
            size = room;
            EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(asked.handle, description, bytes.data(), &size));
            EXPECT_EQ(asked.length, size);
            EXPECT_EQ(asked.start, std::string(bytes.begin(), bytes.begin() + 4));
            EXPECT_NE(0xA5, bytes[asked.length - 1]);
            EXPECT_EQ(0xA5, bytes[asked.length]) << "no zero is added";
            EXPECT_LOG_LINES(entered(asked.handle, description), left(description, asked.length, asked.word));
            EXPECT_TRUE(fake.calls().empty());
        }
    }
}

TEST_F(ReadingDescriptions, AcceptsSizeZero)
{
    for (const Description& asked : descriptions()) {
        forget();
        size = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(asked.handle, description, data, &size));
        EXPECT_EQ(0U, size);
        EXPECT_EQ(0, data[0]);
        EXPECT_LOG_LINES(entered(asked.handle, description), left(description, 0, 0));
    }
}

TEST_F(ReadingDescriptions, RefusesAddressesOutside)
{
    const std::string before = last_error();
    for (const Description& asked : descriptions()) {
        for (const uint64_t address : {description - 1, description + asked.length, uint64_t{0}, UINT64_MAX,
                                       description + 0x100000000}) {
            forget();
            size = 0x100000004;
            EXPECT_EQ(GC_ERR_INVALID_ADDRESS, GCReadPort(asked.handle, address, data, &size));
            EXPECT_EQ(0x100000004U, size);
            EXPECT_EQ(0, data[0]);
            EXPECT_TRUE(logged_exactly(unsupported(asked.handle, address, 0x100000004)));
            EXPECT_EQ(before, last_error());
            EXPECT_TRUE(fake.calls().empty());
        }
    }
}

class ReadingASystemWithoutInterfaces : public OpenSystem {};

TEST_F(ReadingASystemWithoutInterfaces, WorksWithoutAScan)
{
    std::vector<uint8_t> bytes(3391);
    size_t size = bytes.size();
    EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(tl, description, bytes.data(), &size));
    EXPECT_TRUE(fake.calls().empty());
}

} // namespace

} // namespace zvtest
