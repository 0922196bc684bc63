#include <gmock/gmock.h>

#include "unit/simulator/faults.h"
#include "unit/simulator/faulty_calls.h"

namespace {

using namespace zvsim_test;
using testing::ElementsAre;

constexpr uint32_t a_status = 0x3ABC;

class FaultedCalls : public Faulty {
protected:
    Situation situation()
    {
        Situation made;
        scan();
        made.grabber = open_grabber();
        made.camera = cameras_of(made.grabber).front();
        EXPECT_EQ(success, ZVGR_CameraOpen2(made.camera, nullptr));
        made.stream = create_stream(made.camera);
        made.buffer = announce(made.stream);
        EXPECT_EQ(success, ZVGR_StreamCreateAndAlloc(made.camera, &made.ring, 2, 0));
        return made;
    }
    /// A situation in which the next call of a function has the fault, and only that one.
    Situation situation_with(const std::string& kind, uint32_t calls_before)
    {
        fault("kind: " + kind + ", when: {call: " + std::to_string(calls_before + 1) + "}");
        return situation();
    }
};

class EveryStatusCall : public FaultedCalls, public testing::WithParamInterface<StatusCall> {
protected:
    const StatusCall& row{GetParam()};
};

TEST_P(EveryStatusCall, FailsByTheKindOfItsOwn)
{
    const Situation now = situation_with(std::string{row.kind} + ", status: 0x3ABC", row.calls_of_kind);
    Outputs outputs;
    EXPECT_EQ(a_status, row.call(now, outputs));
}

TEST_P(EveryStatusCall, FailsByItsName)
{
    const Situation now = situation_with("call-fails, status: 0x3ABC, function: " + std::string{row.function},
                                         row.calls_before);
    Outputs outputs;
    EXPECT_EQ(a_status, row.call(now, outputs));
    EXPECT_TRUE(outputs.are_untouched());
}

TEST_P(EveryStatusCall, WorksAgainWhenTheFaultIsOverAndEndsWhatItEndsAllTheSame)
{
    const Situation now = situation_with("call-fails, status: 0x3ABC, function: " + std::string{row.function},
                                         row.calls_before);
    Outputs outputs;
    ASSERT_EQ(a_status, row.call(now, outputs));
    if (row.ends_for_good) {
        EXPECT_NE(success, row.call(now, outputs));
    } else {
        EXPECT_EQ(success, row.call(now, outputs));
    }
}

TEST_P(EveryStatusCall, CanBeDelayed)
{
    const Situation now =
        situation_with("call-delays, time: 20 ms, function: " + std::string{row.function}, row.calls_before);
    Outputs outputs;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(success, row.call(now, outputs));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds{20});
}

TEST_P(EveryStatusCall, CanLeaveItsOutputUntouched)
{
    if (!row.writes)
        return;
    const Situation now = situation_with(
        "call-leaves-output-untouched, function: " + std::string{row.function}, row.calls_before);
    Outputs outputs;
    EXPECT_EQ(success, row.call(now, outputs));
    EXPECT_TRUE(outputs.are_untouched());
}

std::string name_of(const testing::TestParamInfo<StatusCall>& row) { return row.param.function; }

INSTANTIATE_TEST_SUITE_P(FaultedCalls, EveryStatusCall, testing::ValuesIn(status_calls), name_of);

TEST_F(FaultedCalls, AGrabberThatDoesNotOpenHasNoHandle)
{
    fault("kind: grabber-open-fails, grabber: 1, times: 1");
    scan();
    EXPECT_NE(ZV_NO_HANDLE, open_grabber(0));
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(1));
    EXPECT_NE(ZV_NO_HANDLE, open_grabber(1));
}

TEST_F(FaultedCalls, AGrabberWithoutANameHasNoText)
{
    fault("kind: grabber-name-missing, grabber: 0");
    scan();
    EXPECT_EQ(nullptr, ZV_DeviceDisplayName(0));
    EXPECT_STREQ("One", ZV_DeviceDisplayName(1));
}

TEST_F(FaultedCalls, ValuesAreNotAvailable)
{
    fault("kind: value-not-available");
    const uint32_t camera = open_camera();
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetCameraValueInt(camera, "Width"));
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetCameraValueEnum(camera, "PixelFormat"));
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetGrabberValueInt(camera, "FW_Dma_Capable_QueuedBuffers_Imp"));
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetGrabberValueEnum(camera, "CameraChannelState"));
}

TEST_F(FaultedCalls, OneValueCanBeMeant)
{
    fault("kind: value-not-available, name: Width");
    const uint32_t camera = open_camera();
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetCameraValueInt(camera, "Width"));
    EXPECT_EQ(48, ZVGR_GetCameraValueInt(camera, "Height"));
}

