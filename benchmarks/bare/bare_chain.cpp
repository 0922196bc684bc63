#include "benchmarks/bare/bare_chain.h"

#include <atomic>
#include <condition_variable>
#include <cstdlib>
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

struct Chain {
    uint32_t grabber{0};
    uint32_t camera{0};
    uint32_t stream{0};
    std::vector<Buffer> buffers;
    std::atomic<uint64_t> delivered{0};

    std::mutex mutex; // of the queue and its signal
    std::condition_variable condition;
    std::vector<Buffer*> filled; // a ring
    size_t first{0};
    size_t count{0};
    size_t next_input{0}; // of a cyclic chain: buffers are used in turn
    bool is_waiting{false};
    bool is_killed{false};

    Buffer* take()
    {
        if (count == 0)
            return nullptr;
        Buffer* const buffer = filled[first];
        first = (first + 1) % filled.size();
        --count;
        return buffer;
    }
};

void hand_over(Chain& chain, Buffer& buffer)
{
    chain.delivered.fetch_add(1, std::memory_order_relaxed);
    buffer.is_filled.store(true, std::memory_order_release);
    const std::lock_guard lock{chain.mutex};
    chain.filled[(chain.first + chain.count++) % chain.filled.size()] = &buffer;
    if (chain.is_waiting)
        chain.condition.notify_one();
}

void on_buffer(uint64_t handle, void* context)
{
    Chain& chain = *static_cast<Chain*>(context);
    Buffer& buffer = chain.buffers[handle - chain.buffers.front().library];
    buffer.tag.store(Tag::output, std::memory_order_relaxed);
    buffer.is_filled.store(false, std::memory_order_relaxed);
    uint64_t timestamp = 0;
    uint64_t image_id = 0;
    ZVGR_BufferGetInfo(handle, zv_buffer_timestamp, &timestamp);
    ZVGR_BufferGetInfo(handle, zv_buffer_image_id, &image_id);
    buffer.timestamp.store(timestamp, std::memory_order_relaxed);
    buffer.frame_id.store(image_id, std::memory_order_relaxed);
    hand_over(chain, buffer);
}

void on_ring_frame(void* context, uint32_t stream)
{
    Chain& chain = *static_cast<Chain*>(context);
    Buffer& buffer = chain.buffers[chain.next_input];
    if (buffer.tag.load(std::memory_order_acquire) != Tag::input)
        return; // the frame is lost
    chain.next_input = (chain.next_input + 1) % chain.buffers.size();
    buffer.tag.store(Tag::output, std::memory_order_relaxed);
    const uint32_t frame = ZVGR_StreamGetFrameIndex(stream);
    std::memcpy(buffer.memory, ZVGR_StreamGetPtr(stream, frame), buffer.size);
    ZvFrameAux record{};
    ZVGR_StreamGetAux(stream, frame, &record);
    buffer.timestamp.store(record.timestamp, std::memory_order_relaxed);
    buffer.frame_id.store(frame, std::memory_order_relaxed);
    hand_over(chain, buffer);
}

void announce(Chain& chain, Buffer& buffer, uint64_t size, bool is_cyclic)
{
    uint64_t address = 0;
    buffer.size = size;
    if (is_cyclic) {
        buffer.memory = std::malloc(size);
        std::memset(buffer.memory, 0, size);
    } else {
        ZVGR_BufferAllocAndAnnounce(chain.stream, size, nullptr, &buffer.library);
        ZVGR_BufferGetInfo(buffer.library, zv_buffer_address, &address);
        buffer.memory = reinterpret_cast<void*>(address);
    }
    chain_queue(&buffer);
}

template <class T>
int32_t give(INFO_DATATYPE is, T what, int32_t* type, void* value, size_t* size)
{
    *type = is;
    std::memcpy(value, &what, sizeof what);
    *size = sizeof what;
    return GC_ERR_SUCCESS;
}

bool give_datum(const Buffer* buffer, void* datum)
{
    if (buffer == nullptr)
        return false;
    const EVENT_NEW_BUFFER_DATA given{const_cast<Buffer*>(buffer), buffer->user};
    std::memcpy(datum, &given, sizeof given);
    return true;
}

} // namespace

extern "C" {

void* chain_open(uint32_t grabber, uint32_t camera, uint32_t buffer_count, uint64_t size,
                 uint32_t ring_frames)
{
    auto* const chain = new Chain;
    uint32_t found = zv_max_cameras;
    uint32_t cameras[zv_max_cameras];
    chain->grabber = ZVGR_Open(grabber);
    ZVGR_UpdateCameraList(chain->grabber, cameras, &found);
    chain->camera = cameras[camera];
    ZVGR_CameraOpen2(chain->camera, nullptr);
    if (ring_frames == 0) {
        ZVGR_StreamCreate(chain->camera, &chain->stream, 0);
        ZVGR_StreamBufferCallbackRegister(chain->stream, on_buffer, chain);
    } else {
        ZVGR_StreamCreateAndAlloc(chain->camera, &chain->stream, ring_frames, 0);
        ZVGR_CameraCallbackRegister(chain->camera, on_ring_frame, chain);
    }
    std::vector<Buffer>(buffer_count).swap(chain->buffers);
    chain->filled.assign(buffer_count, nullptr);
    for (Buffer& buffer : chain->buffers)
        announce(*chain, buffer, size, ring_frames != 0);
    ZVGR_CameraStartAcquire_GenTL(chain->camera, chain->stream, 0);
    return chain;
}

void chain_close(void* handle)
{
    auto* const chain = static_cast<Chain*>(handle);
    ZVGR_CameraStopAcquire_GenTL(chain->camera);
    ZVGR_StreamDelete(chain->stream);
    ZVGR_CameraClose(chain->camera);
    ZVGR_Close(chain->grabber);
    for (const Buffer& buffer : chain->buffers)
        if (buffer.library == 0)
            std::free(buffer.memory);
    delete chain;
}

uint64_t chain_library_handle(const void* chain, uint32_t index)
{
    return static_cast<const Chain*>(chain)->buffers[index].library;
}

bool chain_get(void* handle, void* datum)
{
    Chain& chain = *static_cast<Chain*>(handle);
    const Buffer* buffer = nullptr;
    {
        const std::lock_guard lock{chain.mutex};
        buffer = chain.take();
    }
    return give_datum(buffer, datum);
}

bool chain_wait(void* handle, void* datum)
{
    Chain& chain = *static_cast<Chain*>(handle);
    const Buffer* buffer = nullptr;
    {
        std::unique_lock lock{chain.mutex};
        chain.is_waiting = true;
        chain.condition.wait(lock, [&chain] { return chain.count != 0 || chain.is_killed; });
        chain.is_waiting = false;
        chain.is_killed = false;
        buffer = chain.take();
    }
    return give_datum(buffer, datum);
}

void chain_kill(void* handle)
{
    Chain& chain = *static_cast<Chain*>(handle);
    const std::lock_guard lock{chain.mutex};
    chain.is_killed = true;
    chain.condition.notify_one();
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
