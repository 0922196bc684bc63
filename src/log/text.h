#pragma once

#include <cstdint>

namespace zvgentl {

/// A pointer as the number that "0x%016llX" prints: 16 digits on every system, where "%p" differs between
/// them.
inline unsigned long long address(const void* pointer) noexcept
{
    return reinterpret_cast<uintptr_t>(pointer);
}

/// The low 32 bits of a handle or pointer, for lines that print them with "%X".
inline unsigned low32(const void* pointer) noexcept
{
    return static_cast<unsigned>(reinterpret_cast<uintptr_t>(pointer));
}

/// The low 32 bits of a size or count, for lines that print them with "%d".
inline int low32_signed(uint64_t value) noexcept { return static_cast<int>(static_cast<uint32_t>(value)); }

} // namespace zvgentl
