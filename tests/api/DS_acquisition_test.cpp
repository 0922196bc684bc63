#include <string>

#include "api/DS_modes.h"
#include "api/lines.h"

using namespace zvtest;

namespace {

class StartAcquisition : public EitherStream {
protected:
    ExpectedLine enter_line(const std::string& frames, const std::string& flags = "0") const
    {
        return {Priority::information,
                "Enter DSStartAcquisition, stream handle=0x" + low_hex(ds) + ", flags=0x" + flags +
                    ", frames=" + frames,
                "DSStartAcquisition"};
    }
};

TEST_P(StartAcquisition, StartsTheCameraForTheLow32BitsOfTheNumberOfFrames)
{
    struct Row {
        uint64_t asked;
        uint32_t passed;
        const char* printed;
    };
    announce(); // and does not queue it
    for (const Row& row : {Row{1, 1, "1"}, Row{GENTL_INFINITE, 0, "-1"}, Row{0x100000000U, 0, "0"},
                           Row{0xFFFFFFFFU, 0xFFFFFFFFU, "-1"}, Row{0x500000003U, 3, "3"},
                           Row{0x80000000U, 0x80000000U, "-2147483648"}}) {
        SCOPED_TRACE(row.asked);
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(ds, 0xAB, row.asked));
        EXPECT_EQ((Calls{call("ZVGR_CameraStartAcquire_GenTL", camera(), stream(), row.passed)}),
                  fake.calls());
        EXPECT_LOG_LINES(enter_line(row.printed, "AB"),
                         {Priority::information, "Exit DSStartAcquisition", "DSStartAcquisition"});
        EXPECT_TRUE(fake.is_acquiring(stream()));
        stop();
    }
}

TEST_P(StartAcquisition, RefusesAnEmptyPool)
{
    EXPECT_EQ(GC_ERR_INVALID_BUFFER, DSStartAcquisition(ds, ACQ_START_FLAGS_DEFAULT, 1));
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_LOG_LINES(enter_line("1"),
                     {Priority::error, "No buffers in stream=0x" + hex16(ds), "DSStartAcquisition"},
                     FAILED_WITH(GC_ERR_INVALID_BUFFER));
}

TEST_P(StartAcquisition, FailsSilentlyWhenTheLibraryRefuses)
{
    const Announced& buffer = announce();
    queue(buffer);
    forget();
    fake.next("ZVGR_CameraStartAcquire_GenTL").answers(any_failure);
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSStartAcquisition(ds, ACQ_START_FLAGS_DEFAULT, 1));
    EXPECT_LOG_LINES(enter_line("1"));
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
    EXPECT_EQ(2U, fake.count("ZVGR_CameraStartAcquire_GenTL"));
    EXPECT_EQ(1U, num_delivered());
    queue(buffer);
    deliver(buffer);
    EXPECT_EQ(2U, num_delivered()) << "and goes on";
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
    EXPECT_FALSE(is_new(buffer));
}

INSTANTIATE_IN_BOTH_MODES(StartAcquisition);

class StopAcquisition : public EitherStream {};

TEST_P(StopAcquisition, StopsTheCameraWhetherItRunsOrNot)
{
    announce();
    start();
    for (int i = 0; i < 2; ++i) {
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(ds, ACQ_STOP_FLAGS_KILL));
        EXPECT_EQ((Calls{call("ZVGR_CameraStopAcquire_GenTL", camera())}), fake.calls());
        EXPECT_LOG_LINES({Priority::information, "Enter DSStopAcquisition, flags=0x1", "DSStopAcquisition"},
                         {Priority::information, "Exit DSStopAcquisition", "DSStopAcquisition"});
    }
}

TEST_P(StopAcquisition, StopsDeliveryBeforeTheLibraryIsCalledAndWhateverItAnswers)
{
    const Announced& buffer = announce();
    queue(buffer);
    start();
    fake.on("ZVGR_CameraStopAcquire_GenTL", [&](const Call&) { deliver(buffer); });
    fake.next("ZVGR_CameraStopAcquire_GenTL").answers(any_failure);
    stop();
    deliver(buffer); // the camera still runs
    EXPECT_EQ(0U, num_delivered());
    EXPECT_FALSE(is_new(buffer));
}

TEST_P(StopAcquisition, ResetsTheCountsBeforeTheLibraryIsCalled)
{
    deliver(announce()); // idle: an underrun in cyclic mode
    uint64_t meanwhile = 1;
    fake.on("ZVGR_CameraStopAcquire_GenTL", [&](const Call&) { meanwhile = num_underrun(); });
    stop();
    EXPECT_EQ(0U, meanwhile);
}

TEST_P(StopAcquisition, LeavesNoCountOfFramesThatCameMeanwhile)
{
    const Announced& buffer = announce();
    queue(buffer);
    start();
    fake.on("ZVGR_CameraStopAcquire_GenTL", [&](const Call&) { deliver(buffer); });
    stop();
    EXPECT_EQ(0U, num_underrun());
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
