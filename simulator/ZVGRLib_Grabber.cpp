#include "zvgr/ZVGRLib.h"

#include "simulator/Library.h"
#include "simulator/api_call.h"

using namespace zvsim;

namespace {

/// The library with its configuration read: callers may ask for a grabber that they remember.
Library& configured_library()
{
    Library& library = Library::instance();
    const bool is_new = [&] {
        const Lock lock = library.lock();
        return !library.is_configured();
    }();
    if (is_new)
        library.configure();
    return library;
}

} // namespace

uint32_t ZV_DeviceScan(uint32_t* count)
{
    // The configuration comes first: the very first scan can be the one that fails.
    return api_call("ZV_DeviceScan", status_failed, [&] {
        Library& library = Library::instance();
        library.configure();
        return api_call({Function::device_scan, {}, {}, count}, status_failed, [&] {
            if (count == nullptr)
                return status_bad_argument;
            const Lock lock = library.lock();
            library.scan();
            *count = library.grabber_count();
            return status_ok;
        });
    });
}

uint32_t ZV_DeviceInfo(uint32_t index, ZvDeviceInfo* info)
{
    const Call call{Function::device_info, grabber_index(index), {}, info};
    return api_call(call, status_failed, [&] {
        if (info == nullptr || info->version != 3)
            return status_bad_argument;
        Library& library = configured_library();
        const Lock lock = library.lock();
        const GrabberDevice* const device = library.grabber_device(index);
        if (device == nullptr)
            return status_bad_argument;
        info->protocol = device->model().protocol;
        return status_ok;
    });
}

const char* ZV_DeviceDisplayName(uint32_t index)
{
    const Call call{Function::device_display_name, grabber_index(index), {}};
    return api_call<const char*>(call, nullptr, [&]() -> const char* {
        Library& library = configured_library();
        const Lock lock = library.lock();
        const GrabberDevice* const device = library.grabber_device(index);
        return device != nullptr ? library.keep_text(device->model().display_name) : nullptr;
    });
}

uint32_t ZVGR_Open(uint32_t index)
{
    const Call call{Function::open, grabber_index(index), {}};
    return api_call(call, ZV_NO_HANDLE, [&] {
        Library& library = configured_library();
        const Lock lock = library.lock();
        return library.open_grabber(index);
    });
}

uint32_t ZVGR_Close(uint32_t grabber)
{
    const Call call{Function::close, handle_target(grabber), {}};
    return api_call(call, status_failed, [&] {
        Library& library = Library::instance();
        Lock lock = library.lock();
        return library.close_grabber(lock, grabber);
    });
}
