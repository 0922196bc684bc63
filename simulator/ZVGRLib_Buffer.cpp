#include "zvgr/ZVGRLib.h"

#include "simulator/Library.h"
#include "simulator/QueuedStream.h"
#include "simulator/api_call.h"

using namespace zvsim;

namespace {

/// The queued-mode stream that a buffer handle belongs to; null when it is gone, or never was.
QueuedStream* stream_of(Library& library, uint64_t buffer)
{
    return library.find_stream<QueuedStream>(QueuedStream::stream_of(buffer));
}

} // namespace

uint32_t ZVGR_BufferAnnounce(uint32_t stream, void* memory, uint64_t size, void* /*user*/, uint64_t* buffer)
{
    const Call call{Function::buffer_announce,
                    handle_target(stream),
                    {{{"size", size}, Argument::pointer("memory", memory)}},
                    buffer};
    return api_call(call, status_failed, [&] {
        if (memory == nullptr || buffer == nullptr)
            return status_bad_argument;
        Library& library = Library::instance();
        const Lock lock = library.lock();
        auto* const found = library.find_stream<QueuedStream>(stream);
        if (found == nullptr)
            return status_bad_handle;
        const uint64_t announced = found->announce(memory, size);
        if (announced == 0)
            return status_failed;
        *buffer = announced;
        return status_ok;
    });
}

uint32_t ZVGR_BufferAllocAndAnnounce(uint32_t stream, uint64_t size, void* /*user*/, uint64_t* buffer)
{
    const Call call{Function::buffer_alloc_and_announce, handle_target(stream), {{{"size", size}}}, buffer};
    return api_call(call, status_failed, [&] {
        if (buffer == nullptr)
            return status_bad_argument;
        Library& library = Library::instance();
        const Lock lock = library.lock();
        auto* const found = library.find_stream<QueuedStream>(stream);
        if (found == nullptr)
            return status_bad_handle;
        const uint64_t announced = found->allocate_and_announce(size);
        if (announced == 0)
            return status_failed;
        *buffer = announced;
        return status_ok;
    });
}

uint32_t ZVGR_BufferRevoke(uint32_t stream, uint64_t buffer)
{
    const Call call{Function::buffer_revoke, handle_target(stream), {{{"buffer", buffer_target(buffer)}}}};
    return api_call(call, status_failed, [&] {
        Library& library = Library::instance();
        Lock lock = library.lock();
        auto* const found = library.find_stream<QueuedStream>(stream);
        return found != nullptr ? found->revoke(lock, buffer) : status_bad_handle;
    });
}

uint32_t ZVGR_BufferToQueue(uint64_t buffer, uint32_t queue)
{
    const Call call{Function::buffer_to_queue, buffer_target(buffer), {{{"queue", queue}}}};
    return api_call(call, status_failed, [&] {
        Library& library = Library::instance();
        Lock lock = library.lock();
        auto* const found = stream_of(library, buffer);
        return found != nullptr ? found->move_to(lock, buffer, queue) : status_bad_handle;
    });
}

uint32_t ZVGR_BufferGetInfo(uint64_t buffer, uint32_t command, uint64_t* value)
{
    const Call call{Function::buffer_info, buffer_target(buffer), {{{"command", command}}}, value};
    return api_call(call, status_failed, [&] {
        if (value == nullptr)
            return status_bad_argument;
        Library& library = Library::instance();
        const Lock lock = library.lock();
        const auto* const found = stream_of(library, buffer);
        if (found == nullptr)
            return status_bad_handle;
        const Camera& camera = *library.find_camera(found->camera());
        if (command == zv_buffer_image_id &&
            !library.find_grabber(camera.grabber)->device->model().has_image_ids)
            return status_unsupported;
        return found->info(buffer, command, *value);
    });
}

uint32_t ZVGR_StreamBufferCallbackRegister(uint32_t stream, ZvStreamBufferCallback callback, void* context)
{
    const Call call{Function::buffer_callback_register, handle_target(stream), {}};
    return api_call(call, status_failed, [&] {
        if (callback == nullptr)
            return status_bad_argument;
        Library& library = Library::instance();
        const Lock lock = library.lock();
        auto* const found = library.find_stream<QueuedStream>(stream);
        if (found == nullptr)
            return status_bad_handle;
        found->set_callback(callback, context);
        return status_ok;
    });
}
