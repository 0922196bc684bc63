#pragma once

#include <filesystem>

#include "pictures/Picture.h"

namespace zvgentl::test {

/// Read back by the libraries' own readers, without any conversion but the byte order of 16-bit samples.
/// Throw std::runtime_error when the file is of another kind.
tool::Picture read_png(const std::filesystem::path& file);
tool::Picture read_tiff(const std::filesystem::path& file);

} // namespace zvgentl::test
