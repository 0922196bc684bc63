#include "unit/simulator/fixtures.h"

namespace {

using namespace zvsim_test;

constexpr uint32_t success = zv_success;

TEST_F(QueuedStream, NullPointersFail)
{
    uint32_t word = 7;
    uint64_t long_word = 7;
    const uint64_t buffer = announced();
    EXPECT_NE(success, ZV_DeviceScan(nullptr));
    EXPECT_NE(success, ZV_DeviceInfo(0, nullptr));
    EXPECT_NE(success, ZVGR_UpdateCameraList(grabber, nullptr, &word));
    EXPECT_NE(success, ZVGR_UpdateCameraList(grabber, &word, nullptr));
    EXPECT_NE(success, ZVGR_CameraInfo2(camera, nullptr));
    EXPECT_NE(success, ZVGR_StreamCreate(camera, nullptr, 0));
    EXPECT_NE(success, ZVGR_StreamCreateAndAlloc(camera, nullptr, 4, 0));
    EXPECT_NE(success, ZVGR_StreamGetInfo(stream, zv_stream_payload_now, nullptr));
    EXPECT_NE(success, ZVGR_StreamGetAux(stream, 0, nullptr));
    EXPECT_NE(success, ZVGR_BufferAnnounce(stream, nullptr, 100, nullptr, &long_word));
    EXPECT_NE(success, ZVGR_BufferAnnounce(stream, &word, sizeof word, nullptr, nullptr));
    EXPECT_NE(success, ZVGR_BufferAllocAndAnnounce(stream, 100, nullptr, nullptr));
    EXPECT_NE(success, ZVGR_BufferGetInfo(buffer, zv_buffer_address, nullptr));
    EXPECT_NE(success, ZVGR_CameraCallbackRegister(camera, nullptr, &word));
    EXPECT_NE(success, ZVGR_StreamBufferCallbackRegister(stream, nullptr, &word));
    EXPECT_NE(success, ZVGR_GrabberReadReg(grabber, 0, nullptr, nullptr));
    EXPECT_NE(success, ZVGR_GrabberWriteReg(grabber, 0, nullptr, nullptr));
    EXPECT_NE(success, ZVGR_CameraReadReg(camera, 0, nullptr, nullptr));
    EXPECT_NE(success, ZVGR_CameraWriteReg(camera, 0, nullptr, nullptr));
    EXPECT_NE(success, ZVGR_GetXmlUrl(camera, nullptr, nullptr));
    EXPECT_EQ(7U, word);
    EXPECT_EQ(7U, long_word);
}

/// Everything that takes a grabber handle refuses this one.
void expect_no_grabber(uint32_t handle)
{
    uint32_t camera = 7;
    uint32_t count = 1;
    EXPECT_NE(success, ZVGR_Close(handle));
    EXPECT_NE(success, ZVGR_UpdateCameraList(handle, &camera, &count));
    EXPECT_EQ(7U, camera);
    EXPECT_EQ(1U, count);
}

void expect_no_camera(uint32_t handle, uint32_t stream)
{
    ZvCameraInfo info{};
    uint32_t made = 7;
    Receiver receiver;
    EXPECT_NE(success, ZVGR_CameraInfo2(handle, &info));
    EXPECT_NE(success, ZVGR_CameraOpen2(handle, nullptr));
    EXPECT_NE(success, ZVGR_CameraClose(handle));
    EXPECT_NE(success, ZVGR_StreamCreate(handle, &made, 0));
    EXPECT_NE(success, ZVGR_StreamCreateAndAlloc(handle, &made, 4, 0));
    EXPECT_NE(success, ZVGR_CameraCallbackRegister(handle, &Receiver::frame_callback, &receiver));
    EXPECT_NE(success, ZVGR_CameraStartAcquire_GenTL(handle, stream, 0));
    EXPECT_NE(success, ZVGR_CameraStopAcquire_GenTL(handle));
    EXPECT_EQ(7U, made);
}

void expect_no_stream(uint32_t handle, uint32_t camera)
{
    uint64_t value = 7;
    unsigned char byte = 0;
    ZvFrameAux record{};
    Receiver receiver;
    EXPECT_NE(success, ZVGR_StreamDelete(handle));
    EXPECT_NE(success, ZVGR_StreamGetInfo(handle, zv_stream_payload_now, &value));
    EXPECT_EQ(UINT32_MAX, ZVGR_StreamGetFrameIndex(handle));
    EXPECT_EQ(nullptr, ZVGR_StreamGetPtr(handle, 0));
    EXPECT_NE(success, ZVGR_StreamGetAux(handle, 0, &record));
    EXPECT_NE(success, ZVGR_BufferAnnounce(handle, &byte, 1, nullptr, &value));
    EXPECT_NE(success, ZVGR_BufferAllocAndAnnounce(handle, 1, nullptr, &value));
    EXPECT_NE(success, ZVGR_BufferRevoke(handle, 7));
    EXPECT_NE(success, ZVGR_StreamBufferCallbackRegister(handle, &Receiver::buffer_callback, &receiver));
    EXPECT_NE(success, ZVGR_CameraStartAcquire_GenTL(camera, handle, 0));
    EXPECT_EQ(7U, value);
}

TEST_F(QueuedStream, HandlesThatAreNoneFail)
{
    for (const uint32_t handle : {0U, 1U, ZV_NO_HANDLE, stream + 1000}) {
        expect_no_grabber(handle);
        expect_no_camera(handle, stream);
        expect_no_stream(handle, camera);
    }
}

TEST_F(QueuedStream, HandlesOfAnotherKindFail)
{
    expect_no_grabber(camera);
    expect_no_grabber(stream);
    expect_no_camera(grabber, stream);
    expect_no_camera(stream, stream);
    expect_no_stream(grabber, camera);
    expect_no_stream(camera, camera);
}

TEST_F(QueuedStream, BufferHandlesThatAreNoneFailAndNothingMore)
{
    const uint64_t good = queued();
    for (const uint64_t bad : {uint64_t{0}, uint64_t{1}, good + 1, uint64_t{stream}, UINT64_MAX}) {
        uint64_t value = 7;
        EXPECT_NE(success, ZVGR_BufferToQueue(bad, zv_queue_input));
        EXPECT_NE(success, ZVGR_BufferToQueue(bad, zv_queue_output));
        EXPECT_NE(success, ZVGR_BufferRevoke(stream, bad));
        EXPECT_NE(success, ZVGR_BufferGetInfo(bad, zv_buffer_address, &value));
        EXPECT_EQ(7U, value);
    }
    EXPECT_EQ(success, ZVGR_BufferRevoke(stream, good));
    EXPECT_NE(success, ZVGR_BufferRevoke(stream, good)) << "revoked twice";
    EXPECT_NE(success, ZVGR_BufferToQueue(good, zv_queue_input)) << "after its revoke";
}

TEST_F(QueuedStream, ABufferIsRevokedByItsOwnStreamOnly)
{
    const uint64_t buffer = announced();
    uint32_t other = 0;
    ASSERT_EQ(success, ZVGR_StreamCreate(camera, &other, 0));
    EXPECT_NE(success, ZVGR_BufferRevoke(other, buffer));
    EXPECT_EQ(success, ZVGR_BufferRevoke(stream, buffer));
}

TEST_F(QueuedStream, UnknownCommandsAndQueuesFail)
{
    const uint64_t buffer = announced();
    uint64_t value = 7;
    for (const uint32_t command : {2U, 8U, 1002U, ZV_NO_HANDLE}) {
        EXPECT_NE(success, ZVGR_StreamGetInfo(stream, command, &value));
        EXPECT_NE(success, ZVGR_BufferGetInfo(buffer, command, &value));
        EXPECT_NE(success, ZVGR_BufferToQueue(buffer, command));
    }
    EXPECT_EQ(7U, value);
}

TEST_F(OpenCamera, ACameraHasOneStreamNumber)
{
    uint32_t stream = 7;
    EXPECT_NE(success, ZVGR_StreamCreate(camera, &stream, 1));
    EXPECT_NE(success, ZVGR_StreamCreateAndAlloc(camera, &stream, 4, 1));
    EXPECT_EQ(7U, stream);
}

TEST_F(OpenCamera, ARingThatCannotBeFails)
{
    uint32_t stream = 7;
    EXPECT_NE(success, ZVGR_StreamCreateAndAlloc(camera, &stream, 0, 0));
    EXPECT_NE(success, ZVGR_StreamCreateAndAlloc(camera, &stream, UINT32_MAX, 0));
    EXPECT_EQ(7U, stream);
}

TEST_F(QueuedStream, ABufferThatCannotBeAllocatedFails)
{
    uint64_t buffer = 7;
    EXPECT_NE(success, ZVGR_BufferAllocAndAnnounce(stream, UINT64_MAX, nullptr, &buffer));
    EXPECT_NE(success, ZVGR_BufferAllocAndAnnounce(stream, UINT64_MAX / 4, nullptr, &buffer));
    EXPECT_EQ(7U, buffer);
}

TEST_F(QueuedStream, HasNoRing)
{
    ZvFrameAux record{};
    EXPECT_EQ(UINT32_MAX, ZVGR_StreamGetFrameIndex(stream));
    EXPECT_EQ(nullptr, ZVGR_StreamGetPtr(stream, 0));
    EXPECT_NE(success, ZVGR_StreamGetAux(stream, 0, &record));
}

TEST_F(CyclicStream, HasNoQueues)
{
    uint64_t buffer = 7;
    unsigned char byte = 0;
    EXPECT_NE(success, ZVGR_BufferAnnounce(stream, &byte, 1, nullptr, &buffer));
    EXPECT_NE(success, ZVGR_BufferAllocAndAnnounce(stream, 1, nullptr, &buffer));
    EXPECT_NE(success, ZVGR_BufferRevoke(stream, 0));
    EXPECT_NE(success, ZVGR_StreamBufferCallbackRegister(stream, &Receiver::buffer_callback, &receiver));
    EXPECT_EQ(7U, buffer);
}

TEST_F(CyclicStream, FramesBeyondTheRingFail)
{
    ZvFrameAux record{};
    for (const uint32_t frame : {ring_frames, ZV_NO_HANDLE}) {
        EXPECT_EQ(nullptr, ZVGR_StreamGetPtr(stream, frame));
        EXPECT_NE(success, ZVGR_StreamGetAux(stream, frame, &record));
    }
}

TEST_F(QueuedStream, IsStartedByItsOwnCameraOnly)
{
    ASSERT_EQ(success, ZVGR_CameraOpen2(cameras[1], nullptr));
    EXPECT_NE(success, ZVGR_CameraStartAcquire_GenTL(cameras[1], stream, 0));
}

} // namespace
