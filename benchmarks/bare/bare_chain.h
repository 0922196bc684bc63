#pragma once

#include <cstddef>
#include <cstdint>

// The shortest way of a frame from a grabber library to a consumer: the library calls, tag writes and queue
// operations that every producer needs, and nothing else. What a benchmark compares the producer with.

#pragma GCC visibility push(default)
extern "C" {

/// Opens the first camera in queued mode, with that many queued buffers.
void chain_open(uint32_t buffer_count, uint64_t size);
void chain_close();

/// The grabber library's handle of a buffer.
uint64_t chain_library_handle(uint32_t index);

/// The oldest filled buffer, and its private pointer, as EventGetData gives them. False when there is none.
bool chain_get(void* datum);
/// One value of a buffer, as DSGetBufferInfo gives it.
int32_t chain_info(const void* buffer, int32_t command, int32_t* type, void* value, size_t* size);
void chain_queue(void* buffer);
}
#pragma GCC visibility pop
