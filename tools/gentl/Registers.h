#pragma once

#include <cstddef>
#include <cstdint>

namespace zvgentl::tool {

/// Memory of a module that is reached by address. Both functions move all bytes or throw std::exception.
class Registers {
public:
    Registers() = default;
    virtual ~Registers() = default;
    Registers(const Registers&) = delete;
    Registers& operator=(const Registers&) = delete;

    virtual void read(std::uint64_t address, void* data, std::size_t size) const = 0;
    virtual void write(std::uint64_t address, const void* data, std::size_t size) const = 0;
};

} // namespace zvgentl::tool
