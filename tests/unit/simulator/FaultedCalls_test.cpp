#include <gmock/gmock.h>

#include "unit/simulator/interface_calls.h"

// Calls that fail, the log of calls, and cameras and grabbers that are unplugged or lost.

namespace {

using namespace zvsim_test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

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

class FaultedCallLog : public Faulty {
protected:
    ~FaultedCallLog() override
    {
        close_all();
        plan("");
        scan(); // closes the call log
    }

    std::filesystem::path log_file() const { return folder().file("calls.log"); }

    /// What the log says about the whole life of a consumer, with this plan.
    std::string log_of(const std::string& lines)
    {
        plan("call_log: " + log_file().string() + "\n" + lines);
        const uint32_t camera = open_camera();
        EXPECT_NE(ZV_NOT_AVAILABLE, ZVGR_GetCameraValueInt(camera, "Height"));
        {
            Acquired acquired{camera, 20};
            acquired.start(10);
            EXPECT_TRUE(acquired.receiver.wait_for_end());
            acquired.stop();
        }
        close_all();
        return text_of(log_file());
    }
};

const char* const chances = "faults: [{kind: frame-dropped, when: {probability: 0.3}},"
                            " {kind: frame-id-wrong, when: {probability: 0.5}},"
                            " {kind: buffer-info-fails, when: {probability: 0.2}}]\n";

TEST_F(FaultedCallLog, TheSameSeedGivesTheSameBytes)
{
    const std::string first = log_of(std::string{"seed: 9\n"} + chances);
    EXPECT_THAT(first, HasSubstr("fault frame-dropped"));
    for (int run = 0; run < 5; ++run)
        EXPECT_EQ(first, log_of(std::string{"seed: 9\n"} + chances));
}

TEST_F(FaultedCallLog, AnotherSeedGivesAnotherLog)
{
    EXPECT_NE(log_of(std::string{"seed: 9\n"} + chances), log_of(std::string{"seed: 10\n"} + chances));
}

TEST_F(FaultedCallLog, WithFaultsSwitchedOffIsAsWithoutAny)
{
    const std::string without = log_of("");
    EXPECT_THAT(without, Not(HasSubstr("fault")));
    EXPECT_EQ(without, log_of(std::string{"faults_enabled: false\n"} + chances));
    const Variable off{"ZV_GRABBER_FAULTS", "off"};
    EXPECT_EQ(without, log_of(chances));
}

TEST_F(FaultedCallLog, NamesHandlesByTheirOrderAndSaysHowCallsEnded)
{
    const std::string log = log_of("faults: [{kind: stop-fails, status: 0x3123}]");
    EXPECT_THAT(
        log,
        HasSubstr("1 ZV_DeviceScan -> 0x3000\n2 ZVGR_Open 0 -> g1\n3 ZVGR_UpdateCameraList g1 -> 0x3000\n"
                  "4 ZVGR_CameraOpen2 c1 -> 0x3000\n"
                  "5 ZVGR_GetCameraValueInt c1 name=Height -> something\n"
                  "6 ZVGR_StreamCreate c1 index=0 -> 0x3000 s1\n"
                  "7 ZVGR_StreamBufferCallbackRegister s1 -> 0x3000\n"
                  "8 ZVGR_BufferAllocAndAnnounce s1 size=3072 -> 0x3000 b1\n"
                  "9 ZVGR_BufferToQueue b1 queue=0 -> 0x3000\n"));
    EXPECT_THAT(log, HasSubstr(" ZVGR_CameraStartAcquire_GenTL c1 stream=s1 frames=10 -> 0x3000\n"));
    EXPECT_THAT(log, HasSubstr("\ns1 frame 0\n"
                               "s1 ZVGR_BufferGetInfo b1 command=1000 -> 0x3000\n"
                               "s1 ZVGR_BufferGetInfo b1 command=3 -> 0x3000\n"
                               "s1 frame 1\n"));
    EXPECT_THAT(log, HasSubstr(" fault stop-fails at ZVGR_CameraStopAcquire_GenTL\n"));
    EXPECT_THAT(log, HasSubstr(" ZVGR_CameraStopAcquire_GenTL c1 -> 0x3123\n"));
    EXPECT_THAT(log, HasSubstr(" ZVGR_Close g1 -> 0x3000\n"));
}

TEST_F(FaultedCallLog, AFileThatCannotBeWrittenChangesNothing)
{
    plan("call_log: " + folder().file("nowhere/calls.log").string());
    EXPECT_EQ(3u, scan());
}

class FaultedPlugging : public Faulty {
protected:
    /// It is away between the second and the third scan.
    void unplug_for_one_scan(const std::string& place) const
    {
        plan("events: [{scan: 2, do: unplug, " + place + "}, {scan: 3, do: plug, " + place + "}]");
    }
    static uint32_t status_of_list(uint32_t grabber)
    {
        uint32_t cameras[zv_max_cameras];
        uint32_t count = zv_max_cameras;
        return ZVGR_UpdateCameraList(grabber, cameras, &count);
    }
};

TEST_F(FaultedPlugging, AnUnpluggedGrabberIsMissingInTheScanAndItsCallsFailUntilItIsBack)
{
    unplug_for_one_scan("grabber: 0");
    EXPECT_EQ(3u, scan());
    EXPECT_STREQ("Two", ZV_DeviceDisplayName(0));
    const uint32_t grabber = open_grabber();
    EXPECT_EQ(2u, scan());
    EXPECT_STREQ("One", ZV_DeviceDisplayName(0));
    EXPECT_EQ(nullptr, ZV_DeviceDisplayName(2));
    EXPECT_NE(success, status_of_list(grabber));
    EXPECT_EQ(3u, scan());
    EXPECT_STREQ("Two", ZV_DeviceDisplayName(0));
    EXPECT_EQ(success, status_of_list(grabber));
}

TEST_F(FaultedPlugging, AnUnpluggedCameraIsMissingInTheListAndKeepsItsHandle)
{
    unplug_for_one_scan("grabber: 0, camera: 0");
    scan();
    const uint32_t grabber = open_grabber();
    const auto before = cameras_of(grabber);
    ASSERT_EQ(2u, before.size());
    scan();
    EXPECT_THAT(cameras_of(grabber), ElementsAre(before[1]));
    EXPECT_NE(success, ZVGR_CameraOpen2(before[0], nullptr));
    EXPECT_EQ(64, ZVGR_GetCameraValueInt(before[1], "Width")) << "the other one is there";
    scan();
    EXPECT_EQ(before, cameras_of(grabber));
    EXPECT_EQ(success, ZVGR_CameraOpen2(before[0], nullptr));
}

TEST_F(FaultedPlugging, TheAcquisitionOfAnUnpluggedCameraEndsByItself)
{
    plan("events: [{scan: 2, do: unplug, grabber: 0, camera: 0}]");
    Acquired acquired{open_camera(), 1}; // the stream waits for buffers after one frame
    ASSERT_EQ(success, acquired.start());
    ASSERT_TRUE(acquired.receiver.wait_for(1));
    scan();
    ASSERT_TRUE(acquired.receiver.wait_for(2));
    EXPECT_EQ(success, acquired.stop());
    EXPECT_EQ(1u, acquired.receiver.ends());
}

TEST_F(FaultedPlugging, ACableCanBePulledAtATime)
{
    bool is_started = false;
    // The time begins with the scan. A machine that is too slow to acquire before it gets another try.
    for (int time = 10; !is_started; time *= 2) {
        plan("events: [{at: " + std::to_string(time) + " ms, do: unplug, grabber: 0, camera: 0}]");
        scan();
        const auto cameras = cameras_of(open_grabber());
        Receiver receiver;
        uint32_t stream = ZV_NO_HANDLE;
        is_started =
            cameras.size() == 2 && ZVGR_CameraOpen2(cameras[0], nullptr) == success &&
            ZVGR_StreamCreate(cameras[0], &stream, 0) == success &&
            ZVGR_StreamBufferCallbackRegister(stream, &Receiver::buffer_callback, &receiver) == success &&
            ZVGR_CameraStartAcquire_GenTL(cameras[0], stream, 0) == success;
        EXPECT_TRUE(!is_started || receiver.wait_for_end()) << "nobody calls, and it ends anyway";
        close_all();
        EXPECT_EQ(is_started ? 1U : 0U, receiver.ends());
    }
}

TEST_F(FaultedPlugging, ACableThatIsPulledLaterDoesNotHoldUpTheEnd)
{
    plan("events: [{at: 10 min, do: unplug, grabber: 0}]");
    EXPECT_EQ(3u, scan());
}

TEST_F(FaultedPlugging, ACameraThatCameBackMustBeOpenedAgain)
{
    unplug_for_one_scan("grabber: 0, camera: 0");
    const uint32_t camera = open_camera();
    Acquired acquired{camera, 2};
    scan();
    scan();
    EXPECT_NE(success, acquired.start());
    EXPECT_EQ(success, ZVGR_CameraClose(camera));
    EXPECT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    acquired.run(2, 1);
    EXPECT_THAT(acquired.ids, ElementsAre(0));
}

TEST_F(FaultedPlugging, EverythingOfALostGrabberOrCameraCanBeEnded)
{
    for (const char* const place : {"grabber: 0", "grabber: 0, camera: 0"}) {
        plan(std::string{"events: [{scan: 2, do: unplug, "} + place + "}]");
        scan();
        const uint32_t grabber = ZVGR_Open(0);
        const uint32_t camera = cameras_of(grabber).at(0);
        ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
        const uint32_t stream = create_stream(camera);
        const uint64_t buffer = announce(stream);
        scan();
        EXPECT_NE(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
        EXPECT_EQ(success, ZVGR_CameraStopAcquire_GenTL(camera));
        EXPECT_EQ(success, ZVGR_BufferRevoke(stream, buffer));
        EXPECT_EQ(success, ZVGR_StreamDelete(stream));
        EXPECT_EQ(success, ZVGR_CameraClose(camera));
        EXPECT_EQ(success, ZVGR_Close(grabber));
    }
}

TEST_F(FaultedPlugging, ACameraCanBeLostWhileItIsOpenedForSomeScansOrSomeTime)
{
    plan("faults: [{kind: camera-lost-while-opening, camera: 0, grabber: 0, away_for_scans: 1, times: 1},"
         " {kind: camera-lost-while-opening, camera: 1, grabber: 0, away_for: 0 ms, times: 1}]");
    scan();
    const uint32_t grabber = open_grabber();
    const auto cameras = cameras_of(grabber);
    EXPECT_NE(success, ZVGR_CameraOpen2(cameras[0], nullptr));
    EXPECT_THAT(cameras_of(grabber), ElementsAre(cameras[1]));
    EXPECT_EQ(cameras, cameras_of(grabber));
    EXPECT_EQ(success, ZVGR_CameraOpen2(cameras[0], nullptr));
    EXPECT_NE(success, ZVGR_CameraOpen2(cameras[1], nullptr));
    EXPECT_EQ(success, ZVGR_CameraOpen2(cameras[1], nullptr));
}

TEST_F(FaultedPlugging, ACameraCanBeLostWhileItIsConfigured)
{
    const uint32_t camera = open_camera_with("kind: camera-lost-while-configuring, when: {call: 2}");
    uint32_t size = 4;
    EXPECT_EQ(success, ZVGR_CameraWriteReg(camera, 0x1100, "new", &size));
    EXPECT_NE(success, ZVGR_CameraWriteReg(camera, 0x1100, "old", &size));
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetCameraValueInt(camera, "Width"));
}

TEST_F(FaultedPlugging, ACameraCanBeLostWhileItStreams)
{
    Acquired acquired{
        open_camera_with("kind: camera-lost-while-streaming, when: {frame: 2}, away_for_scans: 1, times: 1"),
        8};
    acquired.run(3);
    EXPECT_THAT(acquired.ids, ElementsAre(0, 1));
    EXPECT_EQ(1u, acquired.receiver.ends());
    EXPECT_NE(success, acquired.start());
}

TEST_F(FaultedPlugging, AGrabberCanBeLostAtAnyCall)
{
    fault("kind: grabber-lost, grabber: 0, when: {call: 2}, away_for_scans: 1");
    scan();
    const uint32_t grabber = open_grabber();
    EXPECT_NE(success, status_of_list(grabber));
    EXPECT_EQ(2u, scan());
    EXPECT_EQ(3u, scan());
    EXPECT_EQ(success, status_of_list(grabber));
}

TEST_F(FaultedPlugging, AGrabberCanBeLostWhileItsCameraStreams)
{
    Acquired acquired{open_camera_with("kind: grabber-lost-while-streaming, when: {frame: 1}"), 4};
    acquired.run(2);
    EXPECT_THAT(acquired.ids, ElementsAre(0));
    EXPECT_EQ(2u, scan());
}

} // namespace
