#include "api/lines.h"
#include "support/FailingAllocations.h"

namespace zvtest {

namespace {

ExpectedLine enter_update() { return info_line("Enter IFUpdateDeviceList"); }

class IFUpdateDeviceList : public OpenInterface {
protected:
    bool8_t changed{untouched<bool8_t>()};

    GC_ERROR update() { return GenTL::IFUpdateDeviceList(iface, &changed, 0); }
    uint32_t camera(uint32_t position) { return fake.camera_handle(0, position); }
    /// The lines between enter line and duration of an update that rebuilds the list.
    static std::vector<std::string> messages_of(int found, int listed)
    {
        return {"Enter IFUpdateDeviceList", "detectedCameras = " + std::to_string(found),
                "get_CameraAmount = " + std::to_string(listed),
                "Exit IFUpdateDeviceList, cameras found=" + std::to_string(found), "duration: 12 usec"};
    }
};

TEST_F(IFUpdateDeviceList, ListsTheCamerasOfTheGrabber)
{
    fake.grabber(0).has_cameras(2);
    const size_t elapsed_before = log.elapsed_calls();
    EXPECT_EQ(GC_ERR_SUCCESS, update());
    EXPECT_EQ(1, changed);
    EXPECT_EQ(1U, log.elapsed_calls() - elapsed_before);
    EXPECT_EQ((Calls{call("ZVGR_UpdateCameraList", fake.grabber_handle(0), 16),
                     call("ZVGR_CameraInfo2", camera(0), 0), call("ZVGR_CameraInfo2", camera(1), 0)}),
              fake.calls());
    EXPECT_LOG_LINES(enter_update(), info_line("detectedCameras = 2"), info_line("get_CameraAmount = 0"),
                     info_line("Exit IFUpdateDeviceList, cameras found=2"), duration_line());
    EXPECT_EQ(2U, num_devices(iface));
    EXPECT_EQ("Device00", device_id(iface, 0));
    EXPECT_EQ("Device01", device_id(iface, 1));
}

TEST_F(IFUpdateDeviceList, ReportsNoChangeTheSecondTime)
{
    update();
    const DEV_HANDLE dev = open_device(iface, "Device00");
    forget();
    changed = 7;
    EXPECT_EQ(GC_ERR_SUCCESS, update());
    EXPECT_EQ(0, changed);
    EXPECT_EQ((Calls{call("ZVGR_UpdateCameraList", fake.grabber_handle(0), 16)}), fake.calls());
    EXPECT_LOG_LINES(enter_update(), info_line("Number of detected cameras hasn't changed"), duration_line());
    PORT_HANDLE port = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, DevGetPort(dev, &port));
}

TEST_F(IFUpdateDeviceList, ReportsNoChangeWithoutCameras)
{
    fake.grabber(0).has_cameras(0);
    EXPECT_EQ(GC_ERR_SUCCESS, update());
    EXPECT_EQ(0, changed);
    EXPECT_LOG_LINES(enter_update(), info_line("Number of detected cameras hasn't changed"), duration_line());
}

TEST_F(IFUpdateDeviceList, ComparesOnlyTheNumber)
{
    fake.grabber(0).camera(0).model("first");
    update();
    fake.grabber(0).camera(0).model("second");
    EXPECT_EQ(GC_ERR_SUCCESS, update());
    EXPECT_EQ(0, changed);
    const auto model = query<std::string>(
        64, [&](auto... out) { return IFGetDeviceInfo(iface, "Device00", DEVICE_INFO_MODEL, out...); });
    EXPECT_EQ("first", model.value);
}

TEST_F(IFUpdateDeviceList, RebuildsTheListWithoutClosingDevices)
{
    fake.grabber(0).has_cameras(2);
    update();
    const DEV_HANDLE old = open_device(iface, "Device00");
    fake.grabber(0).has_cameras(1);
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, update());
    EXPECT_EQ(1, changed);
    EXPECT_EQ(messages_of(1, 2), logged_messages());
    EXPECT_EQ(0U, fake.count("ZVGR_CameraClose"));
    EXPECT_EQ(1U, num_devices(iface));

    PORT_HANDLE port = nullptr;
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DevGetPort(old, &port));
    forget();
    EXPECT_NE(old, open_device(iface, "Device00")) << "the new device starts closed";
    EXPECT_EQ((Calls{call("ZVGR_CameraOpen2", camera(0), nullptr)}), fake.calls());
}

TEST_F(IFUpdateDeviceList, EmptiesTheListWhenTheCamerasAreGone)
{
    update();
    fake.grabber(0).has_cameras(0);
    EXPECT_EQ(GC_ERR_SUCCESS, update());
    EXPECT_EQ(1, changed);
    EXPECT_EQ(0U, num_devices(iface));
}

TEST_F(IFUpdateDeviceList, FailedScanLeavesTheListAlone)
{
    fake.grabber(0).has_cameras(2);
    update();
    forget();
    fake.next("ZVGR_UpdateCameraList").answers(any_failure);
    EXPECT_EQ(GC_ERR_ERROR, update());
    EXPECT_EQ(0, changed);
    const std::string text = "IFUpdateDeviceList - GC_ERR_ERROR: wasn't able to scan for cameras";
    EXPECT_LOG_LINES(enter_update(), error_line(text), FAILED_WITH(GC_ERR_ERROR), duration_line());
    EXPECT_EQ(2U, num_devices(iface));
    EXPECT_EQ(text, last_error());
}

