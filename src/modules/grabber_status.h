#pragma once

#include "zvgr/ZVGRLib.h"

namespace zvgentl {

/// True for the one status of the grabber library that means success.
constexpr bool succeeded(uint32_t status) noexcept { return status == zv_success; }

/// A library value, or `otherwise` when the library has none.
constexpr int64_t value_or(int64_t value, int64_t otherwise) noexcept
{
    return value == ZV_NOT_AVAILABLE ? otherwise : value;
}

} // namespace zvgentl
