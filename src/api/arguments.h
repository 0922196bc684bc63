#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace zvgentl {

/// True for a pointer argument that was not given: null, or all bits set. This holds for required and
/// optional ones.
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

enum class IdCopy { size_only, copied, too_small };

/// Hands an ID over: copies it with its terminating zero when a buffer is given and large enough. The needed
/// size is written in every case, and nothing is copied into a buffer that is too small, unlike a text of an
/// info query.
inline IdCopy copy_id(const std::string& id, char* buffer, size_t* size) noexcept
{
    const size_t room = *size;
    const size_t needed = id.size() + 1;
    *size = needed;
    if (is_missing(buffer))
        return IdCopy::size_only;
    if (room < needed)
        return IdCopy::too_small;
    std::memcpy(buffer, id.c_str(), needed);
    return IdCopy::copied;
}

} // namespace zvgentl
