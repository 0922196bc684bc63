#include <cstring>
#include <set>
#include <string>
#include <utility>

#include "api/DS_modes.h"
#include "api/lines.h"

using namespace zvtest;

namespace {

const std::set<std::string> announcing_calls = {"ZVGR_BufferAnnounce", "ZVGR_BufferAllocAndAnnounce",
                                                "ZVGR_BufferGetInfo", "ZVGR_BufferRevoke",
                                                "ZVGR_BufferToQueue"};

int first_owner;
int second_owner;

/// The enter lines.
ExpectedLine announcing(DS_HANDLE ds, const void* memory, int size, const void* owner)
{
    return {Priority::debug,
            "Enter DSAnnounceBuffer, stream handle=0x" + low_hex(ds) + ", requested buffer=0x" +
                low_hex(memory) + ", size=" + std::to_string(size) + ", private=0x" + low_hex(owner),
            "DSAnnounceBuffer"};
}

ExpectedLine allocating(DS_HANDLE ds, int size, const void* owner)
{
    return {Priority::debug,
            "Enter DSAllocAndAnnounceBuffer, stream handle=0x" + low_hex(ds) +
                ", size=" + std::to_string(size) + ", private=0x" + low_hex(owner),
            "DSAllocAndAnnounceBuffer"};
}

class AnnouncedBuffer : public EitherStream {};

TEST_P(AnnouncedBuffer, IsInNoQueue)
{
    const Announced& buffer = announce();
    EXPECT_EQ(1U, num_announced());
    EXPECT_FALSE(is_in_input_pool(buffer));
    EXPECT_EQ(0U, num_queued());
    EXPECT_EQ(0U, num_await_delivery());
    EXPECT_EQ(0U, fake.count("ZVGR_BufferToQueue"));
}

TEST_P(AnnouncedBuffer, MayHaveAnySizeOfWhichTheLow32BitsAreLogged)
{
    // The memory is not touched, so one byte may claim any size.
    uint8_t memory[1];
    for (const auto& [size, logged_size] : {std::pair{size_t{16}, 16}, {0x1FFFFFFFFU, -1}, {0, 0}}) {
        forget();
        BUFFER_HANDLE handle = nullptr;
        EXPECT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(ds, memory, size, &first_owner, &handle));
        EXPECT_LOG_LINES(announcing(ds, memory, logged_size, &first_owner),
                         {Priority::debug, "Exit DSAnnounceBuffer, buffer handle=0x" + low_hex(handle),
                          "DSAnnounceBuffer"});
        EXPECT_EQ(size, buffer_info<size_t>(handle, BUFFER_INFO_SIZE).value);
        EXPECT_EQ(memory, buffer_info<const void*>(handle, BUFFER_INFO_BASE).value);
    }
    EXPECT_EQ(3U, num_announced());
}

TEST_P(AnnouncedBuffer, IsFoundAgainByMemoryAndSize)
{
    Announced& buffer = announce(64, &first_owner);
    queue(buffer);
    forget();
    fake.grabber_int("Width") = 4711;

    BUFFER_HANDLE again = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(ds, buffer.memory.data(), 64, &second_owner, &again));
    EXPECT_EQ(buffer.handle, again);
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_TRUE(settings.reads().empty());
    EXPECT_LOG_LINES(announcing(ds, buffer.memory.data(), 64, &second_owner),
                     {Priority::debug,
                      "Found buffer 0x" + hex16(again) + " with handle=0x" + hex(buffer.library) +
                          ", ptr=0x" + hex16(buffer.memory.data()) + " in buffer pool",
                      "StreamModule::new_buffer", "StreamModule"},
                     {Priority::debug, "Exit DSAnnounceBuffer, buffer handle=0x" + low_hex(again)});

    EXPECT_EQ(1U, num_announced());
    EXPECT_EQ(&second_owner, buffer_info<const void*>(again, BUFFER_INFO_USER_PTR).value);
    EXPECT_TRUE(is_in_input_pool(buffer)) << "its queue changed";
    EXPECT_NE(4711U, buffer_info<size_t>(again, BUFFER_INFO_WIDTH).value) << "its geometry changed";
}

INSTANTIATE_IN_BOTH_MODES(AnnouncedBuffer);

class AllocatedBuffer : public EitherStream {};

TEST_P(AllocatedBuffer, HasWritableMemoryOfItsOwn)
{
    std::set<void*> memories;
    for (const size_t size : {size_t{10000}, size_t{64}, size_t{64}, size_t{0}}) {
        const BUFFER_HANDLE handle = alloc_and_announce(size, &first_owner).handle;
        void* const memory = buffer_info<void*>(handle, BUFFER_INFO_BASE).value;
        ASSERT_NE(nullptr, memory);
        std::memset(memory, 0x5A, size);
        EXPECT_TRUE(memories.insert(memory).second) << "of another buffer";
        EXPECT_EQ(size, buffer_info<size_t>(handle, BUFFER_INFO_SIZE).value);
        EXPECT_EQ(&first_owner, buffer_info<const void*>(handle, BUFFER_INFO_USER_PTR).value);

        BUFFER_HANDLE again = nullptr;
        EXPECT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(ds, memory, size, &first_owner, &again));
        EXPECT_EQ(handle, again) << "it is not found by its memory";
    }
    EXPECT_EQ(4U, num_announced());
}

