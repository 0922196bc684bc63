#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Register access through the C interface, and a camera with several pixel formats to use it on.

namespace zvsim_test {

using Bytes = std::vector<unsigned char>;

/// What an access answered.
struct Transfer {
    uint32_t status;
    /// As the size word says.
    uint32_t size;
    /// Of a read: as many as were asked for, 0xEE where nothing was written.
    Bytes bytes;
};

Transfer read_camera(uint32_t camera, uint64_t address, uint32_t size);
Transfer write_camera(uint32_t camera, uint64_t address, const Bytes& bytes);
Transfer read_grabber(uint32_t grabber, uint64_t address, uint32_t size);
Transfer write_grabber(uint32_t grabber, uint64_t address, const Bytes& bytes);

/// Big-endian, as registers are.
Bytes bytes_of(uint64_t number, size_t length);
Bytes bytes_of(double number);
/// Padded with zeros.
Bytes bytes_of(const std::string& text, size_t length);
uint64_t number_from(const Bytes& bytes);
double float_from(const Bytes& bytes);

} // namespace zvsim_test
