#include "api/lines.h"

namespace zvtest {

namespace {

class IFClose : public OpenInterface {
protected:
    uint32_t grabber() const { return fake.grabber_handle(0); }
    ExpectedLine already_closed() const
    {
        return error_line("Interface 0x" + hex16(iface) + " already closed");
    }
};

TEST_F(IFClose, ClosesTheGrabber)
{
    const uint32_t handle = grabber();
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::IFClose(iface));
    EXPECT_EQ((Calls{call("ZVGR_Close", handle)}), fake.calls());
    EXPECT_LOG_LINES(info_line("Enter IFClose"), info_line("Exit IFClose"));
}

TEST_F(IFClose, CallsTheLibraryBeforeItLooksAtTheFlag)
{
    const uint32_t handle = grabber();
    ASSERT_EQ(GC_ERR_SUCCESS, GenTL::IFClose(iface));
    forget();
    fake.allow_handle("ZVGR_Close", handle);
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::IFClose(iface));
    EXPECT_EQ((Calls{call("ZVGR_Close", handle)}), fake.calls());
    EXPECT_LOG_LINES(info_line("Enter IFClose"),
                     {Priority::warning, "ZVGR_Close return error = " + std::to_string(any_failure)},
                     already_closed(), FAILED_WITH(GC_ERR_INVALID_HANDLE));
}

TEST_F(IFClose, ReportsAClosedInterfaceAlsoWhenTheLibraryDoesNot)
{
    ASSERT_EQ(GC_ERR_SUCCESS, GenTL::IFClose(iface));
    forget();
    fake.next("ZVGR_Close").answers(zv_success);
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::IFClose(iface));
    EXPECT_LOG_LINES(info_line("Enter IFClose"), already_closed(), FAILED_WITH(GC_ERR_INVALID_HANDLE));
}

TEST_F(IFClose, ClosesTheInterfaceAlsoWhenTheLibraryFails)
{
    fake.next("ZVGR_Close").answers_after_effect(0xFFFFFFFF);
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::IFClose(iface));
    EXPECT_LOG_LINES(info_line("Enter IFClose"), {Priority::warning, "ZVGR_Close return error = 4294967295"},
                     info_line("Exit IFClose"));
    uint32_t count = 0;
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, IFGetNumDevices(iface, &count));
}

TEST_F(IFClose, RecordsNoError)
{
    const std::string before = last_error();
    GenTL::IFClose(iface);
    fake.next("ZVGR_Close").answers(any_failure);
    GenTL::IFClose(iface);
    EXPECT_EQ(before, last_error());
}

class IFCloseOfAStream : public RunningQueuedStream {};

TEST_F(IFCloseOfAStream, ClosesTheGrabberFirstAndThenTheStream)
{
    const uint32_t grabber_handle = grabber();
    const uint32_t stream_handle = stream();
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::IFClose(iface));
    EXPECT_EQ((Calls{call("ZVGR_Close", grabber_handle), call("ZVGR_StreamDelete", stream_handle)}),
              fake.calls())
        << "neither the camera nor the acquisition are ended by calls of their own";
}

TEST_F(IFCloseOfAStream, KeepsTheDevicesForTheNextTime)
{
    ASSERT_EQ(GC_ERR_SUCCESS, GenTL::IFClose(iface));
    EXPECT_EQ(iface, open_interface("FG0"));
    EXPECT_EQ(1U, num_devices(iface));

    bool8_t changed = untouched<bool8_t>();
    EXPECT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, &changed, 0));
    EXPECT_EQ(0, changed) << "the same number of cameras";
    const auto model = query<std::string>(
        64, [&](auto... out) { return IFGetDeviceInfo(iface, "Device00", DEVICE_INFO_MODEL, out...); });
    EXPECT_EQ("", model.value) << "a closed camera has no identity";

    fake.allow_stale_handles(); // the kept device holds the handle of a camera that died with its grabber
    DEV_HANDLE opened = untouched<DEV_HANDLE>();
    EXPECT_EQ(GC_ERR_ACCESS_DENIED, IFOpenDevice(iface, "Device00", DEVICE_ACCESS_EXCLUSIVE, &opened));
}

} // namespace

} // namespace zvtest
