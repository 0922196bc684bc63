#include <string>

#include "api/DS_modes.h"
#include "support/FailingAllocations.h"

// No memory is asked for per frame, from the library's callback until the buffer is queued again.

using namespace zvtest;

namespace {

class FrameMemory : public EitherStream {
protected:
    void SetUp() override
    {
        EitherStream::SetUp();
        announce_and_start();
    }

    void announce_and_start()
    {
        buffers.clear();
        for (int i = 0; i < 4; ++i)
            queue(announce());
        register_event();
        start();
        log.set_level(Priority::information); // as in the field: per-frame lines are not formatted
    }

    /// All calls for one frame, without the fixture's expectations; gives the number of calls that failed.
    int frame(size_t i)
    {
        deliver(*buffers[i % 4]);
        EVENT_NEW_BUFFER_DATA data = {};
        size_t size = sizeof data;
        int failed = EventGetData(event, &data, &size, 0) != GC_ERR_SUCCESS ? 1 : 0;
        failed += ask<bool8_t>(data.BufferHandle, BUFFER_INFO_NEW_DATA);
        failed += ask<uint64_t>(data.BufferHandle, BUFFER_INFO_TIMESTAMP);
        failed += ask<uint64_t>(data.BufferHandle, BUFFER_INFO_FRAMEID);
        failed += ask<void*>(data.BufferHandle, BUFFER_INFO_BASE);
        failed += DSQueueBuffer(ds, data.BufferHandle) != GC_ERR_SUCCESS ? 1 : 0;
        return failed;
    }

    template <class T>
    int ask(BUFFER_HANDLE buffer, BUFFER_INFO_CMD command)
    {
        T value = {};
        INFO_DATATYPE type = 0;
        size_t size = sizeof value;
        return DSGetBufferInfo(ds, buffer, command, &type, &value, &size) != GC_ERR_SUCCESS ? 1 : 0;
    }
};

TEST_P(FrameMemory, IsNotAskedForWithAndWithoutImageIdsAndLocks)
{
    for (const bool is_reopened : {false, true}) {
        if (is_reopened) {
            EXPECT_EQ(GC_ERR_SUCCESS, DSClose(ds));
            fake.grabber_int("FW_Dma_Capable_FrameImageId_Imp") = 1;
            settings.set("GenTL.Buffer.SerializeBufferType", 0);
            settings.set("GenTL.Event.SerializeStreamEvent", 0);
            ds = open_stream(dev, "Stream000");
            announce_and_start();
        }
        int failed = 0;
        const CountedAllocations counted;
        for (size_t i = 0; i < 1000; ++i)
            failed += frame(i);
        EXPECT_EQ(0, counted.count());
        EXPECT_EQ(0, failed);
        EXPECT_EQ(1000U, num_delivered());
    }
}

TEST_P(FrameMemory, IsNotAskedForByAFrameThatIsLost)
{
    if (is_queued())
        EXPECT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(ds, 0)); // what is not taken is ignored while idle
    else
        EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD)); // no buffer is queued
    const CountedAllocations counted;
    for (size_t i = 0; i < 10; ++i)
        deliver(*buffers[0]);
    EXPECT_EQ(0, counted.count());
    EXPECT_EQ(0U, event_info<uint64_t>(EVENT_NUM_FIRED).value);
}

TEST_P(FrameMemory, MayRunOutForOneFrameWithoutHarmToTheNext)
{
    // Nobody fetches, so at some frame the event's queue has to grow.
    size_t kept = 0;
    bool has_struck = false;
    log.clear_lines();
    while (!has_struck && kept < 100000) {
        const auto faults = FailingAllocations::nth(1);
        queue(*buffers[0]);
        deliver(*buffers[0]);
        has_struck = faults.struck();
        kept += has_struck ? 0 : 1;
    }
    ASSERT_TRUE(has_struck);
    EXPECT_LOGGED(Priority::error,
                  "A frame was lost: its delivery ran out of memory or failed in the runtime",
                  "StreamModule::deliver_from_library", "StreamModule");
    EXPECT_EQ(kept, num_in_event());

    queue(*buffers[0]);
    deliver(*buffers[0]);
    EXPECT_EQ(kept + 1, num_in_event());
    EXPECT_EQ(buffers[0]->handle, take().data.BufferHandle);
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffers[0]->handle, nullptr, nullptr)) << "nothing holds it";
}

INSTANTIATE_IN_BOTH_MODES(FrameMemory);

} // namespace
