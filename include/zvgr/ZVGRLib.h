/// \file ZVGRLib.h
/// The C interface of the frame-grabber library: everything the producer knows about hardware. Whoever
/// implements it (a maker's driver, the software grabber library, a test double) keeps the promises stated
/// here.
///
/// **Status.** `uint32_t`; `zv_success` is success, every other value a failure.
/// **Handles.** Grabber, camera and stream handles are `uint32_t` in one flat space, `zv_no_handle` is none
/// and 0 is never given out; a dead handle's value is not used again in the process. The value getters and
/// `ZVGR_GetXmlUrl` accept all three kinds. A camera keeps its handle for as long as the library is loaded:
/// over scans, over the loss and return of the camera, and over the closing and opening of its grabber. While
/// the grabber is closed, calls with the handle fail; once it is open again they work, and the camera is
/// closed. `ZVGR_CameraClose` ends acquisition; its stream handles live on until `ZVGR_StreamDelete` or
/// `ZVGR_Close`. A buffer handle is `uint64_t`, 0 is none.
/// **Threads.** Calls may come from any thread at any time. Callbacks come on a thread of the library, never
/// from inside a call for the same stream, one at a time for one stream. When `ZVGR_CameraStopAcquire_GenTL`,
/// `ZVGR_StreamDelete` or `ZVGR_Close` has returned, no callback of the stream runs or comes until a new
/// start.
/// **Bad input.** Bad handles, null pointers and unknown names give a failure status or `zv_not_available`.
#pragma once

#ifdef __cplusplus
#include <cstddef>
#include <cstdint>
#else
#include <stddef.h>
#include <stdint.h>
#endif

#if defined(_WIN32)
#define ZVGR_CALL __cdecl
#if defined(ZVGR_BUILDING)
#define ZVGR_API __declspec(dllexport)
#elif defined(ZVGR_STATIC)
#define ZVGR_API
#else
#define ZVGR_API __declspec(dllimport)
#endif
#else
#define ZVGR_CALL
#define ZVGR_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

enum {
    zv_success = 0x3000,     /**< The only status that means success.           */
    zv_max_cameras = 16,     /**< Cameras that one grabber reports at most.     */
    zv_url_capacity = 260,   /**< Bytes of a register-description URL's buffer. */
    zv_channel_grabbing = 17 /**< Value of "CameraChannelState" while grabbing. */
};

/** "No grabber, camera or stream". */
#define ZV_NO_HANDLE 0xFFFFFFFFU
/** What a value getter answers when it has no value. */
#define ZV_NOT_AVAILABLE INT64_C(0x7FFFFFFFFFFFFFFF)

/** Protocol field of ZvDeviceInfo. Anything else means CoaXPress (the library reports 0). */
enum { zv_protocol_cxp = 0, zv_protocol_clhs = 1, zv_protocol_gev = 2 };

/** Commands of ZVGR_StreamGetInfo. */
enum {
    zv_stream_payload_at_creation = 7, /**< Payload size fixed when the stream was made, in bytes.    */
    zv_stream_buffer_alignment = 13,   /**< Alignment that buffers need, in bytes.                    */
    zv_stream_payload_now = 1001       /**< Payload size by the camera's present settings, in bytes.  */
};

/** Commands of ZVGR_BufferGetInfo. */
enum {
    zv_buffer_address = 0,    /**< Memory address of the buffer.                              */
    zv_buffer_timestamp = 3,  /**< Timestamp of its frame, in ticks of 25 MHz.                */
    zv_buffer_image_id = 16,  /**< Image id of its frame, where the grabber supports it.      */
    zv_buffer_frame_id = 1000 /**< Frame id of its frame.                                    */
};

/** Queues of ZVGR_BufferToQueue. */
enum { zv_queue_input = 0, zv_queue_output = 1 };

#pragma pack(push, 1)

/** A camera's identity. Callers zero it, then set version 0. Text fields are read bounded to 65 bytes. */
typedef struct ZvCameraInfo {
    uint32_t version;
    char reserved_4[10];
    char device_version[65];
    char vendor_name[65];
    char reserved_144[65];
    char model_name[65];
    char serial_number[65];
    char reserved_339[132];
} ZvCameraInfo;

