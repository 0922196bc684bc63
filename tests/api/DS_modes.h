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

/// A stream in either mode that can be asked what it counts.
class CountedStream : public OpenStream {
protected:
    void SetUp() override
    {
        OpenStream::SetUp();
        if (is_queued())
            return;
        fake.allow_handle("ZVGR_BufferToQueue", 0);
        fake.allow_handle("ZVGR_BufferRevoke", 0);
    }

    size_t num_announced() { return stream_info<size_t>(STREAM_INFO_NUM_ANNOUNCED).value; }
    size_t num_queued() { return stream_info<size_t>(STREAM_INFO_NUM_QUEUED).value; }
    size_t num_await_delivery() { return stream_info<size_t>(STREAM_INFO_NUM_AWAIT_DELIVERY).value; }
    uint64_t num_delivered() { return stream_info<uint64_t>(STREAM_INFO_NUM_DELIVERED).value; }
    uint64_t num_underrun() { return stream_info<uint64_t>(STREAM_INFO_NUM_UNDERRUN).value; }
    size_t num_in_event() { return event_info<size_t>(EVENT_NUM_IN_QUEUE).value; }

    bool is_in_input_pool(const Announced& buffer)
    {
        return buffer_info<bool8_t>(buffer.handle, BUFFER_INFO_IS_QUEUED).value != 0;
    }
    bool is_new(const Announced& buffer)
    {
        return buffer_info<bool8_t>(buffer.handle, BUFFER_INFO_NEW_DATA).value != 0;
    }
    bool is_acquiring(const Announced& buffer)
    {
        return buffer_info<bool8_t>(buffer.handle, BUFFER_INFO_IS_ACQUIRING).value != 0;
    }

    /// A library call within the delivery of a frame, once the buffer is being filled.
    const char* within_delivery() const { return is_queued() ? "ZVGR_BufferGetInfo" : "ZVGR_StreamGetAux"; }
};

/// A stream in the mode of the parameter. INSTANTIATE_IN_BOTH_MODES(Class) follows the tests.
class EitherStream : public CountedStream, public testing::WithParamInterface<Mode> {
protected:
    bool is_queued() const override { return GetParam() == Mode::queued; }
};

inline std::string name_of_mode(const testing::TestParamInfo<Mode>& info)
{
    return testing::PrintToString(info.param);
}

} // namespace zvtest

#define INSTANTIATE_IN_BOTH_MODES(Class)                                                                     \
    INSTANTIATE_TEST_SUITE_P(Modes, Class, testing::Values(::zvtest::Mode::queued, ::zvtest::Mode::cyclic),  \
                             ::zvtest::name_of_mode)
