#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zvgenapi {

/// Whether the bytes begin as a zip archive does.
bool is_archive(std::string_view bytes) noexcept;

/// The file of the archive whose name ends in .xml; the only one, if there is just one. Throws Error:
/// description if it cannot be unpacked, limit if it has more than `most_bytes`, whatever size the archive
/// claims.
std::string unpack(std::string_view bytes, std::size_t most_bytes);

} // namespace zvgenapi