/** A grabber's identity. Callers zero it, then set version 3. */
typedef struct ZvDeviceInfo {
    uint32_t version;
    uint32_t protocol;
    char reserved_8[504];
} ZvDeviceInfo;

/** What a ring frame carries beside its pixels. Callers zero it. */
typedef struct ZvFrameAux {
    char reserved_0[17];
    uint64_t timestamp; /**< Ticks of 25 MHz; unaligned. */
    char reserved_25[231];
} ZvFrameAux;

#pragma pack(pop)

/** Scans for grabbers and writes how many there are. */
ZVGR_API uint32_t ZVGR_CALL ZV_DeviceScan(uint32_t* count);
/** Fills the record of the grabber at a scan position. */
ZVGR_API uint32_t ZVGR_CALL ZV_DeviceInfo(uint32_t index, ZvDeviceInfo* info);
/** The grabber's name for people; the text belongs to the library. */
ZVGR_API const char* ZVGR_CALL ZV_DeviceDisplayName(uint32_t index);

/** Opens the grabber at a scan position: its handle, or ZV_NO_HANDLE. */
ZVGR_API uint32_t ZVGR_CALL ZVGR_Open(uint32_t index);
/** Closes a grabber; the handles of its streams and buffers are dead afterwards, those of its cameras rest.
 */
ZVGR_API uint32_t ZVGR_CALL ZVGR_Close(uint32_t grabber);

/** Writes the handles of the attached cameras. `count`: in, room in `cameras`; out, cameras found. */
ZVGR_API uint32_t ZVGR_CALL ZVGR_UpdateCameraList(uint32_t grabber, uint32_t* cameras, uint32_t* count);
ZVGR_API uint32_t ZVGR_CALL ZVGR_CameraInfo2(uint32_t camera, ZvCameraInfo* info);
/** Opens a camera with a register-description file, or with its own description when null. */
ZVGR_API uint32_t ZVGR_CALL ZVGR_CameraOpen2(uint32_t camera, const char* description_file);
ZVGR_API uint32_t ZVGR_CALL ZVGR_CameraClose(uint32_t camera);

/** Register access. `size`: in, bytes asked for; out, bytes transferred. */
ZVGR_API uint32_t ZVGR_CALL ZVGR_GrabberReadReg(uint32_t grabber, uint64_t address, void* buffer,
                                                uint32_t* size);
ZVGR_API uint32_t ZVGR_CALL ZVGR_GrabberWriteReg(uint32_t grabber, uint64_t address, const void* buffer,
                                                 uint32_t* size);
ZVGR_API uint32_t ZVGR_CALL ZVGR_CameraReadReg(uint32_t camera, uint64_t address, void* buffer,
                                               uint32_t* size);
ZVGR_API uint32_t ZVGR_CALL ZVGR_CameraWriteReg(uint32_t camera, uint64_t address, const void* buffer,
                                                uint32_t* size);

/** A named value of the grabber or camera behind any handle, or ZV_NOT_AVAILABLE. */
ZVGR_API int64_t ZVGR_CALL ZVGR_GetGrabberValueInt(uint32_t handle, const char* name);
ZVGR_API int64_t ZVGR_CALL ZVGR_GetGrabberValueEnum(uint32_t handle, const char* name);
ZVGR_API int64_t ZVGR_CALL ZVGR_GetCameraValueInt(uint32_t handle, const char* name);
ZVGR_API int64_t ZVGR_CALL ZVGR_GetCameraValueEnum(uint32_t handle, const char* name);

/** Makes a stream that fills announced buffers (queued mode). */
ZVGR_API uint32_t ZVGR_CALL ZVGR_StreamCreate(uint32_t camera, uint32_t* stream, uint32_t index);
/** Makes a stream with its own ring of `frames` frames (cyclic mode). Frames are reused in order. During a
 * callback the named frame stays intact; up to 64 MiB beyond any ring frame are readable. */
