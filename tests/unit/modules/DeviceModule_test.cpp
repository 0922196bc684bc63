#include "unit/modules/Module_fixtures.h"

namespace zvtest {

namespace {

using zvgentl::DeviceModule;

class DeviceModuleTest : public OneGrabber {};

TEST_F(DeviceModuleTest, NamesCameraAndStreamAfterItself)
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

TEST_F(DeviceModuleTest, IsOpenWithItsCamera)
{
    const DeviceModule device(&iface(), "Device00");
    EXPECT_FALSE(device.is_Open());
    device.get_Camera()->mark_open();
    EXPECT_TRUE(device.is_Open());
    device.get_Camera()->mark_closed_and_wipe();
    EXPECT_FALSE(device.is_Open());
}

TEST_F(DeviceModuleTest, IsDestroyedWithoutACallOnceItWasAbandoned)
{
    fake.grabber(0).has_cameras(1);
    const auto found = scan();
    auto device = std::make_unique<DeviceModule>(&iface(), "Device00");
    device->get_Camera()->init_Camera(found.handle(0), found.identity(0));
    device->get_Camera()->mark_open();
    ASSERT_TRUE(device->get_Camera()->open_Stream(0));
    forget();
    device->abandon();
    EXPECT_FALSE(device->is_Open());
    device.reset();
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_LOG_LINES();
}

} // namespace

} // namespace zvtest
