/// \file PngFile.h
/// Reads PNG pictures without changing a bit of them.
#pragma once

#include "simulator/PixelFormat.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace zvsim {

struct Picture {
    uint32_t width = 0;
    uint32_t height = 0;
    const PixelFormat* format = nullptr; ///< Mono8, Mono16 or RGB8.
    std::vector<unsigned char> pixels;   ///< Rows without padding; 16-bit values little-endian.
};

/// A grey picture of 8 or 16 bit or a colour picture of 3 x 8 bit; empty, with `problem` set, for every other
/// file.
std::optional<Picture> read_png(const std::filesystem::path& file, std::string& problem);

} // namespace zvsim
