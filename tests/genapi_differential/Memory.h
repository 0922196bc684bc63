#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "zvgenapi/Port.h"

namespace zvgenapi::differential {

/// The registers of a device that has some at every address: 64 KiB, over and over again.
class Memory : public Port {
public:
    static constexpr std::size_t size = std::size_t{1} << 16U;

    explicit Memory(std::uint32_t seed) : m_bytes(size)
    {
        // Random enough, and fast. A third of the bytes are small, so that enumerations have entries.
        std::uint32_t state = seed;
        for (auto& byte : m_bytes) {
            state = state * 1664525U + 1013904223U;
            const auto random = static_cast<unsigned char>(state >> 24U);
            byte = (state >> 16U) % 3 == 0 ? random % 4 : random;
        }
    }

    void read(std::uint64_t address, void* data, std::size_t count) override
    {
        auto* const bytes = static_cast<unsigned char*>(data);
        for (std::size_t i = 0; i < count; ++i)
            bytes[i] = m_bytes[(address + i) % size];
    }

    void write(std::uint64_t address, const void* data, std::size_t count) override
    {
        const auto* const bytes = static_cast<const unsigned char*>(data);
        for (std::size_t i = 0; i < count; ++i)
            m_bytes[(address + i) % size] = bytes[i];
    }

    const std::vector<unsigned char>& bytes() const noexcept { return m_bytes; }
    void copy(const Memory& other) { m_bytes = other.m_bytes; }

private:
    std::vector<unsigned char> m_bytes;
};

} // namespace zvgenapi::differential
