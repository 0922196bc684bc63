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

static PGCInitLib init_lib;
static PGCCloseLib close_lib;
static PTLOpen tl_open;
static PTLClose tl_close;
static PTLGetNumInterfaces tl_get_num_interfaces;
static PTLGetInterfaceID tl_get_interface_id;
static PTLUpdateInterfaceList tl_update_interface_list;
static PTLOpenInterface tl_open_interface;
static PIFClose if_close;
static PIFUpdateDeviceList if_update_device_list;
static PIFGetNumDevices if_get_num_devices;
static PIFGetDeviceID if_get_device_id;
static PIFOpenDevice if_open_device;
static PDevGetDataStreamID dev_get_data_stream_id;
static PDevOpenDataStream dev_open_data_stream;
static PDevClose dev_close;
static PDSGetInfo ds_get_info;
static PDSAllocAndAnnounceBuffer ds_alloc_and_announce_buffer;
static PDSQueueBuffer ds_queue_buffer;
static PDSStartAcquisition ds_start_acquisition;
static PDSStopAcquisition ds_stop_acquisition;
static PDSRevokeBuffer ds_revoke_buffer;
static PDSGetBufferInfo ds_get_buffer_info;
static PDSClose ds_close;
static PGCRegisterEvent register_event;
static PGCUnregisterEvent unregister_event;
static PEventGetData event_get_data;

static void check(GC_ERROR code, const char* function)
{
    if (code != GC_ERR_SUCCESS) {
        fprintf(stderr, "%s answered %" PRId32 "\n", function, (int32_t)code);
        exit(EXIT_FAILURE);
    }
}

/* The address is copied because C knows no conversion from an object pointer to a function pointer. */
static void find(void* library, const char* name, void* function)
{
    void* const address = dlsym(library, name);
    if (address == NULL) {
        fprintf(stderr, "%s is not exported\n", name);
        exit(EXIT_FAILURE);
    }
    memcpy(function, &address, sizeof address);
}

static void find_functions(void* library)
{
    find(library, "GCInitLib", &init_lib);
    find(library, "GCCloseLib", &close_lib);
    find(library, "TLOpen", &tl_open);
    find(library, "TLClose", &tl_close);
    find(library, "TLGetNumInterfaces", &tl_get_num_interfaces);
    find(library, "TLGetInterfaceID", &tl_get_interface_id);
    find(library, "TLUpdateInterfaceList", &tl_update_interface_list);
    find(library, "TLOpenInterface", &tl_open_interface);
    find(library, "IFClose", &if_close);
    find(library, "IFUpdateDeviceList", &if_update_device_list);
    find(library, "IFGetNumDevices", &if_get_num_devices);
    find(library, "IFGetDeviceID", &if_get_device_id);
    find(library, "IFOpenDevice", &if_open_device);
    find(library, "DevGetDataStreamID", &dev_get_data_stream_id);
    find(library, "DevOpenDataStream", &dev_open_data_stream);
    find(library, "DevClose", &dev_close);
    find(library, "DSGetInfo", &ds_get_info);
    find(library, "DSAllocAndAnnounceBuffer", &ds_alloc_and_announce_buffer);
    find(library, "DSQueueBuffer", &ds_queue_buffer);
    find(library, "DSStartAcquisition", &ds_start_acquisition);
    find(library, "DSStopAcquisition", &ds_stop_acquisition);
    find(library, "DSRevokeBuffer", &ds_revoke_buffer);
    find(library, "DSGetBufferInfo", &ds_get_buffer_info);
    find(library, "DSClose", &ds_close);
    find(library, "GCRegisterEvent", &register_event);
    find(library, "GCUnregisterEvent", &unregister_event);
    find(library, "EventGetData", &event_get_data);
}

