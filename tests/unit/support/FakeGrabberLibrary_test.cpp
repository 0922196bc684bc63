#include <cstring>
#include <thread>

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "zvgr/ZVGRLib.h"

#include "support/FakeGrabberLibrary.h"

using namespace zvtest;

namespace {

class FakeGrabber : public testing::Test {
protected:
    FakeGrabberLibrary& fake{FakeGrabberLibrary::instance()};

    void SetUp() override { fake.reset(); }
    void TearDown() override { fake.reset(); }

    // The handles of one camera on one open grabber.
    struct Camera {
        uint32_t grabber;
        uint32_t camera;
    };

    static Camera open_camera()
    {
        Camera opened = {ZVGR_Open(0), 0};
        uint32_t count = 1;
        EXPECT_EQ(uint32_t{zv_success}, ZVGR_UpdateCameraList(opened.grabber, &opened.camera, &count));
        EXPECT_EQ(uint32_t{zv_success}, ZVGR_CameraOpen2(opened.camera, nullptr));
        return opened;
    }

    static uint32_t queued_stream(uint32_t camera)
    {
        uint32_t stream = ZV_NO_HANDLE;
        EXPECT_EQ(uint32_t{zv_success}, ZVGR_StreamCreate(camera, &stream, 0));
        return stream;
    }

    static uint32_t cyclic_stream(uint32_t camera)
    {
        uint32_t stream = ZV_NO_HANDLE;
        EXPECT_EQ(uint32_t{zv_success}, ZVGR_StreamCreateAndAlloc(camera, &stream, 4, 0));
        return stream;
    }
};

struct Delivered {
    uint32_t stream{0};
    uint64_t buffer{0};
    int times{0};
    std::thread::id thread;
};

void ZVGR_CALL note_cyclic(void* context, uint32_t stream)
{
    auto* const delivered = static_cast<Delivered*>(context);
    delivered->stream = stream;
    delivered->thread = std::this_thread::get_id();
    ++delivered->times;
}

void ZVGR_CALL note_queued(uint64_t buffer, void* context)
{
    auto* const delivered = static_cast<Delivered*>(context);
    delivered->buffer = buffer;
    ++delivered->times;
}

} // namespace

TEST_F(FakeGrabber, RecordsCallsWithTheirArgumentsInOrder)
{
    const Camera opened = open_camera();
    ZVGR_GetCameraValueInt(opened.camera, "OffsetX");
    const Calls expected = {call("ZVGR_Open", 0), call("ZVGR_UpdateCameraList", opened.grabber, 1),
                            call("ZVGR_CameraOpen2", opened.camera, nullptr),
                            call("ZVGR_GetCameraValueInt", any(), "OffsetX")};
    EXPECT_EQ(expected, fake.calls());
    EXPECT_EQ(1U, fake.count("ZVGR_Open"));
    fake.clear_calls();
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(FakeGrabber, TellsCallsWithOtherArgumentsApart)
{
    EXPECT_FALSE(call("ZVGR_Open", 0) == call("ZVGR_Open", 1));
    EXPECT_FALSE(call("ZVGR_Open", 0) == call("ZVGR_Close", 0));
    EXPECT_FALSE(call("ZVGR_CameraOpen2", 1, "a") == call("ZVGR_CameraOpen2", 1, nullptr));
    EXPECT_FALSE(call("ZVGR_CameraOpen2", 1, "a") == call("ZVGR_CameraOpen2", 1, "b"));
    EXPECT_TRUE(call("ZVGR_BufferToQueue", uint64_t{1}, 0) == call("ZVGR_BufferToQueue", 1, uint32_t{0}));
}

TEST_F(FakeGrabber, ScansTheGrabbersThatItWasGiven)
{
    fake.has_grabbers(3);
    fake.grabber(2).has_protocol(zv_protocol_gev).is_named("Third");
    uint32_t count = 0;
    EXPECT_EQ(uint32_t{zv_success}, ZV_DeviceScan(&count));
    EXPECT_EQ(3U, count);
    ZvDeviceInfo info = {};
    info.version = 3;
    EXPECT_EQ(uint32_t{zv_success}, ZV_DeviceInfo(2, &info));
    EXPECT_EQ(uint32_t{zv_protocol_gev}, info.protocol);
    EXPECT_STREQ("Third", ZV_DeviceDisplayName(2));
    EXPECT_EQ(nullptr, ZV_DeviceDisplayName(3));
}

TEST_F(FakeGrabber, KeepsCameraHandlesOverScansUntilTheGrabberIsClosed)
{
    fake.grabber(0).has_cameras(2);
    const uint32_t grabber = ZVGR_Open(0);
    uint32_t first[16] = {};
    uint32_t second[16] = {};
    uint32_t count = 16;
    ZVGR_UpdateCameraList(grabber, first, &count);
    EXPECT_EQ(2U, count);
    count = 16;
    ZVGR_UpdateCameraList(grabber, second, &count);
    EXPECT_EQ(first[1], second[1]);
    EXPECT_NE(first[0], first[1]);
    EXPECT_EQ(uint32_t{zv_success}, ZVGR_Close(grabber));
    EXPECT_EQ(ZV_NO_HANDLE, fake.camera_handle(0, 0));
}

TEST_F(FakeGrabber, DescribesCamerasInTheirRecords)
{
    fake.grabber(0).camera(0).model("Model X").serial(std::string(65, 's'));
    const Camera opened = open_camera();
    ZvCameraInfo info = {};
    EXPECT_EQ(uint32_t{zv_success}, ZVGR_CameraInfo2(opened.camera, &info));
    EXPECT_STREQ("Model X", info.model_name);
    EXPECT_EQ('s', info.serial_number[64]);
}

TEST_F(FakeGrabber, HasOnlyTheValuesThatItWasGiven)
{
    const Camera opened = open_camera();
    const uint32_t stream = queued_stream(opened.camera);
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetGrabberValueInt(opened.grabber, "Width"));
    fake.grabber_int("Width") = 640;
    fake.grabber_int(stream, "Width") = 320;
    EXPECT_EQ(640, ZVGR_GetGrabberValueInt(opened.grabber, "Width"));
    EXPECT_EQ(640, ZVGR_GetGrabberValueInt(opened.camera, "Width"));
    EXPECT_EQ(320, ZVGR_GetGrabberValueInt(stream, "Width"));
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetCameraValueInt(stream, "Width"));
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetGrabberValueEnum(stream, "Width"));
}

