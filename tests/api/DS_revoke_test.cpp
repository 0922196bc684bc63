#include <string>

#include "api/DS_modes.h"

using namespace zvtest;

namespace {

class RevokedBuffer : public EitherStream {
protected:
    void SetUp() override
    {
        EitherStream::SetUp();
        register_event();
        announce();
        announce();
        forget();
    }

    /// Revokes the buffer and expects every trace of it to be gone, but not the other buffers.
    void expect_revoked(const Announced& buffer)
    {
        const size_t before = num_announced();
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffer.handle, nullptr, nullptr));
        EXPECT_EQ((Calls{call("ZVGR_BufferRevoke", stream(), buffer.library)}), fake.calls());
        EXPECT_LOG_LINES({Priority::information,
                          "Enter DSRevokeBuffer, stream handle=0x" + low_hex(ds) + ", buffer handle=0x" +
                              low_hex(buffer.handle) + ", user buffer=0x0",
                          "DSRevokeBuffer"},
                         {Priority::information, "Exit DSRevokeBuffer", "DSRevokeBuffer"});
        EXPECT_EQ(before - 1, num_announced());
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, buffer_info<size_t>(buffer.handle, BUFFER_INFO_SIZE).code);
        EXPECT_EQ(GC_ERR_SUCCESS, buffer_info<size_t>(buffers[1]->handle, BUFFER_INFO_SIZE).code);
    }
};

/// From no queue, while it waits to be filled or to be fetched, and when the consumer has it.
TEST_P(RevokedBuffer, IsRevokedFromEveryQueue)
{
    struct Row {
        const char* name;
        bool is_queued;
        bool is_delivered;
        bool is_fetched;
    };
    for (const Row& row : {Row{"in no queue", false, false, false}, Row{"queued", true, false, false},
                           Row{"delivered", true, true, false}, Row{"fetched", true, true, true}}) {
        for (const bool is_running : {false, true}) {
            if (row.is_delivered && !is_running)
                continue;
            SCOPED_TRACE(std::string(row.name) + (is_running ? ", running" : ""));
            Announced& buffer = announce();
            if (row.is_queued)
                queue(buffer);
            if (is_running)
                start();
            if (row.is_delivered)
                deliver(buffer);
            if (row.is_fetched) {
                EXPECT_EQ(buffer.handle, take().data.BufferHandle);
            }
            expect_revoked(buffer);
            EXPECT_EQ(is_running, fake.is_acquiring(stream()));
            if (is_running)
                stop();
            EXPECT_EQ(GC_ERR_SUCCESS, EventFlush(event));
        }
    }
}

TEST_P(RevokedBuffer, IsGivenBackWithItsPointers)
{
    int owner = 0;
    const Announced& buffer = announce(64, &owner);
    void* memory = &memory;
    void* user = nullptr;
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffer.handle, &memory, &user));
    EXPECT_EQ(buffer.memory.data(), memory);
    EXPECT_EQ(&owner, user);
    EXPECT_LOGGED(Priority::information, "Enter DSRevokeBuffer, stream handle=0x" + low_hex(ds) +
                                             ", buffer handle=0x" + low_hex(buffer.handle) +
                                             ", user buffer=0x" + low_hex(&memory));
}

TEST_P(RevokedBuffer, GivesTheAddressOfMemoryThatGoesWithIt)
{
    const BUFFER_HANDLE handle = alloc_and_announce(64).handle;
    void* const base = buffer_info<void*>(handle, BUFFER_INFO_BASE).value;
    void* memory = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, handle, &memory, nullptr));
    EXPECT_EQ(base, memory);
}

TEST_P(RevokedBuffer, NeedsNoOutputs)
{
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffers[0]->handle, nullptr, nullptr));
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffers[1]->handle, all_ones<void**>(), all_ones<void**>()));
    EXPECT_LOGGED(Priority::information, "Enter DSRevokeBuffer, stream handle=0x" + low_hex(ds) +
                                             ", buffer handle=0x" + low_hex(buffers[1]->handle) +
                                             ", user buffer=0x0");
}

