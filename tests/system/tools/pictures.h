#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace zvgentl::test {

/// A grey picture as the libraries' own readers give it.
struct GreyPicture {
    std::uint32_t width{0};
    std::uint32_t height{0};
    unsigned bits{0};
    std::vector<unsigned char> samples; // of 16 bits in the machine's byte order

    bool operator==(const GreyPicture& other) const
    {
        return width == other.width && height == other.height && bits == other.bits &&
               samples == other.samples;
    }
};

/// Throw std::runtime_error for anything but a grey picture of 8 bits (PNG), or of 8 or 16 bits (TIFF).
GreyPicture read_png(const std::filesystem::path& file);
GreyPicture read_tiff(const std::filesystem::path& file);

/// Of 8 bits.
void write_png(const std::filesystem::path& file, const GreyPicture& picture);

} // namespace zvgentl::test
