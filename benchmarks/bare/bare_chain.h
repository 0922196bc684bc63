#pragma once

#include <cstddef>
#include <cstdint>

// The shortest way of a frame from a grabber library to a consumer: the library calls, tag writes and queue
// operations that every producer needs, and nothing else. What a benchmark compares the producer with.

#pragma GCC visibility push(default)
extern "C" {

/// Opens a camera of a grabber with that many queued buffers, in cyclic mode if `ring_frames` is not 0. The
/// answer is what the other functions take; chain_close() ends it.
void* chain_open(uint32_t grabber, uint32_t camera, uint32_t buffer_count, uint64_t size,
                 uint32_t ring_frames);
void chain_close(void* chain);

/// The grabber library's handle of a buffer of a queued chain.
uint64_t chain_library_handle(const void* chain, uint32_t index);

/// The oldest filled buffer, and its private pointer, as EventGetData gives them. False when there is none.
bool chain_get(void* chain, void* datum);
/// The same, after a wait for it. False after chain_kill().
bool chain_wait(void* chain, void* datum);
/// Ends the present wait, or the next one.
void chain_kill(void* chain);
/// One value of a buffer, as DSGetBufferInfo gives it.
int32_t chain_info(const void* buffer, int32_t command, int32_t* type, void* value, size_t* size);
void chain_queue(void* buffer);
}
#pragma GCC visibility pop
