#include "api/lines.h"

namespace zvtest {

namespace {

class IFOpenDevice : public OpenInterface {
protected:
    DEV_HANDLE dev{untouched<DEV_HANDLE>()};

    void SetUp() override
    {
        OpenInterface::SetUp();
        fake.grabber(0).has_cameras(2);
        ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
        forget();
    }

    GC_ERROR open(const char* id, DEVICE_ACCESS_FLAGS flags = DEVICE_ACCESS_EXCLUSIVE)
    {
        return GenTL::IFOpenDevice(iface, id, flags, &dev);
    }
    ExpectedLine enter() const
    {
        return info_line("Enter IFOpenDevice handle = 0x" + hex16(iface) + ", flags=0x4");
    }
};

TEST_F(IFOpenDevice, OpensTheCamera)
{
    const size_t elapsed_before = log.elapsed_calls();
    EXPECT_EQ(GC_ERR_SUCCESS, open("Device01"));
    EXPECT_EQ(1U, log.elapsed_calls() - elapsed_before);
    EXPECT_EQ((Calls{call("ZVGR_CameraOpen2", fake.camera_handle(0, 1), nullptr)}), fake.calls());
    EXPECT_LOG_LINES(enter(), info_line("Exit IFOpenDevice, camera id=1, deviceHandle=0x" + hex16(dev)),
                     duration_line());
    PORT_HANDLE port = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, DevGetPort(dev, &port));
}

TEST_F(IFOpenDevice, IgnoresTheFlags)
{
    for (const DEVICE_ACCESS_FLAGS flags : {0, 1, 2, 3, 4, 1000, -1}) {
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, open("Device00", flags));
        EXPECT_LOGGED(Priority::information, "Enter IFOpenDevice handle = 0x" + hex16(iface) + ", flags=0x" +
                                                 low_hex(static_cast<uint32_t>(flags)));
        EXPECT_EQ(1U, fake.count("ZVGR_CameraOpen2"));
        EXPECT_EQ(GC_ERR_SUCCESS, DevClose(dev));
    }
}

TEST_F(IFOpenDevice, GivesTheOpenOne)
{
    ASSERT_EQ(GC_ERR_SUCCESS, open("Device00"));
    const DEV_HANDLE first = dev;
    dev = untouched<DEV_HANDLE>();
    forget();
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, open("Device00"));
    EXPECT_EQ(first, dev);
    EXPECT_TRUE(fake.calls().empty());
    const std::string text = "IFOpenDevice - GC_ERR_RESOURCE_IN_USE: camera is already opened";
    EXPECT_LOG_LINES(enter(), error_line(text), FAILED_WITH(GC_ERR_RESOURCE_IN_USE), duration_line());
    EXPECT_EQ(text, last_error());
    PORT_HANDLE port = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, DevGetPort(dev, &port));
}

TEST_F(IFOpenDevice, NamesStatusAndIndexWhenTheCameraDoesNotOpen)
{
    struct Row {
        const char* id;
        uint32_t status;
        const char* numbers;
    };
    for (const Row& row :
         {Row{"Device00", 0x3001, "12289, device id=0"}, Row{"Device01", 0, "0, device id=1"},
          Row{"Device01", 0xFFFFFFFE, "-2, device id=1"}}) {
        forget();
        fake.next("ZVGR_CameraOpen2").answers(row.status);
        EXPECT_EQ(GC_ERR_ACCESS_DENIED, open(row.id));
        EXPECT_TRUE(is_untouched(dev));
        const std::string text =
            std::string("IFOpenDevice - GC_ERR_ACCESS_DENIED, ZVGR_CameraOpen failed: error ") + row.numbers;
        EXPECT_LOG_LINES(enter(), error_line(text), FAILED_WITH(GC_ERR_ACCESS_DENIED), duration_line());
        EXPECT_EQ(text, last_error());
    }
    EXPECT_EQ(GC_ERR_SUCCESS, open("Device00")) << "the device counts as open";
}

TEST_F(IFOpenDevice, RefusesUnknownIDs)
{
    for (const char* id : {"", "Device", "Device0", "device00", "DEVICE00", "Device000", "Device00 ",
                           "Device02", "Camera00", "%s%n%d"}) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_ID, open(id));
        EXPECT_TRUE(is_untouched(dev));
        EXPECT_TRUE(fake.calls().empty());
        const std::string text = std::string("IFOpenDevice - GC_ERR_INVALID_ID: Invalid device Id ") + id;
        EXPECT_LOG_LINES(enter(), error_line(text), FAILED_WITH(GC_ERR_INVALID_ID), duration_line());
        EXPECT_EQ(text, last_error());
    }
}

TEST_F(IFOpenDevice, OpensAClosedDeviceAgain)
{
    open("Device00");
    const DEV_HANDLE first = dev;
    ASSERT_EQ(GC_ERR_SUCCESS, DevClose(dev));
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, open("Device00"));
    EXPECT_EQ(first, dev);
    EXPECT_EQ(1U, fake.count("ZVGR_CameraOpen2"));
}

TEST_F(IFOpenDevice, FindsDevicesOnlyOnTheirOwnInterface)
{
    fake.has_grabbers(3);
    fake.grabber(1).has_cameras(1);
    ASSERT_EQ(GC_ERR_SUCCESS, TLUpdateInterfaceList(tl, nullptr, 0));
    iface = open_interface("FG0");
    const IF_HANDLE other = open_interface("FG1");
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(other, nullptr, 0));
    EXPECT_EQ(GC_ERR_INVALID_ID, open("Device10"));
    EXPECT_EQ(GC_ERR_SUCCESS, open("Device00"));
    const DEV_HANDLE first = dev;
    iface = other;
    EXPECT_EQ(GC_ERR_INVALID_ID, open("Device00"));
    EXPECT_EQ(GC_ERR_SUCCESS, open("Device10"));
    EXPECT_NE(first, dev);
    PORT_HANDLE port = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, DevGetPort(dev, &port)) << "found among the devices of two interfaces";
}

class IFOpenDeviceWithoutAList : public OpenInterface {};

TEST_F(IFOpenDeviceWithoutAList, DoesNotScan)
{
    DEV_HANDLE dev = untouched<DEV_HANDLE>();
    EXPECT_EQ(GC_ERR_INVALID_ID, GenTL::IFOpenDevice(iface, "Device00", DEVICE_ACCESS_EXCLUSIVE, &dev));
    EXPECT_TRUE(fake.calls().empty());
}

} // namespace

} // namespace zvtest
