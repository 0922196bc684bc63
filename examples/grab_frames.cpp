#include <cinttypes>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "GenTL/GenTL.h"

#include "load.h"

// Grabs ten frames from the first camera of a GenTL producer, with nothing but the standard's C interface.
//
//     grab_frames /path/to/ZVGRLibGenTL.cti
//
// The order of the calls is the same for every producer: library, system, interface, device, data stream,
// buffers, event, start; and back again in reverse order.

using namespace GenTL;

namespace {

void* producer = nullptr; // the loaded library

/// Calls a function of the producer by its name. GenTL.h declares the type of a pointer to each: PTLOpen for
/// TLOpen and so on. (A real application looks each function up only once.)
template <class Function, class... Arguments>
GC_ERROR call(const char* name, Arguments... arguments)
{
    const auto function = reinterpret_cast<Function>(find(producer, name));
    if (function == nullptr)
        throw std::runtime_error(std::string("not a GenTL producer: it does not export ") + name);
    const GC_ERROR code = function(arguments...);
    if (code != GC_ERR_SUCCESS && code != GC_ERR_TIMEOUT) // a time-out is not a failure, see below
        throw std::runtime_error(std::string(name) + " failed with code " + std::to_string(code));
    return code;
}

/// Waits for the next filled buffer.
BUFFER_HANDLE wait_for_frame(EVENT_HANDLE new_buffer)
{
    EVENT_NEW_BUFFER_DATA filled{};
    std::size_t size = sizeof filled;
    // A time-out may come early, for an event that was handled before: it only means "look again".
    for (int attempt = 0; attempt < 10; ++attempt)
        if (call<PEventGetData>("EventGetData", new_buffer, &filled, &size, 1000U) == GC_ERR_SUCCESS)
            return filled.BufferHandle;
    throw std::runtime_error("no frame arrived within ten seconds");
}

/// Prints one frame and hands its buffer back, to be filled again.
void show_frame(DS_HANDLE stream, BUFFER_HANDLE buffer)
{
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    std::uint64_t id = 0;
    std::size_t size = sizeof id;
    call<PDSGetBufferInfo>("DSGetBufferInfo", stream, buffer, BUFFER_INFO_FRAMEID, &type, &id, &size);
    std::size_t bytes = 0;
    call<PDSGetBufferInfo>("DSGetBufferInfo", stream, buffer, BUFFER_INFO_SIZE_FILLED, &type, &bytes, &size);
    unsigned char* pixels = nullptr;
    call<PDSGetBufferInfo>("DSGetBufferInfo", stream, buffer, BUFFER_INFO_BASE, &type, &pixels, &size);
    std::printf("frame %" PRIu64 ": %zu bytes, pixels at %p\n", id, bytes, static_cast<void*>(pixels));
    call<PDSQueueBuffer>("DSQueueBuffer", stream, buffer);
}

void grab_ten_frames()
{
    TL_HANDLE system = nullptr;
    IF_HANDLE frame_grabber = nullptr;
    DEV_HANDLE camera = nullptr;
    DS_HANDLE stream = nullptr;
    EVENT_HANDLE new_buffer = nullptr;
    // Each level is asked for the ID of its first child, which is then opened by that ID.
    char id[256];
    std::size_t size = sizeof id;
    call<PGCInitLib>("GCInitLib");
    call<PTLOpen>("TLOpen", &system);
    call<PTLUpdateInterfaceList>("TLUpdateInterfaceList", system, nullptr, 1000U);
    call<PTLGetInterfaceID>("TLGetInterfaceID", system, 0U, id, &size);
    call<PTLOpenInterface>("TLOpenInterface", system, id, &frame_grabber);
    call<PIFUpdateDeviceList>("IFUpdateDeviceList", frame_grabber, nullptr, 1000U);
    call<PIFGetDeviceID>("IFGetDeviceID", frame_grabber, 0U, id, &(size = sizeof id));
    call<PIFOpenDevice>("IFOpenDevice", frame_grabber, id, DEVICE_ACCESS_CONTROL, &camera);
    call<PDevGetDataStreamID>("DevGetDataStreamID", camera, 0U, id, &(size = sizeof id));
    call<PDevOpenDataStream>("DevOpenDataStream", camera, id, &stream);

    // The stream knows how large a frame is. With eight buffers the camera can go on while we look at a
    // frame.
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    std::size_t payload = 0; // the type of this and other values is fixed by the standard
    call<PDSGetInfo>("DSGetInfo", stream, STREAM_INFO_PAYLOAD_SIZE, &type, &payload,
                     &(size = sizeof payload));
    for (int i = 0; i < 8; ++i) {
        BUFFER_HANDLE buffer = nullptr;
        call<PDSAllocAndAnnounceBuffer>("DSAllocAndAnnounceBuffer", stream, payload, nullptr, &buffer);
        call<PDSQueueBuffer>("DSQueueBuffer", stream, buffer);
    }
    call<PGCRegisterEvent>("GCRegisterEvent", stream, EVENT_NEW_BUFFER, &new_buffer);
    call<PDSStartAcquisition>("DSStartAcquisition", stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE);
    for (int i = 0; i < 10; ++i)
        show_frame(stream, wait_for_frame(new_buffer));

    call<PDSStopAcquisition>("DSStopAcquisition", stream, ACQ_STOP_FLAGS_DEFAULT);
    call<PDSClose>("DSClose", stream); // with its event and its buffers
    call<PDevClose>("DevClose", camera);
    call<PIFClose>("IFClose", frame_grabber);
    call<PTLClose>("TLClose", system);
    call<PGCCloseLib>("GCCloseLib");
}

} // namespace

int main(int argc, char** argv)
try {
    producer = argc == 2 ? load(argv[1]) : nullptr;
    if (producer == nullptr)
        throw std::runtime_error(argc == 2 ? reason(argv[1]) : "usage: grab_frames PATH_OF_THE_CTI_FILE");
    grab_ten_frames();
    unload(producer);
} catch (const std::exception& error) {
    std::fprintf(stderr, "grab_frames: %s\n", error.what());
    return 1;
}
