#include "benchmarks/bare/bare_grabber.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <string_view>

#include "zvgr/ZVGRLib.h"

// A grabber library for measuring the producer. Every call is answered at once from plain memory: no
// hardware, no locks, no checks. Frames come when the benchmark asks for one, on its own thread. Different
// streams may be served by different threads.

namespace {

constexpr uint32_t failed = 0;
constexpr uint32_t width = 64; // of the pictures that the cameras claim to send; nobody looks at them
constexpr uint64_t ring_slack = uint64_t{64} << 20U; // readable beyond a ring frame

struct Stream {
    uint32_t camera{0};
    uint32_t frames{0}; // of its ring; 0 in queued mode
    uint32_t last_frame{0};
    uint64_t delivered{0};
    uint64_t frame_size{0};
    void* ring{nullptr};
    ZvStreamBufferCallback callback{nullptr};
    void* context{nullptr};
};

struct Camera {
    ZvCameraCallback callback{nullptr};
    void* context{nullptr};
};

struct Buffer {
    uint32_t stream{0};
    void* memory{nullptr};
    bool is_own{false};
    std::atomic<uint32_t> queue{zv_queue_output}; // the consumer queues, the camera takes
    uint64_t frame{0};
};

// Handles are numbers of elements of these, in ranges of their own.
constexpr uint32_t first_grabber = 0x1000;
constexpr uint32_t first_camera = 0x10000;
constexpr uint32_t first_stream = 0x1000000;
constexpr uint64_t first_buffer = 0x100000000;

uint32_t grabbers = 1;
uint32_t cameras_per_grabber = 1;
uint64_t payload = 4096;
std::deque<Camera> cameras;
std::deque<Stream> streams;
std::deque<Buffer> buffers;

Stream& stream_of(uint32_t handle) { return streams[handle - first_stream]; }
Buffer& buffer_of(uint64_t handle) { return buffers[handle - first_buffer]; }
Camera& camera_of(uint32_t handle) { return cameras[handle - first_camera]; }

uint32_t make_stream(uint32_t camera, uint32_t frames, uint32_t* handle)
{
    Stream stream;
    stream.camera = camera;
    stream.frames = frames;
    stream.frame_size = payload;
    if (frames != 0) {
        stream.ring = std::calloc(1, payload * frames + ring_slack);
        std::memset(stream.ring, 0x55,
                    payload * frames); // pages that nobody has written are all the same one
    }
    streams.push_back(stream);
    *handle = first_stream + static_cast<uint32_t>(streams.size() - 1);
    return zv_success;
}

uint32_t announce(uint32_t stream, void* memory, bool is_own, uint64_t* handle)
{
    Buffer& buffer = buffers.emplace_back();
    buffer.stream = stream;
    buffer.memory = memory;
    buffer.is_own = is_own;
    *handle = first_buffer + buffers.size() - 1;
    return zv_success;
}

int64_t camera_value(std::string_view name)
{
    if (name == "Width")
        return width;
    if (name == "Height")
        return static_cast<int64_t>(payload / width);
    if (name == "PixelFormat")
        return 0x01080001; // Mono8
    return name == "OffsetX" || name == "OffsetY" ? 0 : ZV_NOT_AVAILABLE;
}

int64_t grabber_value(std::string_view name)
{
    const bool is_capability =
        name == "FW_Dma_Capable_QueuedBuffers_Imp" || name == "FW_Dma_Capable_FrameImageId_Imp";
    return is_capability ? 1 : ZV_NOT_AVAILABLE;
}

} // namespace

