#include <string_view>

#include "zvgr/ZVGRLib.h"

#include "simulator/Library.h"
#include "simulator/api_call.h"
#include "simulator/features/CameraRegisters.h"
#include "simulator/features/GrabberRegisters.h"

using namespace zvsim;

namespace {

/// What a value is read from. A grabber's handle stands for its first camera too: handles of all kinds answer
/// all values.
struct Subject {
    const GrabberDevice* grabber{nullptr};
    const CameraDevice* camera{nullptr};
    bool stands_for_all_cameras{false};
};

Subject subject_of(Library& library, uint32_t handle)
{
    if (const Grabber* const grabber = library.find_grabber(handle)) {
        library.update_links(*grabber);
        const auto& cameras = grabber->device->cameras();
        return {grabber->device, cameras.empty() ? nullptr : cameras.front().get(), true};
    }
    const auto* const stream = library.find_stream<Stream>(handle);
    const Camera* const camera = library.find_camera(stream != nullptr ? stream->camera() : handle);
    if (camera == nullptr)
        return {};
    const Grabber& grabber = *library.find_grabber(camera->grabber);
    library.update_links(grabber);
    return {grabber.device, camera->device};
}

/// What the library can do, beside the features of the grabber.
struct CapabilityRow {
    std::string_view name;
    int64_t (*value)(const GrabberModel& grabber);
};

constexpr CapabilityRow capabilities[] = {
    {"FW_Dma_Capable_FrameImageId_Imp", [](const GrabberModel& g) -> int64_t { return g.has_image_ids; }},
    {"FW_Dma_Capable_QueuedBuffers_Imp", [](const GrabberModel&) -> int64_t { return 1; }},
};

int64_t available(const RegisterValue& value)
{
    const auto* const number = std::get_if<int64_t>(&value);
    return number != nullptr ? *number : ZV_NOT_AVAILABLE;
}

bool is_of(RegisterKind kind, RegisterKind asked)
{
    return kind == asked || (kind == RegisterKind::boolean && asked == RegisterKind::integer);
}

int64_t camera_value(const Subject& subject, RegisterKind kind, std::string_view name)
{
    const CameraRow* const row = find_camera_row(name);
    const bool is_there = row != nullptr && is_of(row->kind, kind) && subject.camera != nullptr;
    return is_there ? available(row->read(*subject.camera)) : ZV_NOT_AVAILABLE;
}

int64_t grabber_value(const Subject& subject, RegisterKind kind, std::string_view name)
{
    if (subject.grabber == nullptr)
        return ZV_NOT_AVAILABLE;
    if (kind == RegisterKind::integer) {
        for (const CapabilityRow& row : capabilities) {
            if (row.name == name)
                return row.value(subject.grabber->model());
        }
    }
    // Of a whole grabber this says whether any of its cameras grabs.
    if (subject.stands_for_all_cameras && name == "CameraChannelState") {
        for (const auto& camera : subject.grabber->cameras()) {
            if (kind == RegisterKind::enumeration && camera->is_acquiring())
                return zv_channel_grabbing;
        }
    }
    const GrabberRow* const row = find_grabber_row(name);
    const bool is_there = row != nullptr && is_of(row->kind, kind);
    return is_there ? available(row->read({*subject.grabber, subject.camera})) : ZV_NOT_AVAILABLE;
}

template <class Value>
int64_t value_from(Function function, const Value& value, RegisterKind kind, uint32_t handle,
                   const char* name)
{
    const Call call{function, handle_target(handle), {{{"name", name}}}};
    return api_call(call, ZV_NOT_AVAILABLE, [&]() -> int64_t {
        if (name == nullptr)
            return ZV_NOT_AVAILABLE;
        Library& library = Library::instance();
        const Lock lock = library.lock();
        return value(subject_of(library, handle), kind, name);
    });
}

} // namespace

int64_t ZVGR_GetGrabberValueInt(uint32_t handle, const char* name)
{
    return value_from(Function::grabber_integer, grabber_value, RegisterKind::integer, handle, name);
}

int64_t ZVGR_GetGrabberValueEnum(uint32_t handle, const char* name)
{
    return value_from(Function::grabber_enumeration, grabber_value, RegisterKind::enumeration, handle, name);
}

int64_t ZVGR_GetCameraValueInt(uint32_t handle, const char* name)
{
    return value_from(Function::camera_integer, camera_value, RegisterKind::integer, handle, name);
}

int64_t ZVGR_GetCameraValueEnum(uint32_t handle, const char* name)
{
    return value_from(Function::camera_enumeration, camera_value, RegisterKind::enumeration, handle, name);
}
