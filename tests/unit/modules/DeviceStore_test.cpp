#include "modules/DeviceStore.h"
#include "unit/modules/Module_fixtures.h"

namespace zvtest {

namespace {

using zvgentl::DeviceModule;
using zvgentl::DeviceStore;

class DeviceStoreTest : public OneGrabber {
protected:
    std::unique_ptr<DeviceModule> open_device(const std::string& id)
    {
        const auto found = scan();
        auto device = std::make_unique<DeviceModule>(&iface(), id);
        device->get_Camera()->init_Camera(found.handle(0), found.identity(0));
        EXPECT_EQ(uint32_t{zv_success}, device->get_Camera()->open_Camera());
        device->get_Camera()->mark_open();
        EXPECT_TRUE(device->get_Camera()->open_Stream(0));
        return device;
    }
};

TEST_F(DeviceStoreTest, KeepsADeviceAsItIs)
{
    DeviceStore store;
    auto device = open_device("Device00");
    DeviceModule* const before = device.get();
    forget();
    EXPECT_EQ(before, store.keep(std::move(device)));
    for (int i = 0; i < 100; ++i)
        store.keep(std::make_unique<DeviceModule>(&iface(), "Device01"));
    EXPECT_EQ("Device00", before->getId());
    EXPECT_TRUE(before->is_Open());
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(DeviceStoreTest, FreesOpenDevicesWithoutACallOrALine)
{
    {
        DeviceStore store;
        store.keep(open_device("Device00"));
        DeviceModule* const device = store.keep(open_device("Device01"));
        device->get_Camera()->get_Stream(0)->get_Events().add(*device->get_Camera()->get_Stream(0),
                                                              GenTL::EVENT_NEW_BUFFER);
        forget();
    }
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_LOG_LINES();
}

TEST_F(DeviceStoreTest, FreesDevicesWhoseInterfaceIsGone)
{
    {
        DeviceStore store;
        store.keep(open_device("Device00"));
        system.init_Interfaces(0);
        forget();
    }
    EXPECT_TRUE(fake.calls().empty());
}

} // namespace

} // namespace zvtest
