#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "GenTL/GenTL.h"

#include "support/fixtures.h"

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
        for (int& user : m_users)
            queue(announce(buffer_size, &user));
        register_event();
        log_what_is_logged_once();
        start();
        forget();
    }

    /// One abort, one time-out.
    void log_what_is_logged_once()
    {
        kill();
        EXPECT_EQ(GC_ERR_ABORT, take().code);
        EXPECT_EQ(GC_ERR_TIMEOUT, take().code);
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
    GC_ERROR kill() { return GenTL::EventKill(event); }
    GC_ERROR flush() { return GenTL::EventFlush(event); }
    GC_ERROR unregister() { return GenTL::GCUnregisterEvent(ds, EVENT_NEW_BUFFER); }

    size_t in_queue() { return event_info<size_t>(EVENT_NUM_IN_QUEUE).value; }
    uint64_t fired() { return event_info<uint64_t>(EVENT_NUM_FIRED).value; }
    /// Buffers in the stream's output queue.
    size_t awaiting() { return stream_info<size_t>(STREAM_INFO_NUM_AWAIT_DELIVERY).value; }

    /// The enter line of EventGetData on `event` with room for one record.
    ExpectedLine enter_line(int timeout, Priority priority = Priority::debug) const
    {
        return {priority,
                "Enter EventGetData, handle=0x" + low_hex(event) +
                    ", buffer size=16, timeout=" + std::to_string(timeout) + " ms",
                "EventGetData", "ZVGRLibGenTL"};
    }
    ExpectedLine exit_line(const Announced& buffer, Priority priority = Priority::debug) const
    {
        return {priority,
                "Exit EventGetData, buffer handle=0x" + low_hex(buffer.handle) + ", private=0x" +
                    low_hex(buffer.user) + " ",
                "EventGetData", "ZVGRLibGenTL"};
    }

private:
    std::array<int, 3> m_users{};
};

/// How many milliseconds a call took, rounded down.
template <class Function>
int64_t milliseconds_of(Function function)
{
    const auto start = std::chrono::steady_clock::now();
    function();
    const auto taken = std::chrono::steady_clock::now() - start;
    return std::chrono::duration_cast<std::chrono::milliseconds>(taken).count();
}

/// "Exit, Returning error <name> (0x<code>)" of a function.
inline ExpectedLine error_exit(const std::string& function, const std::string& name, GC_ERROR code)
{
    return {Priority::error,
            "Exit, Returning error " + name + " (0x" + low_hex(static_cast<uint64_t>(code)) + ")", function,
            "ZVGRLibGenTL"};
}

} // namespace zvtest
