#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace zvgentl {

/// The memory of a port that the producer serves itself: one register description, which can only be read.
class PortMemory {
public:
    constexpr PortMemory(const char* file_name, const unsigned char* bytes, size_t size) noexcept
        : m_file_name(file_name), m_bytes(bytes), m_size(size)
    {
    }

    /// Where the description is: "Local:<file name>;<address>;<size>", the numbers in hexadecimal.
    std::string url() const;

    /// Copies the bytes at `address`, at most the `*size` bytes asked for, and sets `*size` to the number
    /// copied. False, and nothing touched, for an address outside.
    bool read(uint64_t address, void* destination, size_t* size) const noexcept;

private:
    static constexpr uint64_t start = 0x88888888;

    const char* m_file_name;
    const unsigned char* m_bytes;
    size_t m_size;
};

} // namespace zvgentl
