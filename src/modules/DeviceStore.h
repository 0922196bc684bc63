#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace zvgentl {

class DeviceModule;

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
