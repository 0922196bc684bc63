#include "simulator/Library.h"
#include "simulator/api_call.h"

#include "zvgr/ZVGRLib.h"

#include <string_view>

using namespace zvsim;

namespace {

constexpr int64_t channel_idle = 1; // any number but that of "grabbing"

/// What a value is read from. A grabber's handle stands for its first camera too: handles of all kinds answer
/// all values.
struct Subject {
    const GrabberModel* grabber = nullptr;
    const CameraDevice* camera = nullptr;
    bool is_grabbing = false;
};

Subject subject_of_grabber(Library& library, const Grabber& grabber)
{
    const uint32_t first = grabber.cameras.empty() ? ZV_NO_HANDLE : grabber.cameras.front();
    const Camera* const first_camera = library.find_camera(first);
    Subject subject{&grabber.device->model(), first_camera != nullptr ? first_camera->device : nullptr};
    for (const uint32_t camera : grabber.cameras)
        subject.is_grabbing = subject.is_grabbing || library.acquiring_stream(camera) != nullptr;
    return subject;
}

Subject subject_of(Library& library, uint32_t handle)
{
    if (const Grabber* const grabber = library.find_grabber(handle))
        return subject_of_grabber(library, *grabber);
    const auto* const stream = library.find_stream<Stream>(handle);
    const uint32_t camera_handle = stream != nullptr ? stream->camera() : handle;
    const Camera* const camera = library.find_camera(camera_handle);
    if (camera == nullptr)
        return {};
    return {&library.find_grabber(camera->grabber)->device->model(), camera->device,
            library.acquiring_stream(camera_handle) != nullptr};
}

struct ValueRow {
    std::string_view name;
    int64_t (*value)(const Subject& subject);
};

int64_t where_reported(const Subject& subject, int64_t value)
{
    return subject.grabber->reports_geometry ? value : ZV_NOT_AVAILABLE;
}

int64_t channel_state(const Subject& subject)
{
    if (subject.is_grabbing)
        return zv_channel_grabbing;
    return channel_idle;
}

constexpr ValueRow grabber_integers[] = {
    {"FW_Dma_Capable_FrameImageId_Imp",  [](const Subject& s) -> int64_t { return s.grabber->has_image_ids; }              },
    {"FW_Dma_Capable_QueuedBuffers_Imp", [](const Subject&) -> int64_t { return 1; }                                       },
    {"Height",                           [](const Subject& s) { return where_reported(s, s.camera->settings().height); }   },
    {"SegmentsPerBuffer",                [](const Subject& s) { return where_reported(s, s.grabber->segments_per_buffer); }},
    {"Width",                            [](const Subject& s) { return where_reported(s, s.camera->settings().width); }    },
};

constexpr ValueRow grabber_enumerations[] = {
    {"CameraChannelState", channel_state},
};

constexpr ValueRow camera_integers[] = {
    {"Height",  [](const Subject& s) -> int64_t { return s.camera->settings().height; }  },
    {"OffsetX", [](const Subject& s) -> int64_t { return s.camera->settings().offset_x; }},
    {"OffsetY", [](const Subject& s) -> int64_t { return s.camera->settings().offset_y; }},
    {"Width",   [](const Subject& s) -> int64_t { return s.camera->settings().width; }   },
};

constexpr ValueRow camera_enumerations[] = {
    {"PixelFormat", [](const Subject& s) -> int64_t { return s.camera->format_code(); }},
};

template <size_t rows>
int64_t value_from(const ValueRow (&table)[rows], Function function, uint32_t handle, const char* name)
{
    const Call call{function, handle_target(handle), {{{"name", name}}}};
    return api_call(call, ZV_NOT_AVAILABLE, [&]() -> int64_t {
        if (name == nullptr)
            return ZV_NOT_AVAILABLE;
        Library& library = Library::instance();
        const Lock lock = library.lock();
        const Subject subject = subject_of(library, handle);
        if (subject.grabber == nullptr || subject.camera == nullptr)
            return ZV_NOT_AVAILABLE;
        for (const ValueRow& row : table) {
            if (row.name == name)
                return row.value(subject);
        }
        return ZV_NOT_AVAILABLE;
    });
}

} // namespace

int64_t ZVGR_GetGrabberValueInt(uint32_t handle, const char* name)
{
    return value_from(grabber_integers, Function::grabber_integer, handle, name);
}

int64_t ZVGR_GetGrabberValueEnum(uint32_t handle, const char* name)
{
    return value_from(grabber_enumerations, Function::grabber_enumeration, handle, name);
}

int64_t ZVGR_GetCameraValueInt(uint32_t handle, const char* name)
{
    return value_from(camera_integers, Function::camera_integer, handle, name);
}

int64_t ZVGR_GetCameraValueEnum(uint32_t handle, const char* name)
{
    return value_from(camera_enumerations, Function::camera_enumeration, handle, name);
}
