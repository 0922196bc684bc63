/* A consumer in C: loads the producer, lists what it finds and receives a few frames of the first camera. */
#define _POSIX_C_SOURCE 200809L

#include <dlfcn.h>
#include <inttypes.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <GenTL/GenTL.h>

enum { buffer_count = 4, frame_count = 10, scan_timeout_ms = 1000, frame_timeout_ms = 60000 };

/* The functions that are called, each found by its name. */
/* clang-format off */
#define FOR_EACH_FUNCTION(use) \
    use(GCInitLib) use(GCCloseLib) use(TLOpen) use(TLClose) use(TLGetNumInterfaces) \
    use(TLGetInterfaceID) use(TLUpdateInterfaceList) use(TLOpenInterface) use(IFClose) \
    use(IFUpdateDeviceList) use(IFGetNumDevices) use(IFGetDeviceID) use(IFOpenDevice) \
    use(DevGetDataStreamID) use(DevOpenDataStream) use(DevClose) use(DSGetInfo) \
    use(DSAllocAndAnnounceBuffer) use(DSQueueBuffer) use(DSStartAcquisition) use(DSStopAcquisition) \
    use(DSRevokeBuffer) use(DSGetBufferInfo) use(DSClose) use(GCRegisterEvent) \
    use(GCUnregisterEvent) use(EventGetData)
/* clang-format on */

#define DECLARE(name) P##name name;
static struct {
    FOR_EACH_FUNCTION(DECLARE)
} gentl;

static void check(GC_ERROR code, const char* function)
{
    if (code != GC_ERR_SUCCESS) {
        fprintf(stderr, "%s answered %" PRId32 "\n", function, (int32_t)code);
        exit(EXIT_FAILURE);
    }
}

/* The address is copied because C has no conversion from an object pointer to a function pointer. */
static void find(void* library, const char* name, void* function)
{
    void* const address = dlsym(library, name);
    if (address == NULL) {
        fprintf(stderr, "%s is not exported\n", name);
        exit(EXIT_FAILURE);
    }
    memcpy(function, &address, sizeof address);
}

static void print_frame(DS_HANDLE stream, BUFFER_HANDLE buffer)
{
    size_t width = 0;
    size_t height = 0;
    uint64_t id = 0;
    void* base = NULL;
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    size_t size = sizeof width;
    check(gentl.DSGetBufferInfo(stream, buffer, BUFFER_INFO_WIDTH, &type, &width, &size), "DSGetBufferInfo");
    check(gentl.DSGetBufferInfo(stream, buffer, BUFFER_INFO_HEIGHT, &type, &height, &size),
          "DSGetBufferInfo");
    size = sizeof id;
    check(gentl.DSGetBufferInfo(stream, buffer, BUFFER_INFO_FRAMEID, &type, &id, &size), "DSGetBufferInfo");
    size = sizeof base;
    check(gentl.DSGetBufferInfo(stream, buffer, BUFFER_INFO_BASE, &type, &base, &size), "DSGetBufferInfo");
    if (memcmp(base, "ZVFS", 4) != 0) {
        fputs("a frame without a stamp\n", stderr);
        exit(EXIT_FAILURE);
    }
    printf("frame %" PRIu64 ": %zu x %zu\n", id, width, height);
}

