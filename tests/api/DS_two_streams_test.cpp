#include "api/DS_modes.h"

// Buffers of another stream.

using namespace zvtest;

namespace {

/// Two cameras with an open stream each; `ds` is the first one's. `foreign` is a buffer of the other.
class TwoStreams : public QueuedStream {
protected:
    DS_HANDLE other{nullptr};
    BUFFER_HANDLE foreign{nullptr};

    void SetUp() override
    {
        QueuedStream::SetUp();
        EXPECT_EQ(GC_ERR_SUCCESS, DevClose(dev));
        fake.grabber(0).has_cameras(2);
        EXPECT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
        other = open_stream(open_device(iface, "Device01"), "Stream010");
        dev = open_device(iface, "Device00");
        ds = open_stream(dev, "Stream000");
        EXPECT_EQ(GC_ERR_SUCCESS, DSAllocAndAnnounceBuffer(other, 64, nullptr, &foreign));
        forget();
    }
};

TEST_F(TwoStreams, RefuseBuffersOfEachOther)
{
    for (const Priority level : {Priority::information, Priority::trace}) {
        log.set_level(level);
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSQueueBuffer(ds, foreign));
    }
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSRevokeBuffer(ds, foreign, nullptr, nullptr));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, buffer_info<size_t>(foreign, BUFFER_INFO_SIZE).code);
    EXPECT_EQ(Calls{}, fake.calls());
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(other, foreign, nullptr, nullptr));
}

TEST_F(TwoStreams, DescribePartsOfBuffersOfEachOther)
{
    const auto info = query<uint64_t>(8, [&](auto... out) {
        return DSGetBufferPartInfo(ds, foreign, 0, BUFFER_PART_INFO_DATA_SIZE, out...);
    });
    EXPECT_EQ(GC_ERR_SUCCESS, info.code);
    EXPECT_EQ(64U, info.value);
}

} // namespace