ZVGR_API uint32_t ZVGR_CALL ZVGR_StreamCreateAndAlloc(uint32_t camera, uint32_t* stream, uint32_t frames,
                                                      uint32_t index);
ZVGR_API uint32_t ZVGR_CALL ZVGR_StreamDelete(uint32_t stream);
ZVGR_API uint32_t ZVGR_CALL ZVGR_StreamGetInfo(uint32_t stream, uint32_t command, uint64_t* value);
/** Index of the ring frame last filled. */
ZVGR_API uint32_t ZVGR_CALL ZVGR_StreamGetFrameIndex(uint32_t stream);
/** Memory of a ring frame, owned by the library. */
ZVGR_API void* ZVGR_CALL ZVGR_StreamGetPtr(uint32_t stream, uint32_t frame);
ZVGR_API uint32_t ZVGR_CALL ZVGR_StreamGetAux(uint32_t stream, uint32_t frame, ZvFrameAux* record);

/** Hands consumer memory to a queued-mode stream. */
ZVGR_API uint32_t ZVGR_CALL ZVGR_BufferAnnounce(uint32_t stream, void* memory, uint64_t size, void* user,
                                                uint64_t* buffer);
/** The same with memory that the library allocates, and frees at revoke or stream deletion. */
ZVGR_API uint32_t ZVGR_CALL ZVGR_BufferAllocAndAnnounce(uint32_t stream, uint64_t size, void* user,
                                                        uint64_t* buffer);
/** After revoke, stop, delete or close has returned, the library no longer touches consumer memory. */
ZVGR_API uint32_t ZVGR_CALL ZVGR_BufferRevoke(uint32_t stream, uint64_t buffer);
/** Moves a buffer to the back of a queue. It is in one queue at most; a bad handle fails, nothing more. */
ZVGR_API uint32_t ZVGR_CALL ZVGR_BufferToQueue(uint64_t buffer, uint32_t queue);
ZVGR_API uint32_t ZVGR_CALL ZVGR_BufferGetInfo(uint64_t buffer, uint32_t command, uint64_t* value);

/** Starts acquisition of `frames` frames, 0: until stopped. Fails while running. */
ZVGR_API uint32_t ZVGR_CALL ZVGR_CameraStartAcquire_GenTL(uint32_t camera, uint32_t stream, uint32_t frames);
ZVGR_API uint32_t ZVGR_CALL ZVGR_CameraStopAcquire_GenTL(uint32_t camera);

/** Cyclic mode: called for every frame of a stream made with ZVGR_StreamCreateAndAlloc. */
typedef void(ZVGR_CALL* ZvCameraCallback)(void* context, uint32_t stream);
/** Queued mode: called with the filled buffer, or with 0 when acquisition ended by itself. */
typedef void(ZVGR_CALL* ZvStreamBufferCallback)(uint64_t buffer, void* context);
ZVGR_API uint32_t ZVGR_CALL ZVGR_CameraCallbackRegister(uint32_t camera, ZvCameraCallback callback,
                                                        void* context);
ZVGR_API uint32_t ZVGR_CALL ZVGR_StreamBufferCallbackRegister(uint32_t stream,
                                                              ZvStreamBufferCallback callback, void* context);

/** The URL of a register description. `size`: in, 260; out, its length with the terminating zero. */
ZVGR_API uint32_t ZVGR_CALL ZVGR_GetXmlUrl(uint32_t handle, char* url, uint64_t* size);

#ifdef __cplusplus
} // extern "C"

static_assert(sizeof(ZvCameraInfo) == 471 && offsetof(ZvCameraInfo, device_version) == 14 &&
                  offsetof(ZvCameraInfo, vendor_name) == 79 && offsetof(ZvCameraInfo, model_name) == 209 &&
                  offsetof(ZvCameraInfo, serial_number) == 274,
              "the record is shared with the library");
static_assert(sizeof(ZvDeviceInfo) == 512 && offsetof(ZvDeviceInfo, protocol) == 4,
              "the record is shared with the library");
static_assert(sizeof(ZvFrameAux) == 256 && offsetof(ZvFrameAux, timestamp) == 17,
              "the record is shared with the library");
#endif
