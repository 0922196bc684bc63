#include "simulator/faults/Function.h"

namespace zvsim {

namespace {

constexpr FunctionRow rows[] = {
    {"ZV_DeviceScan", ResultType::status, true, false},
    {"ZV_DeviceInfo", ResultType::status, true, false},
    {"ZV_DeviceDisplayName", ResultType::pointer, false, false},
    {"ZVGR_Open", ResultType::handle, false, false},
    {"ZVGR_Close", ResultType::status, false, true},
    {"ZVGR_UpdateCameraList", ResultType::status, true, false},
    {"ZVGR_CameraInfo2", ResultType::status, true, false},
    {"ZVGR_CameraOpen2", ResultType::status, false, false},
    {"ZVGR_CameraClose", ResultType::status, false, true},
    {"ZVGR_GrabberReadReg", ResultType::status, true, false},
    {"ZVGR_GrabberWriteReg", ResultType::status, true, false},
    {"ZVGR_CameraReadReg", ResultType::status, true, false},
    {"ZVGR_CameraWriteReg", ResultType::status, true, false},
    {"ZVGR_GetGrabberValueInt", ResultType::value, false, false},
    {"ZVGR_GetGrabberValueEnum", ResultType::value, false, false},
    {"ZVGR_GetCameraValueInt", ResultType::value, false, false},
    {"ZVGR_GetCameraValueEnum", ResultType::value, false, false},
    {"ZVGR_StreamCreate", ResultType::status, true, false},
    {"ZVGR_StreamCreateAndAlloc", ResultType::status, true, false},
    {"ZVGR_StreamDelete", ResultType::status, false, true},
    {"ZVGR_StreamGetInfo", ResultType::status, true, false},
    {"ZVGR_StreamGetFrameIndex", ResultType::frame, false, false},
    {"ZVGR_StreamGetPtr", ResultType::pointer, false, false},
    {"ZVGR_StreamGetAux", ResultType::status, true, false},
    {"ZVGR_BufferAnnounce", ResultType::status, true, false},
    {"ZVGR_BufferAllocAndAnnounce", ResultType::status, true, false},
    {"ZVGR_BufferRevoke", ResultType::status, false, true},
    {"ZVGR_BufferToQueue", ResultType::status, false, false},
    {"ZVGR_BufferGetInfo", ResultType::status, true, false},
    {"ZVGR_CameraStartAcquire_GenTL", ResultType::status, false, false},
    {"ZVGR_CameraStopAcquire_GenTL", ResultType::status, false, true},
    {"ZVGR_CameraCallbackRegister", ResultType::status, false, false},
    {"ZVGR_StreamBufferCallbackRegister", ResultType::status, false, false},
    {"ZVGR_GetXmlUrl", ResultType::status, true, false},
};
static_assert(sizeof(rows) / sizeof(rows[0]) == function_count);

} // namespace

const FunctionRow& row_of(Function function) { return rows[static_cast<size_t>(function)]; }

} // namespace zvsim
