#pragma once

#include <cstddef>
#include <cstdint>

namespace zvgentl {

/// True for a pointer argument that was not given: null, or all bits set. Holds for required and optional
/// ones alike.
inline bool is_missing(const void* argument) noexcept
{
    return argument == nullptr || reinterpret_cast<uintptr_t>(argument) == UINTPTR_MAX;
}

/// A pointer argument that was given, else null.
template <class T>
T* given(T* argument) noexcept
{
    return is_missing(argument) ? nullptr : argument;
}

/// The size that an enter line prints: 0 when it was not given.
inline int logged_size(const size_t* size) noexcept
{
    return is_missing(size) ? 0 : static_cast<int>(static_cast<uint32_t>(*size));
}

} // namespace zvgentl
