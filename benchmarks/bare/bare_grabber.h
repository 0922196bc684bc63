#pragma once

#include <cstdint>

// What a benchmark asks of the bare grabber library beyond the interface of every grabber library. Looked up
// by name, because the library is loaded like any other.

#pragma GCC visibility push(default)
extern "C" {

/// The grabbers that the next scan finds, the cameras of each, and the bytes of a frame. Before anything is
/// open.
void bare_set_up(uint32_t grabbers, uint32_t cameras, uint64_t payload);

/// The handles of the stream that was created and of the buffer that was announced last.
uint32_t bare_last_stream();
uint64_t bare_last_buffer();

/// Reports a buffer of a queued stream as filled, on the thread of the caller.
void bare_deliver(uint64_t buffer);
/// Whether the consumer has queued the buffer since it was delivered.
bool bare_is_queued(uint64_t buffer);

/// Reports the next ring frame of a cyclic stream, on the thread of the caller.
void bare_deliver_ring(uint32_t stream);
}
#pragma GCC visibility pop
