#include "benchmarks/bare/bare_chain.h"

#include <atomic>
#include <cstring>
#include <mutex>
#include <vector>

#include "GenTL/GenTL.h"
#include "zvgr/ZVGRLib.h"

using namespace GenTL;

namespace {

enum class Tag : uint32_t { general, input, output };

// Two threads meet in a frame: what both touch is atomic, and the queue between them has a lock.
struct Buffer {
    uint64_t library{0};
    std::atomic<Tag> tag{Tag::general};
    std::atomic<bool> is_filled{false};
    std::atomic<uint64_t> timestamp{0};
    std::atomic<uint64_t> frame_id{0};
    void* memory{nullptr};
    uint64_t size{0};
    void* user{nullptr};
    uint64_t width{0};
    uint64_t height{0};
    uint64_t pixel_format{0};
};

uint32_t grabber = 0;
uint32_t camera = 0;
uint32_t stream = 0;
std::vector<Buffer> buffers;
std::vector<Buffer*> filled; // a ring
size_t first = 0;
size_t count = 0;
std::mutex mutex; // of the queue and its signal
bool is_signalled = false;
std::atomic<uint64_t> delivered{0};

void on_frame(uint64_t handle, void* /*context*/)
{
    Buffer& buffer = buffers[handle - buffers.front().library];
    buffer.tag.store(Tag::output, std::memory_order_relaxed);
    buffer.is_filled.store(false, std::memory_order_relaxed);
    uint64_t timestamp = 0;
    uint64_t image_id = 0;
    ZVGR_BufferGetInfo(handle, zv_buffer_timestamp, &timestamp);
    ZVGR_BufferGetInfo(handle, zv_buffer_image_id, &image_id);
    buffer.timestamp.store(timestamp, std::memory_order_relaxed);
    buffer.frame_id.store(image_id, std::memory_order_relaxed);
    delivered.fetch_add(1, std::memory_order_relaxed);
    buffer.is_filled.store(true, std::memory_order_release);
    const std::lock_guard lock{mutex};
    filled[(first + count++) % filled.size()] = &buffer;
    is_signalled = true;
}

template <class T>
int32_t give(INFO_DATATYPE is, T what, int32_t* type, void* value, size_t* size)
{
    *type = is;
    std::memcpy(value, &what, sizeof what);
    *size = sizeof what;
    return GC_ERR_SUCCESS;
}

} // namespace

extern "C" {

void chain_open(uint32_t buffer_count, uint64_t size)
{
    uint32_t found = zv_max_cameras;
    uint32_t handles[zv_max_cameras];
    grabber = ZVGR_Open(0);
    ZVGR_UpdateCameraList(grabber, handles, &found);
    camera = handles[0];
    ZVGR_CameraOpen2(camera, nullptr);
    ZVGR_StreamCreate(camera, &stream, 0);
    ZVGR_StreamBufferCallbackRegister(stream, on_frame, nullptr);
    std::vector<Buffer>(buffer_count).swap(buffers);
    filled.assign(buffer_count, nullptr);
    for (Buffer& buffer : buffers) {
        uint64_t address = 0;
        ZVGR_BufferAllocAndAnnounce(stream, size, nullptr, &buffer.library);
        ZVGR_BufferGetInfo(buffer.library, zv_buffer_address, &address);
        buffer.memory = reinterpret_cast<void*>(address);
        buffer.size = size;
        chain_queue(&buffer);
    }
    ZVGR_CameraStartAcquire_GenTL(camera, stream, 0);
}

void chain_close()
{
    ZVGR_CameraStopAcquire_GenTL(camera);
    ZVGR_StreamDelete(stream);
    ZVGR_CameraClose(camera);
    ZVGR_Close(grabber);
}

uint64_t chain_library_handle(uint32_t index) { return buffers[index].library; }

bool chain_get(void* datum)
{
    Buffer* buffer = nullptr;
    {
        const std::lock_guard lock{mutex};
        if (count == 0)
            return false;
        buffer = filled[first];
        first = (first + 1) % filled.size();
        --count;
        is_signalled = false;
    }
    const EVENT_NEW_BUFFER_DATA given{buffer, buffer->user};
    std::memcpy(datum, &given, sizeof given);
    return true;
}

int32_t chain_info(const void* handle, int32_t command, int32_t* type, void* value, size_t* size)
{
    const Buffer& buffer = *static_cast<const Buffer*>(handle);
    switch (command) {
    case BUFFER_INFO_BASE:
        return give(INFO_DATATYPE_PTR, buffer.memory, type, value, size);
    case BUFFER_INFO_TIMESTAMP:
        return give(INFO_DATATYPE_UINT64, buffer.timestamp.load(std::memory_order_relaxed), type, value,
                    size);
    case BUFFER_INFO_IS_INCOMPLETE:
        return give(INFO_DATATYPE_BOOL8, !buffer.is_filled.load(std::memory_order_acquire), type, value,
                    size);
    case BUFFER_INFO_SIZE_FILLED:
        return give(INFO_DATATYPE_SIZET, buffer.size, type, value, size);
    case BUFFER_INFO_WIDTH:
        return give(INFO_DATATYPE_SIZET, buffer.width, type, value, size);
    case BUFFER_INFO_HEIGHT:
        return give(INFO_DATATYPE_SIZET, buffer.height, type, value, size);
    case BUFFER_INFO_FRAMEID:
        return give(INFO_DATATYPE_UINT64, buffer.frame_id.load(std::memory_order_relaxed), type, value, size);
    case BUFFER_INFO_PIXELFORMAT:
        return give(INFO_DATATYPE_UINT64, buffer.pixel_format, type, value, size);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

void chain_queue(void* handle)
{
    Buffer& buffer = *static_cast<Buffer*>(handle);
    buffer.tag.store(Tag::input, std::memory_order_release);
    ZVGR_BufferToQueue(buffer.library, zv_queue_input);
}
}
