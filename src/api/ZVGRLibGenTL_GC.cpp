#include <cstring>
#include <string>

#include "GenTL/GenTL.h"

#include "api/ApiCall.h"
#include "api/InfoOutput.h"
#include "api/InfoTable.h"
#include "api/ProcessState.h"
#include "api/arguments.h"
#include "api/producer_info.h"

// Library functions: GCInitLib, GCCloseLib, GCGetInfo, GCGetLastError.

namespace GenTL {

using namespace zvgentl;

namespace {

/// What only GCGetInfo answers.
constexpr InfoRow<> standard_version_info[] = {
    {TL_INFO_GENTL_VER_MAJOR, [] { return InfoValue::uint32(GenTLMajorVersion); }},
    {TL_INFO_GENTL_VER_MINOR, [] { return InfoValue::uint32(GenTLMinorVersion); }},
};

} // namespace

GC_API GCInitLib(void)
try {
    const ApiCall call{"GCInitLib"};
    call.log(At{589}, "Enter GCInitLib");
    if (!set_initialised())
        return call.fail(At{592}, GC_ERR_RESOURCE_IN_USE);
    return call.succeed(At{594}, "Exit GCInitLib");
} catch (...) {
    return after_exception("GCInitLib");
}

GC_API GCCloseLib(void)
try {
    const ApiCall call{"GCCloseLib"};
    call.log(At{605}, "Enter GCCloseLib");
    if (!call.library_is_open(At{607}))
        return GC_ERR_NOT_INITIALIZED;
    TLClose(current_system()); // fails when no system is open, which is not an error here
    set_uninitialised();
    return call.succeed(At{611}, "Exit GCCloseLib");
} catch (...) {
    return after_exception("GCCloseLib");
}

GC_API GCGetInfo(TL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
try {
    const ApiCall call{"GCGetInfo"};
    call.log(At{620}, "Enter GCGetInfo, info= %d", iInfoCmd);
    if (!call.library_is_open(At{622}))
        return GC_ERR_NOT_INITIALIZED;
    const InfoOutput output{piType, pBuffer, piSize};
    if (output.is_malformed())
        return call.fail(At{626}, GC_ERR_INVALID_PARAMETER);

    const auto* row = find_producer_info(iInfoCmd);
    if (row == nullptr)
        row = find_row(standard_version_info, iInfoCmd);
    if (row == nullptr) {
        *piSize = 0;
        call.log_error(At{634}, "info=%d", iInfoCmd); // Contract: no blank, unlike every other query.
        return call.fail(At{635}, GC_ERR_NOT_IMPLEMENTED);
    }
    const InfoValue value = row->value();
    if (iInfoCmd == TL_INFO_TLTYPE)
        call.log_info(At{639}, "GCGetInfo - TL Type=%s", value.text().c_str());
    const GC_ERROR error = output.write(value, call, iInfoCmd, NumberLog::too_small);
    return error != GC_ERR_SUCCESS ? error : call.succeed(At{641}, "Exit GCGetInfo, info= %d", iInfoCmd);
} catch (...) {
    return after_exception("GCGetInfo");
}

GC_API GCGetLastError(GC_ERROR* piErrorCode, char* sErrText, size_t* piSize)
try {
    const ApiCall call{"GCGetLastError", Priority::debug};
    call.log(At{650}, "Enter GCGetLastError");
    if (!call.library_is_open(At{652}))
        return GC_ERR_NOT_INITIALIZED;
    // Contract: the error code is asked for and never written. Pinned by GCGetLastError.NeverWritesTheCode.
    if (is_missing(piErrorCode) || is_missing(piSize))
        return GC_ERR_INVALID_PARAMETER;

    const std::string text = last_error(); // one copy: another thread may record an error meanwhile
    const size_t needed = text.size() + 1;
    if (!is_missing(sErrText)) {
        if (needed > *piSize) {
            *piSize = needed;
            return GC_ERR_BUFFER_TOO_SMALL;
        }
        std::memcpy(sErrText, text.c_str(), needed);
    }
    *piSize = needed;
    return call.succeed(At{668}, "Exit GCGetLastError");
} catch (...) {
    return after_exception("GCGetLastError");
}

} // namespace GenTL