TEST_F(FakeGrabber, KeepsRegisters)
{
    const Camera opened = open_camera();
    const uint32_t written = 0x11223344;
    uint32_t read = 1;
    uint32_t size = 4;
    EXPECT_EQ(uint32_t{zv_success}, ZVGR_CameraWriteReg(opened.camera, 0x100, &written, &size));
    EXPECT_EQ(4U, fake.calls_of("ZVGR_CameraWriteReg").front().data.size());
    EXPECT_EQ(uint32_t{zv_success}, ZVGR_CameraReadReg(opened.camera, 0x100, &read, &size));
    EXPECT_EQ(written, read);
    EXPECT_EQ(uint32_t{zv_success}, ZVGR_GrabberReadReg(opened.grabber, 0x100, &read, &size));
    EXPECT_EQ(0U, read);
}

TEST_F(FakeGrabber, AnswersFromTheScriptWithoutTouchingOutputs)
{
    uint32_t count = 77;
    fake.next("ZV_DeviceScan").answers(any_failure);
    EXPECT_EQ(any_failure, ZV_DeviceScan(&count));
    EXPECT_EQ(77U, count);
    EXPECT_EQ(uint32_t{zv_success}, ZV_DeviceScan(&count));
    EXPECT_EQ(1U, count);
}

TEST_F(FakeGrabber, WritesScriptedOutputs)
{
    uint32_t count = 0;
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
    static uint32_t grabber; // the macro's statement sees no locals
    grabber = ZVGR_Open(0);
    ZVGR_Close(grabber);
    EXPECT_NONFATAL_FAILURE(ZVGR_Close(grabber), "is dead");
    fake.allow_stale_handles();
    EXPECT_EQ(any_failure, ZVGR_Close(grabber));
    EXPECT_NE(grabber, ZVGR_Open(0));
}

TEST_F(FakeGrabber, LetsAStreamBeDeletedAfterItsGrabberWasClosed)
{
    const Camera opened = open_camera();
    const uint32_t stream = queued_stream(opened.camera);
    ZVGR_Close(opened.grabber);
    EXPECT_EQ(any_failure, ZVGR_StreamDelete(stream));
}

TEST_F(FakeGrabber, RunsHooksAroundTheWork)
{
    size_t open_before = 9;
    size_t open_after = 9;
    fake.on("ZVGR_Open", [&](const Call&) { open_before = fake.open_grabbers(); });
    fake.after("ZVGR_Open", [&](const Call&) { open_after = fake.open_grabbers(); });
    ZVGR_Open(0);
    EXPECT_EQ(0U, open_before);
    EXPECT_EQ(1U, open_after);
}