static void print_frame(DS_HANDLE stream, BUFFER_HANDLE buffer)
{
    size_t width = 0;
    size_t height = 0;
    uint64_t id = 0;
    void* base = NULL;
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    size_t size = sizeof width;
    check(ds_get_buffer_info(stream, buffer, BUFFER_INFO_WIDTH, &type, &width, &size), "DSGetBufferInfo");
    check(ds_get_buffer_info(stream, buffer, BUFFER_INFO_HEIGHT, &type, &height, &size), "DSGetBufferInfo");
    size = sizeof id;
    check(ds_get_buffer_info(stream, buffer, BUFFER_INFO_FRAMEID, &type, &id, &size), "DSGetBufferInfo");
    size = sizeof base;
    check(ds_get_buffer_info(stream, buffer, BUFFER_INFO_BASE, &type, &base, &size), "DSGetBufferInfo");
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
    check(ds_get_info(stream, STREAM_INFO_PAYLOAD_SIZE, &type, &payload, &size), "DSGetInfo");
    check(register_event(stream, EVENT_NEW_BUFFER, &event), "GCRegisterEvent");
    for (int i = 0; i < buffer_count; ++i)
        check(ds_alloc_and_announce_buffer(stream, payload, NULL, &buffers[i]), "DSAllocAndAnnounceBuffer");
    check(ds_start_acquisition(stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE), "DSStartAcquisition");
    for (int i = 0; i < buffer_count; ++i)
        check(ds_queue_buffer(stream, buffers[i]), "DSQueueBuffer");
    for (int i = 0; i < frame_count; ++i) {
        EVENT_NEW_BUFFER_DATA data = {NULL, NULL};
        size = sizeof data;
        check(event_get_data(event, &data, &size, frame_timeout_ms), "EventGetData");
        print_frame(stream, data.BufferHandle);
        check(ds_queue_buffer(stream, data.BufferHandle), "DSQueueBuffer");
    }
    check(ds_stop_acquisition(stream, ACQ_STOP_FLAGS_DEFAULT), "DSStopAcquisition");
    for (int i = 0; i < buffer_count; ++i)
        check(ds_revoke_buffer(stream, buffers[i], NULL, NULL), "DSRevokeBuffer");
    check(unregister_event(stream, EVENT_NEW_BUFFER), "GCUnregisterEvent");
}

static void receive_from(IF_HANDLE iface, const char* device_id)
{
    DEV_HANDLE device = NULL;
    DS_HANDLE stream = NULL;
    char stream_id[64];
    size_t size = sizeof stream_id;
    check(if_open_device(iface, device_id, DEVICE_ACCESS_CONTROL, &device), "IFOpenDevice");
    check(dev_get_data_stream_id(device, 0, stream_id, &size), "DevGetDataStreamID");
    check(dev_open_data_stream(device, stream_id, &stream), "DevOpenDataStream");
    receive(stream);
    check(ds_close(stream), "DSClose");
    check(dev_close(device), "DevClose");
}

static void visit_interface(TL_HANDLE system, uint32_t index)
{
    IF_HANDLE iface = NULL;
    uint32_t devices = 0;
    char id[64];
    size_t size = sizeof id;
    check(tl_get_interface_id(system, index, id, &size), "TLGetInterfaceID");
    check(tl_open_interface(system, id, &iface), "TLOpenInterface");
    check(if_update_device_list(iface, NULL, scan_timeout_ms), "IFUpdateDeviceList");
    check(if_get_num_devices(iface, &devices), "IFGetNumDevices");
    printf("%s\n", id);
    for (uint32_t i = 0; i < devices; ++i) {
        char device_id[64];
        size = sizeof device_id;
        check(if_get_device_id(iface, i, device_id, &size), "IFGetDeviceID");
        printf("  %s\n", device_id);
        receive_from(iface, device_id);
    }
    check(if_close(iface), "IFClose");
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
    find_functions(library);
    TL_HANDLE system = NULL;
    uint32_t interfaces = 0;
    check(init_lib(), "GCInitLib");
    check(tl_open(&system), "TLOpen");
    check(tl_update_interface_list(system, NULL, scan_timeout_ms), "TLUpdateInterfaceList");
    check(tl_get_num_interfaces(system, &interfaces), "TLGetNumInterfaces");
    for (uint32_t i = 0; i < interfaces; ++i)
        visit_interface(system, i);
    check(tl_close(system), "TLClose");
    check(close_lib(), "GCCloseLib");
    if (interfaces == 0 || dlclose(library) != 0) {
        fputs(interfaces == 0 ? "no interface\n" : "the library cannot be unloaded\n", stderr);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
