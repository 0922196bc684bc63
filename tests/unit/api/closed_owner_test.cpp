#include "api/ProcessState.h"
#include "modules/CameraModule.h"
#include "modules/InterfaceModule.h"
#include "modules/SystemModule.h"
#include "support/fixtures.h"

// Ports in a state that the exported functions never bring about: a device is open, its grabber closed.

namespace zvtest {

namespace {

class DeviceOfAClosedGrabber : public OpenDevice {
protected:
    void SetUp() override
    {
        OpenDevice::SetUp();
        if (HasFatalFailure())
            return;
        zvgentl::InterfaceModule& closed = *zvgentl::current_system()->get_Interface(0);
        closed.set_Open(false);
        closed.get_Camera(0)->set_Open(true);
        forget();
    }
    void TearDown() override
    {
        zvgentl::InterfaceModule& closed = *zvgentl::current_system()->get_Interface(0);
        closed.set_Open(true); // so that the grabber is closed with its system
        OpenDevice::TearDown();
    }

    uint32_t data{7};
    size_t size{sizeof data};
    PORT_REGISTER_STACK_ENTRY entry{0x1000, &data, sizeof data};
    size_t count{1};
};

TEST_F(DeviceOfAClosedGrabber, IsNotRead)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GCReadPort(dev, 0x1000, &data, &size));
    EXPECT_EQ(4U, size);
    EXPECT_LOG_LINES(
        {Priority::trace, "Enter with handle=0x" + hex16(dev) + ", address=0x1000"},
        {Priority::debug, "GC_ERR_INVALID_HANDLE, grabber is closed", "GCReadPort", "ZVGRLibGenTL"});
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(DeviceOfAClosedGrabber, IsNotWritten)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GCWritePort(dev, 0x1000, &data, &size));
    EXPECT_EQ(4U, size);
    EXPECT_LOG_LINES(
        {Priority::trace, "Enter with handle=0x" + hex16(dev) + ", address=0x1000, size=4, data=117440512"},
        {Priority::error, "Exit, Returning error GC_ERR_INVALID_HANDLE (0xFFFFFC12)", "GCWritePort",
         "ZVGRLibGenTL"});
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(DeviceOfAClosedGrabber, IsNotReadStacked)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GCReadPortStacked(dev, &entry, &count));
    EXPECT_EQ(1U, count);
    EXPECT_LOG_LINES({Priority::debug, "Enter GCReadPortStacked"},
                     {Priority::error, "GCReadPortStacked - GC_ERR_INVALID_HANDLE, grabber is closed",
                      "GCReadPortStacked", "ZVGRLibGenTL"});
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(DeviceOfAClosedGrabber, IsNotWrittenStackedEvenWithoutEntries)
{
    count = 0;
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GCWritePortStacked(dev, &entry, &count));
    EXPECT_LOG_LINES({Priority::debug, "Enter GCWritePortStacked"},
                     {Priority::error, "GCWritePortStacked - GC_ERR_INVALID_HANDLE, grabber is closed",
                      "GCWritePortStacked", "ZVGRLibGenTL"});
    EXPECT_TRUE(fake.calls().empty());
}

} // namespace

} // namespace zvtest
