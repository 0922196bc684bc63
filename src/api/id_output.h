#pragma once

#include <cstring>
#include <string>

#include "api/arguments.h"

namespace zvgentl {

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
