#include <set>
#include <string>

#include "api/DS_modes.h"

using namespace zvtest;

namespace {

const std::set<std::string> acquisition_calls = {"ZVGR_CameraStartAcquire_GenTL",
                                                 "ZVGR_CameraStopAcquire_GenTL"};

class StartAcquisition : public EitherStream {
protected:
    uint64_t num_delivered() { return stream_info<uint64_t>(STREAM_INFO_NUM_DELIVERED).value; }
    uint64_t num_underrun() { return stream_info<uint64_t>(STREAM_INFO_NUM_UNDERRUN).value; }

    Call start_call(uint32_t frames)
    {
        return call("ZVGR_CameraStartAcquire_GenTL", camera(), stream(), frames);
    }
};

TEST_P(StartAcquisition, StartsTheCameraForItsStream)
{
    announce();
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(ds, 0xAB, 17));
    EXPECT_EQ((Calls{start_call(17)}), fake.calls());
    EXPECT_LOG_LINES({Priority::information,
                      "Enter DSStartAcquisition, stream handle=0x" + low_hex(ds) + ", flags=0xAB, frames=17",
                      "DSStartAcquisition"},
                     {Priority::information, "Exit DSStartAcquisition", "DSStartAcquisition"});
}

TEST_P(StartAcquisition, CutsTheNumberOfFramesTo32Bits)
{
    struct Row {
        uint64_t asked;
        uint32_t passed;
        const char* printed;
    };
    announce();
    for (const Row& row : {Row{1, 1, "1"}, Row{GENTL_INFINITE, 0, "-1"}, Row{0x100000000U, 0, "0"},
                           Row{0xFFFFFFFFU, 0xFFFFFFFFU, "-1"}, Row{0x500000003U, 3, "3"},
                           Row{0x80000000U, 0x80000000U, "-2147483648"}}) {
        SCOPED_TRACE(row.asked);
        forget();
        start(row.asked);
        EXPECT_EQ((Calls{start_call(row.passed)}), fake.calls());
        EXPECT_LOGGED(Priority::information, "Enter DSStartAcquisition, stream handle=0x" + low_hex(ds) +
                                                 ", flags=0x0, frames=" + row.printed);
        stop();
    }
}

TEST_P(StartAcquisition, RefusesAnEmptyPool)
{
    EXPECT_EQ(GC_ERR_INVALID_BUFFER, DSStartAcquisition(ds, ACQ_START_FLAGS_DEFAULT, 1));
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_LOG_LINES(
        {Priority::information,
         "Enter DSStartAcquisition, stream handle=0x" + low_hex(ds) + ", flags=0x0, frames=1"},
        {Priority::error, "No buffers in stream=0x" + hex16(ds), "DSStartAcquisition"},
        {Priority::error, "Exit, Returning error GC_ERR_INVALID_BUFFER (0xFFFFFC0B)", "DSStartAcquisition"});
}

TEST_P(StartAcquisition, NeedsNoQueuedBuffer)
{
    const Announced& buffer = announce();
    start();
    EXPECT_TRUE(fake.is_acquiring(stream()));
    if (is_queued())
        return;
    deliver(buffer); // dropped, and counted by nobody
    EXPECT_EQ(0U, num_delivered());
    EXPECT_EQ(0U, num_underrun());
    EXPECT_FALSE(buffer_info<bool8_t>(buffer.handle, BUFFER_INFO_NEW_DATA).value);
}

TEST_P(StartAcquisition, FailsSilentlyWhenTheLibraryRefuses)
{
    const Announced& buffer = announce();
    queue(buffer);
    forget();
    fake.next("ZVGR_CameraStartAcquire_GenTL").answers(any_failure);
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSStartAcquisition(ds, ACQ_START_FLAGS_DEFAULT, 1));
    EXPECT_LOG_LINES({Priority::information,
                      "Enter DSStartAcquisition, stream handle=0x" + low_hex(ds) + ", flags=0x0, frames=1"});
    deliver(buffer); // the stream is as idle as before
    EXPECT_EQ(0U, num_delivered());
    EXPECT_EQ(is_queued() ? 0U : 1U, num_underrun());
}

TEST_P(StartAcquisition, KeepsTheCountsWhenTheLibraryRefuses)
{
    const Announced& buffer = announce();
    queue(buffer);
    start();
    deliver(buffer);
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSStartAcquisition(ds, ACQ_START_FLAGS_DEFAULT, 1))
        << "it runs already";
    EXPECT_EQ(1U, num_delivered());
    queue(buffer);
    deliver(buffer);
    EXPECT_EQ(2U, num_delivered()) << "and goes on";
}

