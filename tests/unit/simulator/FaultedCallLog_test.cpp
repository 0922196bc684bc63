#include <gmock/gmock.h>

#include "unit/simulator/faults.h"

namespace {

using namespace zvsim_test;
using testing::HasSubstr;
using testing::Not;

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

} // namespace
