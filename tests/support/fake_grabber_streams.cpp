#include "zvgr/ZVGRLib.h"

#include "support/fake_grabber_checks.h"

// The functions of ZVGRLib.h over FakeGrabberLibrary: streams, buffers and acquisition.

using namespace zvtest;

namespace {

constexpr uint64_t more_than_any_test_needs = uint64_t{1} << 32;

} // namespace

extern "C" {

uint32_t ZVGR_CALL ZVGR_StreamCreate(uint32_t camera, uint32_t* stream, uint32_t index)
{
    const Entered made("ZVGR_StreamCreate", camera, index);
    return perform_on(made, &FakeWorld::cameras, camera, stream, [&](FakeWorld& world, LiveCamera&) {
        *stream = world.create_stream(camera, 0);
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_StreamCreateAndAlloc(uint32_t camera, uint32_t* stream, uint32_t frames,
                                             uint32_t index)
{
    const Entered made("ZVGR_StreamCreateAndAlloc", camera, frames, index);
    return perform_on(made, &FakeWorld::cameras, camera, stream, [&](FakeWorld& world, LiveCamera&) {
        *stream = world.create_stream(camera, frames);
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_StreamDelete(uint32_t stream)
{
    const Entered made("ZVGR_StreamDelete", stream);
    return perform_status(made, no_memory, [&](FakeWorld& world) {
        // Closing an interface closes the grabber first and deletes the streams that died with it afterwards.
        const auto dead = world.dead.find(stream);
        if (dead != world.dead.end() && dead->second)
            return any_failure;
        if (!is_live(made, world.streams, stream))
            return any_failure;
        world.delete_stream(stream, false);
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_StreamGetInfo(uint32_t stream, uint32_t command, uint64_t* value)
{
    const Entered made("ZVGR_StreamGetInfo", stream, command);
    return perform_status(made, value, [&](FakeWorld& world) {
        const auto info = world.stream_info.find(command);
        if (!is_live(made, world.streams, stream) || info == world.stream_info.end())
            return any_failure;
        *value = info->second;
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_StreamGetFrameIndex(uint32_t stream)
{
    const Entered made("ZVGR_StreamGetFrameIndex", stream);
    return fake().perform<uint32_t>(
        made, 0,
        [&](FakeWorld& world) {
            return is_live(made, world.streams, stream) ? world.streams.at(stream).last_frame : ZV_NO_HANDLE;
        },
        no_output);
}

void* ZVGR_CALL ZVGR_StreamGetPtr(uint32_t stream, uint32_t frame)
{
    const Entered made("ZVGR_StreamGetPtr", stream, frame);
    return fake().perform<void*>(
        made, nullptr,
        [&](FakeWorld& world) -> void* {
            if (!is_live(made, world.streams, stream) || frame >= world.streams.at(stream).ring_frames)
                return nullptr;
            return world.streams.at(stream).ring.get() + frame * ring_frame_bytes;
        },
        no_output);
}

uint32_t ZVGR_CALL ZVGR_StreamGetAux(uint32_t stream, uint32_t frame, ZvFrameAux* record)
{
    const Entered made("ZVGR_StreamGetAux", stream, frame);
    return perform_status(made, no_memory, [&](FakeWorld& world) {
        if (!is_live(made, world.streams, stream) || frame >= world.streams.at(stream).ring_frames)
            return any_failure;
        *record = world.streams.at(stream).aux[frame];
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_BufferAnnounce(uint32_t stream, void* memory, uint64_t size, void* user,
                                       uint64_t* buffer)
{
    const Entered made("ZVGR_BufferAnnounce", stream, memory, size, user);
    return perform_status(made, buffer, [&](FakeWorld& world) {
        if (!is_live(made, world.streams, stream) || memory == nullptr)
            return any_failure;
        *buffer = world.announce(stream, memory, size);
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_BufferAllocAndAnnounce(uint32_t stream, uint64_t size, void* user, uint64_t* buffer)
{
    const Entered made("ZVGR_BufferAllocAndAnnounce", stream, size, user);
    return perform_status(made, buffer, [&](FakeWorld& world) {
        if (!is_live(made, world.streams, stream) || size > more_than_any_test_needs)
            return any_failure;
        *buffer = world.announce(stream, nullptr, size);
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_BufferRevoke(uint32_t stream, uint64_t buffer)
{
    const Entered made("ZVGR_BufferRevoke", stream, buffer);
    return perform_status(made, no_memory, [&](FakeWorld& world) {
        if (!is_live(made, world.streams, stream) || !is_live_buffer(made, world, buffer))
            return any_failure;
        world.revoke(buffer);
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_BufferToQueue(uint64_t buffer, uint32_t queue)
{
    const Entered made("ZVGR_BufferToQueue", buffer, queue);
    return perform_status(made, no_memory, [&](FakeWorld& world) {
        if (!is_live_buffer(made, world, buffer) || queue > zv_queue_output)
            return any_failure;
        world.buffers.at(buffer).queue = static_cast<int>(queue);
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_BufferGetInfo(uint64_t buffer, uint32_t command, uint64_t* value)
{
    const Entered made("ZVGR_BufferGetInfo", buffer, command);
    return perform_status(made, value, [&](FakeWorld& world) {
        if (!is_live_buffer(made, world, buffer))
            return any_failure;
        const LiveBuffer& announced = world.buffers.at(buffer);
        switch (command) {
        case zv_buffer_address:
            *value = reinterpret_cast<uintptr_t>(announced.memory);
            return succeeded;
        case zv_buffer_timestamp:
            *value = announced.timestamp;
            return succeeded;
        case zv_buffer_image_id:
            *value = announced.image_id;
            return succeeded;
        case zv_buffer_frame_id:
            *value = announced.frame_id;
            return succeeded;
        default:
            return any_failure;
        }
    });
}

uint32_t ZVGR_CALL ZVGR_CameraStartAcquire_GenTL(uint32_t camera, uint32_t stream, uint32_t frames)
{
    const Entered made("ZVGR_CameraStartAcquire_GenTL", camera, stream, frames);
    return perform_status(made, no_memory, [&](FakeWorld& world) {
        if (!is_live(made, world.cameras, camera) || !is_live(made, world.streams, stream))
            return any_failure;
        LiveCamera& owner = world.cameras.at(camera);
        if (!owner.open || owner.acquiring != ZV_NO_HANDLE)
            return any_failure;
        owner.acquiring = stream;
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_CameraStopAcquire_GenTL(uint32_t camera)
{
    const Entered made("ZVGR_CameraStopAcquire_GenTL", camera);
    return perform_on(made, &FakeWorld::cameras, camera, no_memory, [&](FakeWorld&, LiveCamera& found) {
        found.acquiring = ZV_NO_HANDLE;
        return succeeded;
    });
}

uint32_t ZVGR_CALL ZVGR_StreamBufferCallbackRegister(uint32_t stream, ZvStreamBufferCallback callback,
                                                     void* context)
{
    const Entered made("ZVGR_StreamBufferCallbackRegister", stream, code_address(callback), context);
    return perform_on(made, &FakeWorld::streams, stream, no_memory, [&](FakeWorld&, LiveStream& found) {
        found.callback = callback;
        found.context = context;
        return succeeded;
    });
}

} // extern "C"
