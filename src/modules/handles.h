#pragma once

#include "modules/BufferFacts.h"
#include "modules/Index.h"

namespace zvgentl {

class StreamModule;

// Where to look for what a handle names. An object enters its index before its address becomes a handle and
// leaves it when it dies; whether the handle is still good is for the list that owns the object to say.
// Inline, so that they are made before the device store and destroyed after it.

/// The streams by their own addresses and by those of the events registered on them. Streams live as long as
/// the library.
inline Index<const void*, StreamModule> stream_index;

/// What can be asked about buffers, by their addresses. The facts outlive the buffer and tell when it is
/// gone.
inline Index<const void*, BufferFacts> buffer_index;

} // namespace zvgentl
