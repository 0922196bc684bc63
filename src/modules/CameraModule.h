#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "zvgr/ZVGRLib.h"

#include "modules/PortModule.h"

namespace zvgentl {

class InterfaceModule;
class StreamModule;

/// A camera: the remote device behind a device module, and the handle of its port. Holds the library's camera
/// handle, the identity that the last scan reported and the one data stream. Made and owned by its device
/// module; consumer threads call it. Its parent may be gone once the device has left the interface's list.
class CameraModule final : public PortModule {
public:
    CameraModule(InterfaceModule* parent, std::string id);
    /// Closes an open camera.
    ~CameraModule();

    std::string getId() const override { return m_id; }
    InterfaceModule* get_Parent() const noexcept { return m_parent; }

    /// Takes over handle and identity; always follows construction.
    void init_Camera(uint32_t handle, const ZvCameraInfo& info);
    uint32_t get_CameraHandle() const noexcept { return m_camera_handle; }
    const ZvCameraInfo& get_CameraInfo() const noexcept { return m_info; }

    /// Opens or closes the camera in the library and answers its status; the open flag is the caller's to
    /// set.
    uint32_t open_Camera();
    uint32_t close_Camera();
    bool is_Open() const noexcept { return m_open.load(std::memory_order_relaxed); }
    void mark_open() noexcept { m_open.store(true, std::memory_order_relaxed); }
    /// Also closes the stream and wipes the identity, which then reads as empty texts.
    void mark_closed_and_wipe();

    uint32_t get_StreamAmount() const noexcept { return 1; }
    /// The stream for an index below 1, negative ones included, else null.
    StreamModule* get_Stream(int32_t index) const noexcept { return index < 1 ? m_stream.get() : nullptr; }
    bool is_Stream(const void* handle) const noexcept { return m_stream.get() == handle; }
    /// Makes the library stream, in the mode that a setting or else the grabber's capability chooses, and
    /// connects it. False when the library refuses; the stream then stays closed.
    bool open_Stream(uint32_t index);

    /// Forgets what is open in the library, for an unload at which the library is not called any more.
    void abandon() noexcept;

private:
    const std::string m_id;
    std::atomic<bool> m_open{false};
    uint32_t m_camera_handle{0};
    std::unique_ptr<StreamModule> m_stream;
    InterfaceModule* const m_parent;
    ZvCameraInfo m_info{};
};

} // namespace zvgentl
