#include "unit/simulator/interface_calls.h"

namespace {

using namespace zvsim_test;

class EveryFaultedCall : public CallSituation, public testing::WithParamInterface<InterfaceCall> {
protected:
    /// A situation in which the next call of the function has the fault, and only that one.
    Situation situation_with(const std::string& kind, uint32_t calls_before)
    {
        fault("kind: " + kind + ", when: {call: " + std::to_string(calls_before + 1) + "}");
        return situation();
    }
    Situation situation_with(const std::string& kind)
    {
        return situation_with(kind + ", function: " + row.function, row.calls_before);
    }
    uint64_t call(const Situation& now) { return row.call(now, outputs); }

    const InterfaceCall& row{GetParam()};
    const std::string status{row.answers_status() ? ", status: 0x3ABC" : ""};
    Outputs outputs;
};

INSTANTIATE_TEST_SUITE_P(FaultedCalls, EveryFaultedCall, testing::ValuesIn(interface_calls()), name_of_call);

TEST_P(EveryFaultedCall, FailsByItsOwnKind)
{
    const std::string kind =
        row.kind != nullptr ? row.kind : "call-fails, function: ZVGR_StreamGetFrameIndex";
    EXPECT_EQ(row.failure, call(situation_with(kind + status, row.calls_of_kind)));
}

TEST_P(EveryFaultedCall, FailsByItsNameOnceAndStillEndsWhatItEnds)
{
    const Situation now = situation_with("call-fails" + status);
    EXPECT_EQ(row.failure, call(now));
    EXPECT_TRUE(outputs.are_untouched());
    const bool has_ended = row.has(ends);
    EXPECT_EQ(has_ended, row.is_failure(call(now)));
}

TEST_P(EveryFaultedCall, CanBeDelayed)
{
    const Situation now = situation_with("call-delays, time: 5 ms");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(row.is_failure(call(now)));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds{5});
}

TEST_P(EveryFaultedCall, CanLeaveItsOutputUntouched)
{
    if (!row.has(writes))
        return;
    const Situation now = situation_with("call-leaves-output-untouched");
    EXPECT_EQ(success, call(now));
    EXPECT_TRUE(outputs.are_untouched());
}

using FaultedCalls = CallSituation;

TEST_F(FaultedCalls, OfOnePlaceLeaveTheOthers)
{
    plan(
        "faults: [{kind: grabber-open-fails, grabber: 1, times: 1}, {kind: grabber-name-missing, grabber: 0},"
        " {kind: camera-open-fails, grabber: 2, camera: 1}]");
    scan();
    EXPECT_EQ(nullptr, ZV_DeviceDisplayName(0));
    EXPECT_STREQ("One", ZV_DeviceDisplayName(1));
    const auto of_first = cameras_of(open_grabber(0));
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(1));
    EXPECT_NE(ZV_NO_HANDLE, open_grabber(1));
    const auto of_third = cameras_of(open_grabber(2));
    EXPECT_EQ(success, ZVGR_CameraOpen2(of_first[1], nullptr));
    EXPECT_EQ(success, ZVGR_CameraOpen2(of_third[0], nullptr));
    EXPECT_NE(success, ZVGR_CameraOpen2(of_third[1], nullptr));
}

TEST_F(FaultedCalls, CanBeOfOneValueOrOneCommandOnly)
{
    plan("faults: [{kind: value-not-available, name: Width}, {kind: stream-info-fails, command: 13}]");
    const uint32_t camera = open_camera();
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetCameraValueInt(camera, "Width"));
    EXPECT_EQ(48, ZVGR_GetCameraValueInt(camera, "Height"));
    const uint32_t stream = create_stream(camera);
    uint64_t value = 0;
    EXPECT_NE(success, ZVGR_StreamGetInfo(stream, zv_stream_buffer_alignment, &value));
    EXPECT_EQ(success, ZVGR_StreamGetInfo(stream, zv_stream_payload_now, &value));
}

TEST_F(FaultedCalls, NoCallbackComesAfterAStopThatFails)
{
    const uint32_t camera = open_camera_with("kind: stop-fails");
    Acquired acquired{camera, 1};
    acquired.receiver.on_call = requeue;
    ASSERT_EQ(success, acquired.start());
    ASSERT_TRUE(acquired.receiver.wait_for(3));
    EXPECT_NE(success, acquired.stop());
    acquired.receiver.expect_silence();
    EXPECT_FALSE(is_grabbing(camera));
}

TEST_F(FaultedCalls, MemoryIsFreeAfterARevokeThatFails)
{
    Acquired acquired{open_camera_with("kind: revoke-fails"), 0};
    auto memory = std::make_unique<std::array<unsigned char, frame_size>>();
    const uint64_t buffer = queue_memory(acquired.stream, memory->data(), memory->size());
    ASSERT_EQ(success, acquired.start());
    ASSERT_TRUE(acquired.receiver.wait_for(1));
    EXPECT_NE(success, ZVGR_BufferRevoke(acquired.stream, buffer));
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

TEST_F(FaultedCalls, ASwitchInTheFileOrAVariableTurnsFaultsOff)
{
    const char* const fails = "faults: [{kind: scan-fails}]\nevents: [{scan: 1, do: unplug, grabber: 0}]";
    plan(std::string{"faults_enabled: false\n"} + fails);
    EXPECT_EQ(3u, scan());
    const Variable off{"ZV_GRABBER_FAULTS", "off"};
    plan(fails);
    EXPECT_EQ(3u, scan());
}

TEST_F(FaultedCalls, AFileWithAMistakeHasNoGrabbersAndNoFaults)
{
    plan("faults: [{kind: scan-fails}, {kind: nothing-like-it}]");
    EXPECT_EQ(0u, scan());
}

} // namespace
