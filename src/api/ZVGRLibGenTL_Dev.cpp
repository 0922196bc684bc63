#include <string>

#include "GenTL/GenTL.h"

#include "api/ApiCall.h"
#include "api/InfoOutput.h"
#include "api/arguments.h"
#include "api/handle_checks.h"
#include "api/module_info.h"
#include "log/Log.h"
#include "modules/CameraModule.h"
#include "modules/DeviceModule.h"
#include "modules/InterfaceModule.h"
#include "modules/StreamModule.h"
#include "modules/grabber_info.h"

namespace GenTL {

using namespace zvgentl;

namespace {

/// The index of the camera's stream with exactly this ID, or -1.
int32_t find_stream_index(const CameraModule& camera, const std::string& id)
{
    const auto amount = static_cast<int32_t>(camera.get_StreamAmount());
    for (int32_t i = 0; i < amount; ++i) {
        if (camera.get_Stream(i)->getId() == id)
            return i;
    }
    return -1;
}

} // namespace

GC_API DevGetPort(DEV_HANDLE hDevice, PORT_HANDLE* phRemoteDevice)
try {
    const ApiCall call{"DevGetPort"};
    call.log(At{2510}, "Enter DevGetPort, handle=0x%016llX", address(hDevice));
    if (!call.library_is_open(At{2512}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(phRemoteDevice)) // before the handle, and without a log line
        return GC_ERR_INVALID_PARAMETER;
    const auto device = check_device_handle(hDevice, call, Open::required);
    if (!device)
        return device.error();

    *phRemoteDevice = device->get_Camera();
    return call.succeed(At{2521}, "Exit DevGetPort, remote port handle=0x%016llX", address(*phRemoteDevice));
} catch (...) {
    return after_exception("DevGetPort");
}

GC_API DevClose(DEV_HANDLE hDevice)
try {
    const ApiCall call{"DevClose"};
    call.log(At{2540}, "Enter DevClose");
    if (!call.library_is_open(At{2542}))
        return GC_ERR_NOT_INITIALIZED;
    const auto device = check_device_handle(hDevice, call, Open::required);
    if (!device)
        return device.error();

    CameraModule& camera = *device->get_Camera();
    if (!succeeded(camera.close_Camera())) {
        // Contract: as information, without a last error or an exit line. Pinned by DevClose.FailsQuietly.
        call.log_info(At{2551}, "DevClose - GC_ERR_ERROR, ZVGR_CameraClose failed");
        return GC_ERR_ERROR;
    }
    camera.mark_closed_and_wipe();
    return call.succeed(At{2555}, "Exit DevClose");
} catch (...) {
    return after_exception("DevClose");
}

GC_API DevGetParentIF(DEV_HANDLE hDevice, IF_HANDLE* phIface)
try {
    const ApiCall call{"DevGetParentIF"};
    call.log(At{2570}, "Enter DevGetParentIF");
    if (!call.library_is_open(At{2572}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(phIface)) // before the handle, and without a log line
        return GC_ERR_INVALID_PARAMETER;
    const auto device = check_device_handle(hDevice, call, Open::required);
    if (!device)
        return device.error();

    *phIface = device->get_Parent();
    return call.succeed(At{2581}, "Exit DevGetParentIF");
} catch (...) {
    return after_exception("DevGetParentIF");
}

GC_API DevGetNumDataStreams(DEV_HANDLE hDevice, uint32_t* piNumDataStreams)
try {
    const ApiCall call{"DevGetNumDataStreams"};
    call.log(At{2600}, "Enter DevGetNumDataStreams, handle=0x%016llX", address(hDevice));
    if (!call.library_is_open(At{2602}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(piNumDataStreams)) // before the handle, and without a log line
        return GC_ERR_INVALID_PARAMETER;
    const auto device = check_device_handle(hDevice, call, Open::required);
    if (!device)
        return device.error();

    *piNumDataStreams = device->get_Camera()->get_StreamAmount();
    return call.succeed(At{2611}, "Exit DevGetNumDataStreams, stream amount=%d",
                        static_cast<int>(*piNumDataStreams));
} catch (...) {
    return after_exception("DevGetNumDataStreams");
}

GC_API DevGetDataStreamID(DEV_HANDLE hDevice, uint32_t iIndex, char* sIDBuffer, size_t* piSize)
try {
    const ApiCall call{"DevGetDataStreamID"};
    call.log(At{2630}, "Enter DevGetDataStreamID, handle=0x%016llX, index=%d, size=%d", address(hDevice),
             static_cast<int>(iIndex), logged_size(piSize));
    if (!call.library_is_open(At{2633}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(piSize)) // before the handle, and without a log line
        return GC_ERR_INVALID_PARAMETER;
    const auto device = check_device_handle(hDevice, call, Open::required);
    if (!device)
        return device.error();

    const StreamModule* const stream = device->get_Camera()->get_Stream(static_cast<int32_t>(iIndex));
    if (stream == nullptr) {
        call.record_error(At{2643}, "Invalid stream index " + std::to_string(iIndex));
        return call.fail(At{2644}, GC_ERR_INVALID_INDEX);
    }
    const std::string id = stream->getId();
    const IdCopy copy = copy_id(id, sIDBuffer, piSize);
    if (copy == IdCopy::too_small) {
        call.record_error(At{2649},
                          "GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold stream Id data");
        return call.fail(At{2650}, GC_ERR_BUFFER_TOO_SMALL);
    }
    if (copy == IdCopy::copied)
        call.log_info(At{2653}, "New streams id was filled=%s", id.c_str());
    // Contract: the line says "Device ID" of a stream's ID.
    return call.succeed(At{2655}, "Exit DevGetDataStreamID, size=%d, Device ID=%s", logged_size(piSize),
                        id.c_str());
} catch (...) {
    return after_exception("DevGetDataStreamID");
}

GC_API DevOpenDataStream(DEV_HANDLE hDevice, const char* sDataStreamID, DS_HANDLE* phDataStream)
try {
    const ApiCall call{"DevOpenDataStream"};
    call.log(At{2670}, "Enter DevOpenDataStream, sDataStreamID=%s",
             is_missing(sDataStreamID) ? "" : sDataStreamID);
    if (!call.library_is_open(At{2672}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(sDataStreamID) || is_missing(phDataStream))
        return call.fail(At{2675}, GC_ERR_INVALID_PARAMETER);
    const auto device = check_device_handle(hDevice, call, Open::required);
    if (!device)
        return device.error();

    CameraModule& camera = *device->get_Camera();
    const int32_t index = find_stream_index(camera, sDataStreamID);
    if (index == -1) {
        call.log_error(At{2683}, "Invalid stream Id %s", sDataStreamID);
        return call.fail(At{2684}, GC_ERR_INVALID_ID);
    }
    StreamModule* const stream = camera.get_Stream(index);
    if (stream->is_Open()) {
        *phDataStream = stream;
        return call.succeed(At{2689}, "DevOpenDataStream - GC_ERR_SUCCESS, already open, stream id=%d",
                            index);
    }
    if (!camera.open_Stream(static_cast<uint32_t>(index))) {
        call.log_error(At{2692}, "wasn't able to allocate buffer"); // Contract: whichever mode failed
        return call.fail(At{2693}, GC_ERR_NOT_AVAILABLE);
    }
    *phDataStream = stream;
    return call.succeed(At{2696}, "Exit DevOpenDataStream, streamId=%d streamHandle=0x%016llX", index,
                        address(stream));
} catch (...) {
    return after_exception("DevOpenDataStream");
}

GC_API DevGetInfo(DEV_HANDLE hDevice, DEVICE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                  size_t* piSize)
try {
    const ApiCall call{"DevGetInfo"};
    call.log(At{2710}, "Enter DevGetInfo, handle=0x%016llX info= %d ", address(hDevice), iInfoCmd);
    if (!call.library_is_open(At{2712}))
        return GC_ERR_NOT_INITIALIZED;
    const InfoOutput output{piType, pBuffer, piSize};
    if (output.is_malformed())
        return call.fail(At{2716}, GC_ERR_INVALID_PARAMETER);
    const auto device = check_device_handle(hDevice, call, Open::required);
    if (!device)
        return device.error();

    const auto* const row = find_device_info(iInfoCmd);
    if (row == nullptr)
        return output.refuse(call, At{2723}, At{2724}, iInfoCmd);
    const GC_ERROR error = output.write(row->value(*device), call, iInfoCmd, NumberLog::too_small);
    return error != GC_ERR_SUCCESS ? error : call.succeed(At{2726}, "Exit DevGetInfo");
} catch (...) {
    return after_exception("DevGetInfo");
}

} // namespace GenTL
