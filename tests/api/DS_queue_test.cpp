#include <string>

#include "api/DS_modes.h"

using namespace zvtest;

namespace {

class QueueBuffer : public EitherStream {};

TEST_P(QueueBuffer, PutsABufferIntoTheInputPoolEachTime)
{
    const Announced& buffer = announce();
    for (int i = 0; i < 2; ++i) {
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(ds, buffer.handle));
        EXPECT_EQ((Calls{call("ZVGR_BufferToQueue", buffer.library, zv_queue_input)}), fake.calls());
        EXPECT_LOG_LINES({Priority::trace,
                          "Enter DSQueueBuffer, stream handle=0x" + low_hex(ds) + ", buffer handle=0x" +
                              low_hex(buffer.handle),
                          "DSQueueBuffer"},
                         {Priority::trace, "Exit DSQueueBuffer", "DSQueueBuffer"});
        EXPECT_TRUE(is_in_input_pool(buffer));
        EXPECT_EQ(1U, num_queued());
    }
}

TEST_P(QueueBuffer, MovesTheBufferBeforeTheLibraryIsCalledAndWhateverItAnswers)
{
    const Announced& buffer = announce();
    bool was_queued = false;
    fake.on("ZVGR_BufferToQueue", [&](const Call&) { was_queued = is_in_input_pool(buffer); });
    fake.next("ZVGR_BufferToQueue").answers(any_failure);
    queue(buffer);
    EXPECT_TRUE(was_queued) << "the library could fill the buffer before the producer knows";
    EXPECT_TRUE(is_in_input_pool(buffer));
}

// Without traces the usual call does not go through the checks one by one.
TEST_P(QueueBuffer, DoesTheSameWhenTracesAreNotLogged)
{
    const Announced& buffer = announce();
    log.set_level(Priority::debug);
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(ds, buffer.handle));
    EXPECT_EQ((Calls{call("ZVGR_BufferToQueue", buffer.library, zv_queue_input)}), fake.calls());
    EXPECT_TRUE(is_in_input_pool(buffer));
    forget();
    for (const DS_HANDLE stream : {ds, DS_HANDLE{buffer.handle}, DS_HANDLE{nullptr}}) {
        for (const BUFFER_HANDLE stranger : {BUFFER_HANDLE{ds}, BUFFER_HANDLE{nullptr}})
            EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSQueueBuffer(stream, stranger));
    }
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSQueueBuffer(buffer.handle, buffer.handle));
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_EQ(GC_ERR_SUCCESS, GCCloseLib());
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, DSQueueBuffer(ds, buffer.handle));
}

INSTANTIATE_IN_BOTH_MODES(QueueBuffer);

/// A buffer was delivered, and its event registered.
class OutputQueue : public EitherStream {
protected:
    void SetUp() override
    {
        EitherStream::SetUp();
        register_event();
        queue(announce());
        start();
        deliver(*buffers[0]);
        forget();
    }
};

TEST_P(OutputQueue, KeepsABufferUntilItIsQueuedAgainWhateverHappensToItsEntry)
{
    queue(announce());
    deliver(*buffers[1]);
    EXPECT_EQ(buffers[0]->handle, take().data.BufferHandle);
    EXPECT_EQ(GC_ERR_SUCCESS, EventFlush(event));
    EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(ds, EVENT_NEW_BUFFER));
    EXPECT_EQ(2U, num_await_delivery());
    queue(*buffers[0]);
    EXPECT_EQ(1U, num_await_delivery());
}

TEST_P(OutputQueue, LosesABufferThatTheConsumerDiscards)
{
    size_t size = sizeof(EVENT_NEW_BUFFER_DATA);
    EXPECT_EQ(GC_ERR_SUCCESS, EventGetData(event, nullptr, &size, 0));
    EXPECT_EQ(0U, num_await_delivery());
    EXPECT_EQ(0U, num_queued()) << "it is in no queue, neither delivered nor ready to be filled";
    EXPECT_EQ(Calls{}, fake.calls());
}

TEST_P(OutputQueue, LosesABufferThatIsQueuedBeforeItIsFetchedFromTheEvent)
{
    queue(*buffers[0]);
    EXPECT_TRUE(is_in_input_pool(*buffers[0]));
    EXPECT_EQ(0U, num_await_delivery());
    EXPECT_EQ(1U, num_in_event());
    EXPECT_EQ(buffers[0]->handle, take().data.BufferHandle);
}

INSTANTIATE_IN_BOTH_MODES(OutputQueue);

class DSQueueBuffer : public CyclicStream {};

TEST_F(DSQueueBuffer, CallsTheLibraryInCyclicModeToo)
{
    const Announced& buffer = announce();
    queue(buffer);
    EXPECT_EQ((Calls{call("ZVGR_BufferToQueue", 0, 0)}), fake.calls_of("ZVGR_BufferToQueue"));
}

class GetBufferID : public EitherStream {};

TEST_P(GetBufferID, FollowsTheOrderOfAnnouncement)
{
    const BUFFER_HANDLE expected[] = {announce().handle, alloc_and_announce().handle, announce().handle};
    for (uint32_t i = 0; i < 3; ++i) {
        forget();
        BUFFER_HANDLE handle = nullptr;
        EXPECT_EQ(GC_ERR_SUCCESS, DSGetBufferID(ds, i, &handle));
        EXPECT_EQ(expected[i], handle);
        EXPECT_LOG_LINES({Priority::information, "Enter DSGetBufferID", "DSGetBufferID"},
                         {Priority::information, "Exit DSGetBufferID", "DSGetBufferID"});
        EXPECT_EQ(Calls{}, fake.calls());
    }
}

TEST_P(GetBufferID, WritesZeroForAnIndexBeyondThePool)
{
    announce();
    for (const uint32_t index : {1U, 0x80000000U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(index);
        forget();
        BUFFER_HANDLE handle = untouched<BUFFER_HANDLE>();
        EXPECT_EQ(GC_ERR_INVALID_INDEX, DSGetBufferID(ds, index, &handle));
        EXPECT_EQ(nullptr, handle);
        EXPECT_LOG_LINES({Priority::information, "Enter DSGetBufferID", "DSGetBufferID"});
    }
}

INSTANTIATE_IN_BOTH_MODES(GetBufferID);

} // namespace
