#include "modules/DeviceModule.h"

namespace zvgentl {

// The camera's parent is the interface, not the device.
DeviceModule::DeviceModule(InterfaceModule* parent, const std::string& id)
    : m_id(id), m_camera(std::make_unique<CameraModule>(parent, "Camera" + number_of_id(id))),
      m_parent(parent)
{
}

} // namespace zvgentl
