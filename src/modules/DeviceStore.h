#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace zvgentl {

class DeviceModule;
class InterfaceModule;

/// Owns every device module until the library is unloaded. Interfaces only list devices: one that leaves a
/// list stays alive, with an open camera and its stream, because consumers and the library's callbacks may
/// still hold it. At unload the memory is freed without a library call or a log line, unless a system is
/// still open: a process that ends like that may have threads inside the devices, so they are left alone. Any
/// thread.
class DeviceStore {
public:
    DeviceStore() = default;
    ~DeviceStore();
    DeviceStore(const DeviceStore&) = delete;
    DeviceStore& operator=(const DeviceStore&) = delete;

    DeviceModule* keep(std::unique_ptr<DeviceModule> device);

    /// Ends the waits for the events of every device that was made for the interface, listed or not.
    void end_waits_below(const InterfaceModule& iface);

    /// A system begins, or ends, to use the devices.
    void add_user() noexcept { m_users.fetch_add(1); }
    void remove_user() noexcept { m_users.fetch_sub(1); }

private:
    std::atomic<int> m_users{0};
    std::mutex m_mutex;
    std::vector<std::unique_ptr<DeviceModule>> m_devices;
};

extern DeviceStore device_store;

} // namespace zvgentl
