#pragma once

#include <cstddef>

namespace zvgentl {

// The register descriptions of the ports that the producer serves itself, byte for byte as a consumer reads
// them. Their sizes are part of the ports' URLs and must never change.

/// GenApi XML of the system port, made from ZV_SystemGenTL.xml. Ends with its last '>'.
inline constexpr size_t system_description_size = 3391;
extern const unsigned char system_description[];

/// A zip archive with the GenApi XML of the buffer port, ZV_TLBufferGenTL.xml, in it.
inline constexpr size_t buffer_description_size = 640;
extern const unsigned char buffer_description[];

} // namespace zvgentl
