#include <cstdint>
#include <ostream>
#include <vector>

#include "Port_fixtures.h"

// GCReadPortStacked and GCWritePortStacked: one algorithm in two directions.

namespace zvtest {

namespace {

struct Direction {
    const char* function;
    GC_ERROR (*call)(PORT_HANDLE, PORT_REGISTER_STACK_ENTRY*, size_t*);
    const char* verb; // as the library's functions are named

    friend std::ostream& operator<<(std::ostream& out, const Direction& direction)
    {
        return out << direction.function;
    }
};

class StackedAccess : public OpenPorts, public testing::WithParamInterface<Direction> {
protected:
    GC_ERROR access(PORT_HANDLE handle) { return GetParam().call(handle, entries, &count); }
    std::string library_function(const LibraryPort& asked) const
    {
        return "ZVGR_" + asked.side + GetParam().verb + "Reg";
    }
    ExpectedLine entered() const { return {Priority::debug, "Enter " + std::string(GetParam().function)}; }
    ExpectedLine left() const { return {Priority::debug, "Exit " + std::string(GetParam().function)}; }
    ExpectedLine failed(Priority priority, const std::string& reason) const
    {
        return {priority, GetParam().function + (" - " + reason)};
    }

    uint8_t bytes[3][4]{};
    PORT_REGISTER_STACK_ENTRY entries[3]{{0x1000, bytes[0], 4}, {0x2000, bytes[1], 4}, {0x3000, bytes[2], 4}};
    size_t count{3};
};

INSTANTIATE_TEST_SUITE_P(, StackedAccess,
                         testing::Values(Direction{"GCReadPortStacked", GCReadPortStacked, "Read"},
                                         Direction{"GCWritePortStacked", GCWritePortStacked, "Write"}),
                         testing::PrintToStringParamName());

TEST_P(StackedAccess, MovesOnlyTheFirstEntry)
{
    for (const LibraryPort& asked : library_ports()) {
        SCOPED_TRACE(asked.kind);
        forget();
        count = 3;
        EXPECT_EQ(GC_ERR_SUCCESS, access(asked.handle));
        EXPECT_EQ(1U, count);
        EXPECT_EQ((Calls{call(library_function(asked).c_str(), asked.library, 0x1000, bytes[0], 4)}),
                  fake.calls());
        EXPECT_LOG_LINES(entered(), left());
    }
}

TEST_P(StackedAccess, CountsNoEntryWhileTheFirstIsMoved)
{
    size_t seen = 7;
    const LibraryPort asked = library_ports()[0];
    fake.on(library_function(asked), [&](const Call&) { seen = count; });
    EXPECT_EQ(GC_ERR_SUCCESS, access(asked.handle));
    EXPECT_EQ(0U, seen);
}

TEST_P(StackedAccess, PassesAddressesOnWholeAndLeavesTheEntryAlone)
{
    for (const LibraryPort& asked : library_ports()) {
        forget();
        entries[0].Address = 0x123456789;
        entries[0].Size = 0x100000004;
        fake.next(library_function(asked)).gives(2);
        EXPECT_EQ(GC_ERR_SUCCESS, access(asked.handle));
        EXPECT_EQ((Calls{call(library_function(asked).c_str(), asked.library, 0x123456789, bytes[0], 4)}),
                  fake.calls());
        EXPECT_EQ(0x100000004U, size_t{entries[0].Size}); // packed: copied before it is compared
        EXPECT_EQ(0x123456789U, uint64_t{entries[0].Address});
        EXPECT_EQ(bytes[0], static_cast<void*>(entries[0].pBuffer));
    }
}

TEST_P(StackedAccess, LooksAtNoPointerWithinAnEntry)
{
    entries[0].pBuffer = nullptr;
    fake.next("ZVGR_Camera" + std::string(GetParam().verb) + "Reg").gives(0);
    entries[0].Size = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, access(port));
    EXPECT_EQ(1U, fake.calls().size());
}

TEST_P(StackedAccess, SucceedsWithoutEntries)
{
    for (const LibraryPort& asked : library_ports()) {
        forget();
        count = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, access(asked.handle));
        EXPECT_EQ(0U, count);
        EXPECT_LOG_LINES(entered(), left());
        EXPECT_TRUE(fake.calls().empty());
    }
}

TEST_P(StackedAccess, IsDeniedWhenTheLibraryRefuses)
{
    entries[0].Address = 0x1FEDCBA98;
    for (const LibraryPort& asked : library_ports()) {
        SCOPED_TRACE(asked.kind);
        const bool is_quiet = std::string(asked.kind) == "Device" && std::string(GetParam().verb) == "Read";
        fake.next(library_function(asked)).answers(any_failure);
        forget();
        count = 3;
        EXPECT_EQ(GC_ERR_ACCESS_DENIED, access(asked.handle));
        EXPECT_EQ(0U, count);
        EXPECT_EQ(1U, fake.calls().size());
        EXPECT_LOG_LINES(entered(), failed(is_quiet ? Priority::information : Priority::error,
                                           "GC_ERR_ACCESS_DENIED, address=0xFEDCBA98 "));
    }
}

TEST_P(StackedAccess, IsNotImplementedForDescriptions)
{
    for (const PORT_HANDLE handle : own_ports()) {
        for (const size_t entries_given : {size_t{0}, size_t{3}}) {
            forget();
            count = entries_given;
            EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, access(handle));
            EXPECT_EQ(entries_given, count);
            EXPECT_LOG_LINES(entered(), failed(Priority::error, "GC_ERR_NOT_IMPLEMENTED"));
        }
    }
    EXPECT_TRUE(fake.calls().empty());
}

TEST_P(StackedAccess, LooksAtTheHandleEvenWithoutEntries)
{
    count = 0;
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, access(this));
    EXPECT_LOG_LINES(entered(), failed(Priority::error, "GC_ERR_INVALID_HANDLE"));
}

TEST_P(StackedAccess, RecordsNoError)
{
    const std::string before = last_error();
    fake.next("ZVGR_Camera" + std::string(GetParam().verb) + "Reg").answers(any_failure);
    EXPECT_EQ(GC_ERR_ACCESS_DENIED, access(port));
    EXPECT_EQ(before, last_error());
}

} // namespace

} // namespace zvtest
