#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zvgr/ZVGRLib.h"

#include "modules/Quarantine.h"

namespace zvgentl {

class CameraModule;
class CameraScan;
class DeviceModule;
class SystemModule;

/// One frame grabber. Lists the devices of its last scan, which belong to the device store. Made, closed, by
/// the system's list and owned by it; consumer threads call it and must not rebuild the list under one
/// another.
class InterfaceModule final : public QuarantinedModule<retired_interfaces> {
public:
    InterfaceModule(SystemModule& parent, std::string id);
    /// Closes an open grabber and ends the waits for events of the streams below, also of devices that the
    /// list has dropped. Devices are only dropped.
    ~InterfaceModule();

    std::string getId() const override { return m_id; }
    SystemModule& get_Parent() const noexcept { return m_parent; }

    bool is_Open() const noexcept { return m_open.load(std::memory_order_relaxed); }
    void mark_open() noexcept { m_open.store(true, std::memory_order_relaxed); }
    /// Also marks every listed camera closed, in order, and wipes it.
    void mark_closed_with_cameras();
    uint32_t get_GrabberHandle() const noexcept { return m_grabber_handle.load(std::memory_order_relaxed); }
    void set_GrabberHandle(uint32_t handle) noexcept
    {
        m_grabber_handle.store(handle, std::memory_order_relaxed);
    }
    /// Opens the grabber at the interface's list position; false when the library refuses.
    bool open_Grabber();
    /// Closes the grabber in the library, regardless of the open flag. Answers the library's status.
    uint32_t close_Grabber();

    size_t get_CameraAmount() const noexcept { return m_devices.size(); }
    /// Null for an index outside the list; indexes are read as signed.
    DeviceModule* get_Device(uint32_t index) const noexcept;
    CameraModule* get_Camera(uint32_t index) const noexcept;
    /// The listed device with exactly this ID, or null.
    DeviceModule* find_Device(std::string_view id) const;
    bool has_Device(const void* device) const noexcept;
    bool has_Camera(const void* camera) const noexcept;
    /// The list index of the device with this camera, or -1.
    int32_t get_CameraIndex(const void* camera) const noexcept;
    const std::vector<DeviceModule*>& get_Devices() const noexcept { return m_devices; }

    /// Drops the listed devices, without closing them.
    void drop_Devices() noexcept;
    /// Drops the listed devices and lists one new closed device per camera found.
    /// Answers the size of the list, smaller than the scan when memory ran out.
    size_t init_Cameras(const CameraScan& scan);

private:
    const std::string m_id;
    std::atomic<bool> m_open{false};
    std::atomic<uint32_t> m_grabber_handle{0};
    SystemModule& m_parent;
    std::vector<DeviceModule*> m_devices;
};

} // namespace zvgentl
