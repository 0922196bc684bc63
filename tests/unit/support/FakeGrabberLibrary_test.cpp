#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "zvgr/ZVGRLib.h"

#include "support/FakeGrabberLibrary.h"

// What the fake must notice. What it does when it is used well, the tests of the producer show.

using namespace zvtest;

namespace {

class FakeGrabber : public testing::Test {
protected:
    FakeGrabberLibrary& fake{FakeGrabberLibrary::instance()};

    void SetUp() override { fake.reset(); }
    void TearDown() override { fake.reset(); }

    static uint32_t open_camera()
    {
        uint32_t camera = 0;
        uint32_t count = 1;
        EXPECT_EQ(uint32_t{zv_success}, ZVGR_UpdateCameraList(ZVGR_Open(0), &camera, &count));
        return camera;
    }
};

TEST_F(FakeGrabber, TellsCallsWithOtherArgumentsApart)
{
    EXPECT_FALSE(call("ZVGR_Open", 0) == call("ZVGR_Open", 1));
    EXPECT_FALSE(call("ZVGR_Open", 0) == call("ZVGR_Close", 0));
    EXPECT_FALSE(call("ZVGR_CameraOpen2", 1, "a") == call("ZVGR_CameraOpen2", 1, nullptr));
    EXPECT_FALSE(call("ZVGR_CameraOpen2", 1, "a") == call("ZVGR_CameraOpen2", 1, "b"));
    EXPECT_TRUE(call("ZVGR_BufferToQueue", uint64_t{1}, 0) == call("ZVGR_BufferToQueue", 1, uint32_t{0}));
    EXPECT_TRUE(call("ZVGR_CameraOpen2", 1, any()) == call("ZVGR_CameraOpen2", 1, "b"));
}

TEST_F(FakeGrabber, AnswersFromTheScriptWithoutTouchingOutputs)
{
    uint32_t count = 77;
    fake.next("ZV_DeviceScan").answers(any_failure);
    EXPECT_EQ(any_failure, ZV_DeviceScan(&count));
    EXPECT_EQ(77U, count);
    fake.next("ZV_DeviceScan").gives(9);
    EXPECT_EQ(uint32_t{zv_success}, ZV_DeviceScan(&count));
    EXPECT_EQ(9U, count);
    fake.next("ZV_DeviceScan").answers_after_effect(any_failure);
    EXPECT_EQ(any_failure, ZV_DeviceScan(&count));
    EXPECT_EQ(1U, count);
}

TEST_F(FakeGrabber, FailsTheTestForUnusedAnswersAndOpenGrabbers)
{
    fake.next("ZVGR_Close").answers(any_failure);
    EXPECT_NONFATAL_FAILURE(FakeGrabberLibrary::instance().verify_finished(), "ZVGR_Close");
    fake.reset();
    ZVGR_Open(0);
    EXPECT_NONFATAL_FAILURE(FakeGrabberLibrary::instance().verify_finished(), "left open");
}

TEST_F(FakeGrabber, FailsTheTestForAHandleThatItNeverGaveOut)
{
    EXPECT_NONFATAL_FAILURE(ZVGR_Close(7), "never given out");
    EXPECT_NONFATAL_FAILURE(ZVGR_BufferToQueue(0, 0), "never given out");
    EXPECT_NONFATAL_FAILURE(ZVGR_GetGrabberValueInt(7, "Width"), "never given out");
    fake.allow_handle("ZVGR_Close", 7);
    EXPECT_EQ(any_failure, ZVGR_Close(7));
}

TEST_F(FakeGrabber, FailsTheTestForADeadHandle)
{
    static uint32_t grabber; // the macro's statement cannot see local variables
    grabber = ZVGR_Open(0);
    ZVGR_Close(grabber);
    EXPECT_NONFATAL_FAILURE(ZVGR_Close(grabber), "is dead");
    fake.allow_stale_handles();
    EXPECT_EQ(any_failure, ZVGR_Close(grabber));
    EXPECT_NE(grabber, ZVGR_Open(0));
}

TEST_F(FakeGrabber, FailsTheTestForAFrameWithoutACallback)
{
    static uint32_t stream; // the macro's statement cannot see local variables
    const uint32_t camera = open_camera();
    ASSERT_EQ(uint32_t{zv_success}, ZVGR_StreamCreate(camera, &stream, 0));
    EXPECT_NONFATAL_FAILURE(FakeGrabberLibrary::instance().deliver_queued_to(stream, 1), "nowhere to go");
    ASSERT_EQ(uint32_t{zv_success}, ZVGR_StreamCreateAndAlloc(camera, &stream, 4, 0));
    EXPECT_NONFATAL_FAILURE(FakeGrabberLibrary::instance().deliver_cyclic(stream, 0), "nowhere to go");
}

} // namespace
