#include <cstring>
#include <set>
#include <string>

#include "api/DS_modes.h"

using namespace zvtest;

namespace {

const std::set<std::string> announcing_calls = {"ZVGR_BufferAnnounce", "ZVGR_BufferAllocAndAnnounce",
                                                "ZVGR_BufferGetInfo", "ZVGR_BufferRevoke",
                                                "ZVGR_BufferToQueue"};

int first_owner;
int second_owner;

class AnnouncedBuffer : public EitherStream {};

TEST_P(AnnouncedBuffer, IsMemoryOfTheConsumer)
{
    const Announced& buffer = announce(1000, &first_owner);
    EXPECT_EQ(buffer.memory.data(), buffer_info<const void*>(buffer.handle, BUFFER_INFO_BASE).value);
    EXPECT_EQ(1000U, buffer_info<size_t>(buffer.handle, BUFFER_INFO_SIZE).value);
    EXPECT_EQ(&first_owner, buffer_info<const void*>(buffer.handle, BUFFER_INFO_USER_PTR).value);
}

TEST_P(AnnouncedBuffer, IsInNoQueue)
{
    const Announced& buffer = announce();
    EXPECT_EQ(1U, num_announced());
    EXPECT_FALSE(is_in_input_pool(buffer));
    EXPECT_EQ(0U, num_queued());
    EXPECT_EQ(0U, num_await_delivery());
    EXPECT_EQ(0U, fake.count("ZVGR_BufferToQueue"));
}

TEST_P(AnnouncedBuffer, LogsEntryAndHandle)
{
    uint8_t memory[16];
    BUFFER_HANDLE handle = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(ds, memory, sizeof memory, &first_owner, &handle));
    EXPECT_LOG_LINES(
        {Priority::debug,
         "Enter DSAnnounceBuffer, stream handle=0x" + low_hex(ds) + ", requested buffer=0x" +
             low_hex(memory) + ", size=16, private=0x" + low_hex(&first_owner),
         "DSAnnounceBuffer"},
        {Priority::debug, "Exit DSAnnounceBuffer, buffer handle=0x" + low_hex(handle), "DSAnnounceBuffer"});
}

TEST_P(AnnouncedBuffer, LogsTheLowBitsOfAGreatSize)
{
    // The size is not touched, so memory of one byte may claim any.
    uint8_t memory[1];
    BUFFER_HANDLE handle = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(ds, memory, 0x1FFFFFFFFU, nullptr, &handle));
    EXPECT_LOGGED(Priority::debug, "Enter DSAnnounceBuffer, stream handle=0x" + low_hex(ds) +
                                       ", requested buffer=0x" + low_hex(memory) + ", size=-1, private=0x0");
    EXPECT_EQ(0x1FFFFFFFFU, buffer_info<size_t>(handle, BUFFER_INFO_SIZE).value);
}

TEST_P(AnnouncedBuffer, MayBeEmpty)
{
    const Announced& buffer = announce(1, nullptr);
    BUFFER_HANDLE empty = nullptr;
    auto* const memory = const_cast<uint8_t*>(buffer.memory.data());
    EXPECT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(ds, memory, 0, nullptr, &empty));
    EXPECT_NE(buffer.handle, empty);
    EXPECT_EQ(0U, buffer_info<size_t>(empty, BUFFER_INFO_SIZE).value);
    EXPECT_EQ(memory, buffer_info<const void*>(empty, BUFFER_INFO_BASE).value);
}

TEST_P(AnnouncedBuffer, IsFoundAgainByMemoryAndSize)
{
    Announced& buffer = announce(64, &first_owner);
    queue(buffer);
    settings.clear_reads();
    fake.clear_calls();
    log.clear_lines();
    fake.grabber_int("Width") = 4711;

    BUFFER_HANDLE again = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(ds, buffer.memory.data(), 64, &second_owner, &again));
    EXPECT_EQ(buffer.handle, again);
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_TRUE(settings.reads().empty());
    EXPECT_LOGGED(Priority::debug,
                  "Found buffer 0x" + hex16(again) + " with handle=0x" + hex(buffer.library) + ", ptr=0x" +
                      hex16(buffer.memory.data()) + " in buffer pool",
                  "StreamModule::new_buffer", "StreamModule");
    EXPECT_LOGGED(Priority::debug, "Exit DSAnnounceBuffer, buffer handle=0x" + low_hex(again));

    EXPECT_EQ(1U, num_announced());
    EXPECT_EQ(&second_owner, buffer_info<const void*>(again, BUFFER_INFO_USER_PTR).value);
    EXPECT_TRUE(is_in_input_pool(buffer)) << "its queue changed";
    EXPECT_NE(4711U, buffer_info<size_t>(again, BUFFER_INFO_WIDTH).value) << "its geometry changed";
}

TEST_P(AnnouncedBuffer, IsFoundAgainWhoeverAllocatedItsMemory)
{
    const Announced& buffer = alloc_and_announce(256);
    void* const memory = buffer_info<void*>(buffer.handle, BUFFER_INFO_BASE).value;
    BUFFER_HANDLE again = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(ds, memory, 256, &second_owner, &again));
    EXPECT_EQ(buffer.handle, again);
}

INSTANTIATE_IN_BOTH_MODES(AnnouncedBuffer);

class AllocatedBuffer : public EitherStream {};

