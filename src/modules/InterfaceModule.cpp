#include "modules/InterfaceModule.h"

#include <algorithm>
#include <memory>
#include <new>
#include <tuple>
#include <utility>

#include "modules/CameraScan.h"
#include "modules/DeviceModule.h"
#include "modules/DeviceStore.h"
#include "modules/StreamModule.h"
#include "modules/SystemModule.h"

namespace zvgentl {

namespace {

/// Null when there is no memory for it.
DeviceModule* make_device(InterfaceModule& parent, const std::string& id)
{
    try {
        return device_store.keep(std::make_unique<DeviceModule>(&parent, id));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace

InterfaceModule::InterfaceModule(SystemModule& parent, std::string id) : m_id(std::move(id)), m_parent(parent)
{
}

InterfaceModule::~InterfaceModule()
{
    drop_Devices();
    if (is_Open())
        std::ignore = close_Grabber(); // nothing can be done about a failure
    // No frame can come any more, and no handle is left to end a wait with.
    device_store.end_waits_below(*this);
}

void InterfaceModule::mark_closed_with_cameras()
{
    m_open.store(false, std::memory_order_relaxed);
    for (const DeviceModule* device : m_devices)
        device->get_Camera()->mark_closed_and_wipe();
}

bool InterfaceModule::open_Grabber()
{
    const uint32_t handle = ZVGR_Open(static_cast<uint32_t>(m_parent.get_InterfaceIndex(this)));
    if (handle == ZV_NO_HANDLE)
        return false;
    set_GrabberHandle(handle);
    mark_open();
    return true;
}

uint32_t InterfaceModule::close_Grabber() { return ZVGR_Close(get_GrabberHandle()); }

DeviceModule* InterfaceModule::get_Device(uint32_t index) const noexcept
{
    const auto position = static_cast<int32_t>(index);
    const bool is_listed = position >= 0 && static_cast<size_t>(position) < m_devices.size();
    return is_listed ? m_devices[index] : nullptr;
}

CameraModule* InterfaceModule::get_Camera(uint32_t index) const noexcept
{
    const DeviceModule* const device = get_Device(index);
    return device != nullptr ? device->get_Camera() : nullptr;
}

DeviceModule* InterfaceModule::find_Device(std::string_view id) const
{
    const auto position = std::find_if(m_devices.begin(), m_devices.end(),
                                       [id](const DeviceModule* listed) { return listed->getId() == id; });
    return position == m_devices.end() ? nullptr : *position;
}

bool InterfaceModule::has_Device(const void* device) const noexcept
{
    return std::any_of(m_devices.begin(), m_devices.end(),
                       [device](const DeviceModule* listed) { return listed == device; });
}

bool InterfaceModule::has_Camera(const void* camera) const noexcept { return get_CameraIndex(camera) != -1; }

int32_t InterfaceModule::get_CameraIndex(const void* camera) const noexcept
{
    const auto position =
        std::find_if(m_devices.begin(), m_devices.end(),
                     [camera](const DeviceModule* listed) { return listed->get_Camera() == camera; });
    return position == m_devices.end() ? -1 : static_cast<int32_t>(position - m_devices.begin());
}

void InterfaceModule::drop_Devices() noexcept
{
    for (const DeviceModule* device : m_devices)
        device->get_Camera()->get_Stream(0)->set_Listed(false);
    m_devices.clear();
}

size_t InterfaceModule::init_Cameras(const CameraScan& scan)
{
    drop_Devices();
    try {
        m_devices.reserve(scan.count());
    } catch (const std::bad_alloc&) {
        return 0;
    }
    const std::string prefix = "Device" + number_of_id(m_id);
    for (uint32_t i = 0; i < scan.count(); ++i) {
        DeviceModule* const device = make_device(*this, prefix + std::to_string(i));
        if (device == nullptr)
            continue;
        device->get_Camera()->init_Camera(scan.handle(i), scan.identity(i));
        device->get_Camera()->get_Stream(0)->set_Listed(true);
        m_devices.push_back(device);
    }
    return m_devices.size();
}

} // namespace zvgentl
