#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zvgentl::tool {

/// Pixels as they are in a buffer.
struct PixelSource {
    const std::uint8_t* data{nullptr};
    std::size_t size{0}; // bytes at data
    std::size_t width{0};
    std::size_t height{0};
    std::size_t row_padding{0}; // bytes behind each row
    std::uint64_t pixel_format{0};
};

/// A copy of a frame in the form of picture files: rows without padding, red first. Samples of 16 bits lie in
/// the machine's byte order and keep the camera's value: 10, 12 and 14 bits are in the low bits, nothing is
/// scaled.
struct Picture {
    std::uint32_t width{0};
    std::uint32_t height{0};
    unsigned channels{0}; // 1 grey, 3 RGB, 4 RGB and alpha
    unsigned bits{0};     // of a sample: 8 or 16
    std::vector<std::uint8_t> samples;

    std::size_t row_size() const noexcept { return std::size_t{width} * channels * (bits / 8); }
};

/// Throws std::runtime_error, naming the pixel format, when files cannot hold it, and when the pixels do not
/// fit into the buffer that is said to hold them.
Picture make_picture(const PixelSource& source);

} // namespace zvgentl::tool
