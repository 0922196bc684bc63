#include <algorithm>
#include <cstring>

#include "GenTL/GenTL.h"

#include "api/ApiCall.h"
#include "api/ProcessState.h"
#include "api/arguments.h"
#include "api/handle_checks.h"
#include "log/Log.h"
#include "port/Port.h"
#include "port/routing.h"

// Port functions that access registers: GC*Port and GC*PortStacked.

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

enum class Access { read, write };

bool transfer(const Port& port, Access access, const PORT_REGISTER_STACK_ENTRY& entry)
{
    auto size = static_cast<uint32_t>(entry.Size); // contract: what was transferred is not reported
    return access == Access::read ? read_registers(port, entry.Address, entry.pBuffer, &size)
                                  : write_registers(port, entry.Address, entry.pBuffer, &size);
}

/// What both stacked accesses do with a port that exists.
GC_ERROR transfer_stacked(const ApiCall& call, const Port& port, Access access,
                          const PORT_REGISTER_STACK_ENTRY* entries, size_t* count)
{
    const Route& route = route_of(port.kind());
    if (route.registers == Registers::of_module) {
        call.log_error(At{690}, "%s - GC_ERR_NOT_IMPLEMENTED", call.function());
        return GC_ERR_NOT_IMPLEMENTED;
    }
    if (!is_open(port)) {
        call.log_error(At{692}, "%s - GC_ERR_INVALID_HANDLE, %s is closed", call.function(), route.owner);
        return GC_ERR_INVALID_HANDLE;
    }
    if (*count == 0)
        return GC_ERR_SUCCESS;

    size_t done = 0;
    do {
        // Contract: the count of transfers overwrites the number of entries, so that only the first entry
        // moves. Pinned by StackedAccess.MovesOnlyTheFirstEntry.
        *count = done;
        if (!transfer(port, access, entries[done])) {
            const auto address_bits = static_cast<unsigned>(entries[done].Address);
            if (access == Access::read && port.kind() == ModuleKind::remote_device)
                call.log_info(At{694}, "%s - GC_ERR_ACCESS_DENIED, address=0x%X ", call.function(),
                              address_bits);
            else
                call.log_error(At{695}, "%s - GC_ERR_ACCESS_DENIED, address=0x%X ", call.function(),
                               address_bits);
            return GC_ERR_ACCESS_DENIED;
        }
        ++done;
    } while (done < *count);
    *count = done;
    return GC_ERR_SUCCESS;
}

/// Reads grabber or camera registers; `*size` becomes what the library has read.
GC_ERROR read_from_library(const Port& port, uint64_t iAddress, void* pBuffer, size_t* size)
{
    if (!is_open(port)) {
        log_debug(api_logger, "GCReadPort", At{697}, "GC_ERR_INVALID_HANDLE, %s is closed",
                  route_of(port.kind()).owner);
        return GC_ERR_INVALID_HANDLE;
    }
    auto transferred = static_cast<uint32_t>(*size);
    if (!read_registers(port, iAddress, pBuffer, &transferred)) {
        log_debug(api_logger, "GCReadPort", At{698}, "GC_ERR_ACCESS_DENIED");
        return GC_ERR_ACCESS_DENIED;
    }
    *size = transferred;
    return GC_ERR_SUCCESS;
}

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
    const Port port = find_port(hPort);
    if (!port) {
        log_debug(api_logger, "GCReadPort", At{708}, "GC_ERR_INVALID_HANDLE");
        return GC_ERR_INVALID_HANDLE;
    }

    const size_t asked = *piSize;
    const bool is_own = route_of(port.kind()).registers == Registers::of_module;
    const GC_ERROR error = is_own ? read_description(port, iAddress, pBuffer, piSize)
                                  : read_from_library(port, iAddress, pBuffer, piSize);
    if (error != GC_ERR_SUCCESS)
        return error;
    if (is_logged(api_logger, Priority::trace)) // for the data: a read may be of any size
        call.log(At{713}, "Exit GCReadPort, address=0x%X, size=%d, data=%d", static_cast<unsigned>(iAddress),
                 low32_signed(*piSize), data_word(pBuffer, std::min(asked, *piSize)));
    return GC_ERR_SUCCESS;
} catch (...) {
    return after_exception("GCReadPort");
}

GC_API GCWritePort(PORT_HANDLE hPort, uint64_t iAddress, const void* pBuffer, size_t* piSize)
try {
    const ApiCall call{"GCWritePort", Priority::trace};
    // Contract: before the enter line and the initialisation guard. Pinned by
    // GuardedArgument.IsNotReadBeforeGCInitLib.
    if (is_missing(piSize) || is_missing(pBuffer))
        return call.fail(At{730}, GC_ERR_INVALID_PARAMETER);
    if (is_logged(api_logger, Priority::trace))
        call.log(At{732}, "Enter with handle=0x%016llX, address=0x%X, size=%d, data=%d", address(hPort),
                 static_cast<unsigned>(iAddress), logged_size(piSize), data_word(pBuffer, *piSize));
    if (!call.library_is_open(At{734}))
        return GC_ERR_NOT_INITIALIZED;
    if (iAddress > UINT32_MAX) // without a log line
        return GC_ERR_INVALID_ADDRESS;
    const Port port = find_port(hPort);
    if (!port) {
        call.log_error(At{739}, "GCWritePort - GC_ERR_INVALID_HANDLE");
        return call.fail(At{740}, GC_ERR_INVALID_HANDLE);
    }
    if (route_of(port.kind()).registers == Registers::of_module) {
        *piSize = 0;
        return call.fail(At{742}, GC_ERR_NOT_IMPLEMENTED);
    }
    if (!is_open(port))
        return call.fail(At{744}, GC_ERR_INVALID_HANDLE);

    // Contract: the library is handed the consumer's own size, of which it knows the low half. Pinned by
    // WritingPorts.LeavesTheSizeToTheLibrary.
    if (!write_registers(port, iAddress, pBuffer, reinterpret_cast<uint32_t*>(piSize)))
        return call.fail(At{748}, GC_ERR_ACCESS_DENIED);
    return call.succeed(At{749}, "Exit GCWritePort, handle = 0x%X", low32(hPort));
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
    const Port port = find_port(hPort);
    if (!port) {
        call.log_error(At{767}, "GCReadPortStacked - GC_ERR_INVALID_HANDLE");
        return GC_ERR_INVALID_HANDLE;
    }
    const GC_ERROR error = transfer_stacked(call, port, Access::read, pEntries, piNumEntries);
    return error != GC_ERR_SUCCESS ? error : call.succeed(At{772}, "Exit GCReadPortStacked");
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
    const Port port = find_port(hPort);
    if (!port) {
        call.log_error(At{799}, "GCWritePortStacked - GC_ERR_INVALID_HANDLE");
        return GC_ERR_INVALID_HANDLE;
    }
    const GC_ERROR error = transfer_stacked(call, port, Access::write, pEntries, piNumEntries);
    return error != GC_ERR_SUCCESS ? error : call.succeed(At{804}, "Exit GCWritePortStacked");
} catch (...) {
    return after_exception("GCWritePortStacked");
}

} // namespace GenTL
