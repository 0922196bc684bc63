#include <gmock/gmock.h>

#include "zvgr/FrameStamp.h"

#include "unit/simulator/faults.h"

namespace {

using namespace zvsim_test;
using testing::ElementsAre;
using testing::IsEmpty;

class FaultedFrames : public Faulty {
protected:
    /// Acquires `frames` frames, each into a buffer of its own, with one fault.
    std::unique_ptr<Acquired> acquired(const std::string& text, uint32_t frames)
    {
        fault(text);
        auto acquired = std::make_unique<Acquired>(open_camera(), frames + 2);
        acquired->run(frames + 1, frames);
        return acquired;
    }
};

TEST_F(FaultedFrames, WithoutAFaultAreNumberedInOrder)
{
    EXPECT_THAT(acquired("kind: scan-fails, times: 1, when: {call: 99}", 4)->ids(), ElementsAre(0, 1, 2, 3));
}

TEST_F(FaultedFrames, DroppedOnesAreMissing)
{
    EXPECT_THAT(acquired("kind: frame-dropped, when: {frame: 2, until: 3}", 4)->ids(),
                ElementsAre(0, 1, 4, 5));
}

TEST_F(FaultedFrames, EveryNthIsCountedByItsNumber)
{
    EXPECT_THAT(acquired("kind: frame-dropped, when: {every: 2}", 4)->ids(), ElementsAre(0, 2, 4, 6));
}

TEST_F(FaultedFrames, DuplicatedOnesComeTwice)
{
    EXPECT_THAT(acquired("kind: frame-duplicated, when: {frame: 1}", 4)->ids(), ElementsAre(0, 1, 1, 2));
}

TEST_F(FaultedFrames, ADuplicateIsNotOneFrameTooMany)
{
    const auto result = acquired("kind: frame-duplicated, when: {frame: 1}", 2);
    EXPECT_THAT(result->ids(), ElementsAre(0, 1));
    EXPECT_EQ(1u, result->receiver.ends());
}

TEST_F(FaultedFrames, ThoseOutOfOrderAreOvertakenByTheNext)
{
    EXPECT_THAT(acquired("kind: frames-out-of-order, when: {frame: 1}", 5)->ids(),
                ElementsAre(0, 2, 1, 3, 4));
}

TEST_F(FaultedFrames, TwoOutOfOrderInARowDoNotStopTheStream)
{
    EXPECT_THAT(acquired("kind: frames-out-of-order, when: {frame: 1, until: 2}", 5)->ids(),
                ElementsAre(0, 2, 1, 3, 4));
}

TEST_F(FaultedFrames, AWrongIdIsThatOfOneFrame)
{
    EXPECT_THAT(acquired("kind: frame-id-wrong, when: {frame: 1}, by: 100", 3)->ids(),
                ElementsAre(0, 101, 2));
}

TEST_F(FaultedFrames, AJumpOfTheIdIsForAllThatFollow)
{
    EXPECT_THAT(acquired("kind: frame-id-jumps, when: {frame: 1}, by: 100", 3)->ids(),
                ElementsAre(0, 101, 102));
}

TEST_F(FaultedFrames, ATimeStampCanBeZero)
{
    const auto result = acquired("kind: timestamp-zero, when: {frame: 1}", 3);
    EXPECT_NE(0u, result->reports[0].timestamp);
    EXPECT_EQ(0u, result->reports[1].timestamp);
    EXPECT_NE(0u, result->reports[2].timestamp);
}

TEST_F(FaultedFrames, ATimeStampCanGoBackwards)
{
    const auto result = acquired("kind: timestamp-backwards, when: {frame: 1}, ticks: 1000000000", 3);
    EXPECT_LT(result->reports[1].timestamp, result->reports[0].timestamp);
    EXPECT_GE(result->reports[2].timestamp, result->reports[0].timestamp);
}

TEST_F(FaultedFrames, AJumpOfTheTimeStampIsForAllThatFollow)
{
    constexpr uint64_t jump = 1'000'000'000'000;
    const auto result = acquired("kind: timestamp-jumps, when: {frame: 1}, ticks: 1000000000000", 3);
    EXPECT_LT(result->reports[0].timestamp, jump);
    EXPECT_GE(result->reports[1].timestamp, jump);
    EXPECT_GE(result->reports[2].timestamp, result->reports[1].timestamp);
}

TEST_F(FaultedFrames, ATruncatedOneLeavesTheRestOfTheBuffer)
{
    fault("kind: frame-truncated, bytes: 100, when: {frame: 0}");
    const uint32_t camera = open_camera();
    Acquired result{camera, 0};
    std::vector<unsigned char> memory(frame_size, 0xEE);
    uint64_t buffer = 0;
    ASSERT_EQ(success, ZVGR_BufferAnnounce(result.stream(), memory.data(), frame_size, nullptr, &buffer));
    ASSERT_EQ(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
    result.run(2, 1);
    EXPECT_EQ('Z', memory[0]);
    EXPECT_EQ(std::vector<unsigned char>(frame_size - 100, 0xEE),
              std::vector<unsigned char>(memory.begin() + 100, memory.end()));
    const auto stamp = zvgr::read_stamp(memory.data(), memory.size());
    EXPECT_FALSE(stamp && stamp->checksum_ok);
}

TEST_F(FaultedFrames, ACorruptedOneHasAStampThatDoesNotFit)
{
    const auto result = acquired("kind: frame-corrupted, when: {frame: 1}", 3);
    for (const size_t i : {size_t{0}, size_t{1}, size_t{2}}) {
        const auto stamp = zvgr::read_stamp(result->memory(i), frame_size);
        ASSERT_TRUE(stamp);
        EXPECT_EQ(i != 1, stamp->checksum_ok) << i;
    }
}

TEST_F(FaultedFrames, DamageStaysWithinTheBuffer)
{
    fault("kind: frame-corrupted, bytes: 100000");
    Acquired result{open_camera(), 0};
    std::vector<unsigned char> memory(frame_size, 0xEE);
    uint64_t buffer = 0;
    ASSERT_EQ(success, ZVGR_BufferAnnounce(result.stream(), memory.data(), 100, nullptr, &buffer));
    ASSERT_EQ(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
    result.run(2, 1);
    EXPECT_EQ(std::vector<unsigned char>(frame_size - 100, 0xEE),
              std::vector<unsigned char>(memory.begin() + 100, memory.end()));
}

TEST_F(FaultedFrames, LateOnesComeLaterThanTheyWere)
{
    fault("kind: frame-late, time: 20 ms, when: {frame: 0}");
    Acquired result{open_camera(), 2};
    const auto begin = std::chrono::steady_clock::now();
    result.run(2, 1);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds{20});
    EXPECT_THAT(result.ids(), ElementsAre(0));
}

TEST_F(FaultedFrames, AStopDoesNotWaitForAFrameThatIsLate)
{
    fault("kind: frame-late, time: 10 min, when: {frame: 1}");
    Acquired result{open_camera(), 3};
    result.run(1);
    EXPECT_THAT(result.ids(), ElementsAre(0));
}

TEST_F(FaultedFrames, AStopDoesNotWaitForACallbackThatStalls)
{
    fault("kind: callback-stalls, time: 10 min, when: {frame: 1}");
    Acquired result{open_camera(), 3};
    result.run(1);
    EXPECT_THAT(result.ids(), ElementsAre(0));
}

TEST_F(FaultedFrames, AStallComesBeforeTheReport)
{
    fault("kind: callback-stalls, time: 20 ms, when: {frame: 0}");
    Acquired result{open_camera(), 1};
    const auto begin = std::chrono::steady_clock::now();
    result.run(2, 1);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds{20});
}

TEST_F(FaultedFrames, ThoseWithoutACallbackFillABufferAllTheSame)
{
    fault("kind: callback-missing, when: {frame: 0}");
    Acquired result{open_camera(), 3};
    result.run(3, 3);
    EXPECT_THAT(result.ids(), ElementsAre(1, 2));
    EXPECT_EQ(0u, buffer_info(result.buffers()[0], zv_buffer_frame_id));
    EXPECT_NE(0u, buffer_info(result.buffers()[0], zv_buffer_timestamp));
}

TEST_F(FaultedFrames, AnAcquisitionCanEndEarly)
{
    fault("kind: acquisition-ends-early, when: {frame: 2}");
    Acquired result{open_camera(), 5};
    result.run(3);
    EXPECT_THAT(result.ids(), ElementsAre(0, 1));
    EXPECT_EQ(1u, result.receiver.ends());
}

TEST_F(FaultedFrames, AnAcquisitionThatEndedEarlyCanBeStartedAgain)
{
    fault("kind: acquisition-ends-early, when: {frame: 1}, times: 1");
    Acquired result{open_camera(), 4};
    result.run(2);
    ASSERT_EQ(success, result.start(3));
    ASSERT_TRUE(result.receiver.wait_for(6));
    EXPECT_EQ(success, result.stop());
    EXPECT_THAT(result.ids(), ElementsAre(0, 0, 1, 2));
}

TEST_F(FaultedFrames, AnAcquisitionThatNeverStartsCanBeStopped)
{
    fault("kind: acquisition-never-starts, times: 1");
    Acquired result{open_camera(), 4};
    ASSERT_EQ(success, result.start(1));
    ASSERT_EQ(success, result.stop());
    EXPECT_THAT(result.ids(), IsEmpty());
    result.run(2, 1);
    EXPECT_THAT(result.ids(), ElementsAre(0));
}

TEST_F(FaultedFrames, OtherCamerasAreUntouched)
{
    fault("kind: frame-dropped, grabber: 0, camera: 1, when: {frame: 0}");
    const uint32_t first = open_camera();
    Acquired of_first{first, 2};
    of_first.run(3, 2);
    EXPECT_THAT(of_first.ids(), ElementsAre(0, 1));
    close_all();
    const uint32_t second = cameras_of(open_grabber())[1];
    ASSERT_EQ(success, ZVGR_CameraOpen2(second, nullptr));
    Acquired of_second{second, 2};
    of_second.run(3, 2);
    EXPECT_THAT(of_second.ids(), ElementsAre(1, 2));
}

TEST_F(FaultedFrames, CyclicModeHasThemToo)
{
    fault("kind: timestamp-zero, when: {frame: 1}");
    const uint32_t camera = open_camera();
    uint32_t stream = ZV_NO_HANDLE;
    ASSERT_EQ(success, ZVGR_StreamCreateAndAlloc(camera, &stream, 4, 0));
    Receiver receiver;
    std::vector<bool> are_zero;
    receiver.on_frame = [&](uint32_t its_stream) {
        ZvFrameAux record{};
        ZVGR_StreamGetAux(its_stream, ZVGR_StreamGetFrameIndex(its_stream), &record);
        are_zero.push_back(record.timestamp == 0);
    };
    ASSERT_EQ(success, ZVGR_CameraCallbackRegister(camera, &Receiver::frame_callback, &receiver));
    ASSERT_EQ(success, ZVGR_CameraStartAcquire_GenTL(camera, stream, 3));
    ASSERT_TRUE(receiver.wait_for(3));
    ASSERT_EQ(success, ZVGR_StreamDelete(stream));
    EXPECT_THAT(are_zero, ElementsAre(false, true, false));
}

} // namespace
