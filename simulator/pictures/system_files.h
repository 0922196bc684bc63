#pragma once

#include <cstdio>
#include <filesystem>

#include <tiffio.h>

// Opens picture files of any name for libraries in C, which take names in the form that the system has.

namespace zvsim {

/// For reading; null when it cannot be opened. The caller closes it.
std::FILE* open_file(const std::filesystem::path& file);

/// For reading, in a mode of libtiff; null when it cannot be opened. The caller closes it.
TIFF* open_tiff_file(const std::filesystem::path& file, const char* mode, TIFFOpenOptions* options);

} // namespace zvsim
