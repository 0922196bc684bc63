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

TEST_F(ConfiguredCamera, ItsGrabberSaysWhetherItGrabs)
{
    EXPECT_EQ(1U, grabber_number("CameraLinkState"));
    EXPECT_EQ(1U, grabber_number("CameraLinkState", 1));
    EXPECT_EQ(1U, grabber_number("CameraChannelState"));
    ASSERT_EQ(success, start());
    EXPECT_EQ(17U, grabber_number("CameraChannelState"));
    EXPECT_EQ(1U, grabber_number("CameraChannelState", 1));
    ASSERT_EQ(success, stop());
    EXPECT_EQ(1U, grabber_number("CameraChannelState"));
}

TEST_F(ConfiguredCamera, DeletingAnotherStreamLeavesTheStateAlone)
{
    const uint32_t other = create_stream(camera);
    ASSERT_EQ(success, start());
    ASSERT_EQ(success, ZVGR_StreamDelete(other));
    EXPECT_EQ(17U, grabber_number("CameraChannelState"));
    EXPECT_EQ(1U, number("ParametersAreLocked"));
    ASSERT_EQ(success, stop());
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

} // namespace