TEST_F(FaultedCalls, OneInformationCanBeMeant)
{
    fault("kind: stream-info-fails, command: 13");
    const uint32_t stream = create_stream(open_camera());
    uint64_t value = 0;
    EXPECT_NE(success, ZVGR_StreamGetInfo(stream, zv_stream_buffer_alignment, &value));
    EXPECT_EQ(success, ZVGR_StreamGetInfo(stream, zv_stream_payload_now, &value));
}

TEST_F(FaultedCalls, ARingFrameCanBeMissing)
{
    fault("kind: ring-frame-missing, times: 1");
    const Situation now = situation();
    EXPECT_EQ(nullptr, ZVGR_StreamGetPtr(now.ring, 0));
    EXPECT_NE(nullptr, ZVGR_StreamGetPtr(now.ring, 0));
}

TEST_F(FaultedCalls, ARingCanForgetItsFrame)
{
    fault("kind: call-fails, function: ZVGR_StreamGetFrameIndex");
    const Situation now = situation();
    EXPECT_EQ(UINT32_MAX, ZVGR_StreamGetFrameIndex(now.ring));
}

TEST_F(FaultedCalls, NoCallbackComesAfterAStopThatFails)
{
    fault("kind: stop-fails");
    const uint32_t camera = open_camera();
    Acquired acquired{camera, 1};
    acquired.receiver.on_buffer = [](uint64_t buffer) { ZVGR_BufferToQueue(buffer, zv_queue_input); };
    ASSERT_EQ(success, acquired.start());
    ASSERT_TRUE(acquired.receiver.wait_for(3));
    EXPECT_NE(success, acquired.stop());
    acquired.receiver.expect_silence();
    EXPECT_NE(zv_channel_grabbing, ZVGR_GetGrabberValueEnum(camera, "CameraChannelState"));
}

TEST_F(FaultedCalls, MemoryIsFreeAfterARevokeThatFails)
{
    fault("kind: revoke-fails");
    Acquired acquired{open_camera(), 0};
    auto memory = std::make_unique<std::array<unsigned char, frame_size>>();
    uint64_t buffer = 0;
    ASSERT_EQ(success,
              ZVGR_BufferAnnounce(acquired.stream(), memory->data(), memory->size(), nullptr, &buffer));
    ASSERT_EQ(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
    ASSERT_EQ(success, acquired.start());
    ASSERT_TRUE(acquired.receiver.wait_for(1));
    EXPECT_NE(success, ZVGR_BufferRevoke(acquired.stream(), buffer));
    memory.reset();
    EXPECT_NE(success, ZVGR_BufferToQueue(buffer, zv_queue_input)) << "it is revoked";
}

TEST_F(FaultedCalls, TheVeryFirstScanCanFail)
{
    fault("kind: scan-fails, times: 1");
    uint32_t count = 0xAAAA;
    EXPECT_NE(success, ZV_DeviceScan(&count));
    EXPECT_EQ(0xAAAAu, count);
    EXPECT_EQ(3u, scan());
}

TEST_F(FaultedCalls, AFaultOfOneCameraLeavesTheOther)
{
    fault("kind: camera-open-fails, grabber: 2, camera: 1");
    scan();
    const auto of_first = cameras_of(open_grabber(0));
    const auto of_third = cameras_of(open_grabber(2));
    EXPECT_EQ(success, ZVGR_CameraOpen2(of_first[1], nullptr));
    EXPECT_EQ(success, ZVGR_CameraOpen2(of_third[0], nullptr));
    EXPECT_NE(success, ZVGR_CameraOpen2(of_third[1], nullptr));
}

TEST_F(FaultedCalls, TheSwitchInTheFileTurnsFaultsOff)
{
    plan("faults_enabled: false\nfaults: [{kind: scan-fails}]\nevents: [{scan: 1, do: unplug, grabber: 0}]");
    EXPECT_EQ(3u, scan());
}

TEST_F(FaultedCalls, TheVariableTurnsFaultsOff)
{
    const Variable off{"ZV_GRABBER_FAULTS", "off"};
    plan("faults: [{kind: scan-fails}]\nevents: [{scan: 1, do: unplug, grabber: 0}]");
    EXPECT_EQ(3u, scan());
}

TEST_F(FaultedCalls, AFileWithAMistakeHasNoGrabbersAndNoFaults)
{
    plan("faults: [{kind: scan-fails}, {kind: nothing-like-it}]");
    EXPECT_EQ(0u, scan());
}

} // namespace
