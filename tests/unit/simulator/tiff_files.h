#pragma once

#include <functional>

#include <tiffio.h>

#include "unit/simulator/picture_files.h"

// TIFF pictures made for a test.

namespace zvsim_test {

/// Writes a grey or colour picture; `mode` as TIFFOpen() has it. What `change` sets comes last, and may be
/// wrong: the pixels are then those of the picture as far as there is a place for them.
void write_tiff(
    const std::filesystem::path& file, const TestPicture& picture, const char* mode = "w",
    const std::function<void(TIFF*)>& change = [](TIFF*) {});

} // namespace zvsim_test
