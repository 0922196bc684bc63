#include <string>
#include <utility>

#include "unit/modules/Module_fixtures.h"

namespace zvtest {

namespace {

using zvgentl::DeviceModule;
using zvgentl::InterfaceModule;

class ClosedInterfaceModule : public EmptySystem {};

TEST_F(ClosedInterfaceModule, HasNoGrabberAndNoDevices)
{
    {
        const InterfaceModule iface(system, "FG7");
        EXPECT_EQ("FG7", iface.getId());
        EXPECT_EQ(&system, &iface.get_Parent());
        EXPECT_FALSE(iface.is_Open());
        EXPECT_EQ(0U, iface.get_GrabberHandle());
        EXPECT_EQ(0U, iface.get_CameraAmount());
        EXPECT_EQ(nullptr, iface.get_Device(0));
        EXPECT_EQ(nullptr, iface.get_Camera(0));
        EXPECT_EQ(-1, iface.get_CameraIndex(nullptr));
        EXPECT_FALSE(iface.has_Device(nullptr));
        EXPECT_FALSE(iface.has_Camera(nullptr));
    }
    EXPECT_TRUE(fake.calls().empty());
}

class OpenInterfaceModule : public OneGrabber {};

TEST_F(OpenInterfaceModule, ListsADeviceForEachCamera)
{
    list_cameras(3);
    EXPECT_EQ(3U, iface().get_CameraAmount());
    EXPECT_EQ(3U, iface().get_Devices().size());
    for (uint32_t i = 0; i < 3; ++i) {
        const DeviceModule* const device = iface().get_Device(i);
        ASSERT_NE(nullptr, device);
        EXPECT_EQ("Device0" + std::to_string(i), device->getId());
        EXPECT_EQ(&iface(), device->get_Parent());
        EXPECT_FALSE(device->is_Open());
        EXPECT_EQ(device->get_Camera(), iface().get_Camera(i));
        EXPECT_EQ(fake.camera_handle(0, i), iface().get_Camera(i)->get_CameraHandle());
        EXPECT_TRUE(iface().has_Device(device));
        EXPECT_TRUE(iface().has_Camera(device->get_Camera()));
        EXPECT_EQ(static_cast<int32_t>(i), iface().get_CameraIndex(device->get_Camera()));
        EXPECT_EQ(device, iface().find_Device(device->getId()));
        EXPECT_FALSE(iface().has_Device(device->get_Camera()));
        EXPECT_FALSE(iface().has_Camera(device));
        EXPECT_EQ(-1, iface().get_CameraIndex(device));
    }
}

TEST_F(OpenInterfaceModule, ClosesEveryCameraInOrder)
{
    list_cameras(2);
    for (uint32_t i : {1U, 0U}) {
        iface().get_Camera(i)->mark_open();
        ASSERT_TRUE(iface().get_Camera(i)->open_Stream(0));
    }
    const std::vector<uint32_t> streams = fake.streams(); // the second camera's was made first
    ASSERT_EQ(2U, streams.size());
    forget();
    iface().mark_closed_with_cameras();
    EXPECT_EQ((Calls{call("ZVGR_StreamDelete", streams[1]), call("ZVGR_StreamDelete", streams[0])}),
              fake.calls());
    EXPECT_FALSE(iface().get_Device(0)->is_Open());
    EXPECT_FALSE(iface().get_Device(1)->is_Open());
    iface().mark_open(); // for the destructor
}

TEST_F(OpenInterfaceModule, GivesDevicesItsNumber)
{
    fake.grabber(0).has_cameras(16);
    for (const auto& [id, prefix] : {std::pair{"FG0", "Device0"},
                                     {"FG1", "Device1"},
                                     {"FG11", "Device11"},
                                     {"FG", "Device"},
                                     {"4x", "Device4x"},
                                     {"a1b2", "Device1b2"},
                                     {"", "Device"}}) {
        InterfaceModule named(system, id);
        ASSERT_EQ(16U, named.init_Cameras(scan()));
        EXPECT_EQ(prefix + std::string("0"), named.get_Device(0)->getId());
        EXPECT_EQ(prefix + std::string("15"), named.get_Device(15)->getId());
    }
}

TEST_F(OpenInterfaceModule, HasDevicesThatNameCameraAndStreamAfterThemselves)
{
    struct Row {
        const char* device;
        const char* camera;
        const char* stream;
    };
    for (const Row& row : {Row{"Device01", "Camera01", "Stream010"},
                           Row{"Device115", "Camera115", "Stream1150"}, Row{"Device", "Camera", "Stream0"}}) {
        const DeviceModule device(&iface(), row.device);
        EXPECT_EQ(row.device, device.getId());
        EXPECT_EQ(row.camera, device.get_Camera()->getId());
        EXPECT_EQ(row.stream, device.get_Camera()->get_Stream(0)->getId());
        EXPECT_EQ(&iface(), device.get_Parent());
        EXPECT_EQ(&iface(), device.get_Camera()->get_Parent());
    }
}

} // namespace

} // namespace zvtest
