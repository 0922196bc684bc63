#pragma once

#include <stdexcept>
#include <string>

#include "GenTL/GenTL.h"

namespace zvsystem {

/// Throws std::runtime_error that names the function unless its call succeeded.
inline void check(GenTL::GC_ERROR code, const char* function)
{
    if (code != GenTL::GC_ERR_SUCCESS)
        throw std::runtime_error(std::string(function) + " answered " + std::to_string(code));
}

} // namespace zvsystem