TEST_P(StartAcquisition, CallsTheLibraryEachTime)
{
    announce();
    start();
    fake.always("ZVGR_CameraStartAcquire_GenTL").answers_after_effect(zv_success);
    start();
    EXPECT_EQ((Calls{start_call(0), start_call(0)}), fake.calls_of(acquisition_calls));
}

TEST_P(StartAcquisition, StartsBothCountsFromZero)
{
    const Announced& buffer = announce();
    queue(buffer);
    deliver(buffer);
    deliver(buffer);
    EXPECT_EQ(is_queued() ? 0U : 2U, num_underrun());
    start();
    EXPECT_EQ(0U, num_underrun());
    EXPECT_EQ(0U, num_delivered());
}

TEST_P(StartAcquisition, ForgetsAFrameThatCameBeforeTheCallReturned)
{
    const Announced& buffer = announce();
    queue(buffer);
    fake.after("ZVGR_CameraStartAcquire_GenTL", [&](const Call&) { deliver(buffer); });
    start();
    EXPECT_EQ(0U, num_delivered());
    EXPECT_EQ(0U, num_underrun());
    EXPECT_FALSE(buffer_info<bool8_t>(buffer.handle, BUFFER_INFO_NEW_DATA).value);
}

INSTANTIATE_IN_BOTH_MODES(StartAcquisition);

class StopAcquisition : public StartAcquisition {};

TEST_P(StopAcquisition, StopsTheCamera)
{
    announce();
    start();
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(ds, ACQ_STOP_FLAGS_KILL));
    EXPECT_EQ((Calls{call("ZVGR_CameraStopAcquire_GenTL", camera())}), fake.calls());
    EXPECT_LOG_LINES({Priority::information, "Enter DSStopAcquisition, flags=0x1", "DSStopAcquisition"},
                     {Priority::information, "Exit DSStopAcquisition", "DSStopAcquisition"});
}

TEST_P(StopAcquisition, SucceedsWhenNothingRuns)
{
    EXPECT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(ds, ACQ_STOP_FLAGS_DEFAULT));
    EXPECT_EQ(1U, fake.count("ZVGR_CameraStopAcquire_GenTL"));
}

TEST_P(StopAcquisition, SucceedsWhateverTheLibrarySays)
{
    const Announced& buffer = announce();
    queue(buffer);
    start();
    fake.next("ZVGR_CameraStopAcquire_GenTL").answers(any_failure);
    stop();
    deliver(buffer); // the camera runs on, for nobody
    EXPECT_EQ(0U, num_delivered());
}

TEST_P(StopAcquisition, LeavesBuffersInTheirQueues)
{
    queue(announce());
    queue(announce());
    start();
    deliver(*buffers[0]);
    stop();
    EXPECT_EQ(1U, num_queued());
    EXPECT_EQ(1U, num_await_delivery());
}

TEST_P(StopAcquisition, HasStoppedDeliveryWhenTheLibraryIsTold)
{
    const Announced& buffer = announce();
    queue(buffer);
    start();
    fake.on("ZVGR_CameraStopAcquire_GenTL", [&](const Call&) { deliver(buffer); });
    stop();
    EXPECT_EQ(0U, num_delivered());
    EXPECT_FALSE(buffer_info<bool8_t>(buffer.handle, BUFFER_INFO_NEW_DATA).value);
}

INSTANTIATE_IN_BOTH_MODES(StopAcquisition);

class DSStopAcquisition : public RunningCyclicStream {};

TEST_F(DSStopAcquisition, ResetsTheCounters)
{
    deliver(*buffers[0]);
    ASSERT_EQ(1U, stream_info<uint64_t>(STREAM_INFO_NUM_DELIVERED).value);
    stop();
    EXPECT_EQ(0U, stream_info<uint64_t>(STREAM_INFO_NUM_DELIVERED).value);
    deliver(*buffers[0]);
    ASSERT_EQ(1U, stream_info<uint64_t>(STREAM_INFO_NUM_UNDERRUN).value);
    stop();
    EXPECT_EQ(0U, stream_info<uint64_t>(STREAM_INFO_NUM_UNDERRUN).value);
}

} // namespace
