#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "support/fixtures.h"

// For what a stream does alike, or tellingly different, in both modes.

namespace zvtest {

enum class Mode { cyclic, queued };

inline std::ostream& operator<<(std::ostream& out, Mode mode)
{
    return out << (mode == Mode::queued ? "Queued" : "Cyclic");
}

/// A stream in the mode of the parameter. INSTANTIATE_IN_BOTH_MODES(Class) behind the tests.
class EitherStream : public OpenStream, public testing::WithParamInterface<Mode> {
protected:
    void SetUp() override
    {
        OpenStream::SetUp();
        if (is_queued())
            return;
        fake.allow_handle("ZVGR_BufferToQueue", 0);
        fake.allow_handle("ZVGR_BufferRevoke", 0);
    }

    bool is_queued() const override { return GetParam() == Mode::queued; }

    bool is_in_input_pool(const Announced& buffer)
    {
        return buffer_info<bool8_t>(buffer.handle, BUFFER_INFO_IS_QUEUED).value != 0;
    }
    size_t num_announced() { return stream_info<size_t>(STREAM_INFO_NUM_ANNOUNCED).value; }
    size_t num_queued() { return stream_info<size_t>(STREAM_INFO_NUM_QUEUED).value; }
    size_t num_await_delivery() { return stream_info<size_t>(STREAM_INFO_NUM_AWAIT_DELIVERY).value; }
};

/// Two cameras with an open stream each; `ds` is the first one's.
class TwoStreams : public QueuedStream {
protected:
    DEV_HANDLE other_dev{nullptr};
    DS_HANDLE other{nullptr};

    void SetUp() override
    {
        QueuedStream::SetUp();
        EXPECT_EQ(GC_ERR_SUCCESS, DevClose(dev));
        fake.grabber(0).has_cameras(2);
        EXPECT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
        other_dev = open_device(iface, "Device01");
        other = open_stream(other_dev, "Stream010");
        dev = open_device(iface, "Device00");
        ds = open_stream(dev, "Stream000"); // last, so that stream() is its handle
        forget();
    }

    BUFFER_HANDLE announce_on_other()
    {
        BUFFER_HANDLE handle = nullptr;
        EXPECT_EQ(GC_ERR_SUCCESS, DSAllocAndAnnounceBuffer(other, 64, nullptr, &handle));
        return handle;
    }
};

inline std::string name_of_mode(const testing::TestParamInfo<Mode>& info)
{
    return testing::PrintToString(info.param);
}

} // namespace zvtest

#define INSTANTIATE_IN_BOTH_MODES(Class)                                                                     \
    INSTANTIATE_TEST_SUITE_P(Modes, Class, testing::Values(::zvtest::Mode::queued, ::zvtest::Mode::cyclic),  \
                             ::zvtest::name_of_mode)
