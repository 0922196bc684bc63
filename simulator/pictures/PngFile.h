#pragma once

#include "simulator/pictures/PictureFile.h"

// Reads PNG pictures without changing a bit of them.

namespace zvsim {

/// See read_picture().
std::optional<Picture> read_png(const std::filesystem::path& file, std::string& problem);

} // namespace zvsim
