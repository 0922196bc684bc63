#include "api/handle_checks.h"

#include "api/ProcessState.h"
#include "modules/CameraModule.h"
#include "modules/DeviceModule.h"
#include "modules/InterfaceModule.h"
#include "modules/SystemModule.h"

namespace zvgentl {

using namespace GenTL;

namespace {

InterfaceModule* find_interface(const void* handle)
{
    const SystemModule* const system = current_system();
    if (system == nullptr || handle == nullptr)
        return nullptr;
    for (const auto& iface : system->get_Interfaces()) {
        if (iface.get() == handle)
            return iface.get();
    }
    return nullptr;
}

/// Calls `visit` with each device of the tree in order, until it answers true.
template <class Visit>
bool visit_devices(const SystemModule& system, Visit visit)
{
    for (const auto& iface : system.get_Interfaces()) {
        for (DeviceModule* device : iface->get_Devices()) {
            if (visit(*device))
                return true;
        }
    }
    return false;
}

DeviceModule* find_device(const SystemModule& system, const void* handle)
{
    DeviceModule* found = nullptr;
    visit_devices(system, [&](DeviceModule& device) {
        found = &device == handle ? &device : nullptr;
        return found != nullptr;
    });
    return found;
}

CameraModule* find_camera(const SystemModule& system, const void* handle)
{
    CameraModule* found = nullptr;
    visit_devices(system, [&](const DeviceModule& device) {
        found = device.get_Camera() == handle ? device.get_Camera() : nullptr;
        return found != nullptr;
    });
    return found;
}

PinnedBuffer find_buffer(const void* handle)
{
    const BufferFacts* const facts = buffer_index.find(handle);
    StreamModule* const stream = facts != nullptr ? facts->stream.get() : nullptr;
    return stream != nullptr && stream->is_Listed() ? stream->get_Buffers().find(handle) : PinnedBuffer();
}

/// The stream of the tree that a stream's or event's handle belongs to, or null.
StreamModule* find_owner(const void* handle) noexcept
{
    StreamModule* const stream = stream_index.find(handle);
    return stream != nullptr && stream->is_Listed() ? stream : nullptr;
}

/// A closed module counts as no module.
template <class Module>
Port port_if_open(const Module& module)
{
    return module.is_Open() ? Port(module) : Port();
}

} // namespace

StreamModule* find_stream(const void* handle)
{
    StreamModule* const stream = find_owner(handle);
    return stream == handle ? stream : nullptr;
}

bool is_system(TL_HANDLE handle) noexcept { return handle != nullptr && handle == current_system(); }

Checked<InterfaceModule*> check_interface_handle(IF_HANDLE handle, const ApiCall& call, Open open)
{
    InterfaceModule* const iface = find_interface(handle);
    if (iface == nullptr) {
        call.log_info(At{310}, "%s - GC_ERR_INVALID_HANDLE", call.function());
        return GC_ERR_INVALID_HANDLE;
    }
    if (open == Open::required && !iface->is_Open()) {
        call.log_info(At{314}, "%s - GC_ERR_INVALID_HANDLE, grabber is closed", call.function());
        return GC_ERR_INVALID_HANDLE;
    }
    return iface;
}

Checked<DeviceModule*> check_device_handle(DEV_HANDLE handle, const ApiCall& call, Open open)
{
    const SystemModule* const system = current_system();
    if (system == nullptr || handle == nullptr) {
        call.log_info(At{322}, "%s [GC_ERR_INVALID_HANDLE]: NULL parameters value", call.function());
        return GC_ERR_INVALID_HANDLE;
    }
    DeviceModule* const device = find_device(*system, handle);
    if (device == nullptr) {
        call.log_info(At{327}, "%s [GC_ERR_INVALID_HANDLE]", call.function());
        return GC_ERR_INVALID_HANDLE;
    }
    if (open == Open::required && !device->is_Open()) {
        call.log_info(At{331}, "%s [GC_ERR_INVALID_HANDLE]: device is closed", call.function());
        return GC_ERR_INVALID_HANDLE;
    }
    return device;
}

Checked<StreamModule*> check_stream_handle(DS_HANDLE handle, const ApiCall& call, Open open)
{
    StreamModule* const stream = handle != nullptr ? find_stream(handle) : nullptr;
    if (stream == nullptr) {
        call.log_info(At{340}, "%s - GC_ERR_INVALID_HANDLE", call.function());
        return GC_ERR_INVALID_HANDLE;
    }
    if (open == Open::required && !stream->is_Open()) {
        call.log_info(At{344}, "%s - GC_ERR_INVALID_HANDLE, stream is closed", call.function());
        return GC_ERR_INVALID_HANDLE;
    }
    return stream;
}

Checked<PinnedBuffer> check_buffer_handle(BUFFER_HANDLE handle, const ApiCall& call)
{
    PinnedBuffer buffer = handle != nullptr ? find_buffer(handle) : PinnedBuffer();
    if (!buffer) {
        call.log_info(At{353}, "%s - GC_ERR_INVALID_HANDLE", call.function());
        return GC_ERR_INVALID_HANDLE;
    }
    return buffer;
}

namespace {

GC_ERROR refuse_event_handle(const ApiCall& call)
{
    call.log_error(At{362}, "%s - GC_ERR_INVALID_HANDLE", call.function());
    return GC_ERR_INVALID_HANDLE;
}

} // namespace

Checked<std::optional<EventPlace>> check_event_place(EVENT_HANDLE handle, const ApiCall& call, Open open)
{
    StreamModule* const stream = find_owner(handle);
    const auto type = stream != nullptr ? stream->get_Events().type_of(handle) : std::nullopt;
    if (!type)
        return refuse_event_handle(call);
    if (open == Open::required && !has_open_owners(*stream))
        return call.fail(At{366}, GC_ERR_NOT_AVAILABLE);
    return std::optional{EventPlace{stream, *type}};
}

Checked<EventRef> check_event_handle(EVENT_HANDLE handle, const ApiCall& call, Open open)
{
    const auto place = check_event_place(handle, call, open);
    if (!place)
        return place.error();
    EventRef event = place->stream->get_Events().find(handle);
    if (!event) // unregistered since
        return refuse_event_handle(call);
    return event;
}

Port find_port(const void* handle)
{
    SystemModule* const system = current_system();
    if (system == nullptr || handle == nullptr)
        return {};
    if (handle == system)
        return Port(*system);
    if (const InterfaceModule* const iface = find_interface(handle))
        return port_if_open(*iface);
    if (const DeviceModule* const device = find_device(*system, handle))
        return port_if_open(*device);
    if (const CameraModule* const camera = find_camera(*system, handle))
        return port_if_open(*camera);
    if (const StreamModule* const stream = find_stream(handle))
        return port_if_open(*stream);
    return Port(find_buffer(handle)); // whatever its stream
}

ModuleKind get_handle_type(const void* handle) { return find_port(handle).kind(); }

} // namespace zvgentl
