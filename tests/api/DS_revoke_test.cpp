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

    ExpectedLine enter_line(BUFFER_HANDLE handle, const void* memory) const
    {
        return {Priority::information,
                "Enter DSRevokeBuffer, stream handle=0x" + low_hex(ds) + ", buffer handle=0x" +
                    low_hex(handle) + ", user buffer=0x" + low_hex(memory),
                "DSRevokeBuffer"};
    }

    /// Revokes the buffer and expects every trace of it to be gone, but not the other buffers.
    void expect_revoked(const Announced& buffer)
    {
        const size_t before = num_announced();
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffer.handle, nullptr, nullptr));
        EXPECT_EQ((Calls{call("ZVGR_BufferRevoke", stream(), buffer.library)}), fake.calls());
        EXPECT_LOG_LINES(enter_line(buffer.handle, nullptr),
                         {Priority::information, "Exit DSRevokeBuffer", "DSRevokeBuffer"});
        EXPECT_EQ(before - 1, num_announced());
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, buffer_info<size_t>(buffer.handle, BUFFER_INFO_SIZE).code);
        EXPECT_EQ(GC_ERR_SUCCESS, buffer_info<size_t>(buffers[1]->handle, BUFFER_INFO_SIZE).code);
    }
};

TEST_P(RevokedBuffer, IsRevokedAtEveryStageOfItsWay)
{
    enum Stage { announced, queued, delivered, fetched };
    for (const Stage stage : {announced, queued, delivered, fetched}) {
        for (const bool is_running : {false, true}) {
            if (stage >= delivered && !is_running)
                continue;
            SCOPED_TRACE(std::to_string(stage) + (is_running ? ", running" : ""));
            Announced& buffer = announce();
            if (stage >= queued)
                queue(buffer);
            if (is_running)
                start();
            if (stage >= delivered)
                deliver(buffer);
            if (stage == fetched) {
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

TEST_P(RevokedBuffer, IsGivenBackWithItsPointersWhoeverAllocatedTheMemory)
{
    int owner = 0;
    announce(64, &owner);
    alloc_and_announce(64, &owner);
    for (const size_t i : {2U, 3U}) {
        const BUFFER_HANDLE handle = buffers[i]->handle;
        void* const base = buffer_info<void*>(handle, BUFFER_INFO_BASE).value;
        void* memory = &memory;
        void* user = nullptr;
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, handle, &memory, &user));
        EXPECT_TRUE(logged(enter_line(handle, &memory)));
        EXPECT_EQ(base, memory);
        EXPECT_EQ(&owner, user);
    }
}

TEST_P(RevokedBuffer, NeedsNoOutputs)
{
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffers[0]->handle, all_ones<void**>(), all_ones<void**>()));
    EXPECT_TRUE(logged(enter_line(buffers[0]->handle, nullptr)));
}

TEST_P(RevokedBuffer, IsGoneWhateverTheLibraryAnswers)
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

INSTANTIATE_IN_BOTH_MODES(RevokedBuffer);

} // namespace