TEST_P(RevokedBuffer, IsGoneWhateverTheLibrarySays)
{
    fake.next("ZVGR_BufferRevoke").answers(any_failure);
    expect_revoked(*buffers[0]);
}

TEST_P(RevokedBuffer, StillExistsWhileTheLibraryForgetsIt)
{
    GC_ERROR code = GC_ERR_ERROR;
    fake.on("ZVGR_BufferRevoke",
            [&](const Call&) { code = buffer_info<size_t>(buffers[0]->handle, BUFFER_INFO_SIZE).code; });
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffers[0]->handle, nullptr, nullptr));
    EXPECT_EQ(GC_ERR_SUCCESS, code) << "its memory went while the library could still write to it";
}

TEST_P(RevokedBuffer, IsRefusedToTheSlowerOfTwoCallers)
{
    const BUFFER_HANDLE handle = buffers[0]->handle;
    bool is_first = true;
    GC_ERROR faster = GC_ERR_ERROR;
    fake.allow_stale_handles();
    fake.on("ZVGR_BufferRevoke", [&](const Call&) {
        if (std::exchange(is_first, false))
            faster = DSRevokeBuffer(ds, handle, nullptr, nullptr);
    });
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSRevokeBuffer(ds, handle, nullptr, nullptr));
    EXPECT_EQ(GC_ERR_SUCCESS, faster);
    EXPECT_LOGGED(Priority::error, "buffer 0x" + hex16(handle) + " wasn't found in buffer pool",
                  "DSRevokeBuffer");
    EXPECT_LOGGED(Priority::error, "Exit, Returning error GC_ERR_INVALID_HANDLE (0xFFFFFC12)",
                  "DSRevokeBuffer");
    EXPECT_EQ(1U, num_announced());
}

TEST_P(RevokedBuffer, IsStillReportedByTheEventButWithoutItsPointer)
{
    int owner = 0;
    Announced& buffer = *buffers[0];
    BUFFER_HANDLE same = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS,
              DSAnnounceBuffer(ds, buffer.memory.data(), buffer.memory.size(), &owner, &same));
    queue(buffer);
    start();
    deliver(buffer);
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffer.handle, nullptr, nullptr));

    EXPECT_EQ(1U, event_info<size_t>(EVENT_NUM_IN_QUEUE).value);
    const Taken taken = take();
    EXPECT_EQ(GC_ERR_SUCCESS, taken.code);
    EXPECT_EQ(buffer.handle, taken.data.BufferHandle);
    EXPECT_EQ(nullptr, taken.data.pUserPointer);
}

TEST_P(RevokedBuffer, CanBeDiscardedFromTheEvent)
{
    queue(*buffers[0]);
    start();
    deliver(*buffers[0]);
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffers[0]->handle, nullptr, nullptr));
    size_t size = sizeof(EVENT_NEW_BUFFER_DATA);
    EXPECT_EQ(GC_ERR_SUCCESS, EventGetData(event, nullptr, &size, 0));
    EXPECT_EQ(0U, event_info<size_t>(EVENT_NUM_IN_QUEUE).value);
}

TEST_P(RevokedBuffer, LeavesTheOthersToBeFilled)
{
    queue(*buffers[0]);
    queue(*buffers[1]);
    start();
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffers[0]->handle, nullptr, nullptr));
    deliver(*buffers[1], Frame{0, 0, 0, 0x77});
    EXPECT_EQ(buffers[1]->handle, take().data.BufferHandle);
    EXPECT_EQ(0x77, buffers[1]->memory[0]);
}

INSTANTIATE_IN_BOTH_MODES(RevokedBuffer);

class RevokeOfTwoStreams : public TwoStreams {};

TEST_F(RevokeOfTwoStreams, RefusesABufferOfTheOther)
{
    const BUFFER_HANDLE foreign = announce_on_other();
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSRevokeBuffer(ds, foreign, nullptr, nullptr));
    EXPECT_EQ(0U, fake.count("ZVGR_BufferRevoke"));
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(other, foreign, nullptr, nullptr));
}

} // namespace