TEST_P(AllocatedBuffer, HasWritableMemoryOfItsSize)
{
    const Announced& buffer = alloc_and_announce(10000, &first_owner);
    auto* const memory = buffer_info<uint8_t*>(buffer.handle, BUFFER_INFO_BASE).value;
    ASSERT_NE(nullptr, memory);
    std::memset(memory, 0x5A, 10000);
    EXPECT_EQ(10000U, buffer_info<size_t>(buffer.handle, BUFFER_INFO_SIZE).value);
    EXPECT_EQ(&first_owner, buffer_info<const void*>(buffer.handle, BUFFER_INFO_USER_PTR).value);
}

TEST_P(AllocatedBuffer, IsNewEachTime)
{
    const BUFFER_HANDLE first = alloc_and_announce(64).handle;
    const BUFFER_HANDLE second = alloc_and_announce(64).handle;
    EXPECT_NE(first, second);
    EXPECT_EQ(2U, num_announced());
    EXPECT_NE(buffer_info<void*>(first, BUFFER_INFO_BASE).value,
              buffer_info<void*>(second, BUFFER_INFO_BASE).value);
}

TEST_P(AllocatedBuffer, HasMemoryEvenWhenEmpty)
{
    const Announced& buffer = alloc_and_announce(0);
    EXPECT_NE(nullptr, buffer_info<void*>(buffer.handle, BUFFER_INFO_BASE).value);
    EXPECT_EQ(0U, buffer_info<size_t>(buffer.handle, BUFFER_INFO_SIZE).value);
}

TEST_P(AllocatedBuffer, LogsEntryAndHandle)
{
    BUFFER_HANDLE handle = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, DSAllocAndAnnounceBuffer(ds, 32, &first_owner, &handle));
    EXPECT_LOG_LINES({Priority::debug,
                      "Enter DSAllocAndAnnounceBuffer, stream handle=0x" + low_hex(ds) +
                          ", size=32, private=0x" + low_hex(&first_owner),
                      "DSAllocAndAnnounceBuffer"},
                     {Priority::debug, "Exit DSAllocAndAnnounceBuffer, buffer handle=0x" + low_hex(handle)});
}

INSTANTIATE_IN_BOTH_MODES(AllocatedBuffer);

class CyclicAnnounce : public CyclicStream {};

TEST_F(CyclicAnnounce, TellsTheLibraryNothing)
{
    announce();
    alloc_and_announce();
    EXPECT_EQ(Calls{}, fake.calls_of(announcing_calls));
}

class QueuedAnnounce : public QueuedStream {
protected:
    /// Announces, expects the failure in every place where it shows, and gives the library's buffers left.
    void expect_refused(const Calls& made, size_t left_in_library)
    {
        const std::string text_before = last_error();
        forget();
        BUFFER_HANDLE handle = &handle;
        EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSAllocAndAnnounceBuffer(ds, 64, &first_owner, &handle));
        EXPECT_EQ(nullptr, handle);
        EXPECT_EQ(made, fake.calls()) << "no geometry is asked for, nothing is revoked";
        EXPECT_LOG_LINES({Priority::debug, "Enter DSAllocAndAnnounceBuffer, stream handle=0x" + low_hex(ds) +
                                               ", size=64, private=0x" + low_hex(&first_owner)},
                         {Priority::error,
                          "Wasn't able to alllocate buffer with size=64, for stream handle=0x" + low_hex(ds),
                          "DSAllocAndAnnounceBuffer"},
                         {Priority::error, "Exit, Returning error GC_ERR_RESOURCE_IN_USE (0xFFFFFC14)"});
        EXPECT_EQ(0U, stream_info<size_t>(STREAM_INFO_NUM_ANNOUNCED).value);
        EXPECT_EQ(left_in_library, fake.buffers(stream()).size());
        EXPECT_EQ(text_before, last_error());
    }
};

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
    EXPECT_LOG_LINES({Priority::debug, "Enter DSAnnounceBuffer, stream handle=0x" + low_hex(ds) +
                                           ", requested buffer=0x" + low_hex(memory) +
                                           ", size=64, private=0x" + low_hex(&first_owner)},
                     {Priority::error,
                      "Wasn't able to create buffer=0x" + hex16(memory) +
                          " with size=64, for stream handle=0x" + low_hex(ds),
                      "DSAnnounceBuffer"},
                     {Priority::error, "Exit, Returning error GC_ERR_RESOURCE_IN_USE (0xFFFFFC14)"});
    EXPECT_EQ(0U, stream_info<size_t>(STREAM_INFO_NUM_ANNOUNCED).value);
}

TEST_F(QueuedAnnounce, FailsWhenTheLibraryDoesNotAllocate)
{
    fake.next("ZVGR_BufferAllocAndAnnounce").answers(any_failure);
    expect_refused({call("ZVGR_BufferAllocAndAnnounce", stream(), 64, &first_owner)}, 0);
}

TEST_F(QueuedAnnounce, FailsWhenTheLibraryDoesNotGiveTheAddress)
{
    const Calls made{call("ZVGR_BufferAllocAndAnnounce", stream(), 64, &first_owner),
                     call("ZVGR_BufferGetInfo", any(), zv_buffer_address)};
    fake.next("ZVGR_BufferGetInfo").answers(any_failure);
    expect_refused(made, 1);
    forget();
    fake.next("ZVGR_BufferGetInfo").gives(0);
    expect_refused(made, 2);
}

} // namespace
