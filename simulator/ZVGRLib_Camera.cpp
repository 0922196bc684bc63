#include <algorithm>
#include <cstring>

#include "zvgr/ZVGRLib.h"

#include "simulator/Library.h"
#include "simulator/api_call.h"

using namespace zvsim;

namespace {

template <size_t size>
void fill(char (&field)[size], const std::string& text)
{
    std::memset(field, 0, size);
    std::memcpy(field, text.data(), std::min(text.size(), size - 1));
}

} // namespace

uint32_t ZVGR_UpdateCameraList(uint32_t grabber, uint32_t* cameras, uint32_t* count)
{
    const Call call{Function::update_camera_list, handle_target(grabber), {}, count};
    return api_call(call, status_failed, [&] {
        if (cameras == nullptr || count == nullptr)
            return status_bad_argument;
        Library& library = Library::instance();
        const Lock lock = library.lock();
        const Grabber* const found = library.find_grabber(grabber);
        if (found == nullptr)
            return status_bad_handle;
        uint32_t there = 0;
        for (const uint32_t camera : found->cameras) {
            if (!library.is_there(library.find_camera(camera)->place))
                continue;
            if (there < *count)
                cameras[there] = camera;
            ++there;
        }
        *count = there;
        return status_ok;
    });
}

uint32_t ZVGR_CameraInfo2(uint32_t camera, ZvCameraInfo* info)
{
    const Call call{Function::camera_info, handle_target(camera), {}, info};
    return api_call(call, status_failed, [&] {
        if (info == nullptr || info->version != 0)
            return status_bad_argument;
        Library& library = Library::instance();
        const Lock lock = library.lock();
        const Camera* const found = library.find_camera(camera);
        if (found == nullptr)
            return status_bad_handle;
        fill(info->device_version, found->device->model().version);
        fill(info->vendor_name, found->device->model().vendor);
        fill(info->model_name, found->device->model().model);
        fill(info->serial_number, found->device->model().serial_number);
        return status_ok;
    });
}

// Opening an open camera succeeds: a consumer that rebuilt its device list opens the same camera again.
uint32_t ZVGR_CameraOpen2(uint32_t camera, const char* description_file)
{
    const Call call{Function::camera_open, handle_target(camera), {}};
    return api_call(call, status_failed, [&] {
        if (description_file != nullptr)
            return status_unsupported;
        Library& library = Library::instance();
        const Lock lock = library.lock();
        Camera* const found = library.find_camera(camera);
        if (found == nullptr)
            return status_bad_handle;
        if (!found->is_open)
            found->device->begin_session();
        found->is_open = true;
        found->has_been_lost = false;
        return status_ok;
    });
}

uint32_t ZVGR_CameraClose(uint32_t camera)
{
    const Call call{Function::camera_close, handle_target(camera), {}};
    return api_call(call, status_failed, [&] {
        Library& library = Library::instance();
        Lock lock = library.lock();
        return library.close_camera(lock, camera);
    });
}

uint32_t ZVGR_CameraCallbackRegister(uint32_t camera, ZvCameraCallback callback, void* context)
{
    const Call call{Function::camera_callback_register, handle_target(camera), {}};
    return api_call(call, status_failed, [&] {
        if (callback == nullptr)
            return status_bad_argument;
        Library& library = Library::instance();
        const Lock lock = library.lock();
        Camera* const found = library.find_camera(camera);
        if (found == nullptr)
            return status_bad_handle;
        found->set_callback(callback, context);
        return status_ok;
    });
}

uint32_t ZVGR_CameraStartAcquire_GenTL(uint32_t camera, uint32_t stream, uint32_t frames)
{
    const Call call{
        Function::start, handle_target(camera), {{{"stream", handle_target(stream)}, {"frames", frames}}}};
    return api_call(call, status_failed, [&] {
        Library& library = Library::instance();
        Lock lock = library.lock();
        return library.start(lock, camera, stream, frames);
    });
}

uint32_t ZVGR_CameraStopAcquire_GenTL(uint32_t camera)
{
    const Call call{Function::stop, handle_target(camera), {}};
    return api_call(call, status_failed, [&] {
        Library& library = Library::instance();
        Lock lock = library.lock();
        return library.stop(lock, camera);
    });
}
