#include <string>

#include "api/DS_modes.h"

using namespace zvtest;

namespace {

class QueueBuffer : public EitherStream {};

TEST_P(QueueBuffer, PutsABufferIntoTheInputPool)
{
    const Announced& buffer = announce();
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

TEST_P(QueueBuffer, QueuesAQueuedBufferAgain)
{
    const Announced& buffer = announce();
    queue(buffer);
    queue(buffer);
    EXPECT_EQ(2U, fake.count("ZVGR_BufferToQueue"));
    EXPECT_EQ(1U, num_queued());
}

TEST_P(QueueBuffer, IgnoresWhatTheLibrarySays)
{
    const Announced& buffer = announce();
    fake.next("ZVGR_BufferToQueue").answers(any_failure);
    EXPECT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(ds, buffer.handle));
    EXPECT_TRUE(is_in_input_pool(buffer));
}

TEST_P(QueueBuffer, HasMovedTheBufferWhenTheLibraryIsTold)
{
    const Announced& buffer = announce();
    bool was_queued = false;
    fake.on("ZVGR_BufferToQueue", [&](const Call&) { was_queued = is_in_input_pool(buffer); });
    queue(buffer);
    EXPECT_TRUE(was_queued) << "the library could fill the buffer before the producer knows";
}

TEST_P(QueueBuffer, TakesADeliveredBufferOutOfTheOutputQueueButNotFromTheEvent)
{
    const Announced& buffer = announce();
    queue(buffer);
    register_event();
    start();
    deliver(buffer);
    ASSERT_EQ(1U, num_await_delivery());

    queue(buffer);
    EXPECT_TRUE(is_in_input_pool(buffer));
    EXPECT_EQ(0U, num_await_delivery());
    EXPECT_EQ(1U, event_info<size_t>(EVENT_NUM_IN_QUEUE).value);
    EXPECT_EQ(buffer.handle, take().data.BufferHandle);
}

INSTANTIATE_IN_BOTH_MODES(QueueBuffer);

/// What becomes of a delivered buffer on the consumer's side.
class OutputQueue : public EitherStream {
protected:
    void SetUp() override
    {
        EitherStream::SetUp();
        queue(announce());
        register_event();
        start();
        deliver(*buffers[0]);
        forget();
    }
};

TEST_P(OutputQueue, KeepsABufferThatTheConsumerHasFetched)
{
    ASSERT_EQ(buffers[0]->handle, take().data.BufferHandle);
    EXPECT_EQ(1U, num_await_delivery());
    queue(*buffers[0]);
    EXPECT_EQ(0U, num_await_delivery());
}

TEST_P(OutputQueue, LosesABufferThatTheConsumerDiscards)
{
    size_t size = sizeof(EVENT_NEW_BUFFER_DATA);
    EXPECT_EQ(GC_ERR_SUCCESS, EventGetData(event, nullptr, &size, 0));
    EXPECT_EQ(0U, num_await_delivery());
    EXPECT_EQ(0U, num_queued()) << "it is in no queue, neither delivered nor ready to be filled";
    EXPECT_EQ(Calls{}, fake.calls());
}

TEST_P(OutputQueue, KeepsItsBuffersWhenTheEventIsFlushed)
{
    EXPECT_EQ(GC_ERR_SUCCESS, EventFlush(event));
    EXPECT_EQ(1U, num_await_delivery());
}

TEST_P(OutputQueue, KeepsItsBuffersWhenTheEventIsUnregistered)
{
    EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(ds, EVENT_NEW_BUFFER));
    EXPECT_EQ(1U, num_await_delivery());
}

INSTANTIATE_IN_BOTH_MODES(OutputQueue);

class QueueBufferOfTwoStreams : public TwoStreams {};

TEST_F(QueueBufferOfTwoStreams, RefusesABufferOfTheOther)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSQueueBuffer(ds, announce_on_other()));
    EXPECT_EQ(0U, fake.count("ZVGR_BufferToQueue"));
}

class DSQueueBuffer : public CyclicStream {};

TEST_F(DSQueueBuffer, CallsTheLibraryInCyclicModeToo)
{
    const Announced& buffer = announce();
    queue(buffer);
    EXPECT_EQ((Calls{call("ZVGR_BufferToQueue", 0, 0)}), fake.calls_of("ZVGR_BufferToQueue"));
}

class GetBufferID : public EitherStream {
protected:
    BUFFER_HANDLE at(uint32_t index)
    {
        BUFFER_HANDLE handle = untouched<BUFFER_HANDLE>();
        EXPECT_EQ(GC_ERR_SUCCESS, DSGetBufferID(ds, index, &handle));
        return handle;
    }

    void expect_none_at(uint32_t index)
    {
        SCOPED_TRACE(index);
        forget();
        BUFFER_HANDLE handle = untouched<BUFFER_HANDLE>();
        EXPECT_EQ(GC_ERR_INVALID_INDEX, DSGetBufferID(ds, index, &handle));
        EXPECT_EQ(nullptr, handle);
        EXPECT_LOG_LINES({Priority::information, "Enter DSGetBufferID", "DSGetBufferID"});
    }
};

TEST_P(GetBufferID, FollowsTheOrderOfAnnouncement)
{
    const BUFFER_HANDLE first = announce().handle;
    const BUFFER_HANDLE second = alloc_and_announce().handle;
    const BUFFER_HANDLE third = announce().handle;
    EXPECT_EQ(first, at(0));
    EXPECT_EQ(second, at(1));
    EXPECT_EQ(third, at(2));
}

TEST_P(GetBufferID, WritesZeroForAnIndexBeyondThePool)
{
    expect_none_at(0);
    announce();
    expect_none_at(1);
    expect_none_at(0x80000000U);
    expect_none_at(0xFFFFFFFFU);
}

TEST_P(GetBufferID, LogsEntryAndExit)
{
    announce();
    forget();
    at(0);
    EXPECT_LOG_LINES({Priority::information, "Enter DSGetBufferID", "DSGetBufferID"},
                     {Priority::information, "Exit DSGetBufferID", "DSGetBufferID"});
    EXPECT_EQ(Calls{}, fake.calls());
}

INSTANTIATE_IN_BOTH_MODES(GetBufferID);

} // namespace
