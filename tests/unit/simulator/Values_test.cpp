#include "unit/simulator/fixtures.h"

namespace {

using namespace zvsim_test;

constexpr uint32_t success = zv_success;
constexpr int64_t pfnc_mono8 = 0x01080001;
constexpr int64_t pfnc_mono16 = 0x01100007;

class ClhsStream : public QueuedStream {
protected:
    ClhsStream() : QueuedStream{camera_link_hs} {}
};

TEST_F(QueuedStream, CameraValuesAnswerEveryKindOfHandle)
{
    for (const uint32_t handle : {grabber, camera, stream}) {
        EXPECT_EQ(64, ZVGR_GetCameraValueInt(handle, "Width"));
        EXPECT_EQ(48, ZVGR_GetCameraValueInt(handle, "Height"));
        EXPECT_EQ(0, ZVGR_GetCameraValueInt(handle, "OffsetX"));
        EXPECT_EQ(0, ZVGR_GetCameraValueInt(handle, "OffsetY"));
        EXPECT_EQ(pfnc_mono8, ZVGR_GetCameraValueEnum(handle, "PixelFormat"));
    }
}

TEST_F(QueuedStream, GrabberValuesAnswerEveryKindOfHandle)
{
    for (const uint32_t handle : {grabber, camera, stream}) {
        EXPECT_EQ(1, ZVGR_GetGrabberValueInt(handle, "FW_Dma_Capable_QueuedBuffers_Imp"));
        EXPECT_EQ(1, ZVGR_GetGrabberValueInt(handle, "FW_Dma_Capable_FrameImageId_Imp"));
        EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetGrabberValueInt(handle, "Width"));
        EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetGrabberValueInt(handle, "Height"));
        EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetGrabberValueInt(handle, "SegmentsPerBuffer"));
    }
}

TEST_F(ClhsStream, ReportsTheGeometryItself)
{
    for (const uint32_t handle : {grabber, camera, stream}) {
        EXPECT_EQ(64, ZVGR_GetGrabberValueInt(handle, "Width"));
        EXPECT_EQ(48, ZVGR_GetGrabberValueInt(handle, "Height"));
        EXPECT_EQ(1, ZVGR_GetGrabberValueInt(handle, "SegmentsPerBuffer"));
        EXPECT_EQ(0, ZVGR_GetGrabberValueInt(handle, "FW_Dma_Capable_FrameImageId_Imp"));
        EXPECT_EQ(1, ZVGR_GetGrabberValueInt(handle, "FW_Dma_Capable_QueuedBuffers_Imp"));
        EXPECT_EQ(pfnc_mono8, ZVGR_GetCameraValueEnum(handle, "PixelFormat"));
    }
}

TEST_F(ClhsStream, HasNoImageIds)
{
    uint64_t value = 77;
    const uint64_t buffer = announced();
    EXPECT_NE(success, ZVGR_BufferGetInfo(buffer, zv_buffer_image_id, &value));
    EXPECT_EQ(77U, value);
}

TEST_F(OpenGrabber, CamerasDifferInPixelFormat)
{
    EXPECT_EQ(pfnc_mono8, ZVGR_GetCameraValueEnum(cameras[0], "PixelFormat"));
    EXPECT_EQ(pfnc_mono16, ZVGR_GetCameraValueEnum(cameras[1], "PixelFormat"));
}

TEST_F(QueuedStream, UnknownNamesAndHandlesAreNotAvailable)
{
    using Getter = int64_t (*)(uint32_t, const char*);
    for (const Getter get : {Getter{ZVGR_GetGrabberValueInt}, Getter{ZVGR_GetGrabberValueEnum},
                             Getter{ZVGR_GetCameraValueInt}, Getter{ZVGR_GetCameraValueEnum}}) {
        EXPECT_EQ(ZV_NOT_AVAILABLE, get(camera, "NoSuchValue"));
        EXPECT_EQ(ZV_NOT_AVAILABLE, get(camera, ""));
        EXPECT_EQ(ZV_NOT_AVAILABLE, get(camera, nullptr));
        for (const uint32_t handle : {0U, 1U, ZV_NO_HANDLE, stream + 1000}) {
            for (const char* const name : {"Width", "PixelFormat", "CameraChannelState"})
                EXPECT_EQ(ZV_NOT_AVAILABLE, get(handle, name));
        }
    }
}

TEST_F(QueuedStream, ChannelStateSaysWhetherTheCameraGrabs)
{
    const auto states = [&] {
        std::vector<bool> grabbing;
        for (const uint32_t handle : {grabber, camera, stream, cameras[1]})
            grabbing.push_back(ZVGR_GetGrabberValueEnum(handle, "CameraChannelState") == zv_channel_grabbing);
        return grabbing;
    };
    const std::vector<bool> idle{false, false, false, false};
    const std::vector<bool> first_camera_grabs{true, true, true, false};
    EXPECT_NE(ZV_NOT_AVAILABLE, ZVGR_GetGrabberValueEnum(camera, "CameraChannelState"));
    EXPECT_EQ(idle, states());
    ASSERT_EQ(success, start(stream));
    EXPECT_EQ(first_camera_grabs, states());
    ASSERT_EQ(success, stop());
    EXPECT_EQ(idle, states());
}

TEST_F(OpenGrabber, PayloadIsTheSizeOfAPicture)
{
    for (size_t index = 0; index < cameras.size(); ++index) {
        uint32_t stream = 0;
        ASSERT_EQ(success, ZVGR_CameraOpen2(cameras[index], nullptr));
        ASSERT_EQ(success, ZVGR_StreamCreate(cameras[index], &stream, 0));
        const uint64_t payload = uint64_t{64} * 48 * (index + 1); // 8 bit, then 16 bit
        EXPECT_EQ(payload, stream_info(stream, zv_stream_payload_at_creation));
        EXPECT_EQ(payload, stream_info(stream, zv_stream_payload_now));
    }
}

TEST_F(QueuedStream, AlignmentIsAPowerOfTwo)
{
    const uint64_t alignment = stream_info(stream, zv_stream_buffer_alignment);
    EXPECT_GT(alignment, 0U);
    EXPECT_EQ(0U, alignment & (alignment - 1));
    EXPECT_EQ(0U, buffer_info(announced(), zv_buffer_address) % alignment);
}

} // namespace
