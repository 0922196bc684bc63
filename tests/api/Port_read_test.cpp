#include <cstdint>
#include <vector>

#include "Port_fixtures.h"

// GCReadPort: which registers it reads, and what it makes of the library's answers.

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
        return {Priority::trace, "Enter with handle=0x" + hex16(handle) + ", address=0x" + hex(address),
                "GCReadPort", "ZVGRLibGenTL"};
    }
    static ExpectedLine left(uint64_t address, size_t size, int word)
    {
        return {Priority::trace,
                "Exit GCReadPort, address=0x" + low_hex(address) + ", size=" + std::to_string(size) +
                    ", data=" + std::to_string(word),
                "GCReadPort", "ZVGRLibGenTL"};
    }
    static ExpectedLine said(const std::string& message)
    {
        return {Priority::debug, message, "GCReadPort", "ZVGRLibGenTL"};
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
    /// Everything that the port serves.
    std::vector<uint8_t> whole(PORT_HANDLE handle)
    {
        std::vector<uint8_t> bytes(10000);
        size_t got = bytes.size();
        EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(handle, description, bytes.data(), &got));
        bytes.resize(got);
        return bytes;
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

TEST_F(ReadingPorts, UsesTheHandlesOfTheAskedPortAmongSeveral)
{
    ASSERT_EQ(GC_ERR_SUCCESS, TLClose(tl));
    fake.has_grabbers(3);
    fake.grabber(1).has_cameras(3);
    ASSERT_EQ(GC_ERR_SUCCESS, TLOpen(&tl));
    ASSERT_EQ(GC_ERR_SUCCESS, TLUpdateInterfaceList(tl, nullptr, 0));
    const IF_HANDLE first = open_interface("FG0");
    iface = open_interface("FG1");
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(first, nullptr, 0));
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    dev = open_device(iface, "Device12");
    ASSERT_EQ(GC_ERR_SUCCESS, DevGetPort(dev, &port));
    ds = open_stream(dev, "Stream120");
    forget();

    for (const PORT_HANDLE handle : {iface, dev, ds, port})
        EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(handle, 0, data, &size));
    EXPECT_EQ((Calls{call("ZVGR_GrabberReadReg", fake.grabber_handle(1), 0, data, 4),
                     call("ZVGR_GrabberReadReg", fake.grabber_handle(1), 0, data, 4),
                     call("ZVGR_CameraReadReg", fake.camera_handle(1, 2), 0, data, 4),
                     call("ZVGR_CameraReadReg", fake.camera_handle(1, 2), 0, data, 4)}),
              fake.calls());
}

TEST_F(ReadingPorts, PassesAddressesOnWhole)
{
    for (const uint64_t address : {uint64_t{0x100000000}, UINT64_MAX - 3}) {
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(port, address, data, &size));
        EXPECT_EQ((Calls{call("ZVGR_CameraReadReg", camera(), address, data, 4)}), fake.calls());
        EXPECT_LOG_LINES(entered(port, address), left(address, 4, 0));
    }
}

TEST_F(ReadingPorts, AsksForTheLowHalfOfTheSize)
{
    size = 0x100000004;
    EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(port, 0x1000, data, &size));
    EXPECT_EQ((Calls{call("ZVGR_CameraReadReg", camera(), 0x1000, data, 4)}), fake.calls());
    EXPECT_EQ(4U, size);
}

TEST_F(ReadingPorts, ReportsTheSizeThatTheLibraryGives)
{
    for (const LibraryPort& asked : library_ports()) {
        size = 0x100000004;
        fake.next("ZVGR_" + asked.side + "ReadReg").gives(3);
        EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(asked.handle, 0x1000, data, &size));
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

TEST_F(ReadingPorts, TrustsNoSizeBeyondTheOneAskedForWithItsLogLine)
{
    std::vector<uint8_t> exact = {0x11, 0x22};
    size = exact.size();
    fake.next("ZVGR_GrabberReadReg").gives(100);
    EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(iface, 0x1000, exact.data(), &size));
    EXPECT_EQ(100U, size);
    EXPECT_LOG_LINES(entered(iface, 0x1000), left(0x1000, 100, 0x11220000));
}

// A consumer's buffer is not read for a line that nobody wants.
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
    for (const LibraryPort& asked : library_ports()) {
        for (const uint32_t status : {0U, any_failure, 0xFFFFFFFFU}) {
            SCOPED_TRACE(asked.kind);
            fake.next("ZVGR_" + asked.side + "ReadReg").answers(status);
            forget();
            size = 0x100000004;
            EXPECT_EQ(GC_ERR_ACCESS_DENIED, GCReadPort(asked.handle, 0x1000, data, &size));
            EXPECT_EQ(0x100000004U, size);
            EXPECT_LOG_LINES(entered(asked.handle, 0x1000), said("GC_ERR_ACCESS_DENIED"));
        }
    }
    EXPECT_EQ(0, data[0]);
}

