#pragma once

#include <array>
#include <string>

#include "api/lines.h"

// Situations around a registered event. Fixtures named after an exported function hide that function, so the
// base offers the calls under other names.

namespace zvtest {

/// Three queued buffers with a private pointer each, the new-buffer event registered, acquisition running.
/// What EventGetData logs once per process is logged already, so that lines can be compared exactly.
class EventStream : public QueuedStream {
protected:
    void SetUp() override
    {
        QueuedStream::SetUp();
        if (!HasFatalFailure())
            prepare();
    }

    void prepare()
    {
        buffers.clear();
        for (int& user : m_users)
            queue(announce(buffer_size, &user));
        register_event();
        kill();
        EXPECT_EQ(GC_ERR_ABORT, take().code);
        EXPECT_EQ(GC_ERR_TIMEOUT, take().code);
        start();
        forget();
    }

    void deliver_buffers(size_t count)
    {
        for (size_t i = 0; i < count; ++i)
            deliver(*buffers.at(i));
    }

    GC_ERROR get_data(void* buffer, size_t* size, uint64_t timeout = 0)
    {
        return GenTL::EventGetData(event, buffer, size, timeout);
    }
    /// EventGetData without a buffer.
    GC_ERROR discard()
    {
        size_t size = sizeof(EVENT_NEW_BUFFER_DATA);
        return get_data(nullptr, &size);
    }
    template <class T>
    Info<T> data_info(EVENT_DATA_INFO_CMD command, size_t room = default_room)
    {
        return query<T>(
            room, [&](auto... out) { return GenTL::EventGetDataInfo(event, nullptr, 0, command, out...); });
    }
    GC_ERROR kill() { return GenTL::EventKill(event); }
    GC_ERROR flush() { return GenTL::EventFlush(event); }
    GC_ERROR unregister() { return GenTL::GCUnregisterEvent(ds, EVENT_NEW_BUFFER); }

    size_t in_queue() { return event_info<size_t>(EVENT_NUM_IN_QUEUE).value; }
    uint64_t fired() { return event_info<uint64_t>(EVENT_NUM_FIRED).value; }
    /// Buffers in the stream's output queue.
    size_t awaiting() { return stream_info<size_t>(STREAM_INFO_NUM_AWAIT_DELIVERY).value; }

    /// The enter line of EventGetData on `event`, by default with room for one record.
    ExpectedLine enter_line(int timeout, Priority priority = Priority::debug, size_t room = 16) const
    {
        return {priority,
                "Enter EventGetData, handle=0x" + low_hex(event) + ", buffer size=" + std::to_string(room) +
                    ", timeout=" + std::to_string(timeout) + " ms",
                "EventGetData", "ZVGRLibGenTL"};
    }
    ExpectedLine exit_line(const Announced& buffer, Priority priority = Priority::debug) const
    {
        return {priority,
                "Exit EventGetData, buffer handle=0x" + low_hex(buffer.handle) + ", private=0x" +
                    low_hex(buffer.user) + " ",
                "EventGetData", "ZVGRLibGenTL"};
    }
    const ExpectedLine too_small{Priority::debug, "EventGetData - GC_ERR_BUFFER_TOO_SMALL, wanted size=16",
                                 "EventGetData", "ZVGRLibGenTL"};
    const ExpectedLine discarded{Priority::debug, "EventGetData, pBuffer is NULL, discard next event",
                                 "EventGetData", "ZVGRLibGenTL"};

private:
    std::array<int, 3> m_users{};
};

/// The same with the setting that makes EventGetData poll instead of waiting for a signal.
class PollingEventStream : public EventStream {
protected:
    void SetUp() override
    {
        EventStream::SetUp();
        if (HasFatalFailure())
            return;
        // A stream reads the setting when it is made, at the next rebuild of the device list.
        settings.set("GenTL.Stream.SignaledEventMode", 0);
        fake.grabber(0).has_cameras(2);
        ASSERT_EQ(GC_ERR_SUCCESS, DevClose(dev));
        ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
        dev = open_device(iface, "Device00");
        ds = open_stream(dev, "Stream000");
        prepare();
    }
};

} // namespace zvtest
