#pragma once

#include "GenTL/GenTL.h"

namespace zvgentl {

struct ErrorName {
    GenTL::GC_ERROR code;
    const char* name;
};

/// The codes that this producer answers, with the names of the standard.
constexpr ErrorName error_names[] = {
    {GenTL::GC_ERR_SUCCESS, "GC_ERR_SUCCESS"},
    {GenTL::GC_ERR_ERROR, "GC_ERR_ERROR"},
    {GenTL::GC_ERR_NOT_INITIALIZED, "GC_ERR_NOT_INITIALIZED"},
    {GenTL::GC_ERR_NOT_IMPLEMENTED, "GC_ERR_NOT_IMPLEMENTED"},
    {GenTL::GC_ERR_RESOURCE_IN_USE, "GC_ERR_RESOURCE_IN_USE"},
    {GenTL::GC_ERR_ACCESS_DENIED, "GC_ERR_ACCESS_DENIED"},
    {GenTL::GC_ERR_INVALID_HANDLE, "GC_ERR_INVALID_HANDLE"},
    {GenTL::GC_ERR_INVALID_ID, "GC_ERR_INVALID_ID"},
    {GenTL::GC_ERR_INVALID_PARAMETER, "GC_ERR_INVALID_PARAMETER"},
    {GenTL::GC_ERR_TIMEOUT, "GC_ERR_TIMEOUT"},
    {GenTL::GC_ERR_ABORT, "GC_ERR_ABORT"},
    {GenTL::GC_ERR_INVALID_BUFFER, "GC_ERR_INVALID_BUFFER"},
    {GenTL::GC_ERR_NOT_AVAILABLE, "GC_ERR_NOT_AVAILABLE"},
    {GenTL::GC_ERR_INVALID_ADDRESS, "GC_ERR_INVALID_ADDRESS"},
    {GenTL::GC_ERR_BUFFER_TOO_SMALL, "GC_ERR_BUFFER_TOO_SMALL"},
    {GenTL::GC_ERR_INVALID_INDEX, "GC_ERR_INVALID_INDEX"},
};

constexpr const char* error_name(GenTL::GC_ERROR code) noexcept
{
    for (const ErrorName& row : error_names) {
        if (row.code == code)
            return row.name;
    }
    return "unknown error";
}

} // namespace zvgentl
