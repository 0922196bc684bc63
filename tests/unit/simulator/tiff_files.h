#pragma once

#include <functional>

#include <tiffio.h>

#include "unit/simulator/picture_files.h"

// TIFF pictures made for a test.

namespace zvsim_test {

/// Writes a grey or colour picture; `mode` as TIFFOpen() has it. The fields that `change` sets
/// come last and may be wrong; then as many of the pixels are written as the file has room for.
void write_tiff(
    const std::filesystem::path& file, const TestPicture& picture, const char* mode = "w",
    const std::function<void(TIFF*)>& change = [](TIFF*) {});

} // namespace zvsim_test
