#include "modules/DeviceStore.h"

#include <new>
#include <utility>

#include "modules/DeviceModule.h"
#include "modules/Quarantine.h" // destroyed after the store, because it is defined before it
#include "modules/StreamModule.h"

namespace zvgentl {

DeviceStore device_store;

DeviceStore::~DeviceStore()
{
    if (m_users.load() != 0) {
        // Never destroyed, and still to be found by a leak checker.
        using Devices = decltype(m_devices);
        alignas(Devices) static unsigned char kept[sizeof(Devices)];
        new (kept) Devices(std::move(m_devices));
        return;
    }
    for (const auto& device : m_devices)
        device->abandon();
}

DeviceModule* DeviceStore::keep(std::unique_ptr<DeviceModule> device)
{
    const std::lock_guard lock(m_mutex);
    m_devices.push_back(std::move(device));
    return m_devices.back().get();
}

void DeviceStore::end_waits_below(const InterfaceModule& iface)
{
    const std::lock_guard lock{m_mutex};
    for (const auto& device : m_devices) {
        if (device->get_Parent() == &iface)
            device->get_Camera()->get_Stream(0)->get_Events().end_waits();
    }
}

} // namespace zvgentl
