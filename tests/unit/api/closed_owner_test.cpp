#include <functional>
#include <string>
#include <vector>

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
        closed.mark_closed_with_cameras();
        closed.get_Camera(0)->mark_open();
        forget();
    }
    void TearDown() override
    {
        zvgentl::InterfaceModule& closed = *zvgentl::current_system()->get_Interface(0);
        closed.mark_open(); // so that the grabber is closed with its system
        OpenDevice::TearDown();
    }
};

struct Access {
    const char* function;
    std::function<GC_ERROR(PORT_HANDLE)> call;
    Priority enter_priority;
    std::string enter_line;
    Priority error_priority;
    const char* error_line;
};

TEST_F(DeviceOfAClosedGrabber, CannotBeAccessed)
{
    uint32_t data = 7;
    size_t size = sizeof data;
    PORT_REGISTER_STACK_ENTRY entry{0x1000, &data, sizeof data};
    size_t one = 1;
    size_t none = 0;
    const std::vector<Access> accesses = {
        {"GCReadPort", [&](PORT_HANDLE device) { return GCReadPort(device, 0x1000, &data, &size); },
         Priority::trace, "Enter with handle=0x" + hex16(dev) + ", address=0x1000", Priority::debug,
         "GC_ERR_INVALID_HANDLE, grabber is closed"},
        {"GCWritePort", [&](PORT_HANDLE device) { return GCWritePort(device, 0x1000, &data, &size); },
         Priority::trace, "Enter with handle=0x" + hex16(dev) + ", address=0x1000, size=4, data=117440512",
         Priority::error, "Exit, Returning error GC_ERR_INVALID_HANDLE (0xFFFFFC12)"},
        {"GCReadPortStacked", [&](PORT_HANDLE device) { return GCReadPortStacked(device, &entry, &one); },
         Priority::debug, "Enter GCReadPortStacked", Priority::error,
         "GCReadPortStacked - GC_ERR_INVALID_HANDLE, grabber is closed"},
        {"GCWritePortStacked", // refused before its entries are counted
         [&](PORT_HANDLE device) { return GCWritePortStacked(device, &entry, &none); }, Priority::debug,
         "Enter GCWritePortStacked", Priority::error,
         "GCWritePortStacked - GC_ERR_INVALID_HANDLE, grabber is closed"},
    };
    for (const Access& access : accesses) {
        SCOPED_TRACE(access.function);
        forget();
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, access.call(dev));
        EXPECT_LOG_LINES({access.enter_priority, access.enter_line},
                         {access.error_priority, access.error_line});
        EXPECT_TRUE(fake.calls().empty());
    }
    EXPECT_EQ(4U, size);
    EXPECT_EQ(1U, one);
}

} // namespace

} // namespace zvtest
