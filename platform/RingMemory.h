#pragma once

#include <cstddef>

namespace platform {

/// Zeroed memory with readable zeros behind it: a reader that takes more than a frame from the last frame of
/// a ring finds nothing else for 64 MiB. Throws std::bad_alloc.
class RingMemory {
public:
    explicit RingMemory(size_t size);
    RingMemory(const RingMemory&) = delete;
    RingMemory& operator=(const RingMemory&) = delete;
    ~RingMemory();

    unsigned char* data() const { return m_data; }

    static constexpr size_t readable_beyond = size_t{64} << 20U;
    /// Frames begin at multiples of it.
    static constexpr size_t page_size = 4096;

private:
    size_t m_mapped;
    unsigned char* m_data;
};

} // namespace platform
