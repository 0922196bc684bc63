#include <thread>

#include "support/FailingAllocations.h"
#include "support/fixtures.h"

using namespace zvtest;

TEST_F(Library, IsNotInitialised)
{
    TL_HANDLE system = nullptr;
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, TLOpen(&system));
    EXPECT_LOGGED(Priority::error, "No preceding call to GCInitLib", "TLOpen", "ZVGRLibGenTL");
}

TEST_F(OpenLibrary, IsInitialisedAndQuiet)
{
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, GCInitLib());
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(OpenLibrary, CanBeClosedByTheTest) { EXPECT_EQ(GC_ERR_SUCCESS, GCCloseLib()); }

TEST_F(OpenSystem, SeesTheGrabbersOfTheFake)
{
    fake.has_grabbers(3);
    EXPECT_EQ(2U, num_interfaces());
    EXPECT_EQ("FG1", interface_id(1));
    EXPECT_EQ("Mixed", system_info<std::string>(TL_INFO_TLTYPE).value);
}

TEST_F(OpenInterface, FailedScanLeavesTheListAlone)
{
    fake.grabber(0).has_cameras(2);
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    fake.next("ZVGR_UpdateCameraList").answers(0x3001);
    EXPECT_EQ(GC_ERR_ERROR, IFUpdateDeviceList(iface, nullptr, 0));
    EXPECT_EQ(2U, num_devices(iface));
    EXPECT_EQ("IFUpdateDeviceList - GC_ERR_ERROR: wasn't able to scan for cameras", last_error());
}

TEST_F(OpenInterface, StartsWithAnEmptyRecord)
{
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_TRUE(settings.reads().empty());
    EXPECT_LOG_LINES();
    EXPECT_EQ(0U, num_devices(iface));
    EXPECT_EQ(1U, fake.open_grabbers());
}

TEST_F(OpenDevice, HasADeviceAndItsPort)
{
    EXPECT_EQ("Device00", device_id(iface, 0));
    EXPECT_NE(nullptr, port);
    EXPECT_EQ("Device00", device_info<std::string>(DEVICE_INFO_ID).value);
    EXPECT_NE(ZV_NO_HANDLE, camera());
    EXPECT_NE(camera(), grabber());
}

TEST_F(OpenDevice, SeesWrittenButMissingOutputs)
{
    const auto info = device_info<uint64_t>(DEVICE_INFO_TIMESTAMP_FREQUENCY, 4);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, info.code);
    EXPECT_EQ(8U, info.size);
    EXPECT_TRUE(is_untouched(info.value));
    const auto size = size_query([&](auto... out) { return DevGetInfo(dev, DEVICE_INFO_ID, out...); });
    EXPECT_EQ(GC_ERR_SUCCESS, size.code);
    EXPECT_EQ(9U, size.size);
}

TEST_F(QueuedStream, IsOpenWithoutBuffers)
{
    EXPECT_EQ("Stream000", stream_info<std::string>(STREAM_INFO_ID).value);
    EXPECT_TRUE(fake.has_callback(stream()));
    const Announced& buffer = announce();
    EXPECT_NE(0U, buffer.library);
    EXPECT_EQ(buffer.memory.data(), buffer_info<const uint8_t*>(buffer.handle, BUFFER_INFO_BASE).value);
}

TEST_F(CyclicStream, IsOpenWithoutBuffers)
{
    EXPECT_TRUE(fake.has_callback(stream()));
    const Announced& buffer = announce();
    EXPECT_EQ(0U, buffer.library);
    queue(buffer);
    EXPECT_EQ((Calls{call("ZVGR_BufferToQueue", 0, 0)}), fake.calls_of("ZVGR_BufferToQueue"));
}

TEST_F(RunningQueuedStream, DeliversFrames)
{
    int user = 0;
    const Announced& buffer = announce(buffer_size, &user);
    queue(buffer);
    Frame frame;
    frame.frame_id = 77;
    deliver(buffer, frame);
    const Taken taken = take();
    EXPECT_EQ(GC_ERR_SUCCESS, taken.code);
    EXPECT_EQ(buffer.handle, taken.data.BufferHandle);
    EXPECT_EQ(&user, taken.data.pUserPointer);
    EXPECT_EQ(77U, buffer_info<uint64_t>(buffer.handle, BUFFER_INFO_FRAMEID).value);
    EXPECT_EQ(1U, event_info<uint64_t>(EVENT_NUM_FIRED).value);
}

TEST_F(RunningCyclicStream, DeliversFrames)
{
    Frame frame;
    frame.fill = 0x5A;
    deliver(*buffers[0], frame);
    EXPECT_EQ(buffers[0]->handle, take().data.BufferHandle);
    EXPECT_EQ(0x5A, buffers[0]->memory.back());
}

TEST_F(RunningQueuedStream, WakesAWaiter)
{
    std::thread library([this] { deliver(*buffers[1]); });
    const Taken taken = take(GENTL_INFINITE);
    library.join();
    EXPECT_EQ(buffers[1]->handle, taken.data.BufferHandle);
}

TEST_F(QueuedStream, CanRunOutOfMemory)
{
    BUFFER_HANDLE handle = nullptr;
    GC_ERROR code = GC_ERR_SUCCESS;
    bool struck = false;
    {
        const auto faults = FailingAllocations::of_at_least(0);
        code = DSAllocAndAnnounceBuffer(ds, buffer_size, nullptr, &handle);
        struck = faults.struck();
    }
    EXPECT_TRUE(struck);
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, code);
    EXPECT_EQ(nullptr, handle);
}

TEST_F(RunningQueuedStream, AllocatesNothingPerFrame)
{
    log.set_level(Priority::warning);
    deliver(*buffers[0]); // the first frame may make room once and for all
    take();
    long count = 0;
    {
        const CountedAllocations counted;
        deliver(*buffers[1]);
        count = counted.count();
    }
    EXPECT_EQ(0, count);
    log.set_level(Priority::trace);
}