extern "C" {

void bare_set_up(uint32_t grabber_count, uint32_t camera_count, uint64_t frame_size)
{
    grabbers = grabber_count;
    cameras_per_grabber = camera_count;
    payload = frame_size;
    cameras.assign(size_t{grabbers} * cameras_per_grabber, {});
}

uint32_t bare_last_stream() { return first_stream + static_cast<uint32_t>(streams.size() - 1); }

uint64_t bare_last_buffer() { return first_buffer + buffers.size() - 1; }

void bare_deliver(uint64_t buffer)
{
    Buffer& filled = buffer_of(buffer);
    Stream& stream = stream_of(filled.stream);
    filled.queue.store(zv_queue_output, std::memory_order_relaxed);
    filled.frame = ++stream.delivered;
    stream.callback(buffer, stream.context);
}

bool bare_is_queued(uint64_t buffer)
{
    return buffer_of(buffer).queue.load(std::memory_order_acquire) == zv_queue_input;
}

void bare_deliver_ring(uint32_t handle)
{
    Stream& stream = stream_of(handle);
    stream.last_frame = (stream.last_frame + 1) % stream.frames;
    ++stream.delivered;
    const Camera& camera = camera_of(stream.camera);
    camera.callback(camera.context, handle);
}

uint32_t ZV_DeviceScan(uint32_t* count)
{
    *count = grabbers;
    return zv_success;
}
uint32_t ZV_DeviceInfo(uint32_t /*index*/, ZvDeviceInfo* info)
{
    info->protocol = zv_protocol_cxp;
    return zv_success;
}
const char* ZV_DeviceDisplayName(uint32_t /*index*/) { return "Bare grabber"; }

uint32_t ZVGR_Open(uint32_t index) { return first_grabber + index; }
uint32_t ZVGR_Close(uint32_t /*grabber*/) { return zv_success; }

uint32_t ZVGR_UpdateCameraList(uint32_t grabber, uint32_t* handles, uint32_t* count)
{
    *count = cameras_per_grabber;
    for (uint32_t i = 0; i < cameras_per_grabber; ++i)
        handles[i] = first_camera + (grabber - first_grabber) * cameras_per_grabber + i;
    return zv_success;
}
uint32_t ZVGR_CameraInfo2(uint32_t /*camera*/, ZvCameraInfo* info)
{
    std::strcpy(info->model_name, "Bare camera");
    return zv_success;
}
uint32_t ZVGR_CameraOpen2(uint32_t /*camera*/, const char* /*description*/) { return zv_success; }
uint32_t ZVGR_CameraClose(uint32_t /*camera*/) { return zv_success; }

uint32_t ZVGR_GrabberReadReg(uint32_t, uint64_t, void*, uint32_t*) { return failed; }
uint32_t ZVGR_GrabberWriteReg(uint32_t, uint64_t, const void*, uint32_t*) { return failed; }
uint32_t ZVGR_CameraReadReg(uint32_t, uint64_t, void*, uint32_t*) { return failed; }
uint32_t ZVGR_CameraWriteReg(uint32_t, uint64_t, const void*, uint32_t*) { return failed; }

int64_t ZVGR_GetGrabberValueInt(uint32_t, const char* name) { return grabber_value(name); }
int64_t ZVGR_GetGrabberValueEnum(uint32_t, const char*) { return ZV_NOT_AVAILABLE; }
int64_t ZVGR_GetCameraValueInt(uint32_t, const char* name) { return camera_value(name); }
int64_t ZVGR_GetCameraValueEnum(uint32_t, const char* name) { return camera_value(name); }

uint32_t ZVGR_StreamCreate(uint32_t camera, uint32_t* stream, uint32_t /*index*/)
{
    return make_stream(camera, 0, stream);
}
uint32_t ZVGR_StreamCreateAndAlloc(uint32_t camera, uint32_t* stream, uint32_t frames, uint32_t /*index*/)
{
    return make_stream(camera, frames, stream);
}
uint32_t ZVGR_StreamDelete(uint32_t handle)
{
    Stream& stream = stream_of(handle);
    std::free(stream.ring);
    stream.ring = nullptr;
    for (Buffer& buffer : buffers) {
        if (buffer.stream == handle && buffer.is_own) {
            std::free(buffer.memory);
            buffer.is_own = false;
        }
    }
    return zv_success;
}
uint32_t ZVGR_StreamGetInfo(uint32_t handle, uint32_t command, uint64_t* value)
{
    *value = command == zv_stream_buffer_alignment ? 64 : stream_of(handle).frame_size;
    return zv_success;
}
uint32_t ZVGR_StreamGetFrameIndex(uint32_t handle) { return stream_of(handle).last_frame; }
void* ZVGR_StreamGetPtr(uint32_t handle, uint32_t frame)
{
    const Stream& stream = stream_of(handle);
    return static_cast<char*>(stream.ring) + stream.frame_size * frame;
}
uint32_t ZVGR_StreamGetAux(uint32_t stream, uint32_t /*frame*/, ZvFrameAux* record)
{
    record->timestamp = stream_of(stream).delivered;
    return zv_success;
}

uint32_t ZVGR_BufferAnnounce(uint32_t stream, void* memory, uint64_t /*size*/, void* /*user*/,
                             uint64_t* buffer)
{
    return announce(stream, memory, false, buffer);
}
uint32_t ZVGR_BufferAllocAndAnnounce(uint32_t stream, uint64_t size, void* /*user*/, uint64_t* buffer)
{
    return announce(stream, std::calloc(1, size), true, buffer);
}
uint32_t ZVGR_BufferRevoke(uint32_t /*stream*/, uint64_t handle)
{
    if (handle == 0) // a buffer of a cyclic stream
        return failed;
    Buffer& buffer = buffer_of(handle);
    if (buffer.is_own)
        std::free(buffer.memory);
    buffer.is_own = false;
    return zv_success;
}
uint32_t ZVGR_BufferToQueue(uint64_t buffer, uint32_t queue)
{
    if (buffer == 0) // as above
        return failed;
    buffer_of(buffer).queue.store(queue, std::memory_order_release);
    return zv_success;
}
uint32_t ZVGR_BufferGetInfo(uint64_t handle, uint32_t command, uint64_t* value)
{
    const Buffer& buffer = buffer_of(handle);
    *value = command == zv_buffer_address ? reinterpret_cast<uint64_t>(buffer.memory) : buffer.frame;
    return zv_success;
}

uint32_t ZVGR_CameraStartAcquire_GenTL(uint32_t, uint32_t, uint32_t) { return zv_success; }
uint32_t ZVGR_CameraStopAcquire_GenTL(uint32_t) { return zv_success; }
uint32_t ZVGR_CameraCallbackRegister(uint32_t handle, ZvCameraCallback callback, void* context)
{
    camera_of(handle) = {callback, context};
    return zv_success;
}
uint32_t ZVGR_StreamBufferCallbackRegister(uint32_t handle, ZvStreamBufferCallback callback, void* context)
{
    Stream& stream = stream_of(handle);
    stream.callback = callback;
    stream.context = context;
    return zv_success;
}
uint32_t ZVGR_GetXmlUrl(uint32_t, char*, uint64_t*) { return failed; }
}
