#include <string>

#include "api/DS_modes.h"

using namespace zvtest;

namespace {

class ClosedStream : public EitherStream {
protected:
    /// Opens the same stream again, in the mode of the parameter or the other one.
    void reopen(bool queued)
    {
        fake.grabber_int("FW_Dma_Capable_QueuedBuffers_Imp") = queued ? 1 : 0;
        DS_HANDLE again = nullptr;
        ASSERT_EQ(GC_ERR_SUCCESS, DevOpenDataStream(dev, "Stream000", &again));
        EXPECT_EQ(ds, again) << "a device has one stream object";
    }
};

TEST_P(ClosedStream, IsDeletedInTheLibraryAndNothingElse)
{
    queue(announce());
    alloc_and_announce();
    register_event();
    start();
    forget();
    const uint32_t closed = stream();
    EXPECT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    EXPECT_EQ((Calls{call("ZVGR_StreamDelete", closed)}), fake.calls());
    EXPECT_LOG_LINES({Priority::information, "Enter DSClose", "DSClose"},
                     {Priority::information, "Exit DSClose", "DSClose"});
}

TEST_P(ClosedStream, IsClosedWhateverTheLibrarySays)
{
    fake.next("ZVGR_StreamDelete").answers(any_failure);
    EXPECT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSClose(ds));
}

TEST_P(ClosedStream, HasNoBuffersAndEventsWhenItOpensAgain)
{
    const Announced& buffer = announce();
    queue(buffer);
    register_event();
    ASSERT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, EventFlush(event)) << "the event went with the stream";

    reopen(is_queued());
    EXPECT_EQ(0U, num_announced());
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSQueueBuffer(ds, buffer.handle));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, EventFlush(event));
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GCUnregisterEvent(ds, EVENT_NEW_BUFFER));
}

TEST_P(ClosedStream, MayOpenAgainInTheOtherMode)
{
    announce();
    ASSERT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    forget();
    reopen(!is_queued());
    EXPECT_LOGGED(Priority::information,
                  is_queued() ? "Opening stream type=Cyclic" : "Opening stream type=Queued");
    uint8_t memory[64];
    BUFFER_HANDLE handle = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(ds, memory, sizeof memory, nullptr, &handle));
    EXPECT_EQ(is_queued() ? 0U : 1U, fake.count("ZVGR_BufferAnnounce"));
}

TEST_P(ClosedStream, KeepsItsCountsAndTakesNoFramesUntilTheNextStart)
{
    queue(announce());
    start();
    deliver(*buffers[0]);
    ASSERT_EQ(1U, num_delivered());
    ASSERT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    reopen(is_queued());
    queue(announce());
    deliver(*buffers[1]); // the new library stream, which was not started
    EXPECT_FALSE(is_new(*buffers[1]));
    EXPECT_EQ(1U, num_delivered());
    start();
    EXPECT_EQ(0U, num_delivered());
}

TEST_P(ClosedStream, HasLostItsBuffersAndItsEventWhenTheLibraryDeletesIt)
{
    announce();
    register_event();
    size_t left = 1;
    GC_ERROR code = GC_ERR_SUCCESS;
    fake.on("ZVGR_StreamDelete", [&](const Call&) {
        left = num_announced();
        code = EventFlush(event);
    });
    EXPECT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    EXPECT_EQ(0U, left);
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, code);
}

TEST_P(ClosedStream, RefusesBuffersAndEventsFromTheMomentThatItsClosingBegins)
{
    uint8_t memory[64];
    BUFFER_HANDLE buffer = nullptr;
    GC_ERROR announced = GC_ERR_SUCCESS;
    GC_ERROR registered = GC_ERR_SUCCESS;
    fake.on("ZVGR_StreamDelete", [&](const Call&) {
        announced = DSAnnounceBuffer(ds, memory, sizeof memory, nullptr, &buffer);
        registered = GCRegisterEvent(ds, EVENT_NEW_BUFFER, &event);
    });
    EXPECT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, announced);
    EXPECT_EQ(nullptr, buffer);
    EXPECT_EQ(GC_ERR_NOT_AVAILABLE, registered);
    EXPECT_EQ(nullptr, event);
    reopen(is_queued());
    EXPECT_EQ(0U, num_announced());
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GCUnregisterEvent(ds, EVENT_NEW_BUFFER));
}

INSTANTIATE_IN_BOTH_MODES(ClosedStream);

class DSGetParentDev : public QueuedStream {};

TEST_F(DSGetParentDev, GivesTheCamera)
{
    DEV_HANDLE parent = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::DSGetParentDev(ds, &parent));
    EXPECT_EQ(port, parent);
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_LOG_LINES({Priority::information, "Enter DSGetParentDev", "DSGetParentDev"},
                     {Priority::information, "Exit DSGetParentDev", "DSGetParentDev"});
}

} // namespace
