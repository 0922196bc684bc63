#pragma once

#include <cstdint>

#include "api/InfoTable.h"

namespace zvgentl {

inline constexpr const char* producer_vendor = "ZEVA Electronics Ltd.";
inline constexpr const char* producer_model = "GenTL Producer";

/// What the library says about itself, both to GCGetInfo and to TLGetInfo; null for every other command.
const InfoRow<>* find_producer_info(int32_t command) noexcept;

} // namespace zvgentl