TEST_F(IFUpdateDeviceList, FailedInformationLeavesTheListAlone)
{
    update();
    forget();
    fake.grabber(0).has_cameras(3);
    fake.nth("ZVGR_CameraInfo2", 2).answers(any_failure);
    EXPECT_EQ(GC_ERR_NOT_AVAILABLE, update());
    EXPECT_EQ(0, changed);
    EXPECT_EQ(2U, fake.count("ZVGR_CameraInfo2")) << "the third is not asked for";
    const std::string text = "IFUpdateDeviceList - GC_ERR_NOT_AVAILABLE: wasn't able to get camera info";
    EXPECT_LOG_LINES(enter_update(), info_line("detectedCameras = 3"), info_line("get_CameraAmount = 1"),
                     error_line(text), FAILED_WITH(GC_ERR_NOT_AVAILABLE), duration_line());
    EXPECT_EQ(1U, num_devices(iface));
    EXPECT_EQ(text, last_error());
}

TEST_F(IFUpdateDeviceList, ReportsDevicesThatThereIsNoMemoryFor)
{
    fake.grabber(0).has_cameras(2);
    {
        const auto faults = FailingAllocations::of_at_least(sizeof(ZvCameraInfo)); // no room for any camera
        EXPECT_EQ(GC_ERR_ERROR, update());
        EXPECT_TRUE(faults.struck());
    }
    EXPECT_EQ(0, changed);
    const std::string text = "IFUpdateDeviceList - GC_ERR_ERROR: wasn't able initiate camera module";
    EXPECT_LOG_LINES(enter_update(), info_line("detectedCameras = 2"), info_line("get_CameraAmount = 0"),
                     error_line(text), FAILED_WITH(GC_ERR_ERROR), duration_line());
    EXPECT_EQ(text, last_error());
    EXPECT_EQ(0U, num_devices(iface));
    EXPECT_EQ(GC_ERR_SUCCESS, update());
    EXPECT_EQ(2U, num_devices(iface));
}

TEST_F(IFUpdateDeviceList, KeepsTheDevicesThatThereWasMemoryFor)
{
    log.set_level(Priority::fatal); // lines are made of memory as well
    bool was_partly_built = false;
    for (long nth = 1;; ++nth) {
        SCOPED_TRACE(nth);
        fake.grabber(0).has_cameras(0);
        ASSERT_EQ(GC_ERR_SUCCESS, update());
        fake.grabber(0).has_cameras(2);
        bool has_struck = false;
        GC_ERROR code = GC_ERR_SUCCESS;
        {
            const auto faults = FailingAllocations::nth(nth);
            code = update();
            has_struck = faults.struck();
        }
        const uint32_t listed = num_devices(iface);
        if (!has_struck)
            break;
        ASSERT_EQ(GC_ERR_ERROR, code);
        ASSERT_EQ(0, changed);
        was_partly_built = was_partly_built || listed == 1;
    }
    EXPECT_TRUE(was_partly_built);
    EXPECT_EQ(2U, num_devices(iface));
}

TEST_F(IFUpdateDeviceList, NeedsNoFlag)
{
    for (bool8_t* nowhere : {static_cast<bool8_t*>(nullptr), all_ones<bool8_t*>()}) {
        fake.grabber(0).has_cameras(2);
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::IFUpdateDeviceList(iface, nowhere, 0)); // changed
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::IFUpdateDeviceList(iface, nowhere, 0)); // unchanged
        fake.next("ZVGR_UpdateCameraList").answers(any_failure);
        EXPECT_EQ(GC_ERR_ERROR, GenTL::IFUpdateDeviceList(iface, nowhere, 0));
        EXPECT_EQ(2U, num_devices(iface));
        fake.grabber(0).has_cameras(0);
        EXPECT_EQ(GC_ERR_SUCCESS, update());
    }
}

TEST_F(IFUpdateDeviceList, DoesNotUseTheTimeOut)
{
    for (uint64_t timeout : {uint64_t{0}, uint64_t{1}, uint64_t{GENTL_INFINITE}})
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::IFUpdateDeviceList(iface, &changed, timeout));
}

class IFUpdateDeviceListWhileAcquiring : public RunningQueuedStream {};

TEST_F(IFUpdateDeviceListWhileAcquiring, KeepsTheDroppedStreamAliveForTheLibrary)
{
    fake.grabber(0).has_cameras(2);
    ASSERT_EQ(GC_ERR_SUCCESS, GenTL::IFUpdateDeviceList(iface, nullptr, 0));
    EXPECT_EQ((Calls{call("ZVGR_UpdateCameraList", grabber(), 16), call("ZVGR_CameraInfo2", any(), 0),
                     call("ZVGR_CameraInfo2", any(), 0)}),
              fake.calls())
        << "nothing is closed";
    deliver(*buffers[0]); // still finds its buffer
    EXPECT_EQ(zv_queue_output, fake.queue_of(buffers[0]->library));
}

class IFGetNumDevices : public OpenInterface {};

TEST_F(IFGetNumDevices, NeverScans)
{
    uint32_t count = untouched<uint32_t>();
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::IFGetNumDevices(iface, &count));
    EXPECT_EQ(0U, count);
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_LOG_LINES(info_line("Enter IFGetNumDevices"), info_line("Exit IFGetNumDevices, camera amount=0"));
}

TEST_F(IFGetNumDevices, CountsTheListedDevices)
{
    fake.grabber(0).has_cameras(3);
    GenTL::IFUpdateDeviceList(iface, nullptr, 0);
    forget();
    EXPECT_EQ(3U, num_devices(iface));
    EXPECT_LOG_LINES(info_line("Enter IFGetNumDevices"), info_line("Exit IFGetNumDevices, camera amount=3"));
}

} // namespace

} // namespace zvtest