TEST_F(FakeGrabber, DeliversRingFramesOnTheThreadOfTheTest)
{
    const Camera opened = open_camera();
    const uint32_t stream = cyclic_stream(opened.camera);
    Delivered delivered;
    ZVGR_CameraCallbackRegister(opened.camera, note_cyclic, &delivered);
    Frame frame;
    frame.timestamp = 5;
    frame.fill = 0xAB;
    std::thread thread([&] { fake.deliver_cyclic(stream, 3, frame); });
    const std::thread::id id = thread.get_id();
    thread.join();
    EXPECT_EQ(stream, delivered.stream);
    EXPECT_EQ(id, delivered.thread);
    EXPECT_EQ(3U, ZVGR_StreamGetFrameIndex(stream));
    EXPECT_EQ(0xAB, *static_cast<uint8_t*>(ZVGR_StreamGetPtr(stream, 3)));
    ZvFrameAux aux = {};
    EXPECT_EQ(uint32_t{zv_success}, ZVGR_StreamGetAux(stream, 3, &aux));
    EXPECT_EQ(5U, static_cast<uint64_t>(aux.timestamp));
    EXPECT_EQ(nullptr, ZVGR_StreamGetPtr(stream, 4));
}

TEST_F(FakeGrabber, DeliversQueuedBuffersWithTheirNumbers)
{
    const Camera opened = open_camera();
    const uint32_t stream = queued_stream(opened.camera);
    Delivered delivered;
    ZVGR_StreamBufferCallbackRegister(stream, note_queued, &delivered);
    std::vector<uint8_t> memory(16);
    uint64_t buffer = 0;
    ZVGR_BufferAnnounce(stream, memory.data(), memory.size(), nullptr, &buffer);
    ZVGR_BufferToQueue(buffer, zv_queue_input);
    EXPECT_EQ(int{zv_queue_input}, fake.queue_of(buffer));
    Frame frame;
    frame.frame_id = 42;
    frame.fill = 1;
    fake.deliver_queued(buffer, frame);
    EXPECT_EQ(buffer, delivered.buffer);
    EXPECT_EQ(int{zv_queue_output}, fake.queue_of(buffer));
    EXPECT_EQ(1, memory[15]);
    uint64_t id = 0;
    ZVGR_BufferGetInfo(buffer, zv_buffer_frame_id, &id);
    EXPECT_EQ(42U, id);
    fake.deliver_queued_to(stream, 0);
    EXPECT_EQ(0U, delivered.buffer);
    EXPECT_EQ(2, delivered.times);
}

TEST_F(FakeGrabber, CanReportARevokedBufferLate)
{
    const Camera opened = open_camera();
    const uint32_t stream = queued_stream(opened.camera);
    Delivered delivered;
    ZVGR_StreamBufferCallbackRegister(stream, note_queued, &delivered);
    uint64_t buffer = 0;
    ZVGR_BufferAllocAndAnnounce(stream, 16, nullptr, &buffer);
    ZVGR_BufferRevoke(stream, buffer);
    fake.deliver_queued(buffer);
    EXPECT_EQ(buffer, delivered.buffer);
}

TEST_F(FakeGrabber, FailsTheTestForAFrameWithoutACallback)
{
    const Camera opened = open_camera();
    static uint32_t stream; // the macro's statement sees no locals
    stream = queued_stream(opened.camera);
    EXPECT_NONFATAL_FAILURE(FakeGrabberLibrary::instance().deliver_queued_to(stream, 1), "nowhere to go");
    stream = cyclic_stream(opened.camera);
    EXPECT_NONFATAL_FAILURE(FakeGrabberLibrary::instance().deliver_cyclic(stream, 0), "nowhere to go");
}

TEST_F(FakeGrabber, StartsOnceUntilStopped)
{
    const Camera opened = open_camera();
    const uint32_t stream = queued_stream(opened.camera);
    EXPECT_EQ(uint32_t{zv_success}, ZVGR_CameraStartAcquire_GenTL(opened.camera, stream, 5));
    EXPECT_TRUE(fake.is_acquiring(stream));
    EXPECT_EQ(5U, fake.frames_requested(stream));
    EXPECT_EQ(any_failure, ZVGR_CameraStartAcquire_GenTL(opened.camera, stream, 5));
    EXPECT_EQ(uint32_t{zv_success}, ZVGR_CameraStopAcquire_GenTL(opened.camera));
    EXPECT_FALSE(fake.is_acquiring(stream));
}

TEST_F(FakeGrabber, DeletesAStreamWithItsBuffers)
{
    const Camera opened = open_camera();
    const uint32_t stream = queued_stream(opened.camera);
    uint64_t buffer = 0;
    ZVGR_BufferAllocAndAnnounce(stream, 16, nullptr, &buffer);
    EXPECT_EQ(uint32_t{zv_success}, ZVGR_StreamDelete(stream));
    EXPECT_EQ(0U, fake.open_streams());
    EXPECT_EQ(nullptr, fake.memory_of(buffer));
}

TEST_F(FakeGrabber, GivesUrlsWithTheirLength)
{
    const Camera opened = open_camera();
    fake.set_xml_url(opened.camera, "Local:x");
    char url[260] = {};
    uint64_t size = sizeof url;
    EXPECT_EQ(uint32_t{zv_success}, ZVGR_GetXmlUrl(opened.camera, url, &size));
    EXPECT_STREQ("Local:x", url);
    EXPECT_EQ(8U, size);
}
