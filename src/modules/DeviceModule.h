#pragma once

#include <memory>
#include <string>

#include "modules/CameraModule.h"
#include "modules/PortModule.h"

namespace zvgentl {

class InterfaceModule;

/// A camera position on a grabber: the device handle. Owns its camera module. Made by the interface, owned by
/// the device store for the life of the process; consumer threads call it.
class DeviceModule final : public PortModule {
public:
    /// The camera's parent is the interface, too.
    DeviceModule(InterfaceModule* parent, const std::string& id)
        : m_id(id), m_camera(std::make_unique<CameraModule>(parent, "Camera" + number_of_id(id))),
          m_parent(parent)
    {
    }

    std::string getId() const override { return m_id; }
    CameraModule* get_Camera() const noexcept { return m_camera.get(); }
    InterfaceModule* get_Parent() const noexcept { return m_parent; }
    bool is_Open() const noexcept { return m_camera->is_Open(); }

    /// Forgets what is open in the library, for an unload at which the library is not called any more.
    void abandon() noexcept { m_camera->abandon(); }

private:
    const std::string m_id;
    const std::unique_ptr<CameraModule> m_camera;
    InterfaceModule* const m_parent;
};

} // namespace zvgentl
