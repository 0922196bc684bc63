#pragma once

#include <algorithm>

#include "api/DS_modes.h"

namespace zvtest {

/// What frames leave behind, on a stream that runs with four queued buffers and an event.
template <class RunningStream>
class Delivering : public RunningStream {
protected:
    uint64_t num_delivered() { return counter(STREAM_INFO_NUM_DELIVERED); }
    uint64_t num_underrun() { return counter(STREAM_INFO_NUM_UNDERRUN); }
    uint64_t num_queued() { return counter(STREAM_INFO_NUM_QUEUED); }
    uint64_t num_await_delivery() { return counter(STREAM_INFO_NUM_AWAIT_DELIVERY); }
    uint64_t in_event() { return this->template event_info<uint64_t>(EVENT_NUM_IN_QUEUE).value; }

    uint64_t timestamp(size_t i) { return value<uint64_t>(i, BUFFER_INFO_TIMESTAMP); }
    uint64_t frame_id(size_t i) { return value<uint64_t>(i, BUFFER_INFO_FRAMEID); }
    bool is_new(size_t i) { return value<bool8_t>(i, BUFFER_INFO_NEW_DATA) != 0; }
    bool is_in_input_pool(size_t i) { return value<bool8_t>(i, BUFFER_INFO_IS_QUEUED) != 0; }
    bool is_acquiring(size_t i) { return value<bool8_t>(i, BUFFER_INFO_IS_ACQUIRING) != 0; }

    static bool is_filled_with(const std::vector<uint8_t>& memory, uint8_t value)
    {
        return std::all_of(memory.begin(), memory.end(), [value](uint8_t each) { return each == value; });
    }

private:
    uint64_t counter(STREAM_INFO_CMD command) { return this->template stream_info<uint64_t>(command).value; }
    template <class T>
    T value(size_t i, BUFFER_INFO_CMD command)
    {
        return this->template buffer_info<T>(this->buffers[i]->handle, command).value;
    }
};

} // namespace zvtest
