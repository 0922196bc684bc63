#include "simulator/Library.h"
#include "simulator/Status.h"
#include "simulator/api_call.h"

#include "zvgr/ZVGRLib.h"

using namespace zvsim;

namespace {

/// The library after at least one scan: callers may ask for a grabber that they remember.
Library& scanned_library()
{
    Library& library = Library::instance();
    const bool is_new = [&] {
        const Lock lock = library.lock();
        return library.grabber_count() == 0;
    }();
    if (is_new)
        library.scan();
    return library;
}

} // namespace

uint32_t ZV_DeviceScan(uint32_t* count)
{
    return api_call("ZV_DeviceScan", status_failed, [&] {
        if (count == nullptr)
            return status_bad_argument;
        Library& library = Library::instance();
        library.scan();
        const Lock lock = library.lock();
        *count = library.grabber_count();
        return status_ok;
    });
}

uint32_t ZV_DeviceInfo(uint32_t index, ZvDeviceInfo* info)
{
    return api_call("ZV_DeviceInfo", status_failed, [&] {
        if (info == nullptr || info->version != 3)
            return status_bad_argument;
        Library& library = scanned_library();
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
    return api_call<const char*>("ZV_DeviceDisplayName", nullptr, [&]() -> const char* {
        Library& library = scanned_library();
        const Lock lock = library.lock();
        const GrabberDevice* const device = library.grabber_device(index);
        return device != nullptr ? library.keep_text(device->model().display_name) : nullptr;
    });
}

uint32_t ZVGR_Open(uint32_t index)
{
    return api_call("ZVGR_Open", ZV_NO_HANDLE, [&] {
        Library& library = scanned_library();
        const Lock lock = library.lock();
        return library.open_grabber(index);
    });
}

uint32_t ZVGR_Close(uint32_t grabber)
{
    return api_call("ZVGR_Close", status_failed, [&] {
        Library& library = Library::instance();
        Lock lock = library.lock();
        return library.close_grabber(lock, grabber);
    });
}
