#include "unit/simulator/configured_camera.h"
#include "unit/simulator/faults.h"

namespace {

using namespace zvsim_test;

std::string text_at(uint32_t grabber, const char* name, uint64_t offset = 0)
{
    return text_from(read_grabber(grabber, grabber_register(name).address + offset, 64).bytes);
}

TEST_F(ConfiguredCamera, ItsGrabberSaysWhoItIs)
{
    EXPECT_EQ("ZEVA Electronics", text_at(grabber, "InterfaceVendorName"));
    EXPECT_EQ("Software Grabber CLHS-2", text_at(grabber, "InterfaceModelName"));
    EXPECT_EQ("Test Grabber", text_at(grabber, "InterfaceDisplayName"));
    EXPECT_EQ(0U, grabber_number("InterfaceIndex"));
    EXPECT_EQ(1U, grabber_number("InterfaceType")) << "Camera Link HS";
    EXPECT_EQ(2U, grabber_number("CameraCount"));
}

TEST_F(ConfiguredCamera, ItsGrabberHasRegistersForEachOfItsCameras)
{
    EXPECT_EQ("Test Camera", text_at(grabber, "CameraModelName"));
    EXPECT_EQ("Other Camera", text_at(grabber, "CameraModelName", 0x100));
    EXPECT_EQ("T-1", text_at(grabber, "CameraSerialNumber"));
    EXPECT_EQ("T-2", text_at(grabber, "CameraSerialNumber", 0x100));
    const uint64_t third = grabber_register("CameraModelName").address + 0x200;
    EXPECT_NE(success, read_grabber(grabber, third, 4).status);
}

TEST_F(ConfiguredCamera, ItsGrabberRefusesWritesToAllButTheReset)
{
    for (const RegisterPlace& place : grabber_registers()) {
        const Transfer written = write_grabber(grabber, place.address, bytes_of(1, place.length));
        const bool is_reset = place.access == Access::command;
        EXPECT_EQ(is_reset, written.status == success) << place.name;
        EXPECT_EQ(is_reset ? 4U : 0U, written.size) << place.name;
    }
    const RegisterPlace& reset = grabber_register("CameraStatisticsReset");
    EXPECT_NE(success, write_grabber(grabber, reset.address, bytes_of(0, 4)).status);
    EXPECT_NE(success, write_grabber(grabber, reset.address, bytes_of(2, 4)).status);
    EXPECT_EQ(0U, grabber_number("CameraStatisticsReset"));
}

TEST_F(ConfiguredCamera, ItsGrabberFollowsTheSizeOfTheCamera)
{
    set("Width", 32);
    set("Height", 20);
    EXPECT_EQ(1U, grabber_number("GeometryIsReported"));
    EXPECT_EQ(32U, grabber_number("Width"));
    EXPECT_EQ(20U, grabber_number("Height"));
    EXPECT_EQ(1U, grabber_number("SegmentsPerBuffer"));
    EXPECT_EQ(66U, grabber_number("Width", 1));
    EXPECT_EQ(50U, grabber_number("Height", 1));
    EXPECT_EQ(32, ZVGR_GetGrabberValueInt(camera, "Width"));
    EXPECT_EQ(66, ZVGR_GetGrabberValueInt(cameras[1], "Width"));
}

TEST_F(OpenGrabber, GeometryThatIsNotReportedReadsZeros)
{
    for (const char* const name : {"GeometryIsReported", "Width", "Height", "SegmentsPerBuffer"}) {
        const Transfer read = read_grabber(grabber, grabber_register(name).address, 4);
        EXPECT_EQ(success, read.status) << name;
        EXPECT_EQ(0U, number_from(read.bytes)) << name;
    }
}

TEST_F(ConfiguredCamera, ItsGrabberSaysWhetherItGrabsAlsoWhenAnotherStreamIsDeleted)
{
    const uint32_t other = create_stream(camera);
    EXPECT_EQ(1U, grabber_number("CameraLinkState"));
    EXPECT_EQ(1U, grabber_number("CameraLinkState", 1));
    EXPECT_EQ(1U, grabber_number("CameraChannelState"));
    ASSERT_EQ(success, start());
    EXPECT_EQ(17U, grabber_number("CameraChannelState"));
    EXPECT_EQ(1U, grabber_number("CameraChannelState", 1));
    ASSERT_EQ(success, ZVGR_StreamDelete(other));
    EXPECT_EQ(17U, grabber_number("CameraChannelState"));
    EXPECT_EQ(1U, number("ParametersAreLocked"));
    ASSERT_EQ(success, stop());
    EXPECT_EQ(1U, grabber_number("CameraChannelState"));
}

TEST_F(ConfiguredCamera, ItsGrabberCountsFramesUntilAReset)
{
    frame();
    frame();
    EXPECT_EQ(2U, grabber_number("CameraFramesDelivered"));
    EXPECT_EQ(0U, grabber_number("CameraFramesLost"));
    EXPECT_EQ(0U, grabber_number("CameraFramesDelivered", 1));
    const RegisterPlace& reset = grabber_register("CameraStatisticsReset");
    ASSERT_EQ(success, write_grabber(grabber, reset.address + 0x100, bytes_of(1, 4)).status);
    EXPECT_EQ(2U, grabber_number("CameraFramesDelivered"))
        << "only the counters of the other camera were reset";
    ASSERT_EQ(success, write_grabber(grabber, reset.address, bytes_of(1, 4)).status);
    EXPECT_EQ(0U, grabber_number("CameraFramesDelivered"));
}

TEST_F(Faulty, AGrabberSeesWhichCamerasAreThere)
{
    plan(
        "events: [{scan: 2, do: unplug, grabber: 0, camera: 1}, {scan: 3, do: plug, grabber: 0, camera: 1}]");
    scan();
    const uint32_t grabber = open_grabber();
    const uint64_t address = grabber_register("CameraLinkState").address;
    for (const uint64_t state : {1U, 0U, 1U}) {
        EXPECT_EQ(state, number_from(read_grabber(grabber, address + 0x100, 4).bytes));
        EXPECT_EQ(1U, number_from(read_grabber(grabber, address, 4).bytes));
        scan();
    }
}

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
    uint64_t image_id = 77;
    const uint32_t status = ZVGR_BufferGetInfo(announce(stream), zv_buffer_image_id, &image_id);
    EXPECT_EQ(GetParam() == coaxpress, status == success);
    EXPECT_EQ(GetParam() == coaxpress, image_id != 77);
}

TEST_F(QueuedStream, UnknownNamesAndHandlesAreNotAvailable)
{
    for (const auto get : {ZVGR_GetGrabberValueInt, ZVGR_GetGrabberValueEnum, ZVGR_GetCameraValueInt,
                           ZVGR_GetCameraValueEnum}) {
        for (const char* const name : {"NoSuchValue", "WidthRegister", "", static_cast<const char*>(nullptr)})
            EXPECT_EQ(ZV_NOT_AVAILABLE, get(camera, name));
        for (const uint32_t handle : {0U, 1U, ZV_NO_HANDLE, stream + 1000}) {
            for (const char* const name : {"Width", "PixelFormat", "CameraChannelState"})
                EXPECT_EQ(ZV_NOT_AVAILABLE, get(handle, name));
        }
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
