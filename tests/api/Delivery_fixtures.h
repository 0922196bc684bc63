#pragma once

#include <algorithm>
#include <vector>

#include "api/DS_modes.h"

namespace zvtest {

template <Mode mode>
class StreamInMode : public CountedStream {
protected:
    bool is_queued() const override { return mode == Mode::queued; }
};

/// What frames leave behind, on a stream that runs with four queued buffers and an event.
template <class Stream>
class Delivering : public Running<Stream> {
protected:
    uint64_t timestamp(size_t i) { return number(i, BUFFER_INFO_TIMESTAMP); }
    uint64_t frame_id(size_t i) { return number(i, BUFFER_INFO_FRAMEID); }

    static bool is_filled_with(const std::vector<uint8_t>& memory, uint8_t value)
    {
        return std::all_of(memory.begin(), memory.end(), [value](uint8_t each) { return each == value; });
    }

private:
    uint64_t number(size_t i, BUFFER_INFO_CMD command)
    {
        return this->template buffer_info<uint64_t>(this->buffers[i]->handle, command).value;
    }
};

} // namespace zvtest
