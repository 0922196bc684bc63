#include <string>

#include "GenTL/GenTL.h"

#include "api/ApiCall.h"
#include "api/InfoOutput.h"
#include "api/arguments.h"
#include "api/handle_checks.h"
#include "api/module_info.h"
#include "log/Log.h"
#include "log/ScopeTimer.h"
#include "modules/CameraModule.h"
#include "modules/CameraScan.h"
#include "modules/DeviceModule.h"
#include "modules/InterfaceModule.h"
#include "modules/SystemModule.h"
#include "modules/grabber_info.h"

namespace GenTL {

using namespace zvgentl;

GC_API IFUpdateDeviceList(IF_HANDLE hIface, bool8_t* pbChanged, uint64_t /*iTimeout*/)
try {
    const ScopeTimer timer{api_logger, "IFUpdateDeviceList", At{2162}, Priority::information};
    const ApiCall call{"IFUpdateDeviceList"};
    call.log(At{2165}, "Enter IFUpdateDeviceList");
    if (!call.library_is_open(At{2167}))
        return GC_ERR_NOT_INITIALIZED;
    const auto iface = check_interface_handle(hIface, call, Open::required);
    if (!iface)
        return iface.error();
    if (!is_missing(pbChanged))
        *pbChanged = 0;

    CameraScan scan;
    if (!scan.find_cameras(iface->get_GrabberHandle())) {
        call.record_error(At{2176}, "IFUpdateDeviceList - GC_ERR_ERROR: wasn't able to scan for cameras");
        return call.fail(At{2177}, GC_ERR_ERROR);
    }
    // Contract: only the number counts. Pinned by IFUpdateDeviceList.ComparesOnlyTheNumber.
    if (scan.count() == iface->get_CameraAmount())
        return call.succeed(At{2181}, "Number of detected cameras hasn't changed");
    call.log_info(At{2182}, "detectedCameras = %d", static_cast<int>(scan.count()));
    call.log_info(At{2183}, "get_CameraAmount = %d", static_cast<int>(iface->get_CameraAmount()));
    if (!scan.read_identities()) {
        call.record_error(At{2185},
                          "IFUpdateDeviceList - GC_ERR_NOT_AVAILABLE: wasn't able to get camera info");
        return call.fail(At{2186}, GC_ERR_NOT_AVAILABLE);
    }
    if (iface->init_Cameras(scan) != scan.count()) {
        call.record_error(At{2189}, "IFUpdateDeviceList - GC_ERR_ERROR: wasn't able initiate camera module");
        return call.fail(At{2190}, GC_ERR_ERROR);
    }
    if (!is_missing(pbChanged))
        *pbChanged = 1;
    return call.succeed(At{2194}, "Exit IFUpdateDeviceList, cameras found=%d",
                        static_cast<int>(scan.count()));
} catch (...) {
    return after_exception("IFUpdateDeviceList");
}

GC_API IFGetNumDevices(IF_HANDLE hIface, uint32_t* piNumDevices)
try {
    const ApiCall call{"IFGetNumDevices"};
    call.log(At{2240}, "Enter IFGetNumDevices");
    if (!call.library_is_open(At{2242}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(piNumDevices)) // before the handle, and without a log line
        return GC_ERR_INVALID_PARAMETER;
    const auto iface = check_interface_handle(hIface, call, Open::required);
    if (!iface)
        return iface.error();

    *piNumDevices = static_cast<uint32_t>(iface->get_CameraAmount());
    return call.succeed(At{2251}, "Exit IFGetNumDevices, camera amount=%d", static_cast<int>(*piNumDevices));
} catch (...) {
    return after_exception("IFGetNumDevices");
}

GC_API IFGetDeviceID(IF_HANDLE hIface, uint32_t iIndex, char* sIDBuffer, size_t* piSize)
try {
    const ApiCall call{"IFGetDeviceID"};
    call.log(At{2260}, "Enter IFGetDeviceID, handle=0x%016llX, index=%d, size=%d", address(hIface),
             static_cast<int>(iIndex), logged_size(piSize));
    if (!call.library_is_open(At{2263}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(piSize)) { // before the handle
        call.record_error(At{2266}, "GC_ERR_INVALID_PARAMETER: piSize invalid parameter");
        return call.fail(At{2267}, GC_ERR_INVALID_PARAMETER);
    }
    const auto iface = check_interface_handle(hIface, call, Open::required);
    if (!iface)
        return iface.error();

    const DeviceModule* const device = iface->get_Device(iIndex);
    if (device == nullptr) {
        call.record_error(At{2275}, "GC_ERR_INVALID_INDEX: invalid device index " + std::to_string(iIndex));
        return call.fail(At{2276}, GC_ERR_INVALID_INDEX);
    }
    const std::string id = device->getId();
    const IdCopy copy = copy_id(id, sIDBuffer, piSize);
    if (copy == IdCopy::too_small) {
        call.record_error(At{2281},
                          "GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold Camera Id data");
        return call.fail(At{2282}, GC_ERR_BUFFER_TOO_SMALL);
    }
    if (copy == IdCopy::copied)
        call.log_info(At{2285}, "New camera id was filled=%s", id.c_str());
    return call.succeed(At{2286}, "Exit IFGetDeviceID, size=%d, Device ID=%s", logged_size(piSize),
                        id.c_str());
} catch (...) {
    return after_exception("IFGetDeviceID");
}

GC_API IFClose(IF_HANDLE hIface)
try {
    const ApiCall call{"IFClose"};
    call.log(At{2300}, "Enter IFClose");
    if (!call.library_is_open(At{2302}))
        return GC_ERR_NOT_INITIALIZED;
    const auto iface = check_interface_handle(hIface, call, Open::irrelevant);
    if (!iface)
        return iface.error();

    // Contract: the library is called before the open flag is looked at, so a second close passes a stale
    // handle. Pinned by IFClose.CallsTheLibraryBeforeItLooksAtTheFlag.
    const uint32_t status = iface->close_Grabber();
    if (!succeeded(status))
        log_warning(api_logger, "IFClose", At{2311}, "ZVGR_Close return error = %u", status);
    if (!iface->is_Open()) {
        call.log_error(At{2313}, "Interface 0x%016llX already closed", address(hIface));
        return call.fail(At{2314}, GC_ERR_INVALID_HANDLE);
    }
    iface->mark_closed_with_cameras();
    return call.succeed(At{2317}, "Exit IFClose");
} catch (...) {
    return after_exception("IFClose");
}

GC_API IFGetParentTL(IF_HANDLE hIface, TL_HANDLE* phSystem)
try {
    const ApiCall call{"IFGetParentTL"};
    call.log(At{2330}, "Enter IFGetParentTL");
    if (!call.library_is_open(At{2332}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(phSystem)) // before the handle, and without a log line
        return GC_ERR_INVALID_PARAMETER;
    const auto iface = check_interface_handle(hIface, call, Open::required);
    if (!iface)
        return iface.error();

    *phSystem = &iface->get_Parent();
    return call.succeed(At{2341}, "Exit IFGetParentTL");
} catch (...) {
    return after_exception("IFGetParentTL");
}

GC_API IFOpenDevice(IF_HANDLE hIface, const char* sDeviceID, DEVICE_ACCESS_FLAGS iOpenFlag,
                    DEV_HANDLE* phDevice)
try {
    const ScopeTimer timer{api_logger, "IFOpenDevice", At{2386}, Priority::information};
    const ApiCall call{"IFOpenDevice"};
    call.log(At{2388}, "Enter IFOpenDevice handle = 0x%016llX, flags=0x%X", address(hIface),
             static_cast<unsigned>(iOpenFlag)); // the flags are only logged: every open is the same
    if (!call.library_is_open(At{2390}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(phDevice) || is_missing(sDeviceID))
        return call.fail(At{2393}, GC_ERR_INVALID_PARAMETER);
    const auto iface = check_interface_handle(hIface, call, Open::required);
    if (!iface)
        return iface.error();

    DeviceModule* const device = iface->find_Device(sDeviceID);
    if (device == nullptr) {
        call.record_error(At{2400},
                          std::string("IFOpenDevice - GC_ERR_INVALID_ID: Invalid device Id ") + sDeviceID);
        return call.fail(At{2401}, GC_ERR_INVALID_ID);
    }
    CameraModule& camera = *device->get_Camera();
    if (camera.is_Open()) {
        // Contract: usable, together with the error. Pinned by IFOpenDevice.GivesTheOpenOne.
        *phDevice = device;
        call.record_error(At{2406}, "IFOpenDevice - GC_ERR_RESOURCE_IN_USE: camera is already opened");
        return call.fail(At{2407}, GC_ERR_RESOURCE_IN_USE);
    }
    const int32_t index = iface->get_CameraIndex(&camera);
    const uint32_t status = camera.open_Camera();
    if (!succeeded(status)) {
        call.record_error(At{2412}, "IFOpenDevice - GC_ERR_ACCESS_DENIED, ZVGR_CameraOpen failed: error " +
                                        std::to_string(static_cast<int32_t>(status)) +
                                        ", device id=" + std::to_string(index));
        return call.fail(At{2415}, GC_ERR_ACCESS_DENIED);
    }
    camera.mark_open();
    *phDevice = device;
    return call.succeed(At{2419}, "Exit IFOpenDevice, camera id=%d, deviceHandle=0x%016llX", index,
                        address(device));
} catch (...) {
    return after_exception("IFOpenDevice");
}

GC_API IFGetInfo(IF_HANDLE hIface, INTERFACE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                 size_t* piSize)
try {
    const ApiCall call{"IFGetInfo"};
    call.log(At{2430}, "Enter IFGetInfo info= %d ", iInfoCmd);
    if (!call.library_is_open(At{2432}))
        return GC_ERR_NOT_INITIALIZED;
    const InfoOutput output{piType, pBuffer, piSize};
    if (output.is_malformed())
        return call.fail(At{2436}, GC_ERR_INVALID_PARAMETER);
    const auto iface = check_interface_handle(hIface, call, Open::required);
    if (!iface)
        return iface.error();

    const auto* const row = find_interface_info(iInfoCmd);
    if (row == nullptr)
        return output.refuse(call, At{2443}, At{2444}, iInfoCmd);
    const GC_ERROR error = output.write(row->value(*iface), call, iInfoCmd, NumberLog::silent);
    if (error != GC_ERR_SUCCESS)
        return error;
    return call.succeed(At{2448}, "Exit IFGetInfo fgHandle=%X, info= %d ", iface->get_GrabberHandle(),
                        iInfoCmd);
} catch (...) {
    return after_exception("IFGetInfo");
}

GC_API IFGetDeviceInfo(IF_HANDLE hIface, const char* sDeviceID, DEVICE_INFO_CMD iInfoCmd,
                       INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
try {
    const ApiCall call{"IFGetDeviceInfo"};
    call.log(At{2460}, "Enter IFGetDeviceInfo handle=0x%016llX, info=%d ", address(hIface), iInfoCmd);
    if (!call.library_is_open(At{2462}))
        return GC_ERR_NOT_INITIALIZED;
    const InfoOutput output{piType, pBuffer, piSize};
    if (is_missing(sDeviceID) || output.is_malformed())
        return call.fail(At{2466}, GC_ERR_INVALID_PARAMETER);
    const auto iface = check_interface_handle(hIface, call, Open::required);
    if (!iface)
        return iface.error();

    const DeviceModule* const device = iface->find_Device(sDeviceID); // which need not be open
    if (device == nullptr) {
        call.log_error(At{2473}, "Invalid device Id %s", sDeviceID);
        return call.fail(At{2474}, GC_ERR_INVALID_ID);
    }
    const auto* const row = find_device_info(iInfoCmd);
    if (row == nullptr)
        return output.refuse(call, At{2478}, At{2479}, iInfoCmd);
    const GC_ERROR error = output.write(row->value(*device), call, iInfoCmd, NumberLog::too_small);
    if (error != GC_ERR_SUCCESS)
        return error;
    return call.succeed(At{2483}, "Exit IFGetDeviceInfo, device id=%d, info= %d ",
                        iface->get_CameraIndex(device->get_Camera()), iInfoCmd);
} catch (...) {
    return after_exception("IFGetDeviceInfo");
}

} // namespace GenTL
