// Port functions: GC*Port*. Arguments and handles are checked; access itself is not implemented yet.

#include <algorithm>
#include <cstring>

#include "GenTL/GenTL.h"

#include "api/ApiCall.h"
#include "api/InfoOutput.h"
#include "api/ProcessState.h"
#include "api/arguments.h"
#include "api/handle_checks.h"
#include "log/text.h"
#include "log/unit_loggers.h"

namespace GenTL {

using namespace zvgentl;

namespace {

/// The first four bytes of register data, read as big-endian; bytes beyond the data count as 0.
int data_word(const void* data, size_t size)
{
    unsigned char bytes[4] = {};
    std::memcpy(bytes, data, std::min(size, sizeof bytes));
    return static_cast<int>(static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16 |
                            static_cast<uint32_t>(bytes[2]) << 8 | static_cast<uint32_t>(bytes[3]));
}

bool is_no_handle(PORT_HANDLE handle) { return current_system() == nullptr || handle == nullptr; }

bool is_port(PORT_HANDLE handle) { return get_handle_type(handle) != ModuleKind::invalid; }

} // namespace

GC_API GCReadPort(PORT_HANDLE hPort, uint64_t iAddress, void* pBuffer, size_t* piSize)
try {
    const ApiCall call{"GCReadPort", Priority::trace};
    call.log(At{700}, "Enter with handle=0x%016llX, address=0x%llx", address(hPort),
             static_cast<unsigned long long>(iAddress));
    if (!call.library_is_open(At{702}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_no_handle(hPort)) // without a log line
        return GC_ERR_INVALID_HANDLE;
    if (is_missing(pBuffer) || is_missing(piSize))
        return call.fail(At{706}, GC_ERR_INVALID_PARAMETER);
    if (!is_port(hPort)) {
        log_debug(api_logger, "GCReadPort", At{708}, "GC_ERR_INVALID_HANDLE");
        return GC_ERR_INVALID_HANDLE;
    }
    return call.fail(At{711}, GC_ERR_NOT_IMPLEMENTED);
} catch (...) {
    return after_exception("GCReadPort");
}

GC_API GCWritePort(PORT_HANDLE hPort, uint64_t iAddress, const void* pBuffer, size_t* piSize)
try {
    const ApiCall call{"GCWritePort", Priority::trace};
    // Contract: before the enter line and the initialisation guard. Pinned by
    // GCWritePort.ChecksPointersFirst.
    if (is_missing(piSize) || is_missing(pBuffer))
        return call.fail(At{730}, GC_ERR_INVALID_PARAMETER);
    if (is_logged(api_logger, Priority::trace))
        call.log(At{732}, "Enter with handle=0x%016llX, address=0x%X, size=%d, data=%d", address(hPort),
                 static_cast<unsigned>(iAddress), logged_size(piSize), data_word(pBuffer, *piSize));
    if (!call.library_is_open(At{734}))
        return GC_ERR_NOT_INITIALIZED;
    if (iAddress > UINT32_MAX) // without a log line
        return GC_ERR_INVALID_ADDRESS;
    if (!is_port(hPort)) {
        call.log_error(At{739}, "GCWritePort - GC_ERR_INVALID_HANDLE");
        return call.fail(At{740}, GC_ERR_INVALID_HANDLE);
    }
    return call.fail(At{742}, GC_ERR_NOT_IMPLEMENTED);
} catch (...) {
    return after_exception("GCWritePort");
}

GC_API GCReadPortStacked(PORT_HANDLE hPort, PORT_REGISTER_STACK_ENTRY* pEntries, size_t* piNumEntries)
try {
    const ApiCall call{"GCReadPortStacked", Priority::debug};
    call.log(At{760}, "Enter GCReadPortStacked");
    if (!call.library_is_open(At{762}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(pEntries) || is_missing(piNumEntries)) // without a log line
        return GC_ERR_INVALID_PARAMETER;
    if (!is_port(hPort)) {
        call.log_error(At{767}, "GCReadPortStacked - GC_ERR_INVALID_HANDLE");
        return GC_ERR_INVALID_HANDLE;
    }
    return call.fail(At{770}, GC_ERR_NOT_IMPLEMENTED);
} catch (...) {
    return after_exception("GCReadPortStacked");
}

GC_API GCWritePortStacked(PORT_HANDLE hPort, PORT_REGISTER_STACK_ENTRY* pEntries, size_t* piNumEntries)
try {
    const ApiCall call{"GCWritePortStacked", Priority::debug};
    call.log(At{790}, "Enter GCWritePortStacked");
    if (!call.library_is_open(At{792}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_no_handle(hPort)) // Contract: unlike the stacked read; without a log line, as the next
        return GC_ERR_INVALID_HANDLE;
    if (is_missing(pEntries) || is_missing(piNumEntries))
        return GC_ERR_INVALID_PARAMETER;
    if (!is_port(hPort)) {
        call.log_error(At{799}, "GCWritePortStacked - GC_ERR_INVALID_HANDLE");
        return GC_ERR_INVALID_HANDLE;
    }
    return call.fail(At{802}, GC_ERR_NOT_IMPLEMENTED);
} catch (...) {
    return after_exception("GCWritePortStacked");
}

GC_API GCGetPortURL(PORT_HANDLE hPort, char* /*sURL*/, size_t* piSize)
try {
    const ApiCall call{"GCGetPortURL"};
    call.log(At{820}, "Enter GCGetPortURL, port handle=0x%016llX", address(hPort));
    if (!call.library_is_open(At{822}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(piSize))
        return call.fail(At{825}, GC_ERR_INVALID_PARAMETER);
    if (!is_port(hPort)) {
        call.log_error(At{827}, "case %s: GC_ERR_NOT_IMPLEMENTED", handle_type_name(ModuleKind::invalid));
        return GC_ERR_NOT_IMPLEMENTED;
    }
    return call.fail(At{830}, GC_ERR_NOT_IMPLEMENTED);
} catch (...) {
    return after_exception("GCGetPortURL");
}

GC_API GCGetNumPortURLs(PORT_HANDLE hPort, uint32_t* piNumURLs)
try {
    const ApiCall call{"GCGetNumPortURLs"};
    call.log(At{850}, "Enter GCGetNumPortURLs, handle=0x%016llX", address(hPort));
    if (!call.library_is_open(At{852}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(piNumURLs)) // without a log line
        return GC_ERR_INVALID_PARAMETER;
    const ModuleKind kind = get_handle_type(hPort);
    call.log_info(At{857}, "Get URL count for device type %s", handle_type_name(kind));
    if (kind == ModuleKind::invalid) {
        *piNumURLs = 0;
        call.log_error(At{860}, "case %s: GC_ERR_NOT_IMPLEMENTED", handle_type_name(kind));
    }
    return call.fail(At{862}, GC_ERR_NOT_IMPLEMENTED);
} catch (...) {
    return after_exception("GCGetNumPortURLs");
}

GC_API GCGetPortURLInfo(PORT_HANDLE hPort, uint32_t iURLIndex, URL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                        void* pBuffer, size_t* piSize)
try {
    const ApiCall call{"GCGetPortURLInfo"};
    call.log(At{880}, "Enter GCGetPortURLInfo, handle=0x%016llX, URL index=%d, info=%d, size=%d",
             address(hPort), static_cast<int>(iURLIndex), iInfoCmd, logged_size(piSize));
    if (!call.library_is_open(At{882}))
        return GC_ERR_NOT_INITIALIZED;
    const InfoOutput output{piType, pBuffer, piSize};
    if (output.is_malformed())
        return call.fail(At{885}, GC_ERR_INVALID_PARAMETER);
    if (iURLIndex != 0) {
        // Contract: the text names another code than the one returned. Pinned by
        // GCGetPortURLInfo.RefusesOtherUrls.
        call.log_error(At{888}, "GCGetPortURLInfo [GC_ERR_INVALID_PARAMETER]: Invalid URL index=%d",
                       static_cast<int>(iURLIndex));
        return GC_ERR_INVALID_INDEX;
    }
    const ModuleKind kind = get_handle_type(hPort);
    call.log_info(At{893}, "Get URL info for device type %s", handle_type_name(kind));
    if (kind == ModuleKind::invalid)
        call.log_error(At{895}, "case %s: GC_ERR_NOT_IMPLEMENTED", handle_type_name(kind));
    return call.fail(At{896}, GC_ERR_NOT_IMPLEMENTED);
} catch (...) {
    return after_exception("GCGetPortURLInfo");
}

GC_API GCGetPortInfo(PORT_HANDLE hPort, PORT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                     size_t* piSize)
try {
    const ApiCall call{"GCGetPortInfo"};
    call.log(At{910}, "Enter GCGetPortInfo, info=%d, buffer size=%d", iInfoCmd, logged_size(piSize));
    if (!call.library_is_open(At{912}))
        return GC_ERR_NOT_INITIALIZED;
    const InfoOutput output{piType, pBuffer, piSize};
    if (output.is_malformed())
        return call.fail(At{915}, GC_ERR_INVALID_PARAMETER);
    if (!is_port(hPort)) // without a log line
        return GC_ERR_INVALID_HANDLE;
    return call.fail(At{918}, GC_ERR_NOT_IMPLEMENTED);
} catch (...) {
    return after_exception("GCGetPortInfo");
}

} // namespace GenTL
