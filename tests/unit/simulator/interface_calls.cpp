#include "unit/simulator/interface_calls.h"

#include <cstring>
#include <type_traits>

namespace zvsim_test {

namespace {

constexpr uint64_t user_id = 0x1100;
constexpr uint64_t statistics_reset = 0x2098;
constexpr uint32_t no_index = 0;
unsigned char memory[100];
const unsigned char one[4] = {0, 0, 0, 1};

void ignore_buffer(uint64_t /*buffer*/, void* /*context*/) {}
void ignore_frame(void* /*context*/, uint32_t /*stream*/) {}

// Parameters that a situation and the outputs supply.
constexpr auto grabber = &Situation::grabber;
constexpr auto camera = &Situation::camera;
constexpr auto stream = &Situation::stream;
constexpr auto ring = &Situation::ring;
constexpr auto buffer = &Situation::buffer;
constexpr auto size = &Outputs::size;
template <class Type>
Type* to(Outputs& outputs)
{
    return reinterpret_cast<Type*>(outputs.bytes.data());
}

template <class Type>
Type value_of(Type literal, const Situation& /*now*/, Outputs& /*outputs*/)
{
    return literal;
}
template <class Type>
Type value_of(Type Situation::*handle, const Situation& now, Outputs& /*outputs*/)
{
    return now.*handle;
}
template <class Type>
Type* value_of(Type Outputs::*word, const Situation& /*now*/, Outputs& outputs)
{
    return &(outputs.*word);
}
template <class Type>
Type* value_of(Type* (*output)(Outputs&), const Situation& /*now*/, Outputs& outputs)
{
    return output(outputs);
}

/// So that a row takes few lines.
InterfaceCall row(const char* function, const char* kind, unsigned traits,
                  const std::vector<Handles>& handles, const InterfaceCall::Body& call,
                  uint32_t calls_before = 0, uint32_t calls_of_kind = 0,
                  uint64_t failure = InterfaceCall::any_status)
{
    return {function, kind, traits, handles, call, calls_before, calls_of_kind, failure};
}

/// A call with these parameters.
template <class Function, class... Parameters>
InterfaceCall::Body calling(Function* function, Parameters... parameters)
{
    return [=](const Situation& now, Outputs& outputs) {
        const auto result = function(value_of(parameters, now, outputs)...);
        if constexpr (std::is_pointer_v<decltype(function(value_of(parameters, now, outputs)...))>)
            return static_cast<uint64_t>(result != nullptr);
        else
            return static_cast<uint64_t>(result);
    };
}

/// A call that fills a record which needs a version. What lies in the outputs afterwards is what was written.
template <class Record>
InterfaceCall::Body filling(uint32_t (*function)(uint32_t, Record*), uint32_t Situation::*handle,
                            uint32_t version)
{
    return [=](const Situation& now, Outputs& outputs) {
        auto* const record = to<Record>(outputs);
        record->version = version;
        const uint32_t status = function(handle != nullptr ? now.*handle : 0, record);
        std::memset(&record->version, 0xEE, sizeof(record->version));
        return status;
    };
}

uint64_t open_and_close(const Situation& /*now*/, Outputs& /*outputs*/)
{
    const uint32_t opened = ZVGR_Open(1);
    ZVGR_Close(opened);
    return opened;
}

uint64_t url(const Situation& now, Outputs& outputs)
{
    uint64_t length = zv_url_capacity;
    const uint32_t status = ZVGR_GetXmlUrl(now.camera, to<char>(outputs), &length);
    outputs.size = length == zv_url_capacity ? outputs.size : 0;
    return status;
}

} // namespace

const std::vector<InterfaceCall>& interface_calls()
{
    static const Handles any{camera, grabber, stream, ring};
    static const std::vector<InterfaceCall> calls{
        row("ZV_DeviceScan", "scan-fails", writes, {}, calling(ZV_DeviceScan, to<uint32_t>), 1, 1),
        row("ZV_DeviceInfo", "grabber-info-fails", writes, {}, filling(ZV_DeviceInfo, nullptr, 3)),
        row("ZV_DeviceDisplayName", "grabber-name-missing", 0, {}, calling(ZV_DeviceDisplayName, no_index), 0,
            0, 0),
        row("ZVGR_Open", "grabber-open-fails", 0, {}, open_and_close, 1, 1, ZV_NO_HANDLE),
        row("ZVGR_Close", "grabber-close-fails", ends, {{grabber}}, calling(ZVGR_Close, grabber)),
        row("ZVGR_UpdateCameraList", "camera-list-fails", writes, {{grabber}},
            calling(ZVGR_UpdateCameraList, grabber, to<uint32_t>, size), 1, 1),
        row("ZVGR_CameraInfo2", "camera-info-fails", writes, {{camera}},
            filling(ZVGR_CameraInfo2, camera, 0)),
        row("ZVGR_CameraOpen2", "camera-open-fails", 0, {{camera}},
            calling(ZVGR_CameraOpen2, camera, nullptr), 1, 1),
        row("ZVGR_CameraClose", "camera-close-fails", ends, {{camera}}, calling(ZVGR_CameraClose, camera)),
        row("ZVGR_GrabberReadReg", "register-read-fails", writes | clears_size, {{grabber}},
            calling(ZVGR_GrabberReadReg, grabber, statistics_reset, to<void>, size)),
        row("ZVGR_GrabberWriteReg", "register-write-fails", writes | clears_size, {{grabber}},
            calling(ZVGR_GrabberWriteReg, grabber, statistics_reset, one, size)),
        row("ZVGR_CameraReadReg", "register-read-fails", writes | clears_size, {{camera}},
            calling(ZVGR_CameraReadReg, camera, user_id, to<void>, size)),
        row("ZVGR_CameraWriteReg", "register-write-fails", writes | clears_size, {{camera}},
            calling(ZVGR_CameraWriteReg, camera, user_id, "new", size)),
        row("ZVGR_GetGrabberValueInt", "value-not-available", 0, {any},
            calling(ZVGR_GetGrabberValueInt, camera, "FW_Dma_Capable_QueuedBuffers_Imp"), 0, 0,
            ZV_NOT_AVAILABLE),
        row("ZVGR_GetGrabberValueEnum", "value-not-available", 0, {any},
            calling(ZVGR_GetGrabberValueEnum, camera, "CameraChannelState"), 0, 0, ZV_NOT_AVAILABLE),
        row("ZVGR_GetCameraValueInt", "value-not-available", 0, {any},
            calling(ZVGR_GetCameraValueInt, camera, "Width"), 0, 0, ZV_NOT_AVAILABLE),
        row("ZVGR_GetCameraValueEnum", "value-not-available", 0, {any},
            calling(ZVGR_GetCameraValueEnum, camera, "PixelFormat"), 0, 0, ZV_NOT_AVAILABLE),
        row("ZVGR_StreamCreate", "stream-create-fails", writes, {{camera}},
            calling(ZVGR_StreamCreate, camera, to<uint32_t>, no_index), 1, 2),
        row("ZVGR_StreamCreateAndAlloc", "stream-create-fails", writes, {{camera}},
            calling(ZVGR_StreamCreateAndAlloc, camera, to<uint32_t>, 4U, no_index), 1, 2),
        row("ZVGR_StreamDelete", "stream-delete-fails", ends, {{stream, ring}},
            calling(ZVGR_StreamDelete, stream)),
        row("ZVGR_StreamGetInfo", "stream-info-fails", writes, {{stream, ring}},
            calling(ZVGR_StreamGetInfo, stream, uint32_t{zv_stream_payload_now}, to<uint64_t>)),
        row("ZVGR_StreamGetFrameIndex", nullptr, 0, {{ring}}, calling(ZVGR_StreamGetFrameIndex, ring), 0, 0,
            UINT32_MAX),
        row("ZVGR_StreamGetPtr", "ring-frame-missing", 0, {{ring}},
            calling(ZVGR_StreamGetPtr, ring, no_index), 0, 0, 0),
        row("ZVGR_StreamGetAux", "frame-record-fails", writes, {{ring}},
            calling(ZVGR_StreamGetAux, ring, no_index, to<ZvFrameAux>)),
        row("ZVGR_BufferAnnounce", "announce-fails", writes, {{stream}},
            calling(ZVGR_BufferAnnounce, stream, memory, sizeof(memory), nullptr, to<uint64_t>), 0, 1),
        row("ZVGR_BufferAllocAndAnnounce", "announce-fails", writes, {{stream}},
            calling(ZVGR_BufferAllocAndAnnounce, stream, 100U, nullptr, to<uint64_t>), 1, 1),
        row("ZVGR_BufferRevoke", "revoke-fails", ends | takes_buffer, {{stream}},
            calling(ZVGR_BufferRevoke, stream, buffer)),
        row("ZVGR_BufferToQueue", "queue-fails", takes_buffer, {},
            calling(ZVGR_BufferToQueue, buffer, uint32_t{zv_queue_input})),
        row("ZVGR_BufferGetInfo", "buffer-info-fails", writes | takes_buffer, {},
            calling(ZVGR_BufferGetInfo, buffer, uint32_t{zv_buffer_address}, to<uint64_t>)),
        row("ZVGR_CameraStartAcquire_GenTL", "start-fails", 0, {{camera}, {stream, ring}},
            calling(ZVGR_CameraStartAcquire_GenTL, camera, stream, 0U), 1, 1),
        row("ZVGR_CameraStopAcquire_GenTL", "stop-fails", 0, {{camera}},
            calling(ZVGR_CameraStopAcquire_GenTL, camera), 1, 1),
        row("ZVGR_CameraCallbackRegister", "callback-register-fails", 0, {{camera}},
            calling(ZVGR_CameraCallbackRegister, camera, ignore_frame, nullptr), 1, 1),
        row("ZVGR_StreamBufferCallbackRegister", "callback-register-fails", 0, {{stream}},
            calling(ZVGR_StreamBufferCallbackRegister, stream, ignore_buffer, nullptr), 0, 1),
        row("ZVGR_GetXmlUrl", "url-fails", writes | clears_size, {any}, url),
    };
    return calls;
}

} // namespace zvsim_test
