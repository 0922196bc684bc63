#pragma once

#include <memory>
#include <mutex>
#include <vector>

namespace zvgentl {

class DeviceModule;

/// Owns every device module until the library is unloaded. Interfaces only list devices: one that leaves a
/// list stays alive, with an open camera and its stream, because consumers and the library's callbacks may
/// still hold it. At unload the memory is freed without a library call or a log line. Any thread.
class DeviceStore {
public:
    DeviceStore() = default;
    ~DeviceStore();
    DeviceStore(const DeviceStore&) = delete;
    DeviceStore& operator=(const DeviceStore&) = delete;

    DeviceModule* keep(std::unique_ptr<DeviceModule> device);

private:
    std::mutex m_mutex;
    std::vector<std::unique_ptr<DeviceModule>> m_devices;
};

extern DeviceStore device_store;

} // namespace zvgentl
