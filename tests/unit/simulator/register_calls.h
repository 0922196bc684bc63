#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "zvgr/ZVGRLib.h"

// Register access through the C interface.

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

template <class Call>
Transfer read_with(const Call& call, uint32_t handle, uint64_t address, uint32_t size)
{
    Transfer transfer{0, size, Bytes(size + 1, 0xEE)};
    transfer.status = call(handle, address, transfer.bytes.data(), &transfer.size);
    transfer.bytes.resize(size);
    return transfer;
}

template <class Call>
Transfer write_with(const Call& call, uint32_t handle, uint64_t address, Bytes bytes)
{
    Transfer transfer{0, static_cast<uint32_t>(bytes.size()), {}};
    bytes.push_back(0); // data() of an empty vector may be null
    transfer.status = call(handle, address, bytes.data(), &transfer.size);
    return transfer;
}

inline Transfer read_camera(uint32_t camera, uint64_t address, uint32_t size)
{
    return read_with(ZVGR_CameraReadReg, camera, address, size);
}
inline Transfer write_camera(uint32_t camera, uint64_t address, const Bytes& bytes)
{
    return write_with(ZVGR_CameraWriteReg, camera, address, bytes);
}
inline Transfer read_grabber(uint32_t grabber, uint64_t address, uint32_t size)
{
    return read_with(ZVGR_GrabberReadReg, grabber, address, size);
}
inline Transfer write_grabber(uint32_t grabber, uint64_t address, const Bytes& bytes)
{
    return write_with(ZVGR_GrabberWriteReg, grabber, address, bytes);
}

/// Big-endian, as registers are.
inline Bytes bytes_of(uint64_t number, size_t length)
{
    Bytes bytes(length);
    for (size_t at = length; at > 0; --at, number >>= 8U)
        bytes[at - 1] = static_cast<unsigned char>(number & 0xFFU);
    return bytes;
}
inline Bytes bytes_of(double number)
{
    uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bytes_of(bits, sizeof bits);
}
/// Padded with zeros.
inline Bytes bytes_of(const std::string& text, size_t length)
{
    Bytes bytes(length);
    std::copy(text.begin(), text.end(), bytes.begin());
    return bytes;
}

inline uint64_t number_from(const Bytes& bytes)
{
    uint64_t number = 0;
    for (const unsigned char byte : bytes)
        number = number << 8U | byte;
    return number;
}
/// Up to the first zero.
inline std::string text_from(const Bytes& bytes)
{
    return {bytes.begin(), std::find(bytes.begin(), bytes.end(), 0)};
}
inline double float_from(const Bytes& bytes)
{
    const uint64_t bits = number_from(bytes);
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

} // namespace zvsim_test
