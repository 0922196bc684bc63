#include <memory>
#include <new>
#include <string>
#include <utility>

#include "GenTL/GenTL.h"

#include "api/ApiCall.h"
#include "api/InfoOutput.h"
#include "api/ProcessState.h"
#include "api/arguments.h"
#include "api/handle_checks.h"
#include "api/module_info.h"
#include "api/producer_info.h"
#include "log/Log.h"
#include "log/ScopeTimer.h"
#include "modules/InterfaceModule.h"
#include "modules/SystemModule.h"
#include "modules/grabber_info.h"

namespace GenTL {

using namespace zvgentl;

namespace {

/// The system behind a checked handle, with a list of interfaces if there are any: a client need not update
/// it first.
SystemModule& system_with_list(TL_HANDLE handle)
{
    constexpr uint64_t timeout = 200;
    SystemModule& system = *current_system();
    bool8_t is_changed = 0;
    if (system.get_InterfaceCount() <= 0)
        TLUpdateInterfaceList(handle, &is_changed, timeout); // without a list the caller finds no interface
    return system;
}

} // namespace

GC_API TLOpen(TL_HANDLE* phSystem)
try {
    const ApiCall call{"TLOpen"};
    call.log(At{1504}, "Enter TLOpen");
    if (!call.library_is_open(At{1506}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(phSystem)) // without a log line, as the next
        return GC_ERR_INVALID_PARAMETER;
    if (current_system() != nullptr)
        return GC_ERR_RESOURCE_IN_USE;

    std::unique_ptr<SystemModule> system(new (std::nothrow) SystemModule);
    SystemModule* const handle = system.get();
    if (handle == nullptr) {
        *phSystem = nullptr;
        return call.fail(At{1517}, GC_ERR_ERROR);
    }
    if (!set_system(std::move(system))) // another thread was faster
        return GC_ERR_RESOURCE_IN_USE;
    *phSystem = handle;
    return call.succeed(At{1522}, "Exit TLOpen, systemHandle= 0x%016llX", address(handle));
} catch (...) {
    return after_exception("TLOpen");
}

GC_API TLClose(TL_HANDLE hSystem)
try {
    const ApiCall call{"TLClose"};
    call.log(At{1540}, "Enter TLClose");
    if (!call.library_is_open(At{1542}))
        return GC_ERR_NOT_INITIALIZED;
    std::unique_ptr<SystemModule> system = take_system(hSystem);
    if (!system) // without a log line
        return GC_ERR_INVALID_HANDLE;
    end_system(std::move(system));
    return call.succeed(At{1547}, "Exit TLClose");
} catch (...) {
    return after_exception("TLClose");
}

GC_API TLUpdateInterfaceList(TL_HANDLE hSystem, bool8_t* pbChanged, uint64_t /*iTimeout*/)
try {
    const ApiCall call{"TLUpdateInterfaceList"};
    call.log(At{1560}, "Enter TLUpdateInterfaceList");
    if (!call.library_is_open(At{1562}))
        return GC_ERR_NOT_INITIALIZED;
    if (!is_system(hSystem)) {
        constexpr const char* text = "TLUpdateInterfaceList - GC_ERR_INVALID_HANDLE: invalid system handle";
        set_last_error(text);
        call.log_info(At{1566}, "%s", text); // Contract: as information, and without an exit line
        return GC_ERR_INVALID_HANDLE;
    }

    SystemModule& system = *current_system();
    const int32_t found = scan_for_grabbers();
    call.log_info(At{1572}, "TLUpdateInterfaceList - Found %d Grabbers", found);
    // Contract: only the number counts. Pinned by TLUpdateInterfaceList.ComparesOnlyTheNumber.
    const bool is_changed = found != system.get_InterfaceCount();
    if (is_changed)
        system.init_Interfaces(found);
    if (!is_missing(pbChanged))
        *pbChanged = is_changed ? 1 : 0;
    if (is_changed)
        return call.succeed(At{1580}, "Exit TLUpdateInterfaceList");
    return call.succeed(At{1581},
                        "Exit TLUpdateInterfaceList - GC_ERR_SUCCESS, number of interfaces hasn't changed");
} catch (...) {
    return after_exception("TLUpdateInterfaceList");
}

GC_API TLGetNumInterfaces(TL_HANDLE hSystem, uint32_t* piNumIfaces)
try {
    const ApiCall call{"TLGetNumInterfaces"};
    call.log(At{1600}, "Enter TLGetNumInterfaces");
    if (!call.library_is_open(At{1602}))
        return GC_ERR_NOT_INITIALIZED;
    if (!is_system(hSystem)) // without a log line, as the next
        return GC_ERR_INVALID_HANDLE;
    if (is_missing(piNumIfaces))
        return GC_ERR_INVALID_PARAMETER;

    *piNumIfaces = static_cast<uint32_t>(system_with_list(hSystem).get_InterfaceCount());
    return call.succeed(At{1610}, "Exit TLGetNumInterfaces, amount=%d", static_cast<int>(*piNumIfaces));
} catch (...) {
    return after_exception("TLGetNumInterfaces");
}

GC_API TLGetInfo(TL_HANDLE hSystem, TL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                 size_t* piSize)
try {
    const ApiCall call{"TLGetInfo"};
    call.log(At{1620}, "Enter TLGetInfo, handle=0x%016llX, info=%d", address(hSystem), iInfoCmd);
    if (!call.library_is_open(At{1622}))
        return GC_ERR_NOT_INITIALIZED;
    if (!is_system(hSystem)) // without a log line
        return GC_ERR_INVALID_HANDLE;
    const InfoOutput output{piType, pBuffer, piSize};
    if (output.is_malformed())
        return call.fail(At{1628}, GC_ERR_INVALID_PARAMETER);

    const auto* const row = find_producer_info(iInfoCmd);
    if (row == nullptr)
        return output.refuse(call, At{1632}, At{1633}, iInfoCmd);
    const GC_ERROR error =
        output.write(row->value(), call, iInfoCmd, NumberLog::written); // silent when too small
    return error != GC_ERR_SUCCESS ? error : call.succeed(At{1637}, "Exit TLGetInfo");
} catch (...) {
    return after_exception("TLGetInfo");
}

GC_API TLGetInterfaceID(TL_HANDLE hSystem, uint32_t iIndex, char* sIfaceID, size_t* piSize)
try {
    const ApiCall call{"TLGetInterfaceID"};
    call.log(At{1660}, "Enter TLGetInterfaceID, handle=0x%016llX, index=%d, size=%d", address(hSystem),
             static_cast<int>(iIndex), logged_size(piSize));
    if (!call.library_is_open(At{1663}))
        return GC_ERR_NOT_INITIALIZED;
    if (!is_system(hSystem)) // without a log line
        return GC_ERR_INVALID_HANDLE;
    if (is_missing(piSize))
        return call.fail(At{1667}, GC_ERR_INVALID_PARAMETER);

    const InterfaceModule* const iface = system_with_list(hSystem).get_Interface(iIndex);
    if (iface == nullptr) {
        call.log_error(At{1671}, "Invalid inteface index %u", iIndex);
        return call.fail(At{1672}, GC_ERR_INVALID_INDEX);
    }
    const std::string id = iface->getId();
    const IdCopy copy = copy_id(id, sIfaceID, piSize);
    if (copy == IdCopy::too_small) {
        call.record_error(At{1678},
                          "GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold Interface Id data");
        return call.fail(At{1680}, GC_ERR_BUFFER_TOO_SMALL);
    }
    if (copy == IdCopy::copied)
        call.log_info(At{1683}, "New grabber id was filled=%s", id.c_str());
    return call.succeed(At{1685}, "Exit TLGetInterfaceID, size=%d, Interface ID=%s", logged_size(piSize),
                        id.c_str());
} catch (...) {
    return after_exception("TLGetInterfaceID");
}

GC_API TLOpenInterface(TL_HANDLE hSystem, const char* sIfaceID, IF_HANDLE* phIface)
try {
    const ScopeTimer timer{api_logger, "TLOpenInterface", At{1855}, Priority::information};
    const ApiCall call{"TLOpenInterface"};
    call.log(At{1860}, "Enter TLOpenInterface");
    if (!call.library_is_open(At{1862}))
        return GC_ERR_NOT_INITIALIZED;
    if (!is_system(hSystem)) // without a log line
        return GC_ERR_INVALID_HANDLE;
    if (is_missing(phIface) || is_missing(sIfaceID))
        return call.fail(At{1866}, GC_ERR_INVALID_PARAMETER);

    const SystemModule& system = system_with_list(hSystem);
    InterfaceModule* const iface = system.find_Interface(sIfaceID);
    if (iface == nullptr) {
        call.log_error(At{1871}, "Invalid grabber Id %s", sIfaceID);
        return call.fail(At{1872}, GC_ERR_INVALID_ID);
    }
    if (iface->is_Open()) {
        // Contract: usable, together with the error. Pinned by TLOpenInterface.GivesTheOpenOne.
        *phIface = iface;
        return call.fail(At{1876}, GC_ERR_RESOURCE_IN_USE);
    }
    if (!iface->open_Grabber()) {
        *phIface = nullptr;
        return call.fail(At{1880}, GC_ERR_ACCESS_DENIED);
    }
    *phIface = iface;
    return call.succeed(At{1883},
                        "Exit, Returning success GC_ERR_SUCCESS (0x%X), Exit TLOpenInterface, index=%d, "
                        "fgHandle=0x%X, interfaceHandle=0x%X",
                        static_cast<unsigned>(GC_ERR_SUCCESS), system.get_InterfaceIndex(iface),
                        iface->get_GrabberHandle(), low32(iface));
} catch (...) {
    return after_exception("TLOpenInterface");
}

GC_API TLGetInterfaceInfo(TL_HANDLE hSystem, const char* sIfaceID, INTERFACE_INFO_CMD iInfoCmd,
                          INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
try {
    const ApiCall call{"TLGetInterfaceInfo"};
    call.log(At{1900}, "Enter TLGetInterfaceInfo, hTL=0x%016llX, info=%d", address(hSystem), iInfoCmd);
    if (!call.library_is_open(At{1902}))
        return GC_ERR_NOT_INITIALIZED;
    if (!is_system(hSystem)) // without a log line
        return GC_ERR_INVALID_HANDLE;
    const InfoOutput output{piType, pBuffer, piSize};
    if (output.is_incomplete() || is_missing(sIfaceID)) // a buffer of size 0 is left to the string rule
        return call.fail(At{1908}, GC_ERR_INVALID_PARAMETER);

    const InterfaceModule* const iface = system_with_list(hSystem).find_Interface(sIfaceID);
    if (iface == nullptr) {
        call.log_error(At{1912}, "Invalid grabber Id %s", sIfaceID);
        return call.fail(At{1913}, GC_ERR_INVALID_ID);
    }
    const auto* const row = find_interface_info(iInfoCmd);
    if (row == nullptr)
        return output.refuse(call, At{1917}, At{1918}, iInfoCmd);
    const GC_ERROR error = output.write(row->value(*iface), call, iInfoCmd, NumberLog::silent);
    return error != GC_ERR_SUCCESS ? error : call.succeed(At{1920}, "Exit TLGetInterfaceInfo");
} catch (...) {
    return after_exception("TLGetInterfaceInfo");
}

} // namespace GenTL
