/* The sizes, offsets and values of both C interfaces that libraries and consumers share, whatever compiled
   them. Needs the headers of a freestanding compiler alone. */
#include "GenTL/GenTL.h"
#include "zvgr/ZVGRLib.h"

#include <stddef.h>
#include <stdint.h>

_Static_assert(sizeof(GC_ERROR) == 4, "error codes have 32 bits");
_Static_assert(sizeof(bool8_t) == 1, "truth values have 8 bits");
_Static_assert(sizeof(TL_HANDLE) == sizeof(void*), "handles are addresses");
_Static_assert(sizeof(PORT_REGISTER_STACK_ENTRY) == 24, "8 bytes each, packed");
_Static_assert(offsetof(PORT_REGISTER_STACK_ENTRY, pBuffer) == 8, "behind the address");
_Static_assert(offsetof(PORT_REGISTER_STACK_ENTRY, Size) == 16, "behind the pointer");
_Static_assert(sizeof(EVENT_NEW_BUFFER_DATA) == 16, "two words");
_Static_assert(offsetof(EVENT_NEW_BUFFER_DATA, pUserPointer) == 8, "behind the handle");
_Static_assert(sizeof(SINGLE_CHUNK_DATA) == 24, "three words");
_Static_assert(GC_ERR_SUCCESS == 0 && GC_ERR_INVALID_INDEX == -1017, "codes of the standard");
_Static_assert(GENTL_INFINITE == 0xFFFFFFFFFFFFFFFFULL, "all bits set");

_Static_assert(sizeof(ZvCameraInfo) == 471, "packed record");
_Static_assert(offsetof(ZvCameraInfo, device_version) == 14, "packed record");
_Static_assert(offsetof(ZvCameraInfo, vendor_name) == 79, "packed record");
_Static_assert(offsetof(ZvCameraInfo, model_name) == 209, "packed record");
_Static_assert(offsetof(ZvCameraInfo, serial_number) == 274, "packed record");
_Static_assert(sizeof(ZvDeviceInfo) == 512 && offsetof(ZvDeviceInfo, protocol) == 4, "packed record");
_Static_assert(sizeof(ZvFrameAux) == 256 && offsetof(ZvFrameAux, timestamp) == 17, "packed record");
_Static_assert(zv_success == 0x3000, "the one good status");
_Static_assert(ZV_NO_HANDLE == 0xFFFFFFFFU && ZV_NOT_AVAILABLE == INT64_MAX, "none");
_Static_assert(zv_channel_grabbing == 17 && zv_url_capacity == 260 && zv_max_cameras == 16, "shared numbers");
_Static_assert(zv_stream_payload_at_creation == 7 && zv_stream_buffer_alignment == 13, "stream commands");
_Static_assert(zv_stream_payload_now == 1001, "stream commands");
_Static_assert(zv_buffer_address == 0 && zv_buffer_timestamp == 3, "buffer commands");
_Static_assert(zv_buffer_image_id == 16 && zv_buffer_frame_id == 1000, "buffer commands");
_Static_assert(zv_queue_input == 0 && zv_queue_output == 1, "queues");
