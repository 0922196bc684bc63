#include "unit/simulator/configured_camera.h"

namespace {

using namespace zvsim_test;

/// Asks for a value by the name of each register, of both types, with every kind of handle.
template <class Get, class Number>
void expect_values(const std::vector<RegisterPlace>& places, Get* get_integer, Get* get_enumeration,
                   const std::vector<uint32_t>& handles, const Number& number)
{
    for (const RegisterPlace& place : places) {
        if (place.name == std::string{"Timestamp"}) // changes between two calls
            continue;
        const auto expected = [&](Value type) {
            return place.value == type ? static_cast<int64_t>(number(place.name)) : ZV_NOT_AVAILABLE;
        };
        for (const uint32_t handle : handles) {
            EXPECT_EQ(expected(Value::integer), get_integer(handle, place.name)) << place.name;
            EXPECT_EQ(expected(Value::enumeration), get_enumeration(handle, place.name)) << place.name;
        }
    }
}

TEST_F(ConfiguredCamera, ValuesHaveTheNamesOfNumericRegisters)
{
    set_picture(32, 20, 8, 4);
    expect_values(camera_registers(), &ZVGR_GetCameraValueInt, &ZVGR_GetCameraValueEnum,
                  {grabber, camera, stream}, [this](const char* name) { return number(name); });
    expect_values(grabber_registers(), &ZVGR_GetGrabberValueInt, &ZVGR_GetGrabberValueEnum,
                  {grabber, camera, stream}, [this](const char* name) { return grabber_number(name); });
}

struct ValueRow {
    const char* name;
    /// Of the CoaXPress and of the Camera Link HS grabber.
    int64_t expected[2];
};

const ValueRow value_rows[] = {
    {"FW_Dma_Capable_QueuedBuffers_Imp", {1, 1}},
    {"FW_Dma_Capable_FrameImageId_Imp", {1, 0}},
    {"Width", {ZV_NOT_AVAILABLE, 64}},
    {"Height", {ZV_NOT_AVAILABLE, 48}},
    {"SegmentsPerBuffer", {ZV_NOT_AVAILABLE, 1}},
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
            EXPECT_EQ(row.expected[GetParam()], ZVGR_GetGrabberValueInt(handle, row.name)) << row.name;
    }
}

TEST_F(QueuedStream, UnknownNamesAndHandlesAreNotAvailable)
{
    for (const auto get : {ZVGR_GetGrabberValueEnum, ZVGR_GetCameraValueInt, ZVGR_GetCameraValueEnum}) {
        for (const char* const name : {"NoSuchValue", "WidthRegister", "", static_cast<const char*>(nullptr)})
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
