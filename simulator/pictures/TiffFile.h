#pragma once

#include "simulator/pictures/PictureFile.h"

// Reads TIFF pictures without changing a bit of them.

namespace zvsim {

/// See read_picture(). The first picture of the file, in strips, without compression or with one that loses
/// nothing (LZW, deflate, PackBits).
std::optional<Picture> read_tiff(const std::filesystem::path& file, std::string& problem);

} // namespace zvsim
