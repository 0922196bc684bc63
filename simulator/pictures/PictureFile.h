#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "simulator/PixelFormat.h"

// Picture files of any kind. They may come from anywhere: nothing in them is trusted before it has been
// checked, and a file that cannot be used takes no more memory than it has bytes.

namespace zvsim {

struct Picture {
    uint32_t width{0};
    uint32_t height{0};
    /// Mono8, Mono16, RGB8 or RGB16.
    const PixelFormat* format{nullptr};
    /// Rows without padding; 16-bit values little-endian.
    std::vector<unsigned char> pixels;

    size_t row_size() const { return pixels.size() / height; }
};

/// What pictures may take together.
constexpr uint64_t picture_memory_limit = uint64_t{1} << 30U;

/// What the header of a file says.
struct PictureHeader {
    uint64_t width{0};
    uint64_t height{0};
    /// 1: grey, 3: red, green and blue.
    uint32_t channels{0};
    /// Of a sample.
    uint32_t bits{0};
};

/// A picture with room for its pixels. Empty, with `problem` set, when there is no pixel format for it, or
/// when so many pixels cannot come from a file of `file_size` bytes that is compressed at most
/// `best_compression` times.
std::optional<Picture> picture_for(const PictureHeader& header, uint64_t file_size, uint64_t best_compression,
                                   std::string& problem);

/// Whether the name of the file says that it is a picture: .png, .tif or .tiff.
bool is_picture_file(const std::filesystem::path& file);
/// The picture of such a file, bit for bit: grey or red, green and blue, with 8 or 16 bits in a sample.
/// Empty, with `problem` set, for every other one.
std::optional<Picture> read_picture(const std::filesystem::path& file, std::string& problem);

/// What read_picture() does with a PNG file; in PngFile.cpp.
std::optional<Picture> read_png(const std::filesystem::path& file, std::string& problem);
/// What read_picture() does with a TIFF file; in TiffFile.cpp. The first picture of the file, in strips,
/// without compression or with one that loses nothing (LZW, deflate, PackBits).
std::optional<Picture> read_tiff(const std::filesystem::path& file, std::string& problem);

} // namespace zvsim