static void receive(DS_HANDLE stream)
{
    BUFFER_HANDLE buffers[buffer_count] = {NULL};
    EVENT_HANDLE event = NULL;
    size_t payload = 0;
    size_t size = sizeof payload;
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    check(gentl.DSGetInfo(stream, STREAM_INFO_PAYLOAD_SIZE, &type, &payload, &size), "DSGetInfo");
    check(gentl.GCRegisterEvent(stream, EVENT_NEW_BUFFER, &event), "GCRegisterEvent");
    for (int i = 0; i < buffer_count; ++i)
        check(gentl.DSAllocAndAnnounceBuffer(stream, payload, NULL, &buffers[i]), "DSAllocAndAnnounceBuffer");
    check(gentl.DSStartAcquisition(stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE), "DSStartAcquisition");
    for (int i = 0; i < buffer_count; ++i)
        check(gentl.DSQueueBuffer(stream, buffers[i]), "DSQueueBuffer");
    for (int i = 0; i < frame_count; ++i) {
        EVENT_NEW_BUFFER_DATA data = {NULL, NULL};
        size = sizeof data;
        check(gentl.EventGetData(event, &data, &size, frame_timeout_ms), "EventGetData");
        print_frame(stream, data.BufferHandle);
        check(gentl.DSQueueBuffer(stream, data.BufferHandle), "DSQueueBuffer");
    }
    check(gentl.DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT), "DSStopAcquisition");
    for (int i = 0; i < buffer_count; ++i)
        check(gentl.DSRevokeBuffer(stream, buffers[i], NULL, NULL), "DSRevokeBuffer");
    check(gentl.GCUnregisterEvent(stream, EVENT_NEW_BUFFER), "GCUnregisterEvent");
}

static void receive_from(IF_HANDLE iface, const char* device_id)
{
    DEV_HANDLE device = NULL;
    DS_HANDLE stream = NULL;
    char stream_id[64];
    size_t size = sizeof stream_id;
    check(gentl.IFOpenDevice(iface, device_id, DEVICE_ACCESS_CONTROL, &device), "IFOpenDevice");
    check(gentl.DevGetDataStreamID(device, 0, stream_id, &size), "DevGetDataStreamID");
    check(gentl.DevOpenDataStream(device, stream_id, &stream), "DevOpenDataStream");
    receive(stream);
    check(gentl.DSClose(stream), "DSClose");
    check(gentl.DevClose(device), "DevClose");
}

static void visit_interface(TL_HANDLE system, uint32_t index)
{
    IF_HANDLE iface = NULL;
    uint32_t devices = 0;
    char id[64];
    size_t size = sizeof id;
    check(gentl.TLGetInterfaceID(system, index, id, &size), "TLGetInterfaceID");
    check(gentl.TLOpenInterface(system, id, &iface), "TLOpenInterface");
    check(gentl.IFUpdateDeviceList(iface, NULL, scan_timeout_ms), "IFUpdateDeviceList");
    check(gentl.IFGetNumDevices(iface, &devices), "IFGetNumDevices");
    printf("%s\n", id);
    for (uint32_t i = 0; i < devices; ++i) {
        char device_id[64];
        size = sizeof device_id;
        check(gentl.IFGetDeviceID(iface, i, device_id, &size), "IFGetDeviceID");
        printf("  %s\n", device_id);
        receive_from(iface, device_id);
    }
    check(gentl.IFClose(iface), "IFClose");
}

int main(int count, char** arguments)
{
    if (count != 2) {
        fprintf(stderr, "usage: %s FILE.cti\n", arguments[0]);
        return EXIT_FAILURE;
    }
    void* const library = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    if (library == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        return EXIT_FAILURE;
    }
#define FIND(name) find(library, #name, &gentl.name);
    FOR_EACH_FUNCTION(FIND)
    TL_HANDLE system = NULL;
    uint32_t interfaces = 0;
    check(gentl.GCInitLib(), "GCInitLib");
    check(gentl.TLOpen(&system), "TLOpen");
    check(gentl.TLUpdateInterfaceList(system, NULL, scan_timeout_ms), "TLUpdateInterfaceList");
    check(gentl.TLGetNumInterfaces(system, &interfaces), "TLGetNumInterfaces");
    for (uint32_t i = 0; i < interfaces; ++i)
        visit_interface(system, i);
    check(gentl.TLClose(system), "TLClose");
    check(gentl.GCCloseLib(), "GCCloseLib");
    if (interfaces == 0 || dlclose(library) != 0) {
        fputs(interfaces == 0 ? "no interface\n" : "the library cannot be unloaded\n", stderr);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
