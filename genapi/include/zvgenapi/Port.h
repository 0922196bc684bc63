#pragma once

#include <cstddef>
#include <cstdint>

namespace zvgenapi {

/// Registers that are reached by address: what a map reads and writes a device through. Both functions move
/// all bytes or throw. What they throw reaches the caller of the map unchanged. A map calls its ports one
/// call at a time, under its lock, in the thread of whoever asked.
class Port {
public:
    Port() = default;
    virtual ~Port() = default;
    Port(const Port&) = delete;
    Port& operator=(const Port&) = delete;

    /// Fills `data` with the `size` bytes from `address` on; `size` is never 0.
    virtual void read(std::uint64_t address, void* data, std::size_t size) = 0;
    /// Writes the `size` bytes of `data` to `address`; `size` is never 0.
    virtual void write(std::uint64_t address, const void* data, std::size_t size) = 0;
};

} // namespace zvgenapi
