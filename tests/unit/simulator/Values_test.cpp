#include "unit/simulator/fixtures.h"

namespace {

using namespace zvsim_test;

constexpr int64_t pfnc_mono8 = 0x01080001;
constexpr int64_t pfnc_mono16 = 0x01100007;

struct ValueRow {
    int64_t (*get)(uint32_t handle, const char* name);
    const char* name;
    /// Of the CoaXPress and of the Camera Link HS grabber.
    int64_t expected[2];
};

const ValueRow value_rows[] = {
    {ZVGR_GetCameraValueInt, "Width", {64, 64}},
    {ZVGR_GetCameraValueInt, "Height", {48, 48}},
    {ZVGR_GetCameraValueInt, "OffsetX", {0, 0}},
    {ZVGR_GetCameraValueInt, "OffsetY", {0, 0}},
    {ZVGR_GetCameraValueEnum, "PixelFormat", {pfnc_mono8, pfnc_mono8}},
    {ZVGR_GetGrabberValueInt, "FW_Dma_Capable_QueuedBuffers_Imp", {1, 1}},
    {ZVGR_GetGrabberValueInt, "FW_Dma_Capable_FrameImageId_Imp", {1, 0}},
    {ZVGR_GetGrabberValueInt, "Width", {ZV_NOT_AVAILABLE, 64}},
    {ZVGR_GetGrabberValueInt, "Height", {ZV_NOT_AVAILABLE, 48}},
    {ZVGR_GetGrabberValueInt, "SegmentsPerBuffer", {ZV_NOT_AVAILABLE, 1}},
};

/// By the index of the grabber.
class Values : public QueuedStream, public testing::WithParamInterface<uint32_t> {
protected:
    Values() : QueuedStream{{GetParam()}} {}
};

INSTANTIATE_TEST_SUITE_P(Grabbers, Values, testing::Values(0U, 1U));

TEST_P(Values, AnswerEveryKindOfHandle)
{
    for (const ValueRow& row : value_rows) {
        for (const uint32_t handle : {grabber, camera, stream})
            EXPECT_EQ(row.expected[GetParam()], row.get(handle, row.name)) << row.name;
    }
}

TEST_F(QueuedStream, UnknownNamesAndHandlesAreNotAvailable)
{
    for (const auto get : {ZVGR_GetGrabberValueInt, ZVGR_GetGrabberValueEnum, ZVGR_GetCameraValueInt,
                           ZVGR_GetCameraValueEnum}) {
        for (const char* const name : {"NoSuchValue", "", static_cast<const char*>(nullptr)})
            EXPECT_EQ(ZV_NOT_AVAILABLE, get(camera, name));
        for (const uint32_t handle : {0U, 1U, ZV_NO_HANDLE, stream + 1000}) {
            for (const char* const name : {"Width", "PixelFormat", "CameraChannelState"})
                EXPECT_EQ(ZV_NOT_AVAILABLE, get(handle, name));
        }
    }
}

class ClhsStream : public QueuedStream {
protected:
    ClhsStream() : QueuedStream{{camera_link_hs}} {}
};

TEST_F(ClhsStream, HasNoImageIds)
{
    uint64_t value = 77;
    EXPECT_NE(success, ZVGR_BufferGetInfo(announce(stream), zv_buffer_image_id, &value));
    EXPECT_EQ(77U, value);
}

TEST_F(OpenGrabber, CamerasDifferInPixelFormatAndSoInPayload)
{
    EXPECT_EQ(pfnc_mono8, ZVGR_GetCameraValueEnum(cameras[0], "PixelFormat"));
    EXPECT_EQ(pfnc_mono16, ZVGR_GetCameraValueEnum(cameras[1], "PixelFormat"));
    for (const size_t index : {0U, 1U}) {
        ASSERT_EQ(success, ZVGR_CameraOpen2(cameras[index], nullptr));
        const uint32_t stream = create_stream(cameras[index]);
        EXPECT_EQ(frame_size * (index + 1), stream_info(stream, zv_stream_payload_at_creation));
        EXPECT_EQ(frame_size * (index + 1), stream_info(stream, zv_stream_payload_now));
    }
}

TEST_P(EitherMode, ChannelStateSaysWhetherTheCameraGrabs)
{
    const auto states = [this] {
        std::vector<bool> grabbing;
        for (const uint32_t handle : {grabber, camera, stream, cameras[1]})
            grabbing.push_back(is_grabbing(handle));
        return grabbing;
    };
    const std::vector<bool> idle{false, false, false, false};
    EXPECT_NE(ZV_NOT_AVAILABLE, ZVGR_GetGrabberValueEnum(camera, "CameraChannelState"));
    EXPECT_EQ(idle, states());
    ASSERT_EQ(success, start());
    EXPECT_EQ((std::vector<bool>{true, true, true, false}), states());
    ASSERT_EQ(success, stop());
    EXPECT_EQ(idle, states());
}

TEST_F(QueuedStream, AlignmentIsAPowerOfTwo)
{
    const uint64_t alignment = stream_info(stream, zv_stream_buffer_alignment);
    EXPECT_GT(alignment, 0U);
    EXPECT_EQ(0U, alignment & (alignment - 1));
    EXPECT_EQ(0U, buffer_info(announce(stream), zv_buffer_address) % alignment);
}

} // namespace
