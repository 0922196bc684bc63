#include "api/lines.h"

namespace zvtest {

namespace {

class DevGetPort : public OpenDevice {};

TEST_F(DevGetPort, GivesTheCamera)
{
    PORT_HANDLE given = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::DevGetPort(dev, &given));
    EXPECT_NE(nullptr, given);
    EXPECT_NE(dev, given);
    EXPECT_LOG_LINES(info_line("Enter DevGetPort, handle=0x" + hex16(dev)),
                     info_line("Exit DevGetPort, remote port handle=0x" + hex16(given)));
    EXPECT_TRUE(fake.calls().empty());
    PORT_HANDLE again = nullptr;
    GenTL::DevGetPort(dev, &again);
    EXPECT_EQ(given, again);
}

class DevClose : public OpenDevice {};

TEST_F(DevClose, ClosesTheCamera)
{
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::DevClose(dev));
    EXPECT_EQ((Calls{call("ZVGR_CameraClose", camera())}), fake.calls()) << "no stream was open";
    EXPECT_LOG_LINES(info_line("Enter DevClose"), info_line("Exit DevClose"));
}

TEST_F(DevClose, FailsQuietly)
{
    const std::string before = last_error();
    for (uint32_t status : {any_failure, 0U, 0xFFFFFFFFU}) {
        forget();
        fake.next("ZVGR_CameraClose").answers(status);
        EXPECT_EQ(GC_ERR_ERROR, GenTL::DevClose(dev));
        EXPECT_LOG_LINES(info_line("Enter DevClose"),
                         info_line("DevClose - GC_ERR_ERROR, ZVGR_CameraClose failed"));
    }
    EXPECT_EQ(before, last_error());
}

TEST_F(DevClose, LeavesTheDeviceOpenWhenItFails)
{
    const auto model = device_info<std::string>(DEVICE_INFO_MODEL).value;
    ASSERT_NE("", model);
    fake.next("ZVGR_CameraClose").answers(any_failure);
    EXPECT_EQ(GC_ERR_ERROR, GenTL::DevClose(dev));
    EXPECT_EQ(model, device_info<std::string>(DEVICE_INFO_MODEL).value);
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::DevClose(dev));
}

class DevCloseOfAStream : public RunningQueuedStream {};

TEST_F(DevCloseOfAStream, ClosesTheCameraFirstAndThenTheStream)
{
    const uint32_t stream_handle = stream();
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::DevClose(dev));
    EXPECT_EQ((Calls{call("ZVGR_CameraClose", camera()), call("ZVGR_StreamDelete", stream_handle)}),
              fake.calls());
}

TEST_F(DevCloseOfAStream, DestroysBuffersAndEvents)
{
    const BUFFER_HANDLE buffer = buffers[0]->handle;
    ASSERT_EQ(GC_ERR_SUCCESS, GenTL::DevClose(dev));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, take().code);
    forget();
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSQueueBuffer(ds, buffer));
    EXPECT_LOGGED(Priority::information, "DSQueueBuffer - GC_ERR_INVALID_HANDLE, stream is closed");

    EXPECT_EQ(dev, open_device(iface, "Device00"));
    EXPECT_EQ(ds, open_stream(dev, "Stream000"));
    EXPECT_EQ(0U, stream_info<size_t>(STREAM_INFO_NUM_ANNOUNCED).value);
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSQueueBuffer(ds, buffer));
}

TEST_F(DevCloseOfAStream, LeavesTheStreamRunningWhenItFails)
{
    fake.next("ZVGR_CameraClose").answers(any_failure);
    EXPECT_EQ(GC_ERR_ERROR, GenTL::DevClose(dev));
    EXPECT_EQ(0U, fake.count("ZVGR_StreamDelete"));
    deliver(*buffers[0]);
    EXPECT_EQ(buffers[0]->handle, take().data.BufferHandle);
}

} // namespace

} // namespace zvtest
