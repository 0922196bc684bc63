#include "modules/EventModule.h"
#include "modules/StreamModule.h"
#include "support/fixtures.h"

// A remote-device event with entries. The exported functions never bring one about, because nothing fires it.

namespace zvtest {

namespace {

class FiredRemoteDeviceEvent : public QueuedStream {
protected:
    void SetUp() override
    {
        QueuedStream::SetUp();
        if (HasFatalFailure())
            return;
        ASSERT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &event));
        queue(announce());
        const auto module = static_cast<zvgentl::StreamModule*>(ds)->get_Events().find(EVENT_REMOTE_DEVICE);
        for (int i = 0; i < 2; ++i)
            module->append(static_cast<zvgentl::BufferModule*>(buffers[0]->handle));
        forget();
    }

    /// What was left is one entry, and `size` is that of a datum without bytes.
    void expect_taken_without_bytes()
    {
        EXPECT_EQ(0U, size);
        EXPECT_EQ(0xA5, data);
        EXPECT_EQ(1U, event_info<size_t>(EVENT_NUM_IN_QUEUE).value);
    }

    uint8_t data{0xA5};
    size_t size{100};
};

TEST_F(FiredRemoteDeviceEvent, GivesNoBytesAndThrottlesItsExitLine)
{
    start();
    for (const Priority priority : {Priority::debug, Priority::trace}) {
        forget();
        size = 100;
        EXPECT_EQ(GC_ERR_SUCCESS, EventGetData(event, &data, &size, 0));
        EXPECT_LOG_LINES(
            {priority, "Enter EventGetData, handle=0x" + low_hex(event) + ", buffer size=100, timeout=0 ms"},
            {priority, "Exit EventGetData", "EventGetData", "ZVGRLibGenTL"});
        if (priority == Priority::debug)
            expect_taken_without_bytes();
    }
}

TEST_F(FiredRemoteDeviceEvent, GivesItsEntriesToADataQueryWithoutBytes)
{
    INFO_DATATYPE type = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, EventGetDataInfo(event, nullptr, 0, EVENT_DATA_VALUE, &type, &data, &size));
    EXPECT_EQ(INFO_DATATYPE_PTR, type);
    expect_taken_without_bytes();
}

TEST_F(FiredRemoteDeviceEvent, DropsAnEntryAndLeavesItsBufferAlone)
{
    EXPECT_EQ(GC_ERR_SUCCESS, EventGetData(event, nullptr, &size, 0));
    EXPECT_EQ(1U, event_info<size_t>(EVENT_NUM_IN_QUEUE).value);
    EXPECT_EQ(1U, stream_info<size_t>(STREAM_INFO_NUM_QUEUED).value);
}

} // namespace

} // namespace zvtest