TEST_P(AllocatedBuffer, LogsEntryAndHandle)
{
    BUFFER_HANDLE handle = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, DSAllocAndAnnounceBuffer(ds, 32, &first_owner, &handle));
    EXPECT_LOG_LINES(allocating(ds, 32, &first_owner),
                     {Priority::debug, "Exit DSAllocAndAnnounceBuffer, buffer handle=0x" + low_hex(handle)});
}

INSTANTIATE_IN_BOTH_MODES(AllocatedBuffer);

class CyclicAnnounce : public CyclicStream {};

TEST_F(CyclicAnnounce, DoesNotCallTheLibrary)
{
    announce();
    alloc_and_announce();
    EXPECT_EQ(Calls{}, fake.calls_of(announcing_calls));
}

class QueuedAnnounce : public QueuedStream {};

TEST_F(QueuedAnnounce, PassesTheConsumersMemoryOn)
{
    const Announced& buffer = announce(300, &first_owner);
    EXPECT_EQ((Calls{call("ZVGR_BufferAnnounce", stream(), buffer.memory.data(), 300, &first_owner)}),
              fake.calls_of(announcing_calls));
    EXPECT_EQ(1U, fake.buffers(stream()).size());
}

TEST_F(QueuedAnnounce, AsksForTheMemoryThatTheLibraryAllocated)
{
    const Announced& buffer = alloc_and_announce(300, &first_owner);
    EXPECT_EQ((Calls{call("ZVGR_BufferAllocAndAnnounce", stream(), 300, &first_owner),
                     call("ZVGR_BufferGetInfo", buffer.library, zv_buffer_address)}),
              fake.calls_of(announcing_calls));
    EXPECT_EQ(fake.memory_of(buffer.library),
              buffer_info<const void*>(buffer.handle, BUFFER_INFO_BASE).value);
}

TEST_F(QueuedAnnounce, FailsWhenTheLibraryRefusesTheMemory)
{
    uint8_t memory[64];
    BUFFER_HANDLE handle = &handle;
    fake.next("ZVGR_BufferAnnounce").answers(any_failure);
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSAnnounceBuffer(ds, memory, sizeof memory, &first_owner, &handle));
    EXPECT_EQ(nullptr, handle);
    EXPECT_EQ((Calls{call("ZVGR_BufferAnnounce", stream(), memory, 64, &first_owner)}), fake.calls());
    EXPECT_LOG_LINES(announcing(ds, memory, 64, &first_owner),
                     {Priority::error,
                      "Wasn't able to create buffer=0x" + hex16(memory) +
                          " with size=64, for stream handle=0x" + low_hex(ds),
                      "DSAnnounceBuffer"},
                     FAILED_WITH(GC_ERR_RESOURCE_IN_USE));
    EXPECT_EQ(0U, stream_info<size_t>(STREAM_INFO_NUM_ANNOUNCED).value);
}

TEST_F(QueuedAnnounce, FailsWhenTheLibraryDoesNotAllocateOrGivesNoAddress)
{
    const std::string text_before = last_error();
    const Call allocation = call("ZVGR_BufferAllocAndAnnounce", stream(), 64, &first_owner);
    const Call query = call("ZVGR_BufferGetInfo", any(), zv_buffer_address);
    const auto expect_refused = [&](const Calls& made, size_t left_in_library) {
        forget();
        BUFFER_HANDLE handle = &handle;
        EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSAllocAndAnnounceBuffer(ds, 64, &first_owner, &handle));
        EXPECT_EQ(nullptr, handle);
        EXPECT_EQ(made, fake.calls()) << "no geometry is asked for, nothing is revoked";
        EXPECT_LOG_LINES(allocating(ds, 64, &first_owner),
                         {Priority::error,
                          "Wasn't able to alllocate buffer with size=64, for stream handle=0x" + low_hex(ds),
                          "DSAllocAndAnnounceBuffer"},
                         FAILED_WITH(GC_ERR_RESOURCE_IN_USE));
        EXPECT_EQ(0U, stream_info<size_t>(STREAM_INFO_NUM_ANNOUNCED).value);
        EXPECT_EQ(left_in_library, fake.buffers(stream()).size());
    };
    fake.next("ZVGR_BufferAllocAndAnnounce").answers(any_failure);
    expect_refused({allocation}, 0);
    fake.next("ZVGR_BufferGetInfo").answers(any_failure);
    expect_refused({allocation, query}, 1);
    fake.next("ZVGR_BufferGetInfo").gives(0);
    expect_refused({allocation, query}, 2);
    EXPECT_EQ(text_before, last_error());
}

} // namespace
