#pragma once

#include <cstddef>
#include <cstdint>

// Copying pictures.

namespace platform {

/// Remembers for the memory of one buffer when it was last filled. Used by one thread at a time, with the
/// buffer.
class LastCopy {
public:
    /// How many bytes this process copied with copy_frame between the last two copies into the buffer, or
    /// before the first.
    uint64_t bytes_since(size_t size) noexcept;

private:
    uint64_t m_copied_before{0};
};

enum class CopyKind {
    through_caches, // as std::memcpy
    around_caches,  // what is written goes to memory at once
};

/// The bytes of the processor's largest cache; 0 when copies cannot go around it, or when its size is not
/// known.
uint64_t avoidable_cache() noexcept;

/// Copies `size` bytes into memory that does not overlap. A large destination that has dropped out of the
/// caches since it was last filled is written around them, which saves the processor from reading it first.
/// Answers which way it was. Whoever learns from this thread that the copy is done sees all of it.
CopyKind copy_frame(void* destination, const void* source, size_t size, LastCopy& last) noexcept;

/// Copies in one of the two ways. They are the same where copies cannot go around the caches.
void copy_frame(void* destination, const void* source, size_t size, CopyKind kind) noexcept;

} // namespace platform
