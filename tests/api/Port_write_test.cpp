#include <cstdint>
#include <vector>

#include "Port_fixtures.h"

// GCWritePort: which registers it writes, and how it passes on what the library answers.

namespace zvtest {

namespace {

class WritingPorts : public OpenPorts {
protected:
    static ExpectedLine entered(PORT_HANDLE handle, const std::string& address, int size, int word)
    {
        return {Priority::trace, "Enter with handle=0x" + hex16(handle) + ", address=0x" + address +
                                     ", size=" + std::to_string(size) + ", data=" + std::to_string(word)};
    }
    static ExpectedLine left(PORT_HANDLE handle)
    {
        return {Priority::trace, "Exit GCWritePort, handle = 0x" + low_hex(handle)};
    }

    const std::vector<uint8_t> data{0x12, 0x34, 0x56, 0x78};
    size_t size{4};
};

TEST_F(WritingPorts, HandsTheDataToTheRegistersOfGrabberOrCamera)
{
    for (const LibraryPort& asked : library_ports()) {
        SCOPED_TRACE(asked.kind);
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, GCWritePort(asked.handle, 0x1000, data.data(), &size));
        const std::string function = "ZVGR_" + asked.side + "WriteReg";
        ASSERT_EQ((Calls{call(function.c_str(), asked.library, 0x1000, data.data(), 4)}), fake.calls());
        EXPECT_EQ(data, fake.calls()[0].data);
        EXPECT_EQ(4U, size);
        EXPECT_LOG_LINES(entered(asked.handle, "1000", 4, 0x12345678), left(asked.handle));
    }
}

TEST_F(WritingPorts, ReachesTheLastAddressOf32Bits)
{
    EXPECT_EQ(GC_ERR_SUCCESS, GCWritePort(port, 0xFFFFFFFF, data.data(), &size));
    EXPECT_EQ((Calls{call("ZVGR_CameraWriteReg", camera(), 0xFFFFFFFF, data.data(), 4)}), fake.calls());
    EXPECT_LOGGED(entered(port, "FFFFFFFF", 4, 0x12345678));
}

TEST_F(WritingPorts, RefusesLongerAddressesSilentlyBeforeItLooksAtTheHandle)
{
    std::vector<PORT_HANDLE> handles = {tl, nullptr};
    for (const LibraryPort& asked : library_ports())
        handles.push_back(asked.handle);
    for (const PORT_HANDLE handle : handles) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_ADDRESS, GCWritePort(handle, 0x100000000, data.data(), &size));
        EXPECT_LOG_LINES(entered(handle, "0", 4, 0x12345678));
        EXPECT_EQ(GC_ERR_INVALID_ADDRESS, GCWritePort(handle, UINT64_MAX, data.data(), &size));
    }
    EXPECT_EQ(4U, size);
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(WritingPorts, LogsTheFirstFourBytesAsABigEndianWord)
{
    struct Row {
        std::vector<uint8_t> bytes; // exactly these, so that a read beyond them is found
        int word;
    };
    for (const Row& row : {Row{{0x12}, 0x12000000},
                           {{0x12, 0x34, 0x56}, 0x12345600},
                           {{0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC}, 0x12345678},
                           {{0xFF, 0xFF, 0xFF, 0xFE}, -2}}) {
        size = row.bytes.size();
        forget();
        GCWritePort(port, 0x1000, row.bytes.data(), &size);
        EXPECT_LOGGED(entered(port, "1000", static_cast<int>(row.bytes.size()), row.word));
    }
}

// A consumer's data is not read for a line that is not written.
TEST_F(WritingPorts, DoesNotReadItsDataBelowTrace)
{
    log.set_level(Priority::debug);
    const void* const unreadable = reinterpret_cast<const void*>(uintptr_t{16});
    EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, GCWritePort(tl, 0x1000, unreadable, &size));
}

TEST_F(WritingPorts, WritesNothingForSizeZero)
{
    size = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, GCWritePort(port, 0x1000, data.data(), &size));
    EXPECT_EQ((Calls{call("ZVGR_CameraWriteReg", camera(), 0x1000, data.data(), 0)}), fake.calls());
    EXPECT_LOG_LINES(entered(port, "1000", 0, 0), left(port));
}

// The library knows 32 bits of it; the rest is not touched.
TEST_F(WritingPorts, LeavesTheSizeToTheLibrary)
{
    for (const LibraryPort& asked : library_ports()) {
        SCOPED_TRACE(asked.kind);
        const std::string function = "ZVGR_" + asked.side + "WriteReg";
        forget();
        size = 0x100000004;
        fake.next(function).gives(2);
        EXPECT_EQ(GC_ERR_SUCCESS, GCWritePort(asked.handle, 0x1000, data.data(), &size));
        EXPECT_EQ(0x100000002U, size);
        EXPECT_EQ((Calls{call(function.c_str(), asked.library, 0x1000, data.data(), 4)}), fake.calls());
        EXPECT_LOG_LINES(entered(asked.handle, "1000", 4, 0x12345678), left(asked.handle));
    }
}

TEST_F(WritingPorts, IsDeniedWhenTheLibraryRefuses)
{
    const std::string before = last_error();
    for (const LibraryPort& asked : library_ports()) {
        for (const uint32_t status : {0U, any_failure, 0xFFFFFFFFU}) {
            SCOPED_TRACE(asked.kind);
            fake.next("ZVGR_" + asked.side + "WriteReg").answers(status);
            forget();
            EXPECT_EQ(GC_ERR_ACCESS_DENIED, GCWritePort(asked.handle, 0x1000, data.data(), &size));
            EXPECT_EQ(4U, size);
            EXPECT_LOG_LINES(entered(asked.handle, "1000", 4, 0x12345678), FAILED_WITH(GC_ERR_ACCESS_DENIED));
            EXPECT_EQ(before, last_error());
        }
    }
}

TEST_F(WritingPorts, LeavesDescriptionsAlone)
{
    const std::string before = last_error();
    for (const PORT_HANDLE handle : own_ports()) {
        forget();
        size = 0x100000004;
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, GCWritePort(handle, 0x88888888, data.data(), &size));
        EXPECT_EQ(0U, size);
        EXPECT_LOG_LINES(entered(handle, "88888888", 4, 0x12345678), FAILED_WITH(GC_ERR_NOT_IMPLEMENTED));
        EXPECT_EQ(before, last_error());
    }
    EXPECT_TRUE(fake.calls().empty());
}

class WritingBeforeInitialisation : public Library {};

TEST_F(WritingBeforeInitialisation, IsRefusedBeforeTheAddressIsLookedAt)
{
    const uint8_t data[4]{};
    size_t size = sizeof data;
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GCWritePort(this, 0x100000000, data, &size));
    EXPECT_LOGGED(Priority::error, "No preceding call to GCInitLib", "GCWritePort");
}

} // namespace

} // namespace zvtest
