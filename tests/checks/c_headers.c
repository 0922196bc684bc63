/* Compiled as strict C: both C interfaces can be used without C++, with the sizes and values that libraries
   and consumers share. */
#include "GenTL/GenTL.h"
#include "zvgr/ZVGRLib.h"

#include <assert.h>
#include <stddef.h>
#include <stdio.h>

static_assert(sizeof(GC_ERROR) == 4, "error codes have 32 bits");
static_assert(sizeof(bool8_t) == 1, "truth values have 8 bits");
static_assert(sizeof(TL_HANDLE) == sizeof(void*), "handles are addresses");
static_assert(sizeof(PORT_REGISTER_STACK_ENTRY) == 24, "8 bytes each, packed");
static_assert(offsetof(PORT_REGISTER_STACK_ENTRY, pBuffer) == 8, "behind the address");
static_assert(offsetof(PORT_REGISTER_STACK_ENTRY, Size) == 16, "behind the pointer");
static_assert(sizeof(EVENT_NEW_BUFFER_DATA) == 16, "two words");
static_assert(offsetof(EVENT_NEW_BUFFER_DATA, pUserPointer) == 8, "behind the handle");
static_assert(sizeof(SINGLE_CHUNK_DATA) == 24, "three words");
static_assert(GC_ERR_SUCCESS == 0 && GC_ERR_INVALID_INDEX == -1017, "codes of the standard");
static_assert(GENTL_INFINITE == 0xFFFFFFFFFFFFFFFFULL, "all bits set");

static_assert(sizeof(ZvCameraInfo) == 471, "packed record");
static_assert(offsetof(ZvCameraInfo, device_version) == 14, "packed record");
static_assert(offsetof(ZvCameraInfo, vendor_name) == 79, "packed record");
static_assert(offsetof(ZvCameraInfo, model_name) == 209, "packed record");
static_assert(offsetof(ZvCameraInfo, serial_number) == 274, "packed record");
static_assert(sizeof(ZvDeviceInfo) == 512 && offsetof(ZvDeviceInfo, protocol) == 4, "packed record");
static_assert(sizeof(ZvFrameAux) == 256 && offsetof(ZvFrameAux, timestamp) == 17, "packed record");
static_assert(zv_success == 0x3000, "the one good status");
static_assert(ZV_NO_HANDLE == 0xFFFFFFFFU && ZV_NOT_AVAILABLE == INT64_MAX, "none");
static_assert(zv_channel_grabbing == 17 && zv_url_capacity == 260 && zv_max_cameras == 16, "shared numbers");
static_assert(zv_stream_payload_at_creation == 7 && zv_stream_buffer_alignment == 13, "stream commands");
static_assert(zv_stream_payload_now == 1001, "stream commands");
static_assert(zv_buffer_address == 0 && zv_buffer_timestamp == 3, "buffer commands");
static_assert(zv_buffer_image_id == 16 && zv_buffer_frame_id == 1000, "buffer commands");
static_assert(zv_queue_input == 0 && zv_queue_output == 1, "queues");

/* A pointer type exists for every function; three of them stand for their kind of signature. */
static const PGCInitLib init_pointer = NULL;
static const PDSAnnounceBuffer announce_pointer = NULL;
static const PEventGetData data_pointer = NULL;

int main(void)
{
    printf("%d\n", init_pointer == NULL && announce_pointer == NULL && data_pointer == NULL);
    return 0;
}