TEST_F(ReadingPorts, RecordsNoError)
{
    const std::string before = last_error();
    fake.next("ZVGR_CameraReadReg").answers(any_failure);
    EXPECT_EQ(GC_ERR_ACCESS_DENIED, GCReadPort(port, 0x1000, data, &size));
    EXPECT_EQ(GC_ERR_INVALID_ADDRESS, GCReadPort(tl, 0, data, &size));
    EXPECT_EQ(before, last_error());
}

TEST_F(ReadingPorts, ServesTheDescriptionsWithoutTheLibrary)
{
    const std::vector<uint8_t> xml = whole(tl);
    ASSERT_EQ(3391U, xml.size());
    EXPECT_EQ("<?xml", std::string(xml.begin(), xml.begin() + 5));
    EXPECT_EQ('>', xml.back());
    const std::vector<uint8_t> zip = whole(buffers[0]->handle);
    ASSERT_EQ(640U, zip.size());
    EXPECT_EQ("PK\3\4", std::string(zip.begin(), zip.begin() + 4));
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(ReadingPorts, LogsReadsOfADescriptionLikeAnyOther)
{
    EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(tl, description, data, &size));
    EXPECT_LOG_LINES(entered(tl, description), left(description, 4, 0x3C3F786D)); // "<?xm"
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(buffers[0]->handle, description, data, &size));
    EXPECT_LOG_LINES(entered(buffers[0]->handle, description), left(description, 4, 0x504B0304));
}

TEST_F(ReadingPorts, GivesADescriptionInPiecesAsInOne)
{
    for (const PORT_HANDLE handle : own_ports()) {
        const std::vector<uint8_t> expected = whole(handle);
        std::vector<uint8_t> pieces;
        size_t got = 0;
        do {
            uint8_t piece[100];
            got = sizeof piece;
            ASSERT_EQ(GC_ERR_SUCCESS, GCReadPort(handle, description + pieces.size(), piece, &got));
            pieces.insert(pieces.end(), piece, piece + got);
        } while (got == 100 && pieces.size() < expected.size());
        EXPECT_EQ(expected, pieces);
    }
}

TEST_F(ReadingPorts, ShortensReadsThatRunPastADescription)
{
    struct Row {
        PORT_HANDLE handle;
        uint64_t address;
        size_t left;
    };
    for (const Row& row : {
             Row{tl, description + 3390, 1},
             Row{tl, description + 3300, 91},
             Row{buffers[0]->handle, description + 600, 40},
             Row{buffers[0]->handle, description + 639, 1},
         }) {
        std::vector<uint8_t> bytes(100, 0xA5);
        size_t got = bytes.size();
        EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(row.handle, row.address, bytes.data(), &got));
        EXPECT_EQ(row.left, got);
        EXPECT_NE(0xA5, bytes[row.left - 1]);
        EXPECT_EQ(0xA5, bytes[row.left]) << "no zero is added";
    }
}

TEST_F(ReadingPorts, ReadsNothingOfADescriptionForSizeZero)
{
    for (const PORT_HANDLE handle : own_ports()) {
        forget();
        size = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(handle, description, data, &size));
        EXPECT_EQ(0U, size);
        EXPECT_EQ(0, data[0]);
        EXPECT_LOG_LINES(entered(handle, description), left(description, 0, 0));
    }
}

TEST_F(ReadingPorts, RefusesAddressesOutsideADescription)
{
    for (const PORT_HANDLE handle : own_ports()) {
        const uint64_t length = handle == tl ? 3391 : 640;
        for (const uint64_t address :
             {description - 1, description + length, uint64_t{0}, UINT64_MAX, description + 0x100000000}) {
            forget();
            size = 0x100000004;
            EXPECT_EQ(GC_ERR_INVALID_ADDRESS, GCReadPort(handle, address, data, &size));
            EXPECT_EQ(0x100000004U, size);
            EXPECT_EQ(0, data[0]);
            EXPECT_TRUE(logged_exactly(unsupported(handle, address, 0x100000004)));
            EXPECT_TRUE(fake.calls().empty());
        }
    }
}

TEST_F(ReadingPorts, AcceptsAHugeSize)
{
    std::vector<uint8_t> bytes(3391);
    size = SIZE_MAX;
    EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(tl, description, bytes.data(), &size));
    EXPECT_EQ(3391U, size);
}

class ReadingASystemAlone : public OpenSystem {};

TEST_F(ReadingASystemAlone, NeedsNoGrabber)
{
    std::vector<uint8_t> bytes(3391);
    size_t size = bytes.size();
    EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(tl, description, bytes.data(), &size));
    EXPECT_TRUE(fake.calls().empty());
}

} // namespace

} // namespace zvtest
