#include "zvgr/ZVGRLib.h"

#include "simulator/CyclicStream.h"
#include "simulator/Library.h"
#include "simulator/QueuedStream.h"
#include "simulator/api_call.h"

using namespace zvsim;

namespace {

constexpr uint32_t largest_ring = 65536;
constexpr uint64_t buffer_alignment = 64; // makes drawing fast; any other address works too

/// A camera has one data stream, number 0.
uint32_t create_stream(uint32_t camera, uint32_t* stream, uint32_t index, const Library::MakeStream& make)
{
    if (stream == nullptr || index != 0)
        return status_bad_argument;
    Library& library = Library::instance();
    const Lock lock = library.lock();
    const uint32_t handle = library.add_stream(camera, make);
    if (handle == ZV_NO_HANDLE)
        return status_bad_handle;
    *stream = handle;
    return status_ok;
}

} // namespace

uint32_t ZVGR_StreamCreate(uint32_t camera, uint32_t* stream, uint32_t index)
{
    const Call call{Function::stream_create, handle_target(camera), {{{"index", index}}}, stream};
    return api_call(call, status_failed, [&] {
        return create_stream(camera, stream, index, [&](uint32_t handle, CameraDevice& device) {
            return std::make_unique<QueuedStream>(Library::instance(), handle, camera, device);
        });
    });
}

uint32_t ZVGR_StreamCreateAndAlloc(uint32_t camera, uint32_t* stream, uint32_t frames, uint32_t index)
{
    const Call call{Function::stream_create_and_alloc,
                    handle_target(camera),
                    {{{"frames", frames}, {"index", index}}},
                    stream};
    return api_call(call, status_failed, [&] {
        if (frames == 0 || frames > largest_ring)
            return status_bad_argument;
        return create_stream(camera, stream, index, [&](uint32_t handle, CameraDevice& device) {
            return std::make_unique<CyclicStream>(Library::instance(), handle, camera, device, frames);
        });
    });
}

uint32_t ZVGR_StreamDelete(uint32_t stream)
{
    const Call call{Function::stream_delete, handle_target(stream), {}};
    return api_call(call, status_failed, [&] {
        Library& library = Library::instance();
        Lock lock = library.lock();
        return library.delete_stream(lock, stream);
    });
}

uint32_t ZVGR_StreamGetInfo(uint32_t stream, uint32_t command, uint64_t* value)
{
    const Call call{Function::stream_info, handle_target(stream), {{{"command", command}}}, value};
    return api_call(call, status_failed, [&] {
        if (value == nullptr)
            return status_bad_argument;
        Library& library = Library::instance();
        const Lock lock = library.lock();
        const auto* const found = library.find_stream<Stream>(stream);
        if (found == nullptr)
            return status_bad_handle;
        switch (command) {
        case zv_stream_payload_at_creation:
            *value = found->payload();
            return status_ok;
        case zv_stream_buffer_alignment:
            *value = buffer_alignment;
            return status_ok;
        case zv_stream_payload_now:
            *value = library.find_camera(found->camera())->device->payload();
            return status_ok;
        default:
            return status_unsupported;
        }
    });
}

uint32_t ZVGR_StreamGetFrameIndex(uint32_t stream)
{
    const Call call{Function::stream_frame_index, handle_target(stream), {}};
    return api_call(call, UINT32_MAX, [&] {
        Library& library = Library::instance();
        const Lock lock = library.lock();
        const auto* const found = library.find_stream<CyclicStream>(stream);
        return found != nullptr ? found->last_frame() : UINT32_MAX;
    });
}

void* ZVGR_StreamGetPtr(uint32_t stream, uint32_t frame)
{
    const Call call{Function::stream_pointer, handle_target(stream), {{{"frame", frame}}}};
    return api_call<void*>(call, nullptr, [&]() -> void* {
        Library& library = Library::instance();
        const Lock lock = library.lock();
        const auto* const found = library.find_stream<CyclicStream>(stream);
        return found != nullptr && found->has_frame(frame) ? found->memory(frame) : nullptr;
    });
}

uint32_t ZVGR_StreamGetAux(uint32_t stream, uint32_t frame, ZvFrameAux* record)
{
    const Call call{Function::stream_aux, handle_target(stream), {{{"frame", frame}}}, record};
    return api_call(call, status_failed, [&] {
        if (record == nullptr)
            return status_bad_argument;
        Library& library = Library::instance();
        const Lock lock = library.lock();
        const auto* const found = library.find_stream<CyclicStream>(stream);
        if (found == nullptr)
            return status_bad_handle;
        if (!found->has_frame(frame))
            return status_bad_argument;
        record->timestamp = found->timestamp(frame);
        return status_ok;
    });
}
